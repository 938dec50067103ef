#include "LxiEventFormat.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{
namespace
{

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kSequenceNumberOffset = 20;
constexpr std::size_t kSequenceNumberSize = 4;
constexpr std::size_t kNanoSecondOffset = 28;
constexpr std::size_t kFlagOffset = 36;
constexpr std::size_t kHeaderSize = 38;
constexpr std::size_t kLengthSize = 2;
constexpr std::size_t kIdentifierSize = 1;
static_assert(kHeaderSize + kLengthSize == kMinLxiMessageSize);
constexpr std::uint32_t kNanoSecondsPerSecond = 1'000'000'000;
constexpr std::uint32_t kMaxFieldSize = 0xFFFF;
constexpr std::uint8_t kRetransmissionFlag = 2;
static_assert(kMaxLxiMessageSize == 8192, "stands in a message");

/// What a message begins with; hardware may write the third byte of the mark.
constexpr std::string_view kMark = "LX";

struct EventName
{
    std::string_view name;
    long event;
};

// The first name of an event is the one that is sent. Errors have the name of the standard there; the other
// one is what a packet is made with.
constexpr EventName kEventNames[] = {
    {"LAN0", ZO_LXI_LAN0},
    {"LAN1", ZO_LXI_LAN1},
    {"LAN2", ZO_LXI_LAN2},
    {"LAN3", ZO_LXI_LAN3},
    {"LAN4", ZO_LXI_LAN4},
    {"LAN5", ZO_LXI_LAN5},
    {"LAN6", ZO_LXI_LAN6},
    {"LAN7", ZO_LXI_LAN7},
    {"LXIERROR", ZO_LXI_ERROR},
    {"ERROR", ZO_LXI_ERROR},
};

std::uint32_t Number(Bytes bytes, std::size_t offset, std::size_t size) noexcept
{
    std::uint32_t number = 0;
    for (const std::uint8_t byte : bytes.subspan(offset, size))
    {
        number = (number << 8U) | byte;
    }
    return number;
}

bool HasMark(Bytes bytes) noexcept
{
    const std::size_t size = std::min(bytes.size(), kMark.size());
    return std::equal(kMark.begin(), kMark.begin() + static_cast<std::ptrdiff_t>(size), bytes.begin());
}

/// A data field of a packet, and owner of its data.
struct Field
{
    Field(const CLxiLanPacket& packet, unsigned short index) { packet.getUserData(index, data); }
    Field(const Field&) = delete;
    Field& operator=(const Field&) = delete;
    ~Field() { delete[] data.pData; }

    tagLxiLanUserDataType data;
};

/// Appends the data fields and the end mark; false when they do not fit.
bool AppendFields(const CLxiLanPacket& packet, std::vector<std::uint8_t>& message)
{
    for (unsigned int i = 0; i != packet.getNumberOfUserDataFields(); ++i)
    {
        const Field field(packet, static_cast<unsigned short>(i));
        const std::uint32_t size = field.data.iSize;
        if (size == 0 || size > kMaxFieldSize ||
            message.size() + size + kIdentifierSize + 2 * kLengthSize > kMaxLxiMessageSize)
        {
            return false;
        }
        message.insert(
            message.end(),
            {static_cast<std::uint8_t>(size >> 8U), static_cast<std::uint8_t>(size), field.data.iIdentifier});
        message.insert(message.end(), field.data.pData, field.data.pData + size);
    }
    message.insert(message.end(), kLengthSize, 0);
    return true;
}

} // namespace

