#include "CBlockReader.h"

#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace ZoVelkor::RemoteKernel
{

namespace
{
ZO_SOURCE_UNIT("RemoteKernel/Parsing/CBlockReader");

/// Largest block that is collected for a handler that wants it in one piece.
constexpr std::size_t kLargestLent = std::size_t{1} << 29;

/// Bytes of one element; 0 for a format that has none.
std::size_t ElementSize(tagEnumFormatDataType type, long width) noexcept
{
    const bool isReal = type == ZO_FORMAT_REAL && (width == 32 || width == 64);
    const bool isInteger =
        type == ZO_FORMAT_INTEGER && (width == 8 || width == 16 || width == 32 || width == 64);
    return isReal || isInteger ? static_cast<std::size_t>(width) / 8 : 0;
}

std::uint64_t LoadBytes(const unsigned char* bytes, std::size_t size, bool swapped) noexcept
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
    {
        value = value << 8U | bytes[swapped ? size - 1 - i : i];
    }
    return value;
}

void StoreReal(std::uint64_t bits, std::size_t size, VARIANT& value) noexcept
{
    if (size == sizeof(float))
    {
        value.vt = VT_R4;
        value.fltVal = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        return;
    }
    value.vt = VT_R8;
    value.dblVal = std::bit_cast<double>(bits);
}

void StoreInteger(std::uint64_t bits, std::size_t size, VARIANT& value) noexcept
{
    switch (size)
    {
    case 1:
        value.vt = VT_I1;
        value.cVal = static_cast<signed char>(bits);
        break;
    case 2:
        value.vt = VT_I2;
        value.iVal = static_cast<short>(bits);
        break;
    case 4:
        value.vt = VT_I4;
        value.lVal = static_cast<LONG>(bits);
        break;
    default:
        value.vt = VT_I8;
        value.llVal = static_cast<LONGLONG>(bits);
        break;
    }
}

double ToDouble(const VARIANT& value) noexcept
{
    switch (value.vt)
    {
    case VT_R4:
        return static_cast<double>(value.fltVal);
    case VT_R8:
        return value.dblVal;
    case VT_I1:
        return value.cVal;
    case VT_I2:
        return value.iVal;
    case VT_I4:
        return value.lVal;
    default:
        return static_cast<double>(value.llVal);
    }
}

HRESULT ToInteger(const VARIANT& value, long& result) noexcept
{
    constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
    // A 64-bit integer that a double cannot hold exactly is far outside 32 bits anyway.
    const double rounded = std::nearbyint(ToDouble(value));
    if (!(rounded >= kLowest && rounded <= kHighest))
    {
        return DISP_E_OVERFLOW;
    }
    result = static_cast<long>(rounded);
    return S_OK;
}
} // namespace

void CBlockReader::Begin(std::span<unsigned char> block) noexcept
{
    m_block = block;
    m_consumed = 0;
    m_valid = true;
    m_elementSize = 0;
    m_stream = nullptr;
}

void CBlockReader::Begin(CBlockStream& stream) noexcept
{
    Begin(std::span<unsigned char>());
    m_stream = &stream;
}

void CBlockReader::Consume(std::size_t count) noexcept
{
    if (m_stream != nullptr)
    {
        m_stream->Consume(count);
        return;
    }
    m_consumed += count;
}

void CBlockReader::Invalidate() noexcept
{
    m_valid = false;
    m_block = {};
    m_consumed = 0;
    m_stream = nullptr;
}

HRESULT CBlockReader::Read(unsigned long size, unsigned char* data, unsigned long* got)
{
    if (data == nullptr || got == nullptr)
    {
        return RepairError(data == nullptr ? ZO_NULL_POINTER(nullptr, "data")
                                           : ZO_NULL_POINTER(nullptr, "got"));
    }
    *got = 0;
    if (!m_valid)
    {
        return E_ABORT;
    }
    if (m_stream != nullptr)
    {
        std::size_t copied = 0;
        const HRESULT result = m_stream->Read({data, size}, copied);
        *got = copied;
        return result;
    }
    const std::span<unsigned char> rest = Rest();
    const std::size_t count = std::min<std::size_t>(size, rest.size());
    if (count != 0)
    {
        std::memcpy(data, rest.data(), count);
    }
    m_consumed += count;
    *got = count;
    return rest.empty() ? S_FALSE : S_OK;
}

