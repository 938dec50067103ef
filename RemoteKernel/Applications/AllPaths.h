#pragma once

namespace ZoVelkor::RemoteKernel
{

/// In the place of a remote path's number: all paths, and the instrument itself.
inline constexpr long kAllPaths = -1;

} // namespace ZoVelkor::RemoteKernel
