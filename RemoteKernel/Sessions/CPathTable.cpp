#include "CPathTable.h"

#include "CMutexLocker.h"

#include <algorithm>
#include <iterator>

namespace ZoVelkor::RemoteKernel
{

std::shared_ptr<CRemotePath> CPathTable::Open()
{
    const CMutexLocker lock(m_mutex);
    for (std::size_t i = 0; i < m_paths.size(); ++i)
    {
        const std::size_t number = (m_next + i) % m_paths.size();
        if (m_paths[number] == nullptr)
        {
            m_paths[number] = std::make_shared<CRemotePath>(static_cast<long>(number));
            m_next = number + 1;
            return m_paths[number];
        }
    }
    return nullptr;
}

void CPathTable::Close(CRemotePath& path) noexcept
{
    path.Close();
    const CMutexLocker lock(m_mutex);
    m_paths[static_cast<std::size_t>(path.Number())] = nullptr;
}

std::shared_ptr<CRemotePath> CPathTable::Find(long number) const
{
    const CMutexLocker lock(m_mutex);
    const std::shared_ptr<CRemotePath> path =
        IsNumber(number) ? m_paths[static_cast<std::size_t>(number)] : nullptr;
    return path != nullptr && path->IsOpen() ? path : nullptr;
}

std::vector<std::shared_ptr<CRemotePath>> CPathTable::All() const
{
    std::vector<std::shared_ptr<CRemotePath>> paths;
    const CMutexLocker lock(m_mutex);
    std::copy_if(m_paths.begin(), m_paths.end(), std::back_inserter(paths), [](const auto& path) {
        return path != nullptr && path->IsOpen();
    });
    return paths;
}

} // namespace ZoVelkor::RemoteKernel
