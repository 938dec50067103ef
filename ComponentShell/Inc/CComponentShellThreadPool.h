#pragma once

#include "CCritSection.h"
#include "CThread.h"
#include "PlatformTypes.h"
#include "ThreadAnnotations.h"
#include "ZoExport.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace ZoVelkor
{
/// Hands threads out by name and uses them again.
///
/// A thread that was handed out is the caller's until the work started on it has ended; then the pool may
/// hand it out again. Several busy threads may bear one name.
/// Ownership: the pool owns the threads; the pointers stay valid until it is destroyed.
/// Threads: any operation from any thread.
class ZO_EXPORT CComponentShellThreadPool
{
public:
    /// How many threads one pool makes; beyond it GetThread gives none.
    static constexpr std::size_t kMaximumThreads = 64;

    CComponentShellThreadPool() = default;
    CComponentShellThreadPool(const CComponentShellThreadPool&) = delete;
    CComponentShellThreadPool& operator=(const CComponentShellThreadPool&) = delete;
    /// Shuts down.
    ~CComponentShellThreadPool();

    /// A thread of this name for one CThread::Start: an idle one, else a new one.
    ///
    /// It is reserved for the caller until then, so that two callers never get the same.
    /// @param name  in full, case-sensitive; shown in debuggers
    /// @return borrowed; null after Shutdown, beyond the limit or without memory. A caller that does not
    ///         start it gives it back with ReturnThread; a failed Start has given it back already.
    CThread* GetThread(std::string_view name) noexcept;

    /// Gives back a thread on which nothing was started; null or a thread of another pool does nothing.
    void ReturnThread(CThread* pThread) noexcept;

    /// How many threads the pool has made, idle ones included; it never shrinks.
    std::size_t ThreadCount() const;

    /// Hands out no further threads, aborts the work under way and joins all threads.
    ///
    /// @return S_OK; E_UNEXPECTED (reported) on a thread of the pool, whose own thread is then not joined
    HRESULT Shutdown();

private:
    mutable CCritSection m_section;
    bool m_shutdown ZO_GUARDED_BY(m_section) = false;
    std::vector<std::unique_ptr<CThread>> m_threads; // grows under m_section; constant after shutdown
};

/// The pool of the process. A program shuts it down before main ends; otherwise that happens when the
/// process's static objects go.
ZO_EXPORT CComponentShellThreadPool& GetComponentShellThreadPool();
} // namespace ZoVelkor
