#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Error queues of the remote paths (SCPI-99 vol. 2, 21.8).
///
/// Every path has a queue of its own, oldest error first. An operation that names a path without connection
/// gives E_INVALIDARG. Threads: any operation from any thread.
struct IZOScpiErrorManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0xC6AD5DC8, 0x2FC3, 0x4D20, {0x9C, 0xB5, 0xED, 0x48, 0xD4, 0xAD, 0xE5, 0x15}};

    /// Queues an error for a remote path; when the queue is full its last entry becomes -350 "Queue
    /// overflow".
    ///
    /// @param remotePath  0 or more
    /// @param code  SCPI error number; 0 is ignored
    /// @param detail  device-dependent text that follows the standard text after a semicolon; may be null
    ///                or empty
    /// @return S_OK; S_FALSE for code 0; E_INVALIDARG when there is no such remote path
    virtual HRESULT SetError(long remotePath, short code, const wchar_t* detail) = 0;

    /// Takes the oldest error out of the queue.
    ///
    /// @param[out] text  standard text and detail, a new BSTR; must point to a null BSTR
    /// @return S_OK; S_FALSE and 0, "No error" when the queue is empty; E_POINTER; E_INVALIDARG
    virtual HRESULT GetNextError(long remotePath, short* code, wchar_t** text) = 0;

    /// Counts the entries of a queue, a -350 at its end included.
    ///
    /// @param[out] count  0 when there is no such path
    /// @return S_OK; E_POINTER; E_INVALIDARG
    virtual HRESULT GetErrorCount(long remotePath, unsigned long* count) = 0;

    /// Empties a queue, as *CLS does.
    ///
    /// @return S_OK, also when it was empty; E_INVALIDARG
    virtual HRESULT ClearErrors(long remotePath) = 0;

protected:
    ~IZOScpiErrorManagement() = default;
};

inline constexpr const IID& IID_IZOScpiErrorManagement = IZOScpiErrorManagement::kInterfaceId;

} // namespace ZoVelkor
