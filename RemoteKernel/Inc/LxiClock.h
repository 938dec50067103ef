#pragma once

#include "CLxiTime.h"

#include <chrono>

namespace ZoVelkor::RemoteKernel
{

/// The time of LXI events: seconds since 1970 by the system's clock (UTC).
inline CLxiTime LxiNow()
{
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    const auto whole = floor<seconds>(sinceEpoch);
    const auto count = static_cast<std::uint64_t>(whole.count());
    return {static_cast<unsigned short>(count >> 32U),
            static_cast<unsigned long>(count & 0xFFFFFFFFU),
            static_cast<unsigned long>(duration_cast<nanoseconds>(sinceEpoch - whole).count())};
}

} // namespace ZoVelkor::RemoteKernel
