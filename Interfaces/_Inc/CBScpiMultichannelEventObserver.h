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

    virtual HRESULT DoConnectionAccepted(wchar_t* name, long remotePath);
    virtual HRESULT DoConnectionBroken(wchar_t* name, long remotePath);
    virtual HRESULT DoGotoLocal(long remotePath);
    virtual HRESULT DoGotoRemote(long remotePath);
    virtual HRESULT DoLocalLockout(short on, long remotePath);
    virtual HRESULT DoDeviceClear(long remotePath);
    virtual HRESULT DoTrigger(long remotePath);
    virtual HRESULT DoReset(long remotePath);
    virtual HRESULT DoSystemPreset(long remotePath);
    virtual HRESULT DoProgramMessageBegin(long remotePath);
    virtual HRESULT DoProgramMessageEnd(short aborted, long remotePath);
    virtual HRESULT DoOpcReset(long remotePath, unsigned long count, GUID* ids);

private:
    GUID m_EventClientId{};
};

} // namespace ZoVelkor
