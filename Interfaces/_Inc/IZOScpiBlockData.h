#pragma once

#include "IZOScpiSubsystemFormat.h"
#include "Stream.h"
#include "Unknown.h"
#include "Variant.h"

namespace ZoVelkor
{

/// Reader of one block parameter (IEEE 488.2 sections 7.7.6 and 8.7.9, 8.7.10).
///
/// Every read continues where the one before ended. A large block may still be arriving: then the operations
/// that read wait for its bytes, and give E_ABORT when the rest will not come or when what follows the block
/// is wrong, which is found with its last byte. A handler then leaves everything as it was and returns
/// E_ABORT.
///
/// Lengths and counts are in bytes, unless elements are meant. A null pointer gives E_POINTER, reported.
/// Out-parameters are left alone on failure, but counts of what was read, which begin with 0.
///
/// A reader is valid until Execute of its command returns, also for those who hold a reference: afterwards
/// every operation gives E_ABORT. Threads: only the thread that executes the command.
struct IZOScpiBlockData : IUnknown
{
    static constexpr IID kInterfaceId{
        0x5E2DA9C2, 0x0E0E, 0x4AF4, {0xB5, 0x3D, 0xD4, 0xE5, 0xA6, 0x5F, 0x01, 0x08}};

    /// Copies the next bytes.
    ///
    /// @param[out] got  bytes copied; less than size only at the end of the block
    /// @return S_OK; S_FALSE when the block had ended before; E_POINTER; E_ABORT
    virtual HRESULT Read(unsigned long size, unsigned char* data, unsigned long* got) = 0;

    /// Tells how far the block has arrived.
    ///
    /// @param[out] complete  VARIANT_TRUE when the whole block has arrived
    /// @param[out] length    length of the block in bytes, -1 for an indefinite length that has not ended
    virtual HRESULT Status(short* complete, long* length) = 0;

    /// Drops what has not been read, as far as the end of the block, and waits for that.
    ///
    /// @return S_OK; E_ABORT
    virtual HRESULT Discard() = 0;

    /// As Status, with the bytes that can be read without waiting and those that have been read.
    virtual HRESULT
    GetStatusEx(short* complete, long* length, unsigned long* available, unsigned long* consumed) = 0;

    /// Copies the next bytes into a stream; otherwise as Read.
    virtual HRESULT ReadFromStream(IStream* target, unsigned long size, unsigned long* got) = 0;

    /// Waits until more of the block can be read.
    ///
    /// @param timeoutMs  0 or more; -1 waits without limit
    /// @return S_OK when there is more to read; S_FALSE at the end of the block; E_PENDING on time-out;
    ///         E_ABORT
    virtual HRESULT ContinueRead(long timeoutMs) = 0;

    /// Says how the elements of the block are to be read: REAL,32|64 or INTeger,8|16|32|64.
    ///
    /// @return E_INVALIDARG for another format
    virtual HRESULT
    InitReaderFormat(tagEnumFormatDataType type, long width, tagEnumFormatByteOrder order) = 0;

    /// Reads one element as VT_R4, VT_R8, VT_I1, VT_I2, VT_I4 or VT_I8, following the format.
    ///
    /// @return S_OK; S_FALSE at the end; E_UNEXPECTED without a format; E_FAIL when the block ends inside
    ///         an element
    virtual HRESULT GetNextElement(VARIANT* value) = 0;

    /// As GetNextElement, converted to double; integers beyond 2^53 lose their last digits.
    virtual HRESULT GetNextDouble(double* value) = 0;

    /// As GetNextElement; a real element is rounded half to even.
    ///
    /// @return DISP_E_OVERFLOW when the element does not fit 32 bits
    virtual HRESULT GetNextInteger(long* value) = 0;

    /// Reads up to count elements.
    ///
    /// @param[out] got  elements stored, fewer than count at the end of the block
    /// @return S_OK; S_FALSE when the block had ended before; else as GetNextElement, with the elements
    ///         before stored
    virtual HRESULT GetNextArray(unsigned long count, double* values, unsigned long* got) = 0;

    /// Reads interleaved elements into several arrays: the first element of each, then the second of each.
    ///
    /// @param got  elements stored in each array
    /// @return E_FAIL when the block ends between two arrays
    virtual HRESULT GetNextScatteredArrays(unsigned long arrays,
                                           unsigned long count,
                                           double* const* values,
                                           unsigned long* got) = 0;

    /// Lends the bytes that have not been read, without copying; they stay unread. Waits for those that have
    /// not arrived.
    ///
    /// @param[out] data  first byte, null for an empty rest; valid until Execute returns
    /// @return S_OK; E_POINTER; E_ABORT; E_PENDING when the block is too large to be held in memory
    virtual HRESULT Access(unsigned char** data, unsigned long* length) = 0;

protected:
    ~IZOScpiBlockData() = default;
};

inline constexpr const IID& IID_IZOScpiBlockData = IZOScpiBlockData::kInterfaceId;

} // namespace ZoVelkor
