#pragma once

#include <cstddef>

namespace ZoVelkor::RemoteKernel
{

/// Bounds of one program message. The defaults are the instrument's.
struct MessageLimits
{
    std::size_t maxText = std::size_t{1} << 22;  ///< bytes outside blocks; beyond: -363
    std::size_t maxBlock = std::size_t{1} << 29; ///< block bytes of one message in memory; beyond: -223
    std::size_t maxHeld = std::size_t{1} << 20;  ///< block bytes of one message that are collected before its
                                                 ///< commands run; a block that goes beyond is streamed
};

} // namespace ZoVelkor::RemoteKernel
