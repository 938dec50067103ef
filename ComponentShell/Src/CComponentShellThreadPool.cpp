#include "CComponentShellThreadPool.h"

#include "CCritSectionLocker.h"

#include <exception>
#include <string>

namespace ZoVelkor
{
CComponentShellThreadPool::~CComponentShellThreadPool()
{
    Shutdown();
}

CThread* CComponentShellThreadPool::GetThread(std::string_view name) noexcept
try
{
    const CCritSectionLocker locker(m_section);
    if (m_shutdown)
    {
        return nullptr;
    }
    for (const auto& thread : m_threads)
    {
        if (thread->Name() == name && thread->Reserve())
        {
            return thread.get();
        }
    }
    if (m_threads.size() >= kMaximumThreads)
    {
        return nullptr;
    }
    m_threads.push_back(std::make_unique<CThread>(std::string(name)));
    m_threads.back()->Reserve();
    return m_threads.back().get();
}
catch (const std::exception&) // no memory: no thread, and the caller says for what it was wanted
{
    return nullptr;
}

void CComponentShellThreadPool::ReturnThread(CThread* pThread) noexcept
{
    const CCritSectionLocker locker(m_section);
    for (const auto& thread : m_threads)
    {
        if (thread.get() == pThread)
        {
            pThread->CancelReservation();
        }
    }
}

std::size_t CComponentShellThreadPool::ThreadCount() const
{
    const CCritSectionLocker locker(m_section);
    return m_threads.size();
}

HRESULT CComponentShellThreadPool::Shutdown()
{
    {
        const CCritSectionLocker locker(m_section);
        m_shutdown = true;
    }
    // A thread refuses work before it is aborted, so that nothing starts that nobody aborts.
    for (const auto& thread : m_threads)
    {
        thread->RefuseWork();
        thread->Abort();
    }
    HRESULT result = S_OK;
    for (const auto& thread : m_threads)
    {
        const HRESULT joined = thread->Join();
        result = FAILED(result) ? result : joined;
    }
    return result;
}

CComponentShellThreadPool& GetComponentShellThreadPool()
{
    static CComponentShellThreadPool pool;
    return pool;
}
} // namespace ZoVelkor