HRESULT CBlockReader::Status(short* complete, long* length)
{
    unsigned long available = 0;
    unsigned long consumed = 0;
    return GetStatusEx(complete, length, &available, &consumed);
}

HRESULT CBlockReader::Discard()
{
    if (!m_valid)
    {
        return E_ABORT;
    }
    if (m_stream != nullptr)
    {
        return m_stream->Discard();
    }
    m_consumed = m_block.size();
    return S_OK;
}

HRESULT
CBlockReader::GetStatusEx(short* complete, long* length, unsigned long* available, unsigned long* consumed)
{
    if (complete == nullptr || length == nullptr || available == nullptr || consumed == nullptr)
    {
        return RepairError(complete == nullptr    ? ZO_NULL_POINTER(nullptr, "complete")
                           : length == nullptr    ? ZO_NULL_POINTER(nullptr, "length")
                           : available == nullptr ? ZO_NULL_POINTER(nullptr, "available")
                                                  : ZO_NULL_POINTER(nullptr, "consumed"));
    }
    if (!m_valid)
    {
        return E_ABORT;
    }
    const bool isComplete = m_stream == nullptr || m_stream->IsComplete();
    *complete = ToVariantBool(isComplete);
    *length = m_stream != nullptr ? m_stream->Length() : static_cast<long>(m_block.size());
    *available = Rest().size();
    *consumed = m_stream != nullptr ? static_cast<unsigned long>(m_stream->Consumed()) : m_consumed;
    return S_OK;
}

HRESULT CBlockReader::ReadFromStream(IStream* target, unsigned long size, unsigned long* got)
{
    if (target == nullptr || got == nullptr)
    {
        return RepairError(target == nullptr ? ZO_NULL_POINTER(nullptr, "target")
                                             : ZO_NULL_POINTER(nullptr, "got"));
    }
    *got = 0;
    if (!m_valid)
    {
        return E_ABORT;
    }
    return m_stream != nullptr ? CopyStream(*target, size, *got) : CopyRest(*target, size, *got);
}

/// Copies what can be read without waiting, as far as it is wanted.
HRESULT CBlockReader::CopyRest(IStream& target, unsigned long size, unsigned long& got)
{
    const std::span<unsigned char> rest = Rest();
    if (rest.empty())
    {
        return S_FALSE;
    }
    constexpr std::size_t kMost = std::numeric_limits<ULONG>::max();
    const auto count = static_cast<ULONG>(std::min({std::size_t{size}, rest.size(), kMost}));
    ULONG written = 0;
    const HRESULT result = target.Write(rest.data(), count, &written);
    Consume(std::min(written, count));
    got += std::min(written, count);
    return FAILED(result) ? result : S_OK;
}

HRESULT CBlockReader::CopyStream(IStream& target, unsigned long size, unsigned long& got)
{
    HRESULT result = m_stream->Fill(1);
    while (result == S_OK && got < size)
    {
        // The last bytes are only copied when what follows them is sound.
        const std::size_t count = std::min<std::size_t>(size - got, Rest().size());
        result = m_stream->Fill(count);
        const unsigned long before = got;
        result = result == S_OK ? CopyRest(target, count, got) : result;
        if (result == S_OK && got - before != count)
        {
            return S_OK;
        }
        result = result == S_OK ? m_stream->Fill(1) : result;
    }
    return result == S_FALSE && got != 0 ? S_OK : result;
}

HRESULT CBlockReader::ContinueRead(long timeoutMs)
{
    if (!m_valid)
    {
        return E_ABORT;
    }
    if (m_stream != nullptr)
    {
        return m_stream->Wait(timeoutMs);
    }
    return Rest().empty() ? S_FALSE : S_OK;
}

