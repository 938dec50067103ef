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
    /// @param spPath  null: all
    CRemoteControl(const tagKernelParts& parts, std::shared_ptr<CRemotePath> spPath)
        : m_spPaths(parts.spPaths),
          m_spEvents(parts.spEvents),
          m_spPath(std::move(spPath))
    {}
    virtual ~CRemoteControl() = default;

    HRESULT GotoLocal() override;
    HRESULT GotoRemote() override;
    HRESULT LocalLockout(short on) override;
    HRESULT get_RemoteState(short* remote) override;
    HRESULT get_LocalLockoutState(short* lockout) override;

private:
    using FChange = std::function<tagStateChange(CRemotePath&)>;

    /// @return S_OK; S_FALSE when no path changed; E_ACCESSDENIED when one is locked out; E_INVALIDARG when
    /// the one path has ended
    HRESULT ChangeEach(const FChange& change);
    HRESULT IsAny(short* state, bool (CRemoteLocalState::*is)() const noexcept);
    std::vector<std::shared_ptr<CRemotePath>> Paths() const;

    const std::shared_ptr<CPathTable> m_spPaths;
    const std::shared_ptr<CEventDistributor> m_spEvents;
    const std::shared_ptr<CRemotePath> m_spPath;
};

} // namespace ZoVelkor::RemoteKernel
