#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiChannel;
struct IZOScpiChannelServiceProvider;
struct IZOScpiMultichannelEventObserver;
struct IZOScpiParser;

/// The kernel's connections, and the components that serve all remote paths. Found at the root.
///
/// Threads: any operation from any thread, but not from inside a handler or an observer.
struct IZOScpiMultichannelAdministration : IUnknown
{
    static constexpr IID kInterfaceId{
        0x107134E9, 0x80B1, 0x406D, {0xA6, 0x35, 0x51, 0xD9, 0x63, 0x36, 0x63, 0xC3}};

    /// Tells how many remote paths the kernel can serve; they are numbered from 0.
    ///
    /// @param[out] count  the same as long as the kernel lives, however many are in use
    /// @return S_OK; E_POINTER
    virtual HRESULT get_RemotePathCount(long* count) = 0;

    /// Takes a channel in as a new connection. The kernel begins to read at SignalConnected.
    ///
    /// @param[out] remotePath  the path of the connection
    /// @param[out] provider  a new reference
    /// @return S_OK; S_FALSE when the channel is connected already, with its path and provider; E_POINTER;
    ///         E_OUTOFMEMORY; E_FAIL when all paths are taken, E_UNEXPECTED after the kernel has stopped
    virtual HRESULT
    AddConnection(IZOScpiChannel* channel, long* remotePath, IZOScpiChannelServiceProvider** provider) = 0;

    /// Ends a connection. When the call returns no command of it is running, unless it was called from within
    /// one, and the kernel does not use the channel any more.
    ///
    /// @return S_OK; S_FALSE when the channel is not connected; E_POINTER
    virtual HRESULT RemoveConnection(IZOScpiChannel* channel) = 0;

    /// Registers a parser for all paths. One that also is an IZOScpiMultichannelParser gives each path an
    /// engine of its own, made when the path first needs it.
    ///
    /// @return S_OK; E_POINTER; E_INVALIDARG, reported, for a parser without usable command tree or one
    ///         that is registered already
    virtual HRESULT RegisterParser(IZOScpiParser* parser) = 0;

    /// Takes a parser out of all paths.
    ///
    /// @return S_OK, and nothing of the parser is running or will run; S_FALSE when it is not registered;
    ///         E_POINTER
    virtual HRESULT UnregisterParser(IZOScpiParser* parser) = 0;

    /// Registers an observer under its event client identity, see get_EventClientId.
    ///
    /// @return S_OK; E_POINTER; E_INVALIDARG when the identity is all zero or taken
    virtual HRESULT RegisterEventObserver(IZOScpiMultichannelEventObserver* observer) = 0;

    /// Takes the observer with the same identity out. When the call returns it is not called any more.
    ///
    /// @return S_OK; S_FALSE when there is none; E_POINTER
    virtual HRESULT UnregisterEventObserver(IZOScpiMultichannelEventObserver* observer) = 0;

protected:
    ~IZOScpiMultichannelAdministration() = default;
};

inline constexpr const IID& IID_IZOScpiMultichannelAdministration =
    IZOScpiMultichannelAdministration::kInterfaceId;

} // namespace ZoVelkor
