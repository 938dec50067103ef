#pragma once

#include "CMutex.h"
#include "CRemotePath.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// Remote paths that one kernel can serve at a time.
inline constexpr std::size_t kMaxRemotePaths = 1024;

/// The remote paths of a kernel by number. A number that has become free is used again as late as possible,
/// so that who still holds it seldom meets another path.
///
/// Threads: any operation from any thread.
class CPathTable
{
public:
    CPathTable() : m_paths(kMaxRemotePaths) {}

    /// Makes a path, which is found after CRemotePath::Publish.
    ///
    /// @return null when all numbers are taken
    std::shared_ptr<CRemotePath> Open();
    void Close(CRemotePath& path) noexcept;

    static bool IsNumber(long number) noexcept
    {
        return number >= 0 && static_cast<std::size_t>(number) < kMaxRemotePaths;
    }
    /// @return null when there is none
    std::shared_ptr<CRemotePath> Find(long number) const;
    std::vector<std::shared_ptr<CRemotePath>> All() const;

private:
    mutable CMutex m_mutex;
    std::vector<std::shared_ptr<CRemotePath>> m_paths ZO_GUARDED_BY(m_mutex);
    std::size_t m_next ZO_GUARDED_BY(m_mutex) = 0;
};

} // namespace ZoVelkor::RemoteKernel
