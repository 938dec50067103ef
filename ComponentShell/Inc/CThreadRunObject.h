#pragma once

#include "ZoExport.h"

namespace ZoVelkor
{
class CThread;

/// A piece of work for a CThread.
///
/// Ownership: as chosen at CThread::Start. An owned object is deleted by the thread after Run. A borrowed
/// one outlives the thread's interest in it (CThread::WaitUntilIdle tells), or ends its own life: Run then
/// calls DetachFromThread and `delete this` as its last two steps.
class ZO_EXPORT CThreadRunObject
{
public:
    CThreadRunObject() = default;
    CThreadRunObject(const CThreadRunObject&) = delete;
    CThreadRunObject& operator=(const CThreadRunObject&) = delete;
    virtual ~CThreadRunObject();

    /// Does the work, on the thread. An exception that leaves it is reported and ends the work.
    virtual void Run() = 0;

    /// Asks Run to return soon; does not wait for it and does not throw.
    ///
    /// Called by any thread, also before Run has begun, and never after DetachFromThread or the end of Run.
    /// The thread's run lock is held meanwhile: an Abort that takes a lock of its own must not meet a Run
    /// that detaches or returns under that lock.
    virtual void Abort() = 0;

protected:
    /// Makes the thread forget the object; waits for an Abort under way. Called on the thread, within Run.
    /// The thread stays busy until Run returns.
    void DetachFromThread() noexcept;

private:
    friend class CThread;
    CThread* m_thread = nullptr;
};
} // namespace ZoVelkor
