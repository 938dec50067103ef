#include "CChannelManagement.h"

#include "GuardedEntry.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

HRESULT CChannelManagement::get_ChannelCount(long* count)
{
    return GuardedEntry([&]() -> HRESULT {
        if (count == nullptr)
        {
            return E_POINTER;
        }
        const auto paths =
            m_spPath == nullptr ? m_spPaths->All() : std::vector<std::shared_ptr<CRemotePath>>{m_spPath};
        *count = std::count_if(
            paths.begin(), paths.end(), [](const auto& spPath) { return spPath->Channel() != nullptr; });
        return S_OK;
    });
}

HRESULT CChannelManagement::GetChannel(long remotePath, IZOScpiChannel** channel)
{
    if (channel == nullptr)
    {
        return E_POINTER;
    }
    *channel = nullptr;
    const bool bForeign = m_spPath != nullptr && (!m_spPath->IsOpen() || m_spPath->Number() != remotePath);
    if (bForeign || !CPathTable::IsNumber(remotePath))
    {
        return E_INVALIDARG;
    }
    const std::shared_ptr<CRemotePath> spPath = m_spPaths->Find(remotePath);
    CComPtr<IZOScpiChannel> spChannel = spPath == nullptr ? nullptr : spPath->Channel();
    *channel = spChannel.Detach();
    return *channel == nullptr ? S_FALSE : S_OK;
}

} // namespace ZoVelkor::RemoteKernel
