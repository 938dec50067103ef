#pragma once

#include "IZOScpiTraceManagement.h"

#include <atomic>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// Prints program messages and responses while somebody wants to see them. Threads: any.
class CMessageTrace : public IZOScpiTraceManagement
{
public:
    virtual ~CMessageTrace() = default;

    HRESULT put_MessageTraceActive(short active) override;
    HRESULT get_MessageTraceActive(short* active) override;

    bool IsActive() const noexcept { return m_bActive.load(std::memory_order_relaxed); }
    /// Prints a line; the caller asks IsActive first.
    ///
    /// @param direction  '<' for what came in, '>' for what went out
    static void Print(long remotePath, char direction, std::string_view message) noexcept;

private:
    std::atomic<bool> m_bActive{false};
};

} // namespace ZoVelkor::RemoteKernel
