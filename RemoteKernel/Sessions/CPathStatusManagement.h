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
    CPathStatusManagement(std::shared_ptr<CRemotePath> spPath,
                          CComPtr<IZOScpiStatusManagement> spAll) noexcept
        : m_spPath(std::move(spPath)),
          m_spAll(std::move(spAll))
    {}
    virtual ~CPathStatusManagement() = default;

    HRESULT
    GetRegister(long remotePath, wchar_t const* name, IZOScpiStatusRegister** statusRegister) override
    {
        if (remotePath == kScpiInstrumentPath || IsOwn(remotePath))
        {
            return m_spAll->GetRegister(remotePath, name, statusRegister);
        }
        if (statusRegister != nullptr)
        {
            *statusRegister = nullptr;
        }
        return E_INVALIDARG;
    }
    HRESULT SerialPoll(long remotePath, unsigned char* stb) override
    {
        return IsOwn(remotePath) ? m_spAll->SerialPoll(remotePath, stb) : E_INVALIDARG;
    }

private:
    bool IsOwn(long remotePath) const noexcept
    {
        return m_spPath->IsOpen() && m_spPath->Number() == remotePath;
    }

    const std::shared_ptr<CRemotePath> m_spPath;
    const CComPtr<IZOScpiStatusManagement> m_spAll;
};

} // namespace ZoVelkor::RemoteKernel
