#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiChannel;

/// The channels of the connections. Found at the root, for all connections, or for one path, for its own.
///
/// Threads: any operation from any thread.
struct IZOScpiChannelManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0x962040E8, 0xBA7C, 0x4608, {0xA5, 0x2E, 0x4A, 0x4C, 0x9D, 0x8B, 0x9F, 0xC5}};

    /// Counts the connections that have a channel.
    ///
    /// @param[out] count  0 or more
    /// @return S_OK; E_POINTER
    virtual HRESULT get_ChannelCount(long* count) = 0;
    /// Gives the channel of a path.
    ///
    /// @param[out] channel  a new reference; null on failure. It may be closed while it is held
    /// @return S_OK; S_FALSE when the path has no connection; E_POINTER; E_INVALIDARG for a number that is
    ///         no path, or not the one that this serves
    virtual HRESULT GetChannel(long remotePath, IZOScpiChannel** channel) = 0;

protected:
    ~IZOScpiChannelManagement() = default;
};

inline constexpr const IID& IID_IZOScpiChannelManagement = IZOScpiChannelManagement::kInterfaceId;

} // namespace ZoVelkor
