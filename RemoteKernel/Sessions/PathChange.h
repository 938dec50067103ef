#pragma once

#include "Applications/CEventDistributor.h"
#include "CRemotePath.h"

namespace ZoVelkor::RemoteKernel
{

/// What can happen to a path's remote, local and lockout states.
enum class PathChange
{
    GotoLocal,     ///< the controller's wish
    ReturnToLocal, ///< the instrument's own, which a lockout forbids
    GotoRemote,
    Lockout,
    EndLockout
};

/// Changes the state of a path. If that makes a difference, device handlers and observers are told, then the
/// channel. Not from inside a handler or an observer.
StateChange ChangePath(CRemotePath& path, CEventDistributor& events, PathChange change);

} // namespace ZoVelkor::RemoteKernel
