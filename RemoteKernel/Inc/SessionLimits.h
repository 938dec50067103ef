#pragma once

#include "MessageLimits.h"

#include <cstddef>

namespace ZoVelkor::RemoteKernel
{

/// Bounds of one session. The defaults are the instrument's.
struct SessionLimits
{
    MessageLimits message{};
    std::size_t maxResponse = std::size_t{1} << 29; ///< bytes of one response message; beyond: -430, and the
                                                    ///< message answers nothing
    std::size_t errorQueueDepth = 64;               ///< entries, at least 2; beyond: -350
    int blockPauseMs = 10'000; ///< longest pause of a client inside a block that its command is reading,
                               ///< since nobody else's commands run meanwhile; beyond: -365
};

} // namespace ZoVelkor::RemoteKernel
