#pragma once

#include "CMutex.h"
#include "Event.h"
#include "IZOScpiPendingOperations.h"

#include <atomic>
#include <cstddef>
#include <map>
#include <unordered_map>

namespace ZoVelkor::RemoteKernel
{

/// Hears when a *OPC is fulfilled: the place where the operation-complete bit is set.
class IOperationCompleteObserver
{
public:
    /// Called in the thread that ended the last operation or sent *OPC, before *OPC? or *WAI go on, under the
    /// lock of the pending operations: it must not call them.
    virtual void OperationComplete(long remotePath) noexcept = 0;

protected:
    ~IOperationCompleteObserver() = default;
};

/// The pending operations of all remote paths of a kernel, and the waits for their end.
///
/// Threads: any operation from any thread.
class CPendingOperations : public IZOScpiPendingOperations
{
public:
    virtual ~CPendingOperations() = default;

    HRESULT BeginOperation(long remotePath, unsigned long* operation) override;
    HRESULT EndOperation(unsigned long operation) override;
    HRESULT GetPendingCount(long remotePath, unsigned long* count) override;

    /// @param pObserver  borrowed; set before the first session starts; may be null
    void SetObserver(IOperationCompleteObserver* pObserver) noexcept { m_observer = pObserver; }

    /// Makes a remote path known.
    ///
    /// @return false when the system gives no event
    bool AddPath(long remotePath);

    /// Forgets a path and its operations; nobody may be waiting for it.
    void RemovePath(long remotePath) noexcept;

    /// *OPC: asks for one notice when nothing is pending (IEEE 488.2 section 12.5.2).
    void RequestOperationComplete(long remotePath);

    /// *CLS, *RST and device clear: takes an unfulfilled *OPC back.
    ///
    /// @return whether there was one
    bool CancelOperationComplete(long remotePath) noexcept;

    /// Waits until nothing of the path is pending.
    ///
    /// @param cancelEvent  ends the wait when it is set
    /// @param connection  descriptor whose error or hang-up ends the wait; -1: none
    /// @return false when the wait was ended before
    bool WaitUntilIdle(long remotePath, HANDLE cancelEvent, int connection);

private:
    struct Path
    {
        unsigned long pending = 0;
        bool completeRequested = false;
        CUniqueEvent idle; // manual reset, set while nothing is pending
    };

    HRESULT Begin(long remotePath, unsigned long& operation);
    bool IsIdle(long remotePath, int& idleDescriptor);
    void ReportCompleteLocked(long remotePath) const noexcept ZO_REQUIRES(m_mutex);

    IOperationCompleteObserver* m_observer = nullptr;
    CMutex m_mutex;
    std::map<long, Path> m_paths ZO_GUARDED_BY(m_mutex);
    std::unordered_map<unsigned long, long> m_owners ZO_GUARDED_BY(m_mutex); // operation to path
    std::uint32_t m_lastOperation ZO_GUARDED_BY(m_mutex) = 0;
};

} // namespace ZoVelkor::RemoteKernel
