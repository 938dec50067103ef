#pragma once

#include "Unknown.h"
#include "ZoExport.h"

/// Origin of IStream::Seek.
enum STREAM_SEEK : DWORD
{
    STREAM_SEEK_SET = 0,
    STREAM_SEEK_CUR = 1,
    STREAM_SEEK_END = 2
};

/// Sequence of bytes with one position for reading and writing.
///
/// The position starts at 0. An operation that fails moves nothing, and its counts tell what was done.
/// Implementations say from which threads they may be used.
struct IStream : IUnknown
{
    static constexpr IID kInterfaceId{
        0x0000000C, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    /// Reads from the position on and moves it behind what was read.
    ///
    /// @param[out] readSize  bytes read; may be null
    /// @return S_OK; S_FALSE when fewer bytes than asked for were left; E_POINTER when buffer is null
    virtual HRESULT Read(void* buffer, ULONG size, ULONG* readSize) = 0;

    /// Writes at the position, growing the stream as needed, and moves it behind what was written.
    ///
    /// @param[out] writtenSize  bytes written, all or none; may be null
    /// @return S_OK; E_POINTER when buffer is null; E_OUTOFMEMORY
    virtual HRESULT Write(const void* buffer, ULONG size, ULONG* writtenSize) = 0;

    /// Moves the position; it may lie behind the end, a gap is filled with zeros by the next write.
    ///
    /// @param[out] position  the new position from the start; may be null
    /// @return S_OK; E_INVALIDARG for an unknown origin or a position before the start (it then stays)
    virtual HRESULT Seek(LONGLONG offset, STREAM_SEEK origin, ULONGLONG* position) = 0;

    /// Cuts the stream or extends it by zeros; the position stays.
    ///
    /// @return S_OK; E_OUTOFMEMORY
    virtual HRESULT SetSize(ULONGLONG size) = 0;

protected:
    ~IStream() = default;
};

inline constexpr const IID& IID_IStream = IStream::kInterfaceId;

/// Makes an empty stream in memory. Threads: its operations are safe from any thread, one at a time.
///
/// @param[out] stream  counted for the caller; null on failure
/// @return S_OK; E_POINTER when stream is null; E_OUTOFMEMORY
ZO_EXPORT HRESULT CreateMemoryStream(IStream** stream) noexcept;
