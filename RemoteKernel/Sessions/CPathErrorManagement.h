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
    CPathErrorManagement(std::shared_ptr<CRemotePath> spPath, CComPtr<IZOScpiErrorManagement> spAll) noexcept
        : m_spPath(std::move(spPath)),
          m_spAll(std::move(spAll))
    {}
    virtual ~CPathErrorManagement() = default;

    HRESULT SetError(long remotePath, short code, wchar_t const* detail) override
    {
        return IsOwn(remotePath) ? m_spAll->SetError(remotePath, code, detail) : E_INVALIDARG;
    }
    HRESULT GetNextError(long remotePath, short* code, wchar_t** text) override
    {
        return IsOwn(remotePath) ? m_spAll->GetNextError(remotePath, code, text) : E_INVALIDARG;
    }
    HRESULT GetErrorCount(long remotePath, unsigned long* count) override
    {
        return IsOwn(remotePath) ? m_spAll->GetErrorCount(remotePath, count) : E_INVALIDARG;
    }
    HRESULT ClearErrors(long remotePath) override
    {
        return IsOwn(remotePath) ? m_spAll->ClearErrors(remotePath) : E_INVALIDARG;
    }

private:
    bool IsOwn(long remotePath) const noexcept
    {
        return m_spPath->IsOpen() && m_spPath->Number() == remotePath;
    }

    const std::shared_ptr<CRemotePath> m_spPath;
    const CComPtr<IZOScpiErrorManagement> m_spAll;
};

} // namespace ZoVelkor::RemoteKernel
