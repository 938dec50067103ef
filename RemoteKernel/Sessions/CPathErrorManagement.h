#pragma once

#include "CRemotePath.h"
#include "IZOScpiErrorManagement.h"

#include <memory>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

/// The error queue of one remote path and no other. Threads: any operation from any thread.
class CPathErrorManagement : public IZOScpiErrorManagement
{
public:
    CPathErrorManagement(std::shared_ptr<CRemotePath> path, CComPtr<IZOScpiErrorManagement> all) noexcept
        : m_path(std::move(path)),
          m_all(std::move(all))
    {}
    virtual ~CPathErrorManagement() = default;

    HRESULT SetError(long remotePath, short code, const wchar_t* detail) override
    {
        return IsOwn(remotePath) ? m_all->SetError(remotePath, code, detail) : E_INVALIDARG;
    }
    HRESULT GetNextError(long remotePath, short* code, wchar_t** text) override
    {
        return IsOwn(remotePath) ? m_all->GetNextError(remotePath, code, text) : E_INVALIDARG;
    }
    HRESULT GetErrorCount(long remotePath, unsigned long* count) override
    {
        return IsOwn(remotePath) ? m_all->GetErrorCount(remotePath, count) : E_INVALIDARG;
    }
    HRESULT ClearErrors(long remotePath) override
    {
        return IsOwn(remotePath) ? m_all->ClearErrors(remotePath) : E_INVALIDARG;
    }

private:
    bool IsOwn(long remotePath) const noexcept { return m_path->IsOpen() && m_path->Number() == remotePath; }

    const std::shared_ptr<CRemotePath> m_path;
    const CComPtr<IZOScpiErrorManagement> m_all;
};

} // namespace ZoVelkor::RemoteKernel
