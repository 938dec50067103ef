#include "LxiEventText.h"

#include "Common/ToolFiles.h"
#include "LxiEventFormat.h"
#include "Registry/RegistryJson.h"
#include "Registry/RegistryValue.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

namespace
{

using Bytes = std::span<const std::uint8_t>;
using RemoteKernel::LxiMessageState;

/// Third byte of a message unless hardware has written another one.
constexpr unsigned char kSoftwareMark = 'I';

std::string EventName(const CLxiLanPacket& packet)
{
    std::array<unsigned char, CLxiLanPacket::kEventIdSize> id{};
    packet.getEventId(id.data());
    return {id.begin(), std::find(id.begin(), id.end(), 0)};
}

struct Stamp
{
    explicit Stamp(const CLxiLanPacket& packet)
    {
        unsigned long lower = 0;
        packet.getTimestamp(lower, nanoSeconds, fraction);
        seconds = (std::uint64_t{packet.getEpoch()} << 32U) + lower;
    }

    std::uint64_t seconds = 0;
    unsigned long nanoSeconds = 0;
    unsigned int fraction = 0; ///< 2^-16 ns
};

std::string StampText(const Stamp& stamp)
{
    std::string text = fmt::format("{}.{:09}", stamp.seconds, stamp.nanoSeconds);
    if (stamp.fraction != 0)
    {
        text += fmt::format(" + {}/65536 ns", stamp.fraction);
    }
    if (stamp.seconds == 0 && stamp.nanoSeconds == 0)
    {
        return text + " (now)";
    }
    return text +
           fmt::format(" ({:%Y-%m-%d %H:%M:%S} UTC)", fmt::gmtime(static_cast<std::time_t>(stamp.seconds)));
}

std::vector<std::string> FlagNames(const CLxiLanPacket& packet)
{
    std::vector<std::string> names;
    for (const LxiFlag& flag : kLxiFlags)
    {
        if ((packet.*flag.get)() != 0)
        {
            names.emplace_back(flag.name);
        }
    }
    return names;
}

struct Field
{
    unsigned identifier;
    std::vector<std::uint8_t> data;
};

std::vector<Field> Fields(const CLxiLanPacket& packet)
{
    std::vector<Field> fields;
    for (unsigned i = 0; i != packet.getNumberOfUserDataFields(); ++i)
    {
        tagLxiLanUserDataType field;
        packet.getUserData(static_cast<unsigned short>(i), field);
        const std::unique_ptr<std::uint8_t[]> owner(field.pData);
        fields.push_back({field.iIdentifier, {field.pData, field.pData + field.iSize}});
    }
    return fields;
}

/// Text when all of it can be read, else hexadecimal digits.
std::string FieldText(const Field& field)
{
    const std::string text(field.data.begin(), field.data.end());
    const bool isText = Printable(text) == text && !text.starts_with("0x");
    std::string digits = isText ? "" : HexText(field.data);
    std::erase(digits, ' ');
    return isText ? fmt::format("{}:\"{}\"", field.identifier, text)
                  : fmt::format("{}:0x{}", field.identifier, digits);
}

std::string TextOf(const CLxiLanPacket& packet)
{
    const std::string name = EventName(packet);
    std::string text = fmt::format("{} domain {} sequence {} time {}",
                                   name.empty() ? "(no name)" : Printable(name),
                                   packet.getDomain(),
                                   packet.getSequenceNumber(),
                                   StampText(Stamp(packet)));
    if (packet.getHWDetect() != kSoftwareMark)
    {
        text += fmt::format(" third byte 0x{:02x}", packet.getHWDetect());
    }
    if (const auto flags = FlagNames(packet); !flags.empty())
    {
        text += fmt::format(" flags {}", fmt::join(flags, ","));
    }
    for (const Field& field : Fields(packet))
    {
        text += " data " + FieldText(field);
    }
    return text;
}

std::string JsonOf(const CLxiLanPacket& packet)
{
    const std::string name = EventName(packet);
    const Stamp stamp(packet);
    std::vector<std::string> fields;
    for (const Field& field : Fields(packet))
    {
        fields.push_back(fmt::format(R"({{"type":{},"hex":"{}"}})", field.identifier, HexText(field.data)));
    }
    std::vector<std::string> flags = FlagNames(packet);
    std::ranges::for_each(flags, [](std::string& flag) { flag = fmt::format("\"{}\"", flag); });
    std::wstring wideName;
    std::ranges::transform(name, std::back_inserter(wideName), [](char c) {
        return static_cast<wchar_t>(static_cast<unsigned char>(c));
    });
    return fmt::format(R"("event":{},"domain":{},"sequence":{},"seconds":{},"nanoseconds":{},"fraction":{},)"
                       R"("hardwareDetect":{},"flags":[{}],"data":[{}])",
                       JsonText(wideName),
                       packet.getDomain(),
                       packet.getSequenceNumber(),
                       stamp.seconds,
                       stamp.nanoSeconds,
                       stamp.fraction,
                       packet.getHWDetect(),
                       fmt::join(flags, ","),
                       fmt::join(fields, ","));
}

struct Fault
{
    std::string text;
    std::size_t offset;
};

/// What is wrong with bytes that should be one whole message.
Fault FindFault(Bytes bytes, std::size_t missing)
{
    const auto extent = RemoteKernel::MeasureLxiMessage(bytes);
    if (extent.state == LxiMessageState::Complete)
    {
        return {fmt::format("{} bytes follow the message", bytes.size() - extent.size + missing),
                extent.size};
    }
    std::string text = extent.fault;
    if (missing != 0)
    {
        text += fmt::format(" ({} bytes were not captured)", missing);
    }
    return {text, extent.faultPlace};
}

} // namespace

std::string LxiFlagNames()
{
    std::string names;
    for (const LxiFlag& flag : kLxiFlags)
    {
        names += fmt::format("{}{}", names.empty() ? "" : ", ", flag.name);
    }
    return names;
}

bool CLxiEventPrinter::Print(const LxiOrigin& origin, Bytes bytes)
{
    CLxiLanPacket packet;
    if (origin.missing == 0 && RemoteKernel::DecodeLxiMessage(bytes, packet))
    {
        Write(origin, m_isJson ? "" : TextOf(packet), m_isJson ? JsonOf(packet) : "");
        ++m_soundCount;
        return true;
    }
    const Fault fault = FindFault(bytes, origin.missing);
    Write(origin,
          fmt::format("damaged at offset {} of {}: {}", fault.offset, bytes.size(), fault.text),
          fmt::format(R"("fault":"{}","at":{},"size":{})", fault.text, fault.offset, bytes.size()));
    ++m_damagedCount;
    return false;
}

void CLxiEventPrinter::PrintFault(const LxiOrigin& origin, const std::string& fault)
{
    Write(origin, "damaged: " + fault, fmt::format(R"("fault":"{}")", fault));
    ++m_damagedCount;
}

std::string CLxiEventPrinter::Summary() const
{
    return fmt::format("{} events, {} damaged", m_soundCount, m_damagedCount);
}

void CLxiEventPrinter::Write(const LxiOrigin& origin, const std::string& text, const std::string& json) const
{
    const char* const comma = origin.json.empty() ? "" : ",";
    WriteOutput("-",
                m_isJson ? fmt::format("{{{}{}{}}}\n", origin.json, comma, json)
                         : fmt::format("{}: {}\n", origin.text, text));
}

} // namespace ZoVelkor::Tools
