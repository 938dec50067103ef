#pragma once

namespace ZoVelkor::RemoteKernel
{

/// Version of the standard as SYSTem:VERSion? answers it (SCPI-99 vol. 2, 21.21).
inline constexpr const char* kScpiVersion = "1999.0";

} // namespace ZoVelkor::RemoteKernel
