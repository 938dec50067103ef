#pragma once

#include "Unknown.h"

namespace ZoVelkor
{
/// Receives notifications of a service, as of a changed registry key.
///
/// The service holds a reference while the sink is registered. Threads: called in a thread of the service.
struct IZONotificationSink : IUnknown
{
    static constexpr IID kInterfaceId{
        0x1D5C9A37, 0x6B0E, 0x4C42, {0x9F, 0x6C, 0x2E, 0x84, 0x51, 0x7B, 0xC3, 0x90}};

    /// Takes one notification; must not wait.
    ///
    /// @param kind  what has happened, as the service numbers it
    virtual HRESULT Notify(long kind) = 0;

protected:
    ~IZONotificationSink() = default;
};

inline constexpr const IID& IID_IZONotificationSink = IZONotificationSink::kInterfaceId;
} // namespace ZoVelkor
