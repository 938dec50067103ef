#include "PathChange.h"

namespace ZoVelkor::RemoteKernel
{

namespace
{

StateChange Apply(CRemoteLocalState& state, PathChange change) noexcept
{
    switch (change)
    {
    case PathChange::GotoLocal:
        return state.GotoLocal();
    case PathChange::ReturnToLocal:
        return state.ReturnToLocal();
    case PathChange::GotoRemote:
        return state.GotoRemote();
    case PathChange::Lockout:
    case PathChange::EndLockout:
        return state.SetLockout(change == PathChange::Lockout);
    }
    return StateChange::Unchanged;
}

void Tell(CEventDistributor& events, long path, PathChange change)
{
    switch (change)
    {
    case PathChange::GotoLocal:
    case PathChange::ReturnToLocal:
        events.Tell(path, &IZOScpiDeviceHandler::GotoLocal, &IZOScpiMultichannelEventObserver::GotoLocal);
        break;
    case PathChange::GotoRemote:
        events.Tell(path, &IZOScpiDeviceHandler::GotoRemote, &IZOScpiMultichannelEventObserver::GotoRemote);
        break;
    case PathChange::Lockout:
    case PathChange::EndLockout:
        events.TellLockout(path, change == PathChange::Lockout);
        break;
    }
}

} // namespace

StateChange ChangePath(CRemotePath& path, CEventDistributor& events, PathChange change)
{
    const StateChange changed = Apply(path.State(), change);
    if (changed == StateChange::Changed)
    {
        Tell(events, path.Number(), change);
        if (change == PathChange::ReturnToLocal)
        {
            path.TellReturnToLocal();
        }
        path.PublishStatus();
    }
    return changed;
}

} // namespace ZoVelkor::RemoteKernel
