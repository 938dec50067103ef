#include "LxiEventMaker.h"

#include "Common/CToolError.h"
#include "Common/ToolFiles.h"
#include "LxiClock.h"
#include "LxiEventFormat.h"
#include "LxiEventText.h"
#include "Registry/RegistryText.h"
#include "Registry/RegistryValue.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <optional>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::string_view kHexPrefix = "0x";
constexpr std::size_t kNanoSecondDigits = 9;
/// An epoch of 16 and seconds of 32 bits.
constexpr std::uint64_t kMaxSeconds = 0xFFFF'FFFF'FFFF;

[[noreturn]] void Refuse(const std::string& message)
{
    throw CToolError(ExitCode::Usage, message);
}

template <class TNumber>
std::optional<TNumber> NumberOf(std::string_view text)
{
    TNumber number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = fault == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional(number) : std::nullopt;
}

/// SECONDS or SECONDS.FRACTION.
std::optional<CLxiTime> ParseSeconds(std::string_view text)
{
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string fraction(text.substr(std::min(point + 1, text.size())));
    const bool isFraction =
        point == text.size() || (!fraction.empty() && fraction.size() <= kNanoSecondDigits);
    fraction.resize(kNanoSecondDigits, '0');
    const auto seconds = NumberOf<std::uint64_t>(text.substr(0, point));
    const auto nanoSeconds = NumberOf<std::uint32_t>(fraction);
    if (!isFraction || !seconds || *seconds > kMaxSeconds || !nanoSeconds)
    {
        return std::nullopt;
    }
    return CLxiTime(static_cast<unsigned short>(*seconds >> 32U), *seconds & 0xFFFF'FFFFU, *nanoSeconds);
}

void SetEvent(CLxiLanPacket& packet, const std::string& name)
{
    std::array<unsigned char, CLxiLanPacket::kEventIdSize> id{};
    if (name.empty() || name.size() > id.size() || Printable(name) != name)
    {
        Refuse(fmt::format("--event {}: not 1 to {} printable ASCII characters", Printable(name), id.size()));
    }
    std::copy(name.begin(), name.end(), id.begin());
    packet.setEventId(id.data());
    packet.setIsErrorMessage(RemoteKernel::LxiEventNumber(packet) == ZO_LXI_ERROR ? 1 : 0);
}

void SetFlag(CLxiLanPacket& packet, const std::string& name)
{
    const auto* const row = std::ranges::find(kLxiFlags, std::string_view(name), &LxiFlag::name);
    if (row == std::end(kLxiFlags))
    {
        Refuse(fmt::format("--flags {}: none of {}", Printable(name), LxiFlagNames()));
    }
    (packet.*row->set)(1);
}

std::vector<std::uint8_t> DataBytes(std::string_view text)
{
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    if (text.starts_with(kHexPrefix))
    {
        bytes.clear();
        AppendBytes(bytes, WideText(text.substr(kHexPrefix.size())));
    }
    return bytes;
}

void AppendField(CLxiLanPacket& packet, const std::string& text)
{
    const std::size_t colon = std::min(text.find(':'), text.size());
    const auto identifier = NumberOf<std::uint8_t>(std::string_view(text).substr(0, colon));
    if (!identifier || colon + 1 >= text.size())
    {
        Refuse(fmt::format("--data {}: not TYPE:TEXT or TYPE:0xDIGITS with a TYPE from 0 to 255",
                           Printable(text)));
    }
    try
    {
        std::vector<std::uint8_t> bytes = DataBytes(std::string_view(text).substr(colon + 1));
        packet.appendUserData({*identifier, static_cast<std::uint32_t>(bytes.size()), bytes.data()});
    }
    catch (const CTextFault& fault)
    {
        Refuse(fmt::format("--data {}: {}", Printable(text), fault.what()));
    }
}

std::uint64_t SecondsOf(const CLxiTime& time) noexcept
{
    return (std::uint64_t{time.GetEpoch()} << 32U) | time.GetSeconds();
}

} // namespace

CLxiTime TakeLxiTime(const std::string& text)
{
    const bool isFromNow = text.starts_with('+');
    CLxiTime time = RemoteKernel::LxiNow();
    if (text == "now")
    {
        return time;
    }
    const auto given = ParseSeconds(std::string_view(text).substr(isFromNow ? 1 : 0));
    if (!given)
    {
        Refuse(fmt::format("--time {}: not now, SECONDS or +SECONDS with at most 9 digits behind the point",
                           Printable(text)));
    }
    if (!isFromNow)
    {
        return *given;
    }
    if (SecondsOf(time) + SecondsOf(*given) >= kMaxSeconds)
    {
        Refuse(fmt::format("--time {}: beyond what 48 bits of seconds can tell", Printable(text)));
    }
    time.Add(*given);
    return time;
}

std::vector<std::uint8_t> MakeLxiMessage(const LxiEventWords& words, std::uint32_t sequenceNumber)
{
    CLxiLanPacket packet;
    SetEvent(packet, words.event);
    packet.setDomain(static_cast<unsigned char>(words.domain));
    const CLxiTime time = TakeLxiTime(words.time);
    packet.setEpoch(time.GetEpoch());
    packet.setTimestamp(time.GetSeconds(), time.GetNanoSeconds(), 0);
    for (const std::string& flag : words.flags)
    {
        SetFlag(packet, flag);
    }
    for (const std::string& data : words.data)
    {
        AppendField(packet, data);
    }
    std::vector<std::uint8_t> message = RemoteKernel::EncodeLxiMessage(packet);
    if (message.empty())
    {
        Refuse(fmt::format("--data: a field is empty or the message is longer than {} bytes",
                           RemoteKernel::kMaxLxiMessageSize));
    }
    RemoteKernel::SetLxiSequenceNumber(message, sequenceNumber);
    return message;
}

} // namespace ZoVelkor::Tools
