#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// The response of one remote path while a program message is executed.
///
/// Both writes copy; the caller keeps its bytes. What was written is sent when the message is done, never
/// while a handler runs, so a client that does not read never blocks a handler. Threads: only the thread that
/// executes the command. Standard: IEEE 488.2 section 6.3.1.5 (output queue).
struct IZOScpiOutputBuffer : IUnknown
{
    static constexpr IID kInterfaceId{
        0x11D90D03, 0xE391, 0x4659, {0xB5, 0xF4, 0x8D, 0x8C, 0x59, 0x7A, 0x82, 0x2F}};

    /// Appends response text.
    ///
    /// @param length  bytes at text; 0 writes nothing and succeeds
    /// @param text  ASCII text, need not end in NUL; null only when length is 0
    /// @param[out] error  may be null; set to null on success, on failure to a new BSTR that the caller frees
    /// @return S_OK; E_POINTER; E_OUTOFMEMORY; E_ABORT when the response was cancelled (device clear, broken
    ///         connection); E_FAIL when the response is longer than the kernel's limit
    virtual HRESULT Write(unsigned long length, const char* text, wchar_t** error) = 0;

    /// Appends bytes of any value, such as the contents of a block; otherwise as Write.
    virtual HRESULT WriteBinary(unsigned long length, const unsigned char* data, wchar_t** error) = 0;

protected:
    ~IZOScpiOutputBuffer() = default;
};

inline constexpr const IID& IID_IZOScpiOutputBuffer = IZOScpiOutputBuffer::kInterfaceId;

} // namespace ZoVelkor
