#pragma once

#include "Unknown.h"
#include "Variant.h"

#include <cstdint>

namespace ZoVelkor
{

/// Form of response data (SCPI-99 vol. 2, 9.1: FORMat[:DATA]).
enum tagEnumFormatDataType : std::uint32_t
{
    ZO_FORMAT_DEFAULT = 0, ///< the kind that suits the value: NR1 for integers, NR2 or NR3 for reals
    ZO_FORMAT_ASCII = 1,   ///< decimal text; width: significant digits, 0 for as many as the value needs
    ZO_FORMAT_REAL = 2,    ///< IEEE 754 binary in a definite-length block; width: 32 or 64 bits
    ZO_FORMAT_INTEGER = 3, ///< width: 8, 16, 32 or 64 bits, in a definite-length block
    ZO_FORMAT_HEX = 4,     ///< \#H...; width: digits, 0 for as many as needed
    ZO_FORMAT_OCTAL = 5,   ///< \#Q...
    ZO_FORMAT_BINARY = 6   ///< \#B...
};

/// What the values of a data output mean; only values of the same meaning share one block.
enum tagEnumFormatDataInterpretation : std::uint32_t
{
    ZO_INTERPRETATION_NUMERIC = 0, ///< numbers in the current data format
    ZO_INTERPRETATION_ASCII = 1,   ///< numbers, always as text
    ZO_INTERPRETATION_BOOLEAN = 2, ///< 0 or 1, always as text
    ZO_INTERPRETATION_STRING = 3   ///< text in quotes
};

/// Byte order of binary data (SCPI-99 vol. 2, 9.2: FORMat:BORDer).
enum tagEnumFormatByteOrder : std::uint32_t
{
    ZO_BYTE_ORDER_NORMAL = 0, ///< most significant byte first
    ZO_BYTE_ORDER_SWAPPED = 1 ///< least significant byte first
};

/// Turns values into response data and writes them to the output buffer of its remote path.
///
/// Numbers never depend on the locale. Infinity and not-a-number are answered as 9.9E37, -9.9E37 and 9.91E37.
/// Unless said otherwise an operation returns S_OK, or the failing result of the output buffer.
/// Threads: only the thread that executes the command. Standard: IEEE 488.2 section 8.7, SCPI-99 vol. 2, 9.
struct IZOScpiSubsystemFormat : IUnknown
{
    static constexpr IID kInterfaceId{
        0x20F4098E, 0xFB48, 0x413B, {0x97, 0x36, 0xBF, 0x20, 0x2A, 0x56, 0xB1, 0xAF}};

    /// Writes the separator between two response items of one query, ",".
    virtual HRESULT InsertDataSeparator() = 0;

    /// Writes one number as text, whatever the data format of the path is.
    ///
    /// @param value  any scalar type or text that converts to a number; VARIANT_BOOL is answered as 1 or 0
    /// @param type  ZO_FORMAT_DEFAULT, ASCII, HEX, OCTAL or BINARY
    /// @param width  see tagEnumFormatDataType
    /// @return E_POINTER; E_INVALIDARG for another type or a width out of range; DISP_E_TYPEMISMATCH
    virtual HRESULT NumericVariant(const VARIANT* value, tagEnumFormatDataType type, long width) = 0;

    /// Writes numeric text that is well formed already, as it is; nothing is checked.
    ///
    /// @param length  bytes at text
    /// @return E_POINTER for a null text with a length
    virtual HRESULT NumericText(unsigned long length, const char* text) = 0;

    /// Writes a string in double quotes; quotes inside are doubled (IEEE 488.2 section 8.7.8).
    ///
    /// @param length  bytes at text, embedded NULs included
    /// @return E_POINTER for a null text with a length
    virtual HRESULT StringText(unsigned long length, const char* text) = 0;

    /// Writes data in the data format of the path: text items with separators, or one definite-length block.
    ///
    /// @param data  a scalar or a one-dimensional array of scalars or strings
    /// @param separator  VARIANT_TRUE: a data separator goes first
    /// @return E_POINTER; E_INVALIDARG; DISP_E_TYPEMISMATCH
    virtual HRESULT OutputData(const VARIANT* data,
                               tagEnumFormatDataInterpretation interpretation,
                               VARIANT_BOOL separator) = 0;

    /// Writes several data items as OutputData would, but with items of equal index next to each other: the
    /// first values of all items, then the second ones. Scalars and arrays of one length can be mixed in one
    /// call only when the arrays have length 1.
    ///
    /// @return E_INVALIDARG also when the lengths differ
    virtual HRESULT OutputScatteredData(unsigned long count,
                                        const VARIANT* const* data,
                                        const tagEnumFormatDataInterpretation* interpretations,
                                        VARIANT_BOOL separator) = 0;

    /// Writes numbers in the data format of the path, without a leading separator; the fast way for traces.
    ///
    /// @param values  count numbers, borrowed for the call; null only without any
    /// @param count   0 writes an empty block, or nothing as text
    virtual HRESULT OutputDoubles(const double* values, unsigned long count) = 0;

    /// Reads the data format of the path; see tagEnumFormatDataType for the width. E_POINTER.
    virtual HRESULT get_DataFormat(tagEnumFormatDataType* type, long* width) = 0;

    /// Sets the data format of the path.
    ///
    /// @return E_INVALIDARG for a type or width outside tagEnumFormatDataType; the format is then unchanged
    virtual HRESULT put_DataFormat(tagEnumFormatDataType type, long width) = 0;

    /// Reads the byte order of binary data; E_POINTER.
    virtual HRESULT get_ByteOrder(tagEnumFormatByteOrder* order) = 0;

    /// Sets the byte order of binary data.
    ///
    /// @return E_INVALIDARG for another value; the order is then unchanged
    virtual HRESULT put_ByteOrder(tagEnumFormatByteOrder order) = 0;

    /// Gives the data format as FORMat[:DATA]? answers it, for example "REAL,32".
    ///
    /// @param[out] text  must point to a null BSTR; the caller frees the new one
    /// @return E_POINTER; E_INVALIDARG when text points to a string; E_OUTOFMEMORY
    virtual HRESULT GetDataFormatText(wchar_t** text) = 0;

    /// Returns to ASCii,0 and normal byte order, as *RST does.
    virtual HRESULT Reset() = 0;

protected:
    ~IZOScpiSubsystemFormat() = default;
};

inline constexpr const IID& IID_IZOScpiSubsystemFormat = IZOScpiSubsystemFormat::kInterfaceId;

} // namespace ZoVelkor
