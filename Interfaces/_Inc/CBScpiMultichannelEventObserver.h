#pragma once

#include "IZOScpiMultichannelEventObserver.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of observers: forwards each notification to the operation of the same name with the prefix Do, which
/// succeeds and does nothing. An exception in it becomes a result.
///
/// Threads: as the caller's; the identity is set before the observer is registered.
class ZO_EXPORT CBScpiMultichannelEventObserver : public IZOScpiMultichannelEventObserver
{
public:
    HRESULT ConnectionAccepted(wchar_t* name, long remotePath) override;
    HRESULT ConnectionBroken(wchar_t* name, long remotePath) override;
    HRESULT GotoLocal(long remotePath) override;
    HRESULT GotoRemote(long remotePath) override;
    HRESULT LocalLockout(short on, long remotePath) override;
    HRESULT DeviceClear(long remotePath) override;
    HRESULT Trigger(long remotePath) override;
    HRESULT Reset(long remotePath) override;
    HRESULT SystemPreset(long remotePath) override;
    HRESULT ProgramMessageBegin(long remotePath) override;
    HRESULT ProgramMessageEnd(short aborted, long remotePath) override;
    HRESULT OpcReset(long remotePath, unsigned long count, GUID* ids) override;
    HRESULT put_EventClientId(GUID id) override;
    /// @param[out] id  all zero before put_EventClientId; null is skipped
    HRESULT get_EventClientId(GUID* id) override;

protected:
    virtual ~CBScpiMultichannelEventObserver() = default;

    /// @name Hooks
    /// Each is called by the operation of its name, with its arguments and in its thread. The base gives
    /// S_OK.
    /// @{

    /// A connection has begun.
    virtual HRESULT DoConnectionAccepted(wchar_t* name, long remotePath);
    /// A connection has ended.
    virtual HRESULT DoConnectionBroken(wchar_t* name, long remotePath);
    /// The path has become local.
    virtual HRESULT DoGotoLocal(long remotePath);
    /// The path has become remote.
    virtual HRESULT DoGotoRemote(long remotePath);
    /// Local lockout was set or released.
    virtual HRESULT DoLocalLockout(short on, long remotePath);
    /// A device clear has been carried out.
    virtual HRESULT DoDeviceClear(long remotePath);
    /// A trigger was given.
    virtual HRESULT DoTrigger(long remotePath);
    /// The instrument was reset.
    virtual HRESULT DoReset(long remotePath);
    /// The instrument was preset.
    virtual HRESULT DoSystemPreset(long remotePath);
    /// A program message begins.
    virtual HRESULT DoProgramMessageBegin(long remotePath);
    /// A program message has been worked off.
    virtual HRESULT DoProgramMessageEnd(short aborted, long remotePath);
    /// An operation-complete request was dropped.
    virtual HRESULT DoOpcReset(long remotePath, unsigned long count, GUID* ids);
    /// @}

private:
    GUID m_EventClientId{};
};

} // namespace ZoVelkor
