#include "CLxiLanPacket.h"

#include "CLxiTime.h"
#include "Interlocked.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>

namespace ZoVelkor
{
namespace
{

using Bytes = std::unique_ptr<std::uint8_t[]>;

constexpr std::string_view kEventNames[] = {
    "LAN0", "LAN1", "LAN2", "LAN3", "LAN4", "LAN5", "LAN6", "LAN7", "ERROR"};
constexpr int kUnknownEvent = 9;
static_assert(std::size(kEventNames) == kUnknownEvent);

constexpr std::size_t kHeaderSize = 38;
constexpr std::size_t kEndMarkSize = 4;
/// Length, two zeros and identifier in front of the data as they are written.
constexpr std::size_t kWrittenFrameSize = 5;
/// What the announced length counts for each field beside its data, and for the message as a whole. As a
/// field is received, its identifier and the next field's length are its frame.
constexpr std::uint16_t kFrameSize = 3;
constexpr unsigned long kAnnouncedSize = 40;

Bytes CopyOf(const std::uint8_t* data, std::size_t size)
{
    auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    std::copy_n(data, size, copy.get());
    return copy;
}

template <class TNumber>
std::uint8_t* Put(std::uint8_t* to, TNumber number) noexcept
{
    for (std::size_t i = sizeof(TNumber); i-- != 0;)
    {
        *to++ = static_cast<std::uint8_t>(number >> (8 * i));
    }
    return to;
}

template <class TNumber>
const std::uint8_t* Get(const std::uint8_t* from, TNumber& number) noexcept
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i != sizeof(TNumber); ++i)
    {
        value = (value << 8U) | *from++;
    }
    number = static_cast<TNumber>(value);
    return from;
}

/// Appends a piece formatted with swprintf, up to its first zero.
template <class... TValues>
void AppendPiece(CComBSTR& text, const wchar_t* format, TValues... values)
{
    constexpr std::size_t kPieceSize = 256;
    wchar_t piece[kPieceSize] = L"";
    static_cast<void>(std::swprintf(piece, kPieceSize, format, values...));
    text += piece;
}

void AppendOwned(CComBSTR& text, BSTR piece)
{
    CComBSTR owner;
    owner.Attach(piece);
    text += owner;
}

} // namespace

volatile LONG CLxiLanPacket::s_lSequenceNumber = 0;

CLxiLanPacket::CFields::~CFields()
{
    for (const LxiLanDataField& field : m_fields)
    {
        delete[] field.pData;
    }
}

void CLxiLanPacket::CFields::Append(std::uint8_t identifier, const std::uint8_t* data, std::uint32_t size)
{
    const std::uint32_t used = data != nullptr ? size : 0;
    // Owned until the list has taken it: growing the list may throw.
    Bytes copy = CopyOf(data, used);
    m_fields.push_back({used, identifier, copy.get()});
    static_cast<void>(copy.release());
}

CLxiLanPacket::CLxiLanPacket() = default;

CLxiLanPacket::CLxiLanPacket(tagEnumLxiLanChannelId channel,
                             const wchar_t* /*source*/,
                             unsigned short domain,
                             const wchar_t* /*destination*/,
                             unsigned long long time,
                             short isError,
                             short isRetransmission,
                             short isAcknowledgement,
                             short isHwFlag,
                             unsigned short userDataCount,
                             const tagLxiLanUserDataType* userData)
    : m_domain(static_cast<std::uint8_t>(domain))
{
    const auto index = static_cast<std::size_t>(channel);
    if (index < std::size(kEventNames))
    {
        std::copy(kEventNames[index].begin(), kEventNames[index].end(), m_abEventId.begin());
    }
    setIsErrorMessage(isError == VARIANT_TRUE);
    setIsRetransmission(isRetransmission == VARIANT_TRUE);
    setIsAcknowledgement(isAcknowledgement == VARIANT_TRUE);
    setIsHwFlagSet(isHwFlag == VARIANT_TRUE);
    const CLxiTime stamp(0, time);
    setTimestamp(stamp.GetSeconds(), stamp.GetNanoSeconds(), 0);
    for (std::size_t i = 0; userData != nullptr && i != userDataCount; ++i)
    {
        appendUserData(userData[i]);
    }
}

CLxiLanPacket::~CLxiLanPacket() = default;

void CLxiLanPacket::setTimestamp(unsigned long seconds,
                                 unsigned long nanoSeconds,
                                 unsigned int fractional) noexcept
{
    m_seconds = static_cast<std::uint32_t>(seconds);
    m_nanoSeconds = static_cast<std::uint32_t>(nanoSeconds);
    m_fractionalNanoSeconds = static_cast<std::uint16_t>(fractional);
}

void CLxiLanPacket::getTimestamp(unsigned long& seconds,
                                 unsigned long& nanoSeconds,
                                 unsigned int& fractional) const noexcept
{
    seconds = m_seconds;
    nanoSeconds = m_nanoSeconds;
    fractional = m_fractionalNanoSeconds;
}

unsigned long long CLxiLanPacket::getTimestamp() const noexcept
{
    return CLxiTime(0, m_seconds, m_nanoSeconds).GetTimeWihtoutEpoch();
}

