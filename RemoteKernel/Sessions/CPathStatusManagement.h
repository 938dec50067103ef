#pragma once

#include "CRemotePath.h"
#include "IZOScpiStatusManagement.h"

#include <memory>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

/// The status registers of one remote path and those of the instrument. Threads: any operation from any
/// thread.
class CPathStatusManagement : public IZOScpiStatusManagement
{
public:
    CPathStatusManagement(std::shared_ptr<CRemotePath> path, CComPtr<IZOScpiStatusManagement> all) noexcept
        : m_path(std::move(path)),
          m_all(std::move(all))
    {}
    virtual ~CPathStatusManagement() = default;

    HRESULT
    GetRegister(long remotePath, const wchar_t* name, IZOScpiStatusRegister** statusRegister) override
    {
        if (remotePath == kScpiInstrumentPath || m_path->IsOpenAs(remotePath))
        {
            return m_all->GetRegister(remotePath, name, statusRegister);
        }
        if (statusRegister != nullptr)
        {
            *statusRegister = nullptr;
        }
        return E_INVALIDARG;
    }
    HRESULT SerialPoll(long remotePath, unsigned char* stb) override
    {
        return m_path->IsOpenAs(remotePath) ? m_all->SerialPoll(remotePath, stb) : E_INVALIDARG;
    }

private:
    const std::shared_ptr<CRemotePath> m_path;
    const CComPtr<IZOScpiStatusManagement> m_all;
};

} // namespace ZoVelkor::RemoteKernel
