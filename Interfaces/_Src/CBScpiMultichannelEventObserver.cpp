#include "CBScpiMultichannelEventObserver.h"

#include "GuardedEntry.h"

namespace ZoVelkor
{

HRESULT CBScpiMultichannelEventObserver::ConnectionAccepted(wchar_t* name, long remotePath)
{
    return GuardedEntry([&] { return DoConnectionAccepted(name, remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::ConnectionBroken(wchar_t* name, long remotePath)
{
    return GuardedEntry([&] { return DoConnectionBroken(name, remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::GotoLocal(long remotePath)
{
    return GuardedEntry([&] { return DoGotoLocal(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::GotoRemote(long remotePath)
{
    return GuardedEntry([&] { return DoGotoRemote(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::LocalLockout(short on, long remotePath)
{
    return GuardedEntry([&] { return DoLocalLockout(on, remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::DeviceClear(long remotePath)
{
    return GuardedEntry([&] { return DoDeviceClear(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::Trigger(long remotePath)
{
    return GuardedEntry([&] { return DoTrigger(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::Reset(long remotePath)
{
    return GuardedEntry([&] { return DoReset(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::SystemPreset(long remotePath)
{
    return GuardedEntry([&] { return DoSystemPreset(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::ProgramMessageBegin(long remotePath)
{
    return GuardedEntry([&] { return DoProgramMessageBegin(remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::ProgramMessageEnd(short aborted, long remotePath)
{
    return GuardedEntry([&] { return DoProgramMessageEnd(aborted, remotePath); });
}

HRESULT CBScpiMultichannelEventObserver::OpcReset(long remotePath, unsigned long count, GUID* ids)
{
    return GuardedEntry([&] { return DoOpcReset(remotePath, count, ids); });
}

HRESULT CBScpiMultichannelEventObserver::put_EventClientId(GUID id)
{
    m_EventClientId = id;
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::get_EventClientId(GUID* id)
{
    if (id != nullptr)
    {
        *id = m_EventClientId;
    }
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoConnectionAccepted(wchar_t* /*name*/, long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoConnectionBroken(wchar_t* /*name*/, long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoGotoLocal(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoGotoRemote(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoLocalLockout(short /*on*/, long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoDeviceClear(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoTrigger(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoReset(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoSystemPreset(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoProgramMessageBegin(long /*remotePath*/)
{
    return S_OK;
}

HRESULT CBScpiMultichannelEventObserver::DoProgramMessageEnd(short /*aborted*/, long /*remotePath*/)
{
    return S_OK;
}

HRESULT
CBScpiMultichannelEventObserver::DoOpcReset(long /*remotePath*/, unsigned long /*count*/, GUID* /*ids*/)
{
    return S_OK;
}

} // namespace ZoVelkor