void CLxiLanPacket::SetFlag(std::uint16_t flag, int value) noexcept
{
    m_flags = static_cast<std::uint16_t>(value == 1 ? m_flags | flag : m_flags & ~flag);
}

void CLxiLanPacket::setEventId(const unsigned char* id) noexcept
{
    if (id != nullptr)
    {
        std::copy_n(id, kEventIdSize, m_abEventId.begin());
    }
}

void CLxiLanPacket::getEventId(unsigned char* id) const noexcept
{
    if (id != nullptr)
    {
        std::copy(m_abEventId.begin(), m_abEventId.end(), id);
    }
}

int CLxiLanPacket::getEventId() const noexcept
{
    const auto isBeginning = [this](std::string_view name) {
        return std::equal(name.begin(), name.end(), m_abEventId.begin());
    };
    const auto* const found = std::find_if(std::begin(kEventNames), std::end(kEventNames), isBeginning);
    return static_cast<int>(found - std::begin(kEventNames));
}

BSTR CLxiLanPacket::getEventName() const noexcept
{
    const auto* const end = std::find(m_abEventId.begin(), m_abEventId.end(), 0);
    return A2WBSTR(reinterpret_cast<const char*>(m_abEventId.data()),
                   static_cast<int>(end - m_abEventId.begin()));
}

unsigned int CLxiLanPacket::getNumberOfUserDataFields() const noexcept
{
    return static_cast<unsigned int>(m_fields.All().size());
}

void CLxiLanPacket::appendUserData(const tagLxiLanUserDataType& field)
{
    m_fields.Append(field.iIdentifier, field.pData, field.iSize);
}

int CLxiLanPacket::getUserData(unsigned short index, tagLxiLanUserDataType& out) const
{
    if (index >= m_fields.All().size())
    {
        return 0;
    }
    const LxiLanDataField& field = m_fields.All()[index];
    out = {field.iIdentifier, field.iSize, CopyOf(field.pData, field.iSize).release()};
    return 1;
}

void CLxiLanPacket::duplicatePacket(const CLxiLanPacket& source)
{
    if (&source == this)
    {
        return;
    }
    // Copied in full before anything changes: a lack of memory leaves this packet as it was.
    CFields fields;
    for (const LxiLanDataField& field : source.m_fields.All())
    {
        fields.Append(field.iIdentifier, field.pData, field.iSize);
    }
    m_fields.Swap(fields);
    m_abHWDetect = source.m_abHWDetect;
    m_domain = source.m_domain;
    m_abEventId = source.m_abEventId;
    m_sequenceNumber = source.m_sequenceNumber;
    m_seconds = source.m_seconds;
    m_nanoSeconds = source.m_nanoSeconds;
    m_fractionalNanoSeconds = source.m_fractionalNanoSeconds;
    m_epoch = source.m_epoch;
    m_flags = source.m_flags;
}

unsigned char* CLxiLanPacket::WriteHeader(unsigned char* to) const noexcept
{
    to = std::copy(m_abHWDetect.begin(), m_abHWDetect.end(), to);
    to = Put(to, m_domain);
    to = std::copy(m_abEventId.begin(), m_abEventId.end(), to);
    to = Put(to, m_sequenceNumber);
    to = Put(to, m_seconds);
    to = Put(to, m_nanoSeconds);
    to = Put(to, m_fractionalNanoSeconds);
    to = Put(to, m_epoch);
    return Put(to, m_flags);
}

void CLxiLanPacket::getSerializedDataStream(unsigned long& length, unsigned char*& data)
{
    const std::vector<LxiLanDataField>& fields = m_fields.All();
    const std::size_t dataSize = std::accumulate(
        fields.begin(), fields.end(), std::size_t{0}, [](std::size_t sum, const LxiLanDataField& field) {
            return sum + field.iSize;
        });
    Bytes stream = std::make_unique_for_overwrite<std::uint8_t[]>(
        kHeaderSize + dataSize + fields.size() * kWrittenFrameSize + kEndMarkSize);
    m_sequenceNumber = static_cast<std::uint32_t>(InterlockedIncrement(&s_lSequenceNumber));
    std::uint8_t* to = WriteHeader(stream.get());
    for (const LxiLanDataField& field : fields)
    {
        to = Put(to, static_cast<std::uint16_t>(field.iSize));
        to = Put(to, std::uint16_t{0});
        to = Put(to, field.iIdentifier);
        to = std::copy_n(field.pData, field.iSize, to);
    }
    Put(to, std::uint32_t{0});
    // Deliberate: the announced length is that of the standard's layout, which the peers expect, and does not
    // count the two zeros in each field.
    length = kAnnouncedSize + dataSize + fields.size() * kFrameSize;
    data = stream.release();
}

