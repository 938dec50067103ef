#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Receives the service requests of one instrument (IEEE 488.1 section 2.7) from its controller.
///
/// The operations' order is part of the interface.
struct IZOScpiInterrupt : IUnknown
{
    static constexpr IID kInterfaceId{
        0x86CB8F64, 0xDAA5, 0x4578, {0xA4, 0xBE, 0xDE, 0x58, 0x4C, 0x06, 0x59, 0xFE}};

    /// Forgets the service requests signalled so far. It serves the owner of the receiver, who gets it ready
    /// for the next request this way; a controller never calls it.
    virtual HRESULT ResetSignal() = 0;
    /// The instrument requests service. Runs on the transport's thread, which waits for the return; it must
    /// not start a request, for the answer comes on the same thread. It may change the callback.
    /// @return S_OK or another success code; a failure is raised as an error on the transport's thread
    virtual HRESULT Signal() = 0;

protected:
    ~IZOScpiInterrupt() = default;
};

inline constexpr const IID& IID_IZOScpiInterrupt = IZOScpiInterrupt::kInterfaceId;

} // namespace ZoVelkor
