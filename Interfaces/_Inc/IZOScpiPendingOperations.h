#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Overlapped commands of a remote path that have not finished (IEEE 488.2 section 12).
///
/// *OPC, *OPC? and *WAI of a path wait until every operation begun by that path has ended.
/// Threads: any operation from any thread; an operation may end on another thread than the one that began it.
struct IZOScpiPendingOperations : IUnknown
{
    static constexpr IID kInterfaceId{
        0x9235C0A5, 0x2AD5, 0x4A5B, {0x9E, 0xC7, 0x34, 0xC0, 0x0E, 0x07, 0x06, 0xEB}};

    /// Says that the running command goes on after its handler has returned.
    ///
    /// @param[out] operation  names the operation in EndOperation; never 0
    /// @return S_OK; E_POINTER; E_INVALIDARG when there is no such remote path
    virtual HRESULT BeginOperation(long remotePath, unsigned long* operation) = 0;

    /// Says that an operation has ended; the last one of a path fulfils its *OPC and ends its waits.
    ///
    /// @param operation  of BeginOperation
    /// @return S_OK; S_FALSE when it has ended already or its remote path is gone
    virtual HRESULT EndOperation(unsigned long operation) = 0;

    /// Counts the operations of a path that have not ended.
    ///
    /// @param[out] count  0 when there is no such path
    /// @return S_OK; E_POINTER; E_INVALIDARG
    virtual HRESULT GetPendingCount(long remotePath, unsigned long* count) = 0;

protected:
    ~IZOScpiPendingOperations() = default;
};

inline constexpr const IID& IID_IZOScpiPendingOperations = IZOScpiPendingOperations::kInterfaceId;

} // namespace ZoVelkor
