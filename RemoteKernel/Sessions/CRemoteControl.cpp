#include "CRemoteControl.h"

#include "GuardedEntry.h"
#include "Variant.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

std::vector<std::shared_ptr<CRemotePath>> CRemoteControl::Paths() const
{
    if (m_spPath == nullptr)
    {
        return m_spPaths->All();
    }
    return {m_spPath};
}

HRESULT CRemoteControl::ChangeEach(const FChange& change)
{
    return GuardedEntry([&]() -> HRESULT {
        if (m_spPath != nullptr && !m_spPath->IsOpen())
        {
            return E_INVALIDARG;
        }
        HRESULT result = S_FALSE;
        for (const auto& spPath : Paths())
        {
            const tagStateChange changed = change(*spPath);
            if (changed == tagStateChange::Changed)
            {
                spPath->PublishStatus();
                result = SUCCEEDED(result) ? S_OK : result;
            }
            else if (changed == tagStateChange::LockedOut)
            {
                result = E_ACCESSDENIED;
            }
        }
        return result;
    });
}

HRESULT CRemoteControl::GotoLocal()
{
    return ChangeEach([this](CRemotePath& path) {
        const tagStateChange changed = path.State().ReturnToLocal();
        if (changed == tagStateChange::Changed)
        {
            m_spEvents->Tell(path.Number(),
                             &IZOScpiDeviceHandler::GotoLocal,
                             &IZOScpiMultichannelEventObserver::GotoLocal);
            path.TellReturnToLocal();
        }
        return changed;
    });
}

HRESULT CRemoteControl::GotoRemote()
{
    return ChangeEach([this](CRemotePath& path) {
        const tagStateChange changed = path.State().GotoRemote();
        if (changed == tagStateChange::Changed)
        {
            m_spEvents->Tell(path.Number(),
                             &IZOScpiDeviceHandler::GotoRemote,
                             &IZOScpiMultichannelEventObserver::GotoRemote);
        }
        return changed;
    });
}

HRESULT CRemoteControl::LocalLockout(short on)
{
    return ChangeEach([this, on](CRemotePath& path) {
        const tagStateChange changed = path.State().SetLockout(on != 0);
        if (changed == tagStateChange::Changed)
        {
            m_spEvents->TellLockout(path.Number(), on != 0);
        }
        return changed;
    });
}

HRESULT CRemoteControl::IsAny(short* state, bool (CRemoteLocalState::*is)() const noexcept)
{
    return GuardedEntry([&]() -> HRESULT {
        if (state == nullptr)
        {
            return E_POINTER;
        }
        const auto paths = Paths();
        const bool bAny = std::any_of(
            paths.begin(), paths.end(), [is](const auto& spPath) { return (spPath->State().*is)(); });
        *state = bAny ? VARIANT_TRUE : VARIANT_FALSE;
        return m_spPath != nullptr && !m_spPath->IsOpen() ? E_INVALIDARG : S_OK;
    });
}

HRESULT CRemoteControl::get_RemoteState(short* remote)
{
    return IsAny(remote, &CRemoteLocalState::IsRemote);
}

HRESULT CRemoteControl::get_LocalLockoutState(short* lockout)
{
    return IsAny(lockout, &CRemoteLocalState::IsLockedOut);
}

} // namespace ZoVelkor::RemoteKernel
