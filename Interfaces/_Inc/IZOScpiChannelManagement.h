#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiChannel;

/// The channels of the connections. Found at the root, for all connections, or for one path.
///
/// Threads: any operation from any thread.
struct IZOScpiChannelManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0x962040E8, 0xBA7C, 0x4608, {0xA5, 0x2E, 0x4A, 0x4C, 0x9D, 0x8B, 0x9F, 0xC5}};

    /// @param[out] count  connections
    virtual HRESULT get_ChannelCount(long* count) = 0;
    /// @param[out] channel  a new reference; null on failure
    /// @return S_OK; S_FALSE when the path has no connection; E_POINTER; E_INVALIDARG
    virtual HRESULT GetChannel(long remotePath, IZOScpiChannel** channel) = 0;

protected:
    ~IZOScpiChannelManagement() = default;
};

inline constexpr const IID& IID_IZOScpiChannelManagement = IZOScpiChannelManagement::kInterfaceId;

} // namespace ZoVelkor