LxiMessageExtent MeasureLxiMessage(Bytes bytes) noexcept
{
    using State = LxiMessageState;
    if (!HasMark(bytes))
    {
        return {State::Malformed, 0, "it does not begin with LX"};
    }
    if (bytes.size() < kHeaderSize)
    {
        return {State::Incomplete, 0, "the header is cut off", bytes.size()};
    }
    if (Number(bytes, kNanoSecondOffset, 4) >= kNanoSecondsPerSecond)
    {
        return {State::Malformed, 0, "the nanoseconds are a second or more", kNanoSecondOffset};
    }
    std::size_t length = kHeaderSize; // place of a length
    while (length + kLengthSize <= bytes.size())
    {
        const std::size_t size = Number(bytes, length, kLengthSize);
        if (size == 0)
        {
            return {State::Complete, length + kLengthSize};
        }
        const std::size_t next = length + kLengthSize + kIdentifierSize + size;
        if (next + kLengthSize > kMaxLxiMessageSize)
        {
            return {State::Malformed, 0, "the data field makes the message longer than 8192 bytes", length};
        }
        if (next > bytes.size())
        {
            return {State::Incomplete, 0, "the data field is cut off", length};
        }
        length = next;
    }
    return {State::Incomplete, 0, "the end mark is missing", bytes.size()};
}

bool DecodeLxiMessage(Bytes bytes, CLxiLanPacket& packet)
{
    const LxiMessageExtent extent = MeasureLxiMessage(bytes);
    if (extent.state != LxiMessageState::Complete || extent.size != bytes.size())
    {
        return false;
    }
    // The packet takes its header from here and leaves the fields to the receiver.
    packet.addSerializedData(kMinLxiMessageSize, bytes.data());
    std::size_t offset = kHeaderSize;
    while (const std::uint32_t size = Number(bytes, offset, kLengthSize))
    {
        std::vector<std::uint8_t> data(size);
        offset += kLengthSize;
        const Bytes field = bytes.subspan(offset + kIdentifierSize, size);
        std::copy(field.begin(), field.end(), data.begin());
        packet.appendUserData({bytes[offset], size, data.data()});
        offset += kIdentifierSize + size;
    }
    return true;
}

std::vector<std::uint8_t> EncodeLxiMessage(CLxiLanPacket& packet)
{
    std::vector<std::uint8_t> message(kHeaderSize);
    const bool isTime = static_cast<std::uint32_t>(packet.getTimestamp()) < kNanoSecondsPerSecond;
    if (!isTime || !AppendFields(packet, message))
    {
        return {};
    }
    unsigned long length = 0;
    unsigned char* stream = nullptr;
    packet.getSerializedDataStream(length, stream);
    const std::unique_ptr<unsigned char[]> owner(stream);
    std::copy_n(stream, kHeaderSize, message.begin());
    return message;
}

void SetLxiSequenceNumber(std::span<std::uint8_t> message, std::uint32_t number) noexcept
{
    for (std::size_t i = kSequenceNumberSize; i != 0; --i, number >>= 8U)
    {
        message[kSequenceNumberOffset + i - 1] = static_cast<std::uint8_t>(number);
    }
}

void MarkLxiRetransmission(std::span<std::uint8_t> message) noexcept
{
    message[kFlagOffset + 1] |= kRetransmissionFlag;
}

long LxiEventNumber(const CLxiLanPacket& packet) noexcept
{
    if (packet.getIsErrorMessage() != 0)
    {
        return ZO_LXI_ERROR;
    }
    std::array<unsigned char, CLxiLanPacket::kEventIdSize> id{};
    packet.getEventId(id.data());
    const std::string_view name(reinterpret_cast<const char*>(id.data()),
                                static_cast<std::size_t>(std::find(id.begin(), id.end(), 0) - id.begin()));
    const auto* const row = std::find_if(std::begin(kEventNames),
                                         std::end(kEventNames),
                                         [name](const EventName& known) { return known.name == name; });
    return row != std::end(kEventNames) ? row->event : kUnknownLxiEvent;
}

void SetLxiEvent(CLxiLanPacket& packet, long event) noexcept
{
    if (event < 0 || event >= kLxiEventCount)
    {
        return;
    }
    const std::string_view name = kEventNames[event].name;
    std::array<unsigned char, CLxiLanPacket::kEventIdSize> id{};
    std::copy(name.begin(), name.end(), id.begin());
    packet.setEventId(id.data());
    packet.setIsErrorMessage(event == ZO_LXI_ERROR ? 1 : 0);
}

} // namespace ZoVelkor::RemoteKernel
