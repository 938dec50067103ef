#include "CFormatSubsystem.h"

#include "CComVariant.h"
#include "GuardedEntry.h"
#include "Parsing/NumberText.h"
#include "ResponseData.h"
#include "ResponseNumber.h"
#include "ResponseText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

namespace
{

/// Values that are formatted between two requests for room.
constexpr std::size_t kTextChunk = 256;
/// Room that WriteReal and a separator need.
constexpr std::size_t kMaxRealText = 48;

struct FormatRow
{
    const char* szName;
    long maxDigits;
    tagEnumFormatDataType type;
    unsigned bitsPerDigit; // 0: decimal
};

constexpr FormatRow kTextFormats[] = {
    {"ASC", CFormatSubsystem::kMaxDigits, ZO_FORMAT_ASCII, 0},
    {"HEX", 16, ZO_FORMAT_HEX, 4},
    {"OCT", 22, ZO_FORMAT_OCTAL, 3},
    {"BIN", 64, ZO_FORMAT_BINARY, 1},
};

const FormatRow* FindTextFormat(tagEnumFormatDataType type) noexcept
{
    const auto* found = std::find_if(std::begin(kTextFormats),
                                     std::end(kTextFormats),
                                     [type](const auto& row) { return row.type == type; });
    return found == std::end(kTextFormats) ? nullptr : found;
}

bool IsValidFormat(tagEnumFormatDataType type, long width) noexcept
{
    switch (type)
    {
    case ZO_FORMAT_REAL:
        return width == 32 || width == 64;
    case ZO_FORMAT_INTEGER:
        return width == 8 || width == 16 || width == 32 || width == 64;
    default:
        const FormatRow* row = FindTextFormat(type);
        return row != nullptr && width >= 0 && width <= row->maxDigits;
    }
}

/// The element of a binary format of one C++ type.
template <class T>
T ToElement(double value) noexcept
{
    if constexpr (std::is_same_v<T, double>)
    {
        return ReplaceNonFinite(value);
    }
    else if constexpr (std::is_same_v<T, float>)
    {
        // Narrowed before the look: what is beyond a float becomes infinite by that, and gets the stand-in.
        return static_cast<float>(ReplaceNonFinite(static_cast<double>(static_cast<float>(value))));
    }
    else
    {
        const ResponseNumber number{ResponseNumber::Kind::Double, 0, 0, value};
        return static_cast<T>(number.AsInteger(std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
}

template <class T>
T ToElement(const ResponseNumber& number) noexcept
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return ToElement<T>(number.AsDouble());
    }
    else
    {
        return static_cast<T>(number.AsInteger(std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
}

template <std::size_t TSize>
using UnsignedOf =
    std::conditional_t<TSize == 1,
                       std::uint8_t,
                       std::conditional_t<TSize == 2,
                                          std::uint16_t,
                                          std::conditional_t<TSize == 4, std::uint32_t, std::uint64_t>>>;

template <class T>
T ReverseBytes(T value) noexcept
{
    if constexpr (sizeof(T) == 8)
    {
        return __builtin_bswap64(value);
    }
    else if constexpr (sizeof(T) == 4)
    {
        return __builtin_bswap32(value);
    }
    else if constexpr (sizeof(T) == 2)
    {
        return __builtin_bswap16(value);
    }
    else
    {
        return value;
    }
}

template <class T>
void StoreElement(char* place, T value, bool mostSignificantFirst) noexcept
{
    auto bits = std::bit_cast<UnsignedOf<sizeof(T)>>(value);
    if (mostSignificantFirst == (std::endian::native == std::endian::little))
    {
        bits = ReverseBytes(bits);
    }
    std::memcpy(place, &bits, sizeof bits);
}

/// Calls a function with a value of the C++ type of a binary format.
template <class TCall>
void VisitElementType(tagEnumFormatDataType type, long width, TCall&& call)
{
    if (type == ZO_FORMAT_REAL)
    {
        width == 32 ? call(float{}) : call(double{});
        return;
    }
    switch (width)
    {
    case 8:
        return call(std::int8_t{});
    case 16:
        return call(std::int16_t{});
    case 32:
        return call(std::int32_t{});
    default:
        return call(std::int64_t{});
    }
}

char* WriteNumberText(char* place,
                      const ResponseNumber& number,
                      tagEnumFormatDataType type,
                      long width) noexcept
{
    using Kind = ResponseNumber::Kind;
    if (const FormatRow* row = FindTextFormat(type); row != nullptr && row->bitsPerDigit != 0)
    {
        auto pattern =
            number.kind == Kind::Unsigned
                ? number.number
                : static_cast<std::uint64_t>(number.AsInteger(std::numeric_limits<std::int64_t>::min(),
                                                              std::numeric_limits<std::int64_t>::max()));
        // A negative number of 32 bits is shown with these 32, not with 64.
        if (static_cast<std::int64_t>(pattern) < 0 && number.kind != Kind::Unsigned &&
            static_cast<std::int64_t>(pattern) >= std::numeric_limits<std::int32_t>::min())
        {
            pattern &= std::numeric_limits<std::uint32_t>::max();
        }
        return WriteNonDecimal(place, pattern, row->bitsPerDigit, static_cast<unsigned>(width));
    }
    switch (number.kind)
    {
    case Kind::Signed:
        return WriteInteger(place, number.signedValue);
    case Kind::Unsigned:
        return WriteInteger(place, number.number);
    default:
        break;
    }
    if (width != 0)
    {
        return WriteRealWithDigits(place, number.real, static_cast<int>(width));
    }
    return number.kind == Kind::Float ? WriteReal(place, static_cast<float>(number.real))
                                      : WriteReal(place, number.real);
}

} // namespace

/// One data item: a scalar, or the elements of an array.
struct CFormatSubsystem::Item
{
    CComVariant value; // references resolved
    tagEnumFormatDataInterpretation interpretation = ZO_INTERPRETATION_NUMERIC;
    bool array = false;
    std::size_t length = 1;

    HRESULT Set(const VARIANT* item, tagEnumFormatDataInterpretation meaning) noexcept
    {
        if (item == nullptr)
        {
            return E_POINTER;
        }
        interpretation = meaning;
        // Arrays are only looked at, so the variant shares them instead of copying (see Element).
        source = item;
        if ((item->vt & VT_BYREF) != 0)
        {
            const HRESULT result = VariantCopyInd(&value, item);
            if (FAILED(result))
            {
                return result;
            }
            source = &value;
        }
        array = (source->vt & VT_ARRAY) != 0;
        if (array && source->parray == nullptr)
        {
            return E_INVALIDARG;
        }
        length = array ? source->parray->rgsabound[0].cElements : 1;
        return meaning <= ZO_INTERPRETATION_STRING ? S_OK : E_INVALIDARG;
    }

    /// An element as a variant that owns nothing.
    VARIANT Element(std::size_t index) const noexcept
    {
        if (!array)
        {
            return *source;
        }
        const SAFEARRAY& elements = *source->parray;
        VARIANT element{};
        element.vt = elements.elementType;
        std::memcpy(&element.llVal,
                    static_cast<const char*>(elements.pvData) + index * elements.cbElements,
                    std::min<std::size_t>(elements.cbElements, sizeof element.llVal));
        return element;
    }

    const VARIANT* source = nullptr;
};

HRESULT CFormatSubsystem::WriteRaw(std::string_view text) noexcept
{
    char* place = nullptr;
    const HRESULT result = m_output->Prepare(text.size(), &place);
    if (SUCCEEDED(result))
    {
        std::memcpy(place, text.data(), text.size());
        m_output->Commit(text.size());
    }
    return result;
}

template <class TWriter>
HRESULT CFormatSubsystem::WriteText(TWriter&& writer) noexcept
{
    char* place = nullptr;
    const HRESULT result = m_output->Prepare(kMaxNumberText, &place);
    if (SUCCEEDED(result))
    {
        m_output->Commit(static_cast<std::size_t>(writer(place) - place));
    }
    return result;
}

HRESULT CFormatSubsystem::InsertDataSeparator()
{
    return WriteRaw(",");
}

HRESULT CFormatSubsystem::NumericVariant(const VARIANT* value, tagEnumFormatDataType type, long width)
{
    if (value == nullptr)
    {
        return E_POINTER;
    }
    // What most queries answer, without a detour over a record of the number.
    if (type == ZO_FORMAT_DEFAULT && width == 0 && value->vt == VT_R8)
    {
        return WriteText([value](char* place) { return WriteReal(place, value->dblVal); });
    }
    if (type == ZO_FORMAT_DEFAULT && width == 0 && value->vt == VT_I4)
    {
        return WriteText([value](char* place) { return WriteInteger(place, std::int64_t{value->lVal}); });
    }
    const FormatRow* row = FindTextFormat(type == ZO_FORMAT_DEFAULT ? ZO_FORMAT_ASCII : type);
    if (row == nullptr || width < 0 || width > row->maxDigits)
    {
        return E_INVALIDARG;
    }
    if ((value->vt & VT_BYREF) == 0)
    {
        return WriteNumber(*value, type, width);
    }
    CComVariant copy;
    const HRESULT result = VariantCopyInd(&copy, value);
    return FAILED(result) ? result : WriteNumber(copy, type, width);
}

HRESULT CFormatSubsystem::WriteNumber(const VARIANT& value, tagEnumFormatDataType type, long width) noexcept
{
    ResponseNumber number;
    const HRESULT result = ReadResponseNumber(value, number);
    return FAILED(result)
               ? result
               : WriteText([&](char* place) { return WriteNumberText(place, number, type, width); });
}

HRESULT CFormatSubsystem::NumericText(unsigned long length, const char* text)
{
    return text == nullptr && length != 0 ? E_POINTER : WriteRaw({text, length});
}

HRESULT CFormatSubsystem::StringText(unsigned long length, const char* text)
{
    if (text == nullptr && length != 0)
    {
        return E_POINTER;
    }
    const std::string_view contents(text, length);
    char* place = nullptr;
    const HRESULT result = m_output->Prepare(QuotedSize(contents), &place);
    if (FAILED(result))
    {
        return result;
    }
    m_output->Commit(static_cast<std::size_t>(WriteQuoted(place, contents) - place));
    return S_OK;
}

HRESULT CFormatSubsystem::OutputData(const VARIANT* data,
                                     tagEnumFormatDataInterpretation interpretation,
                                     VARIANT_BOOL separator)
{
    return OutputScatteredData(1, &data, &interpretation, separator);
}

HRESULT CFormatSubsystem::OutputScatteredData(unsigned long count,
                                              const VARIANT* const* data,
                                              const tagEnumFormatDataInterpretation* interpretations,
                                              VARIANT_BOOL separator)
{
    if (data == nullptr || interpretations == nullptr)
    {
        return E_POINTER;
    }
    if (count == 0)
    {
        return E_INVALIDARG;
    }
    return GuardedEntry([&]() -> HRESULT {
        std::vector<Item> items(count);
        for (std::size_t i = 0; i < count; ++i)
        {
            const HRESULT result = items[i].Set(data[i], interpretations[i]);
            if (FAILED(result))
            {
                return result;
            }
            if (items[i].length != items[0].length)
            {
                return E_INVALIDARG;
            }
        }
        const HRESULT result = separator != VARIANT_FALSE ? InsertDataSeparator() : S_OK;
        return FAILED(result) ? result : WriteItems(items, items[0].length);
    });
}

HRESULT CFormatSubsystem::WriteItems(std::span<const Item> items, std::size_t length)
{
    const auto isBlockData = [this](const Item& item) {
        return IsBinary() && item.interpretation == ZO_INTERPRETATION_NUMERIC;
    };
    if (length == 0)
    {
        return isBlockData(items[0]) ? WriteBlockHeader(0) : S_OK;
    }
    // The usual trace, without a variant for each of its values.
    if (items.size() == 1 && items[0].array && items[0].source->parray->elementType == VT_R8 &&
        items[0].interpretation == ZO_INTERPRETATION_NUMERIC)
    {
        return OutputDoubles(static_cast<const double*>(items[0].source->parray->pvData), length);
    }
    const std::size_t total = items.size() * length;
    const auto itemOf = [items](std::size_t place) -> const Item& { return items[place % items.size()]; };
    std::size_t blockEnd = 0; // up to here the elements belong to the block that was begun
    for (std::size_t place = 0; place < total; ++place)
    {
        const Item& item = itemOf(place);
        const VARIANT element = item.Element(place / items.size());
        HRESULT result = place != 0 && place >= blockEnd ? InsertDataSeparator() : S_OK;
        if (SUCCEEDED(result) && isBlockData(item) && place >= blockEnd)
        {
            for (blockEnd = place + 1; blockEnd < total && isBlockData(itemOf(blockEnd)); ++blockEnd)
            {}
            result = WriteBlockHeader((blockEnd - place) * ElementSize());
        }
        if (SUCCEEDED(result))
        {
            result =
                isBlockData(item) ? WriteBinaryNumber(element) : WriteElement(element, item.interpretation);
        }
        if (FAILED(result))
        {
            return result;
        }
    }
    return S_OK;
}

HRESULT CFormatSubsystem::WriteElement(const VARIANT& value, tagEnumFormatDataInterpretation interpretation)
{
    switch (interpretation)
    {
    case ZO_INTERPRETATION_STRING:
        return WriteString(value);
    case ZO_INTERPRETATION_BOOLEAN: {
        ResponseNumber number;
        const HRESULT result = ReadResponseNumber(value, number);
        return FAILED(result) ? result : WriteRaw(number.AsDouble() != 0 ? "1" : "0");
    }
    case ZO_INTERPRETATION_ASCII:
        return WriteNumber(value, ZO_FORMAT_ASCII, m_type == ZO_FORMAT_ASCII ? m_width : 0);
    default:
        return WriteNumber(value, m_type, m_width);
    }
}

HRESULT CFormatSubsystem::WriteString(const VARIANT& value)
{
    CComVariant text;
    const HRESULT result = text.ChangeType(VT_BSTR, &value);
    if (FAILED(result))
    {
        return result;
    }
    const std::string narrow = NarrowResponseText(text.bstrVal);
    return StringText(narrow.size(), narrow.data());
}

HRESULT CFormatSubsystem::WriteBinaryNumber(const VARIANT& value) noexcept
{
    ResponseNumber number;
    HRESULT result = ReadResponseNumber(value, number);
    char* place = nullptr;
    if (SUCCEEDED(result))
    {
        result = m_output->Prepare(ElementSize(), &place);
    }
    if (SUCCEEDED(result))
    {
        VisitElementType(m_type, m_width, [&](auto sample) {
            StoreElement(place, ToElement<decltype(sample)>(number), m_byteOrder == ZO_BYTE_ORDER_NORMAL);
        });
        m_output->Commit(ElementSize());
    }
    return result;
}

HRESULT CFormatSubsystem::WriteBlockHeader(std::size_t dataBytes) noexcept
{
    char header[kMaxBlockHeaderSize];
    return WriteRaw({header, static_cast<std::size_t>(WriteDefiniteBlockHeader(header, dataBytes) - header)});
}

HRESULT CFormatSubsystem::OutputDoubles(const double* values, unsigned long count)
{
    if (values == nullptr && count != 0)
    {
        return E_POINTER;
    }
    const std::span<const double> all(values, count);
    return IsBinary() ? WriteDoublesAsBlock(all) : WriteDoublesAsText(all);
}

HRESULT CFormatSubsystem::WriteDoublesAsText(std::span<const double> values) noexcept
{
    const bool plain = m_type == ZO_FORMAT_ASCII && m_width == 0;
    const std::size_t room = plain ? kMaxRealText : kMaxNumberText + 1;
    for (std::size_t first = 0; first < values.size(); first += kTextChunk)
    {
        const auto chunk = values.subspan(first, std::min(kTextChunk, values.size() - first));
        char* place = nullptr;
        const HRESULT result = m_output->Prepare(chunk.size() * room, &place);
        if (FAILED(result))
        {
            return result;
        }
        char* end = place;
        for (const double value : chunk)
        {
            end = plain ? WriteReal(end, value)
                        : WriteNumberText(end, {ResponseNumber::Kind::Double, 0, 0, value}, m_type, m_width);
            *end++ = ',';
        }
        const bool last = first + chunk.size() == values.size();
        m_output->Commit(static_cast<std::size_t>(end - place) - (last ? 1 : 0));
    }
    return S_OK;
}

HRESULT CFormatSubsystem::WriteDoublesAsBlock(std::span<const double> values) noexcept
{
    const std::size_t bytes = values.size() * ElementSize();
    HRESULT result = WriteBlockHeader(bytes);
    char* place = nullptr;
    if (SUCCEEDED(result))
    {
        result = m_output->Prepare(bytes, &place);
    }
    if (SUCCEEDED(result))
    {
        const bool mostSignificantFirst = m_byteOrder == ZO_BYTE_ORDER_NORMAL;
        VisitElementType(m_type, m_width, [&](auto sample) {
            using TElement = decltype(sample);
            char* end = place;
            for (const double value : values)
            {
                StoreElement(end, ToElement<TElement>(value), mostSignificantFirst);
                end += sizeof(TElement);
            }
        });
        m_output->Commit(bytes);
    }
    return result;
}

HRESULT CFormatSubsystem::get_DataFormat(tagEnumFormatDataType* type, long* width)
{
    if (type == nullptr || width == nullptr)
    {
        return E_POINTER;
    }
    *type = m_type;
    *width = m_width;
    return S_OK;
}

HRESULT CFormatSubsystem::put_DataFormat(tagEnumFormatDataType type, long width)
{
    if (!IsValidFormat(type, width))
    {
        return E_INVALIDARG;
    }
    m_type = type;
    m_width = width;
    return S_OK;
}

HRESULT CFormatSubsystem::get_ByteOrder(tagEnumFormatByteOrder* order)
{
    if (order == nullptr)
    {
        return E_POINTER;
    }
    *order = m_byteOrder;
    return S_OK;
}

HRESULT CFormatSubsystem::put_ByteOrder(tagEnumFormatByteOrder order)
{
    if (order != ZO_BYTE_ORDER_NORMAL && order != ZO_BYTE_ORDER_SWAPPED)
    {
        return E_INVALIDARG;
    }
    m_byteOrder = order;
    return S_OK;
}

HRESULT CFormatSubsystem::GetDataFormatText(wchar_t** text)
{
    if (text == nullptr)
    {
        return E_POINTER;
    }
    if (*text != nullptr)
    {
        return E_INVALIDARG;
    }
    return GuardedEntry([&]() -> HRESULT {
        const FormatRow* row = FindTextFormat(m_type);
        std::string name = row != nullptr ? row->szName : m_type == ZO_FORMAT_REAL ? "REAL" : "INT";
        name += ',' + std::to_string(m_width);
        *text = A2WBSTR(name.c_str());
        return *text != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT CFormatSubsystem::Reset()
{
    m_type = ZO_FORMAT_ASCII;
    m_width = 0;
    m_byteOrder = ZO_BYTE_ORDER_NORMAL;
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
