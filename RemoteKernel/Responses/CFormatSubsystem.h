// Responses: from values to the bytes of a response.
//
// A handler gives numbers, texts and arrays to CFormatSubsystem, which writes them in the session's data
// format into the COutputQueue; the queue separates the answers of one message, ends it, and is emptied by
// whoever sends. CDefaultFormat keeps the format that new sessions begin with. Handlers and the kernel's own
// commands call, on the session's thread; only the end of writing (COutputQueue::Cancel, Resume) comes from
// others.
// Locks: one in CDefaultFormat, which nothing else is called under but the subsystem that it guards.

#pragma once

#include "CComObject.h"
#include "COutputQueue.h"
#include "IZOScpiSubsystemFormat.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

using CSessionOutput = CComObject<COutputQueue, IZOScpiOutputBuffer>;

/// Data format and number formatting of one session.
///
/// Numbers in text:
/// - Integers are answered as NR1.
/// - Reals have the shortest digits that read back as the same value (of their own type, VT_R4 or VT_R8),
///   in NR2 from 1E-4 up to below 1E+16 (whole numbers without a point: 10000000), else in NR3: 1.5E+20,
///   1.0E-07. With a number of digits they are rounded to it, and NR3 is used when the number has more
///   digits than that before the point.
/// - #H, #Q and #B answers are bit patterns: negative numbers in two's complement of 32 bits where that is
///   enough, else of 64; reals are rounded half to even.
/// Binary integers that the value does not fit are answered as the nearest one that fits, not-a-number as 0.
/// Threads: the session's.
class CFormatSubsystem : public IZOScpiSubsystemFormat
{
public:
    /// Most significant digits that can be asked for; a double has no more.
    static constexpr long kMaxDigits = 17;

    explicit CFormatSubsystem(CComPtr<CSessionOutput> output) noexcept : m_output(std::move(output)) {}
    virtual ~CFormatSubsystem() = default;

    HRESULT InsertDataSeparator() override;
    HRESULT NumericVariant(const VARIANT* value, tagEnumFormatDataType type, long width) override;
    HRESULT NumericText(unsigned long length, const char* text) override;
    HRESULT StringText(unsigned long length, const char* text) override;
    HRESULT OutputData(const VARIANT* data,
                       tagEnumFormatDataInterpretation interpretation,
                       VARIANT_BOOL separator) override;
    HRESULT OutputScatteredData(unsigned long count,
                                const VARIANT* const* data,
                                const tagEnumFormatDataInterpretation* interpretations,
                                VARIANT_BOOL separator) override;
    HRESULT OutputDoubles(const double* values, unsigned long count) override;
    HRESULT get_DataFormat(tagEnumFormatDataType* type, long* width) override;
    HRESULT put_DataFormat(tagEnumFormatDataType type, long width) override;
    HRESULT get_ByteOrder(tagEnumFormatByteOrder* order) override;
    HRESULT put_ByteOrder(tagEnumFormatByteOrder order) override;
    HRESULT GetDataFormatText(wchar_t** text) override;
    HRESULT Reset() override;

    /// Writes the header of a definite-length block (IEEE 488.2 section 8.7.9).
    HRESULT WriteBlockHeader(std::size_t dataBytes) noexcept;

private:
    struct Item;

    bool IsBinary() const noexcept { return m_type == ZO_FORMAT_REAL || m_type == ZO_FORMAT_INTEGER; }
    std::size_t ElementSize() const noexcept { return static_cast<std::size_t>(m_width) / 8; }
    HRESULT WriteRaw(std::string_view text) noexcept;
    HRESULT WriteDoublesAsText(std::span<const double> values) noexcept;
    HRESULT WriteDoublesAsBlock(std::span<const double> values) noexcept;
    /// Writes the text of one number; `writer` puts it to a place with room for any and returns its end.
    template <class TWriter>
    HRESULT WriteText(TWriter&& writer) noexcept;
    HRESULT WriteNumber(const VARIANT& value, tagEnumFormatDataType type, long width) noexcept;
    HRESULT WriteBinaryNumber(const VARIANT& value) noexcept;
    HRESULT WriteString(const VARIANT& value);
    HRESULT WriteElement(const VARIANT& value, tagEnumFormatDataInterpretation interpretation);
    HRESULT WriteItems(std::span<const Item> items, std::size_t length);

    CComPtr<CSessionOutput> m_output;
    tagEnumFormatDataType m_type = ZO_FORMAT_ASCII;
    long m_width = 0;
    tagEnumFormatByteOrder m_byteOrder = ZO_BYTE_ORDER_NORMAL;
};

} // namespace ZoVelkor::RemoteKernel
