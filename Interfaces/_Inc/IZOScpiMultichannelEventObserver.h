#pragma once

#include "Guid.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// Observes the events of all remote paths; the last argument is the remote path, except in OpcReset.
///
/// For components that follow what happens without taking part in it: results are not looked at. Threads:
/// the thread in which the event happened, several at once; an observer must not register or unregister
/// anything from inside.
struct IZOScpiMultichannelEventObserver : IUnknown
{
    static constexpr IID kInterfaceId{
        0x40A4C617, 0x83DA, 0x49EC, {0xB9, 0x4D, 0xEB, 0xE2, 0x26, 0x3C, 0x51, 0xB6}};

    /// A connection has begun.
    ///
    /// @param name  identity of the connection, lent for the call
    virtual HRESULT ConnectionAccepted(wchar_t* name, long remotePath) = 0;
    /// The connection has ended; nothing of it follows.
    ///
    /// @param name  as in ConnectionAccepted
    virtual HRESULT ConnectionBroken(wchar_t* name, long remotePath) = 0;
    /// The path has become local.
    virtual HRESULT GotoLocal(long remotePath) = 0;
    /// The path has become remote.
    virtual HRESULT GotoRemote(long remotePath) = 0;
    /// Local lockout was set (VARIANT_TRUE) or released.
    virtual HRESULT LocalLockout(short on, long remotePath) = 0;
    /// A device clear has been carried out.
    virtual HRESULT DeviceClear(long remotePath) = 0;
    /// A trigger was given, by *TRG or from the bus.
    virtual HRESULT Trigger(long remotePath) = 0;
    /// *RST, or a reset by the instrument itself.
    virtual HRESULT Reset(long remotePath) = 0;
    /// A preset by the instrument itself.
    virtual HRESULT SystemPreset(long remotePath) = 0;
    /// A program message begins to be worked off.
    virtual HRESULT ProgramMessageBegin(long remotePath) = 0;
    /// It has been worked off, with its responses.
    ///
    /// @param aborted  non-zero when the message was cancelled before its end
    virtual HRESULT ProgramMessageEnd(short aborted, long remotePath) = 0;
    /// An operation-complete request of the path was dropped unfulfilled.
    ///
    /// @param count  number of identifiers at ids: all registered observers, for whom that ends a report
    virtual HRESULT OpcReset(long remotePath, unsigned long count, GUID* ids) = 0;
    /// Sets the identity under which the observer is registered; before that, and not all zero.
    virtual HRESULT put_EventClientId(GUID id) = 0;
    /// Gives the identity; asked for at registration and when the observer is taken out.
    virtual HRESULT get_EventClientId(GUID* id) = 0;

protected:
    ~IZOScpiMultichannelEventObserver() = default;
};

inline constexpr const IID& IID_IZOScpiMultichannelEventObserver =
    IZOScpiMultichannelEventObserver::kInterfaceId;

} // namespace ZoVelkor
