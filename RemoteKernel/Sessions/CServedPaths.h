#pragma once

#include "CPathTable.h"

#include <memory>
#include <utility>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// The remote paths that a service serves: one, as long as it exists, or all of a kernel.
///
/// Threads: any operation from any thread.
class CServedPaths
{
public:
    explicit CServedPaths(std::shared_ptr<CPathTable> all) noexcept : m_all(std::move(all)) {}
    CServedPaths(std::shared_ptr<CPathTable> all, std::shared_ptr<CRemotePath> one) noexcept
        : m_all(std::move(all)),
          m_one(std::move(one))
    {}

    /// Tells whether it is one path and that has ended.
    bool HaveEnded() const noexcept { return m_one != nullptr && !m_one->IsOpen(); }
    /// Tells whether a number can be that of a path served.
    bool Include(long number) const noexcept
    {
        return m_one == nullptr ? CPathTable::IsNumber(number) : m_one->IsOpenAs(number);
    }
    /// @return null when no open path of this number is served
    std::shared_ptr<CRemotePath> Find(long number) const
    {
        return Include(number) ? m_all->Find(number) : nullptr;
    }
    /// All open ones, or the one.
    std::vector<std::shared_ptr<CRemotePath>> List() const
    {
        return m_one == nullptr ? m_all->All() : std::vector<std::shared_ptr<CRemotePath>>{m_one};
    }

private:
    std::shared_ptr<CPathTable> m_all;
    std::shared_ptr<CRemotePath> m_one; // null: all
};

} // namespace ZoVelkor::RemoteKernel
