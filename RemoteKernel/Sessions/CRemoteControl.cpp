#include "CRemoteControl.h"

#include "GuardedEntry.h"
#include "Variant.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

HRESULT CRemoteControl::ChangeEach(PathChange change)
{
    return GuardedEntry([&]() -> HRESULT {
        if (m_paths.HaveEnded())
        {
            return E_INVALIDARG;
        }
        HRESULT result = S_FALSE;
        for (const auto& path : m_paths.List())
        {
            const StateChange changed = ChangePath(*path, *m_events, change);
            if (changed == StateChange::Changed)
            {
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
    return ChangeEach(PathChange::ReturnToLocal);
}

HRESULT CRemoteControl::GotoRemote()
{
    return ChangeEach(PathChange::GotoRemote);
}

HRESULT CRemoteControl::LocalLockout(short on)
{
    return ChangeEach(on != 0 ? PathChange::Lockout : PathChange::EndLockout);
}

HRESULT CRemoteControl::IsAny(short* state, bool (CRemoteLocalState::*is)() const noexcept)
{
    return GuardedEntry([&]() -> HRESULT {
        if (state == nullptr)
        {
            return E_POINTER;
        }
        const auto paths = m_paths.List();
        const bool any =
            std::any_of(paths.begin(), paths.end(), [is](const auto& path) { return (path->State().*is)(); });
        *state = ToVariantBool(any);
        return m_paths.HaveEnded() ? E_INVALIDARG : S_OK;
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
