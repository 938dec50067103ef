#pragma once

#include "CComPtr.h"
#include "IZOScpiPendingOperations.h"

#include <utility>

namespace ZoVelkor::Demo
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
        : m_spOperations(std::move(other.m_spOperations)),
          m_iOperation(std::exchange(other.m_iOperation, 0))
    {}
    CPendingOperation& operator=(CPendingOperation&& other) noexcept
    {
        std::swap(m_spOperations, other.m_spOperations);
        std::swap(m_iOperation, other.m_iOperation);
        return *this;
    }
    ~CPendingOperation()
    {
        if (m_iOperation != 0)
        {
            // The client may have gone meanwhile; then nobody waits any more.
            static_cast<void>(m_spOperations->EndOperation(m_iOperation));
        }
    }

    /// Begins an operation of a remote path; called once.
    ///
    /// @return the result of the service; E_NOINTERFACE when spOperations is null
    HRESULT Begin(CComPtr<IZOScpiPendingOperations> spOperations, long remotePath)
    {
        m_spOperations = std::move(spOperations);
        return m_spOperations ? m_spOperations->BeginOperation(remotePath, &m_iOperation) : E_NOINTERFACE;
    }

private:
    CComPtr<IZOScpiPendingOperations> m_spOperations;
    unsigned long m_iOperation = 0; ///< 0: none
};

} // namespace ZoVelkor::Demo
