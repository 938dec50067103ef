#pragma once

#include "CCondition.h"
#include "CCritSection.h"
#include "CMutex.h"
#include "CThreadRunObject.h"
#include "PlatformTypes.h"
#include "ThreadAnnotations.h"
#include "ZoExport.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace ZoVelkor
{
/// A named thread that works off one run object after the other and sleeps in between.
///
/// The system's thread is made by the first Start and joined by the destructor.
/// Threads: any operation from any thread, except that the thread cannot join or destroy itself.
class ZO_EXPORT CThread
{
public:
    /// @param name  shown in debuggers, which may cut it to the first 15 characters
    explicit CThread(std::string name);
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;
    /// Aborts the work at hand and joins.
    ~CThread();

    /// The whole name, as it was given.
    const std::string& Name() const noexcept { return m_name; }

    /// Begins to run an object that the caller or the object itself owns, see CThreadRunObject.
    ///
    /// @return S_OK; E_PENDING while the thread is busy; E_ABORT after Join; E_FAIL when the system gives no
    ///         thread; E_POINTER (reported) for null. On failure the object is not run.
    [[nodiscard]] HRESULT Start(CThreadRunObject* pRunObject);

    /// The same with an object that the thread owns: it is deleted after Run, and on failure at once.
    [[nodiscard]] HRESULT Start(std::unique_ptr<CThreadRunObject> runObject);

    /// Passes Abort on to the object at work and does not wait.
    ///
    /// @return S_OK; S_FALSE when there is none
    HRESULT Abort();

    /// Waits for the end of the work at hand.
    ///
    /// @param timeoutMs  in milliseconds, INFINITE for no limit
    /// @return S_OK when idle; S_FALSE on time-out
    [[nodiscard]] HRESULT WaitUntilIdle(DWORD timeoutMs);

    /// Accepts no further work, waits for the work at hand and joins.
    ///
    /// @return S_OK; E_UNEXPECTED (reported) on the thread itself, which then only accepts no further work
    HRESULT Join();

private:
    friend class CThreadRunObject;
    friend class CComponentShellThreadPool;

    bool Reserve();
    void CancelReservation();
    void RefuseWork();
    HRESULT Begin(CThreadRunObject* pRunObject, std::unique_ptr<CThreadRunObject> owned);
    HRESULT MakeSystemThreadLocked() ZO_REQUIRES(m_mutex);
    void Loop();
    void RunOnce();
    void Forget() noexcept;

    const std::string m_name;
    std::atomic<std::thread::id> m_threadId{};

    // Held while Abort is passed on, so that the object cannot go meanwhile.
    CCritSection m_runLock ZO_ACQUIRED_BEFORE(m_mutex);
    CThreadRunObject* m_runObject ZO_GUARDED_BY(m_runLock) = nullptr;
    std::unique_ptr<CThreadRunObject> m_owned ZO_GUARDED_BY(m_runLock);

    CMutex m_joinMutex ZO_ACQUIRED_BEFORE(m_mutex); // one joins, the others wait for it

    CMutex m_mutex;
    CCondition m_changed;
    bool m_busy ZO_GUARDED_BY(m_mutex) = false;
    bool m_reserved ZO_GUARDED_BY(m_mutex) = false;
    bool m_refusing ZO_GUARDED_BY(m_mutex) = false; // once set, no system thread is made any more
    std::thread m_systemThread ZO_GUARDED_BY(m_mutex);
};
} // namespace ZoVelkor
