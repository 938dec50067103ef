#include "LxiCapture.h"

#include "Common/CToolError.h"
#include "Common/HexDump.h"
#include "Common/ToolFiles.h"
#include "LxiEventFormat.h"
#include "PcapFile.h"

#include <fmt/format.h>

#include <algorithm>

namespace ZoVelkor::Tools
{

namespace
{

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kMark = "LX";
constexpr std::string_view kUsualMark = "LXI";

/// Size of the message that bytes begin with; 0 when they begin with none.
std::size_t SoundSize(Bytes bytes)
{
    return RemoteKernel::MeasureLxiMessage(bytes).size;
}

/// Size of what stands before the next sound message.
std::size_t DamagedSize(Bytes bytes)
{
    auto place = bytes.begin();
    do
    {
        place = std::search(place + 1, bytes.end(), kUsualMark.begin(), kUsualMark.end());
    } while (place != bytes.end() && SoundSize({place, bytes.end()}) == 0);
    return static_cast<std::size_t>(place - bytes.begin());
}

void PrintStream(Bytes bytes, CLxiEventPrinter& printer)
{
    std::size_t offset = 0;
    for (std::size_t number = 1; offset != bytes.size(); ++number)
    {
        const Bytes rest = bytes.subspan(offset);
        const std::size_t soundSize = SoundSize(rest);
        const Bytes message = rest.first(soundSize != 0 ? soundSize : DamagedSize(rest));
        printer.Print({fmt::format("packet {}, offset {}", number, offset),
                       fmt::format(R"("packet":{},"offset":{})", number, offset)},
                      message);
        offset += message.size();
    }
}

bool IsEventDatagram(const CapturedDatagram& datagram, std::uint16_t port)
{
    return datagram.sender.port == port || datagram.receiver.port == port ||
           (datagram.payload.size() >= kMark.size() &&
            std::equal(kMark.begin(), kMark.end(), datagram.payload.begin()));
}

void PrintPcapFile(Bytes file, std::uint16_t port, CLxiEventPrinter& printer)
{
    const Capture capture = ReadPcapFile(file);
    for (const CapturedDatagram& datagram : capture.datagrams)
    {
        if (!IsEventDatagram(datagram, port))
        {
            continue;
        }
        const std::string sender = datagram.sender.Text();
        const std::string receiver = datagram.receiver.Text();
        printer.Print({fmt::format("frame {}, {} > {}", datagram.frame, sender, receiver),
                       fmt::format(R"("frame":{},"from":"{}","to":"{}")", datagram.frame, sender, receiver),
                       datagram.missing},
                      datagram.payload);
    }
    if (!capture.fault.empty())
    {
        printer.PrintFault({"capture", ""}, capture.fault);
    }
    Tell(fmt::format("{} in {} frames", printer.Summary(), capture.frameCount));
}

bool IsText(std::string_view text)
{
    return std::ranges::all_of(text,
                               [](char c) { return (c >= ' ' && c <= '~') || (c >= '\t' && c <= '\r'); });
}

} // namespace

void PrintLxiCapture(std::string_view capture, std::uint16_t port, CLxiEventPrinter& printer)
{
    const std::vector<std::uint8_t> raw(capture.begin(), capture.end());
    if (IsCapture(raw))
    {
        PrintPcapFile(raw, port, printer);
    }
    else
    {
        const bool isHex = IsText(capture) && !capture.starts_with(kMark);
        PrintStream(isHex ? ParseHexDump(capture) : raw, printer);
    }
    if (printer.SoundCount() + printer.DamagedCount() == 0)
    {
        throw CToolError(ExitCode::Failed, "there is no event message in it");
    }
}

} // namespace ZoVelkor::Tools