unsigned long CLxiLanPacket::addSerializedData(unsigned long length, const unsigned char* data)
{
    constexpr std::string_view kMark = "LX";
    const unsigned char* const end = data != nullptr ? data + length : data;
    const unsigned char* const begin = std::search(data, end, kMark.begin(), kMark.end());
    if (begin == end)
    {
        // Deliberate: within a message, too, a chunk without the mark counts as foreign and is handed back.
        return reinterpret_cast<std::uintptr_t>(data);
    }
    const std::uint32_t size = m_receivePhase == 0 ? kBasePartSize : m_pendingFieldLength;
    const auto count = static_cast<std::uint32_t>(
        std::min<std::size_t>(static_cast<std::size_t>(end - begin), size - m_received));
    std::copy_n(begin, count, m_abReceived.begin() + m_received);
    m_received += count;
    m_bytesExpected -= count;
    if (m_received != size)
    {
        return 0;
    }
    if (m_receivePhase == 0)
    {
        ProcessBasePart();
    }
    else
    {
        ProcessUserData();
    }
    return 1;
}

void CLxiLanPacket::ProcessBasePart() noexcept
{
    const std::uint8_t* from = m_abReceived.data();
    std::copy_n(from, m_abHWDetect.size(), m_abHWDetect.begin());
    from = Get(from + m_abHWDetect.size(), m_domain);
    std::copy_n(from, kEventIdSize, m_abEventId.begin());
    from = Get(from + kEventIdSize, m_sequenceNumber);
    from = Get(from, m_seconds);
    from = Get(from, m_nanoSeconds);
    from = Get(from, m_fractionalNanoSeconds);
    from = Get(from, m_epoch);
    from = Get(from, m_flags);
    std::uint16_t fieldLength = 0;
    Get(from, fieldLength);
    // Deliberate: the phase stays 0. Event handling wants the header alone, and a lost datagram must not turn
    // the next message into user data.
    AnnounceField(fieldLength);
}

void CLxiLanPacket::ProcessUserData()
{
    const std::uint32_t dataSize = m_pendingFieldLength - std::uint32_t{kFrameSize};
    const std::uint8_t* const data = m_abReceived.data() + 1;
    m_fields.Append(m_abReceived[0], data, dataSize);
    std::uint16_t fieldLength = 0;
    Get(data + dataSize, fieldLength);
    AnnounceField(fieldLength);
}

void CLxiLanPacket::AnnounceField(std::uint16_t length) noexcept
{
    const bool isUsable = length != 0 && length <= kReceiveBufferSize - kFrameSize;
    m_pendingFieldLength = isUsable ? static_cast<std::uint16_t>(length + kFrameSize) : std::uint16_t{0};
    setReceivePhase(m_receivePhase);
}

void CLxiLanPacket::setReceivePhase(unsigned int phase) noexcept
{
    std::fill_n(m_abReceived.begin(), m_received, std::uint8_t{0});
    m_received = 0;
    m_receivePhase = m_pendingFieldLength != 0 ? phase : 0;
    m_bytesExpected = m_pendingFieldLength != 0 ? m_pendingFieldLength : kBasePartSize;
}

void CLxiLanPacket::getReadableLANData(CComBSTR& text) const
{
    AppendHeaderText(text);
    AppendTimeText(text);
    AppendPiece(text, L"ErrMsg=%ls, ", getIsErrorMessage() != 0 ? L"true" : L"false");
    AppendPiece(text, L"ReTrans=%ls, ", getIsRetransmission() != 0 ? L"true" : L"false");
    AppendPiece(text, L"HWFlag=%ls, ", getIsHwFlagSet() != 0 ? L"true" : L"false");
    AppendPiece(text, L"AckMsg=%ls", getIsAcknowledgement() != 0 ? L"true" : L"false");
    AppendUserDataText(text);
}

void CLxiLanPacket::AppendHeaderText(CComBSTR& text) const
{
    // Widened first: %c refuses bytes that the locale has no character for.
    const CComBSTR mark(static_cast<int>(m_abHWDetect.size()),
                        reinterpret_cast<const char*>(m_abHWDetect.data()));
    const std::wstring_view marks = mark.View();
    AppendPiece(text, L"%lc%lc%lc, ", wint_t(marks[0]), wint_t(marks[1]), wint_t(marks[2]));
    AppendPiece(text, L"%i, ", int{m_domain});
    AppendOwned(text, getEventName());
    AppendPiece(text, L", %li, ", long{static_cast<std::int32_t>(m_sequenceNumber)});
}

void CLxiLanPacket::AppendTimeText(CComBSTR& text) const
{
    AppendOwned(text, CLxiTime(0, m_seconds, m_nanoSeconds).GetLocal());
    AppendPiece(text, L", %i, ", int{m_fractionalNanoSeconds});
    AppendPiece(text, L"%i, ", int{m_epoch});
}

void CLxiLanPacket::AppendUserDataText(CComBSTR& text) const
{
    if (m_fields.All().empty())
    {
        return;
    }
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    std::wstring bytes = L", User data = ";
    for (const LxiLanDataField& field : m_fields.All())
    {
        for (std::size_t i = 0; i != field.iSize; ++i)
        {
            const unsigned byte = field.pData[i];
            bytes += {L'0', L'x', kDigits[byte >> 4U], kDigits[byte & 0xFU], L' '};
        }
    }
    text += bytes.c_str();
}

} // namespace ZoVelkor
