#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// The trace of program messages and responses, for the whole instrument. Found at the root.
///
/// A line a message: "[Velkor] path 3 < *IDN?" for what came in, ">" for what went out. Bytes that are not
/// printable are shown as dots, long messages are cut.
/// Threads: any operation from any thread.
struct IZOScpiTraceManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0x54C1BF06, 0xFF35, 0x439E, {0x84, 0x1C, 0xC8, 0x7E, 0x37, 0xFC, 0xC5, 0xB4}};

    /// Turns the trace on or off.
    ///
    /// @param active  non-zero: trace
    virtual HRESULT put_MessageTraceActive(short active) = 0;
    /// Tells whether messages are traced: VARIANT_TRUE or VARIANT_FALSE.
    virtual HRESULT get_MessageTraceActive(short* active) = 0;

protected:
    ~IZOScpiTraceManagement() = default;
};

inline constexpr const IID& IID_IZOScpiTraceManagement = IZOScpiTraceManagement::kInterfaceId;

} // namespace ZoVelkor
