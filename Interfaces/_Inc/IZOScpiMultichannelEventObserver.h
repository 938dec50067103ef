#pragma once

#include "Guid.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// Observes the events of all remote paths; the last argument is the remote path, except in OpcReset.
struct IZOScpiMultichannelEventObserver : IUnknown
{
    static constexpr IID kInterfaceId{
        0x40A4C617, 0x83DA, 0x49EC, {0xB9, 0x4D, 0xEB, 0xE2, 0x26, 0x3C, 0x51, 0xB6}};

    /// @param name  identity of the connection, lent for the call
    virtual HRESULT ConnectionAccepted(wchar_t* name, long remotePath) = 0;
    virtual HRESULT ConnectionBroken(wchar_t* name, long remotePath) = 0;
    virtual HRESULT GotoLocal(long remotePath) = 0;
    virtual HRESULT GotoRemote(long remotePath) = 0;
    virtual HRESULT LocalLockout(short on, long remotePath) = 0;
    virtual HRESULT DeviceClear(long remotePath) = 0;
    virtual HRESULT Trigger(long remotePath) = 0;
    virtual HRESULT Reset(long remotePath) = 0;
    virtual HRESULT SystemPreset(long remotePath) = 0;
    virtual HRESULT ProgramMessageBegin(long remotePath) = 0;
    /// @param aborted  non-zero when the message was cancelled before its end
    virtual HRESULT ProgramMessageEnd(short aborted, long remotePath) = 0;
    /// An operation-complete request of the path was dropped unfulfilled.
    ///
    /// @param count  number of identifiers at ids: all registered observers, for whom that ends a report
    virtual HRESULT OpcReset(long remotePath, unsigned long count, GUID* ids) = 0;
    /// Identity under which the observer is registered.
    virtual HRESULT put_EventClientId(GUID id) = 0;
    virtual HRESULT get_EventClientId(GUID* id) = 0;

protected:
    ~IZOScpiMultichannelEventObserver() = default;
};

inline constexpr const IID& IID_IZOScpiMultichannelEventObserver =
    IZOScpiMultichannelEventObserver::kInterfaceId;

} // namespace ZoVelkor
