#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Optional second interface of a channel whose data can be waited for with poll.
///
/// The kernel then waits on the descriptor; a channel without it calls SignalDataAvailable instead.
/// Threads: the kernel's thread of the connection.
struct IZOScpiWaitableChannel : IUnknown
{
    static constexpr IID kInterfaceId{
        0x56924C5E, 0xC48A, 0x4A85, {0xAC, 0xE0, 0xF7, 0x5F, 0x12, 0x5B, 0x51, 0xCA}};

    /// Gives the descriptor, which stays the channel's: the kernel neither reads nor closes it.
    ///
    /// @param[out] descriptor  readable while Read would get something or the connection has ended; it
    ///                         stays the same until the channel is closed
    virtual HRESULT GetWaitDescriptor(int* descriptor) = 0;

protected:
    ~IZOScpiWaitableChannel() = default;
};

inline constexpr const IID& IID_IZOScpiWaitableChannel = IZOScpiWaitableChannel::kInterfaceId;

} // namespace ZoVelkor
