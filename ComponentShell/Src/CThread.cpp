#include "CThread.h"

#include "CCritSectionLocker.h"
#include "CMutexLocker.h"
#include "Deadline.h"
#include "ErrorRaising.h"
#include "Event.h"
#include "GuardedEntry.h"
#include "ThreadBasics.h"

#include <system_error>
#include <utility>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/CThread");
} // namespace

CThread::CThread(std::string name) : m_name(std::move(name))
{}

CThread::~CThread()
{
    // In this order, so that nothing can start that nobody aborts.
    RefuseWork();
    Abort();
    Join();
}

HRESULT CThread::Start(CThreadRunObject* pRunObject)
{
    return Begin(pRunObject, nullptr);
}

HRESULT CThread::Start(std::unique_ptr<CThreadRunObject> runObject)
{
    CThreadRunObject* const pRunObject = runObject.get();
    return Begin(pRunObject, std::move(runObject));
}

HRESULT CThread::Abort()
{
    const CCritSectionLocker locker(m_runLock);
    if (m_runObject == nullptr)
    {
        return S_FALSE;
    }
    // Under the run lock, so that the object cannot go while it is told.
    m_runObject->Abort();
    return S_OK;
}

HRESULT CThread::WaitUntilIdle(DWORD timeoutMs)
{
    const auto idle = [this] {
        m_mutex.AssertHeld();
        return !m_busy;
    };
    const CMutexLocker lock(m_mutex);
    const Deadline deadline = DeadlineAfter(timeoutMs);
    if (!deadline)
    {
        m_changed.Wait(m_mutex, idle);
        return S_OK;
    }
    return m_changed.WaitUntil(m_mutex, *deadline, idle) ? S_OK : S_FALSE;
}

HRESULT CThread::Join()
{
    RefuseWork();
    if (m_threadId.load() == std::this_thread::get_id())
    {
        return RepairError(ZO_ERROR(
            nullptr, "m_threadId != get_id()", "Thread " + m_name + " cannot join itself", E_UNEXPECTED));
    }
    // Several may wait for the same end; only one may join a thread.
    const CMutexLocker joining(m_joinMutex);
    std::thread systemThread;
    {
        const CMutexLocker lock(m_mutex);
        systemThread.swap(m_systemThread);
    }
    if (systemThread.joinable())
    {
        systemThread.join();
    }
    return S_OK;
}

bool CThread::Reserve()
{
    const CMutexLocker lock(m_mutex);
    if (m_busy || m_reserved || m_refusing)
    {
        return false;
    }
    m_reserved = true;
    return true;
}

void CThread::CancelReservation()
{
    const CMutexLocker lock(m_mutex);
    // A thread that runs already was given to somebody: his reservation is not the caller's to cancel.
    m_reserved = m_reserved && m_busy;
}

void CThread::RefuseWork()
{
    const CMutexLocker lock(m_mutex);
    m_refusing = true;
    m_changed.NotifyAll();
}

HRESULT CThread::Begin(CThreadRunObject* pRunObject, std::unique_ptr<CThreadRunObject> owned)
{
    if (pRunObject == nullptr)
    {
        CancelReservation();
        return RepairError(ZO_NULL_POINTER(nullptr, "pRunObject"));
    }
    // The order of the two locks is the same everywhere: run lock first.
    const CCritSectionLocker locker(m_runLock);
    const CMutexLocker lock(m_mutex);
    if (m_busy)
    {
        return E_PENDING;
    }
    const HRESULT result = m_refusing ? E_ABORT : MakeSystemThreadLocked();
    if (FAILED(result))
    {
        m_reserved = false;
        return result;
    }
    m_runObject = pRunObject;
    m_runObject->m_thread = this;
    m_owned = std::move(owned);
    m_busy = true;
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CThread::MakeSystemThreadLocked()
{
    if (m_systemThread.joinable())
    {
        return S_OK;
    }
    try
    {
        m_systemThread = std::thread([this] { Loop(); });
        return S_OK;
    }
    catch (const std::system_error&)
    {
        return E_FAIL;
    }
}

void CThread::Loop()
{
    m_threadId = std::this_thread::get_id();
    SetThreadName(m_name.c_str());
    const auto woken = [this] {
        m_mutex.AssertHeld();
        return m_busy || m_refusing;
    };
    CMutexLocker lock(m_mutex);
    while (m_changed.Wait(m_mutex, woken), m_busy)
    {
        lock.Unlock();
        RunOnce();
        lock.Lock();
        // Last of all: a borrowed object may go as soon as the thread counts as idle.
        m_busy = false;
        m_reserved = false;
        m_changed.NotifyAll();
    }
}

void CThread::RunOnce()
{
    CThreadRunObject* pRunObject = nullptr;
    std::unique_ptr<CThreadRunObject> owned; // deleted after the locks
    {
        const CCritSectionLocker locker(m_runLock);
        pRunObject = m_runObject;
        owned = std::move(m_owned);
    }
    // What escapes from Run has been reported by the guard; nobody is there to take a result.
    static_cast<void>(GuardedEntry([pRunObject]() -> HRESULT {
        pRunObject->Run();
        return S_OK;
    }));
    Forget();
}

void CThread::Forget() noexcept
{
    const CCritSectionLocker locker(m_runLock);
    if (m_runObject != nullptr)
    {
        m_runObject->m_thread = nullptr;
        m_runObject = nullptr;
    }
}
} // namespace ZoVelkor
