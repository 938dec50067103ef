#pragma once

#include "CServedPaths.h"
#include "IZOScpiRemoteControl.h"
#include "PathChange.h"

#include <memory>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

/// Remote control of one remote path or of all connections. Threads: as the interface says.
class CRemoteControl : public IZOScpiRemoteControl
{
public:
    CRemoteControl(CServedPaths paths, std::shared_ptr<CEventDistributor> events) noexcept
        : m_paths(std::move(paths)),
          m_events(std::move(events))
    {}
    virtual ~CRemoteControl() = default;

    HRESULT GotoLocal() override;
    HRESULT GotoRemote() override;
    HRESULT LocalLockout(short on) override;
    HRESULT get_RemoteState(short* remote) override;
    HRESULT get_LocalLockoutState(short* lockout) override;

private:
    /// @return S_OK; S_FALSE when no path changed; E_ACCESSDENIED when one is locked out; E_INVALIDARG when
    /// the one path has ended
    HRESULT ChangeEach(PathChange change);
    HRESULT IsAny(short* state, bool (CRemoteLocalState::*is)() const noexcept);

    const CServedPaths m_paths;
    const std::shared_ptr<CEventDistributor> m_events;
};

} // namespace ZoVelkor::RemoteKernel
