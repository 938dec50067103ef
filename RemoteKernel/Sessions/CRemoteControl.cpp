#include "CRemoteControl.h"

#include "GuardedEntry.h"
#include "Variant.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

std::vector<std::shared_ptr<CRemotePath>> CRemoteControl::Paths() const
{
    if (m_path == nullptr)
    {
        return m_paths->All();
    }
    return {m_path};
}

HRESULT CRemoteControl::ChangeEach(const FChange& change)
{
    return GuardedEntry([&]() -> HRESULT {
        if (m_path != nullptr && !m_path->IsOpen())
        {
            return E_INVALIDARG;
        }
        HRESULT result = S_FALSE;
        for (const auto& path : Paths())
        {
            const StateChange changed = change(*path);
            if (changed == StateChange::Changed)
            {
                path->PublishStatus();
                result = SUCCEEDED(result) ? S_OK : result;
            }
            else if (changed == StateChange::LockedOut)
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
        const StateChange changed = path.State().ReturnToLocal();
        if (changed == StateChange::Changed)
        {
            m_events->Tell(path.Number(),
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
        const StateChange changed = path.State().GotoRemote();
        if (changed == StateChange::Changed)
        {
            m_events->Tell(path.Number(),
                           &IZOScpiDeviceHandler::GotoRemote,
                           &IZOScpiMultichannelEventObserver::GotoRemote);
        }
        return changed;
    });
}

HRESULT CRemoteControl::LocalLockout(short on)
{
    return ChangeEach([this, on](CRemotePath& path) {
        const StateChange changed = path.State().SetLockout(on != 0);
        if (changed == StateChange::Changed)
        {
            m_events->TellLockout(path.Number(), on != 0);
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
        const bool any =
            std::any_of(paths.begin(), paths.end(), [is](const auto& path) { return (path->State().*is)(); });
        *state = ToVariantBool(any);
        return m_path != nullptr && !m_path->IsOpen() ? E_INVALIDARG : S_OK;
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