HRESULT
CBlockReader::InitReaderFormat(tagEnumFormatDataType type, long width, tagEnumFormatByteOrder order)
{
    if (!m_valid)
    {
        return E_ABORT;
    }
    const std::size_t size = ElementSize(type, width);
    if (size == 0 || (order != ZO_BYTE_ORDER_NORMAL && order != ZO_BYTE_ORDER_SWAPPED))
    {
        return E_INVALIDARG;
    }
    m_elementSize = size;
    m_real = type == ZO_FORMAT_REAL;
    m_swapped = order == ZO_BYTE_ORDER_SWAPPED;
    return S_OK;
}

HRESULT CBlockReader::NextElement(VARIANT& value)
{
    if (!m_valid)
    {
        return E_ABORT;
    }
    if (m_elementSize == 0)
    {
        return E_UNEXPECTED;
    }
    if (m_stream != nullptr && FAILED(m_stream->Fill(m_elementSize)))
    {
        return E_ABORT;
    }
    const std::span<unsigned char> rest = Rest();
    if (rest.size() < m_elementSize)
    {
        return rest.empty() ? S_FALSE : E_FAIL;
    }
    const std::uint64_t bits = LoadBytes(rest.data(), m_elementSize, m_swapped);
    m_real ? StoreReal(bits, m_elementSize, value) : StoreInteger(bits, m_elementSize, value);
    Consume(m_elementSize);
    return S_OK;
}

HRESULT CBlockReader::GetNextElement(VARIANT* value)
{
    if (value == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "value"));
    }
    VARIANT element{};
    const HRESULT result = NextElement(element);
    return result == S_OK ? VariantCopy(value, &element) : result;
}

HRESULT CBlockReader::GetNextDouble(double* value)
{
    if (value == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "value"));
    }
    VARIANT element{};
    const HRESULT result = NextElement(element);
    if (result == S_OK)
    {
        *value = ToDouble(element);
    }
    return result;
}

HRESULT CBlockReader::GetNextInteger(long* value)
{
    if (value == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "value"));
    }
    VARIANT element{};
    const HRESULT result = NextElement(element);
    return result == S_OK ? ToInteger(element, *value) : result;
}

HRESULT CBlockReader::GetNextArray(unsigned long count, double* values, unsigned long* got)
{
    return GetNextScatteredArrays(1, count, &values, got);
}

HRESULT CBlockReader::GetNextScatteredArrays(unsigned long arrays,
                                             unsigned long count,
                                             double* const* values,
                                             unsigned long* got)
{
    if (values == nullptr || got == nullptr || std::find(values, values + arrays, nullptr) != values + arrays)
    {
        return RepairError(got == nullptr ? ZO_NULL_POINTER(nullptr, "got")
                                          : ZO_NULL_POINTER(nullptr, "values"));
    }
    *got = 0;
    for (; *got < count; ++*got)
    {
        for (unsigned long array = 0; array < arrays; ++array)
        {
            const HRESULT result = GetNextDouble(&values[array][*got]);
            if (result == S_FALSE && array == 0)
            {
                return *got == 0 ? S_FALSE : S_OK;
            }
            if (result != S_OK)
            {
                return result == S_FALSE ? E_FAIL : result;
            }
        }
    }
    return S_OK;
}

HRESULT CBlockReader::CollectStream()
{
    if (m_stream->Rest() > static_cast<std::int64_t>(kLargestLent))
    {
        return E_PENDING;
    }
    const HRESULT result = m_stream->Fill(kLargestLent);
    return result == S_OK && !m_stream->IsComplete() ? E_PENDING : result;
}

HRESULT CBlockReader::Access(unsigned char** data, unsigned long* length)
{
    if (data == nullptr || length == nullptr)
    {
        return RepairError(data == nullptr ? ZO_NULL_POINTER(nullptr, "data")
                                           : ZO_NULL_POINTER(nullptr, "length"));
    }
    *data = nullptr;
    *length = 0;
    if (!m_valid)
    {
        return E_ABORT;
    }
    if (m_stream != nullptr)
    {
        const HRESULT result = GuardedEntry([this] { return CollectStream(); });
        if (result != S_OK)
        {
            return result;
        }
    }
    const std::span<unsigned char> rest = Rest();
    *data = rest.empty() ? nullptr : rest.data();
    *length = rest.size();
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
