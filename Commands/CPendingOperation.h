#pragma once

#include "CComPtr.h"
#include "IZOScpiPendingOperations.h"

#include <utility>

namespace ZoVelkor::Commands
{

/// An overlapped command that has not finished; *OPC, *OPC? and *WAI of its remote path wait for it.
///
/// It ends when the object goes, on whatever thread. A new object stands for no operation.
class CPendingOperation
{
public:
    CPendingOperation() = default;
    CPendingOperation(const CPendingOperation&) = delete;
    CPendingOperation& operator=(const CPendingOperation&) = delete;
    CPendingOperation(CPendingOperation&& other) noexcept
        : m_pendingOperations(std::move(other.m_pendingOperations)),
          m_operation(std::exchange(other.m_operation, 0))
    {}
    CPendingOperation& operator=(CPendingOperation&& other) noexcept
    {
        std::swap(m_pendingOperations, other.m_pendingOperations);
        std::swap(m_operation, other.m_operation);
        return *this;
    }
    ~CPendingOperation()
    {
        if (m_operation != 0)
        {
            // The client may have gone meanwhile; then nobody waits any more.
            static_cast<void>(m_pendingOperations->EndOperation(m_operation));
        }
    }

    /// Begins an operation of a remote path; called once.
    ///
    /// @return the result of the service; E_NOINTERFACE when operations is null
    HRESULT Begin(CComPtr<IZOScpiPendingOperations> operations, long remotePath)
    {
        m_pendingOperations = std::move(operations);
        return m_pendingOperations ? m_pendingOperations->BeginOperation(remotePath, &m_operation)
                                   : E_NOINTERFACE;
    }

private:
    CComPtr<IZOScpiPendingOperations> m_pendingOperations;
    unsigned long m_operation = 0; ///< 0: none
};

} // namespace ZoVelkor::Commands
