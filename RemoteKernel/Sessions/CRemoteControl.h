#pragma once

#include "IZOScpiRemoteControl.h"
#include "KernelParts.h"

#include <functional>

namespace ZoVelkor::RemoteKernel
{

/// Remote control of one remote path or of all connections. Threads: as the interface says.
class CRemoteControl : public IZOScpiRemoteControl
{
public:
    /// @param path  null: all
    CRemoteControl(const KernelParts& parts, std::shared_ptr<CRemotePath> path)
        : m_paths(parts.paths),
          m_events(parts.events),
          m_path(std::move(path))
    {}
    virtual ~CRemoteControl() = default;

    HRESULT GotoLocal() override;
    HRESULT GotoRemote() override;
    HRESULT LocalLockout(short on) override;
    HRESULT get_RemoteState(short* remote) override;
    HRESULT get_LocalLockoutState(short* lockout) override;

private:
    using FChange = std::function<StateChange(CRemotePath&)>;

    /// @return S_OK; S_FALSE when no path changed; E_ACCESSDENIED when one is locked out; E_INVALIDARG when
    /// the one path has ended
    HRESULT ChangeEach(const FChange& change);
    HRESULT IsAny(short* state, bool (CRemoteLocalState::*is)() const noexcept);
    std::vector<std::shared_ptr<CRemotePath>> Paths() const;

    const std::shared_ptr<CPathTable> m_paths;
    const std::shared_ptr<CEventDistributor> m_events;
    const std::shared_ptr<CRemotePath> m_path;
};

} // namespace ZoVelkor::RemoteKernel
