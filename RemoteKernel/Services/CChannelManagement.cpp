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
        const auto paths = m_paths.List();
        *count = std::count_if(
            paths.begin(), paths.end(), [](const auto& path) { return path->Channel() != nullptr; });
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
    if (!m_paths.Include(remotePath))
    {
        return E_INVALIDARG;
    }
    const std::shared_ptr<CRemotePath> path = m_paths.Find(remotePath);
    CComPtr<IZOScpiChannel> found = path == nullptr ? nullptr : path->Channel();
    *channel = found.Detach();
    return *channel == nullptr ? S_FALSE : S_OK;
}

} // namespace ZoVelkor::RemoteKernel
