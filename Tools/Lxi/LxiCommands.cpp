#include "CLxiEventEndpoint.h"
#include "CLxiListener.h"
#include "CLxiTransmitter.h"
#include "Common/Actions.h"
#include "Common/HexDump.h"
#include "Common/Subcommands.h"
#include "Common/TimeoutOption.h"
#include "Common/ToolFiles.h"
#include "LxiCapture.h"
#include "LxiEventMaker.h"
#include "Registry/RegistryValue.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

namespace
{

/// A capture is read as a whole.
constexpr std::size_t kMaxCaptureSize = std::size_t{1} << 30U;

/// What the actions of `zo lxi` are given.
struct LxiOptions
{
    LxiEventWords event;
    std::string receiver;
    std::string interface = "127.0.0.1";
    std::vector<std::string> capture;
    std::uint32_t sequenceNumber = 1;
    std::size_t count = 0;
    std::uint16_t port = RemoteKernel::kLxiPort;
    double timeoutSeconds = 0.0;
    bool isTcp = false;
    bool isDryRun = false;
    bool isHex = false;
    bool isJson = false;
};

LxiOrigin SentTo(const std::optional<CLxiTransmitter>& transmitter)
{
    return {transmitter ? "sent to " + transmitter->Receiver().Text() : "not sent", ""};
}

ExitCode Send(const LxiOptions& options)
{
    if (options.isTcp && options.receiver.empty())
    {
        throw CToolError(ExitCode::Usage, "--tcp goes with --to");
    }
    CLxiEventPrinter printer(false);
    std::uint32_t number = options.sequenceNumber;
    // The words are examined before anything is sent.
    std::vector<std::uint8_t> message = MakeLxiMessage(options.event, number);
    std::optional<CLxiTransmitter> transmitter;
    if (!options.isDryRun)
    {
        transmitter.emplace(LxiReceiver{options.receiver, options.port, options.interface, options.isTcp});
    }
    for (std::size_t sent = 0; sent < std::max<std::size_t>(options.count, 1); ++sent)
    {
        message = MakeLxiMessage(options.event, number++);
        if (transmitter)
        {
            transmitter->Send(message);
        }
        if (options.isHex)
        {
            WriteOutput("-", HexText(message) + '\n');
        }
        else
        {
            printer.Print(SentTo(transmitter), message);
        }
    }
    return ExitCode::Success;
}

LxiOrigin HeardFrom(const RemoteKernel::LxiPeer& sender)
{
    return {sender.Text(), fmt::format(R"("from":"{}")", sender.Text())};
}

ExitCode Listen(const LxiOptions& options)
{
    using Clock = CLxiListener::Clock;
    CLxiEventPrinter printer(options.isJson);
    const auto isDone = [&] { return options.count != 0 && printer.SoundCount() >= options.count; };
    const auto limit = Milliseconds(options.timeoutSeconds);
    const auto nextDeadline = [&] {
        return limit.count() != 0 ? std::optional(Clock::now() + limit) : std::nullopt;
    };
    auto deadline = nextDeadline();
    CLxiListener listener(
        options.interface,
        options.port,
        [&](auto message, const RemoteKernel::LxiPeer& sender) {
            // Several messages can come at once, of which not all are wanted.
            if (!isDone() && printer.Print(HeardFrom(sender), message))
            {
                deadline = nextDeadline();
            }
        },
        [&](const RemoteKernel::LxiPeer& sender, const char* fault) {
            printer.PrintFault(HeardFrom(sender), fault);
        });
    Tell("listening on " + listener.Text());
    LxiWait wait = LxiWait::Heard;
    while (wait == LxiWait::Heard && !isDone())
    {
        wait = listener.Wait(deadline);
    }
    Tell(printer.Summary());
    if (wait == LxiWait::Interrupted)
    {
        return ExitCode::Interrupted;
    }
    return options.count == 0 || isDone() ? ExitCode::Success : ExitCode::NoAccess;
}

/// What is no file is a capture by itself when it consists of hexadecimal digits.
std::string ReadCapture(const std::vector<std::string>& words)
{
    std::error_code ignored;
    const std::string& name = words.front();
    const std::string text = fmt::format("{}", fmt::join(words, " "));
    const bool isFile = name == kStandardStream || std::filesystem::exists(name, ignored);
    if (!isFile && IsHexText(text))
    {
        return text;
    }
    if (words.size() != 1)
    {
        throw CToolError(ExitCode::Usage,
                         fmt::format("{}: neither one file nor hexadecimal digits", Printable(text)));
    }
    return ReadInput(name, kMaxCaptureSize);
}

std::string NameOf(const std::vector<std::string>& words)
{
    return words.front() == kStandardStream ? "standard input" : Printable(words.front());
}

ExitCode Decode(const LxiOptions& options)
{
    CLxiEventPrinter printer(options.isJson);
    const std::string capture = ReadCapture(options.capture);
    try
    {
        PrintLxiCapture(capture, options.port, printer);
    }
    catch (const CToolError& error)
    {
        throw CToolError(error.Code(), fmt::format("{}: {}", NameOf(options.capture), error.what()));
    }
    return printer.DamagedCount() == 0 ? ExitCode::Success : ExitCode::Failed;
}

// What an action takes on the command line.
constexpr unsigned kEvent = 0x1;
constexpr unsigned kReceiver = 0x2;
constexpr unsigned kListening = 0x4;
constexpr unsigned kCapture = 0x8;
constexpr unsigned kCount = 0x10;
constexpr unsigned kInterface = 0x20;
constexpr unsigned kJson = 0x40;

using LxiAction = ToolAction<LxiOptions>;

// clang-format off
constexpr LxiAction kActions[] = {
    {"send", "Send event messages, to the multicast group on loopback unless told otherwise",
     kEvent | kReceiver | kCount | kInterface,
     "Example: zo lxi send --event LAN3\n"
     "Example: zo lxi send --event LXIERROR --to 192.168.0.20 --tcp --data 1:overheated\n"
     "Example: zo lxi send --event sweep --time +0.5 --data 2:0x00ff --dry-run --hex", Send},
    {"listen", "Show event messages as they come: multicast, UDP and TCP, until Ctrl-C",
     kListening | kCount | kInterface | kJson,
     "Example: zo lxi listen --bind 0.0.0.0\n"
     "Example: zo lxi listen --count 1 --timeout 10 --json", Listen},
    {"decode", "Show the event messages of a capture, and say what is wrong with damaged ones",
     kCapture | kJson,
     "FILE holds raw bytes, hexadecimal digits (also as xxd and hexdump print them) or a capture in the format "
     "pcap; - is standard input. HEX are the digits themselves.\n"
     "Example: zo lxi decode capture.pcap --json\n"
     "Example: zo lxi send --dry-run --hex | zo lxi decode -", Decode},
};
// clang-format on

constexpr const char* kLxiFooter = "Example: zo lxi listen\n"
                                   "Example: zo lxi send --event LAN3\n"
                                   "Example: zo lxi decode capture.pcap";

void AddEventOptions(CLI::App& command, LxiEventWords& event)
{
    constexpr unsigned kMaxDomain = 255;
    command.add_option("-e,--event", event.event, "LAN0 to LAN7, LXIERROR or another name")
        ->type_name("NAME")
        ->capture_default_str();
    command
        .add_option(
            "--time", event.time, "now, SECONDS since 1970 or +SECONDS from now, with a fraction maybe")
        ->type_name("TIME")
        ->capture_default_str();
    command.add_option("--domain", event.domain, "Domain")
        ->type_name("N")
        ->check(CLI::Range(0U, kMaxDomain))
        ->capture_default_str();
    command.add_option("--flags", event.flags, LxiFlagNames() + ", with commas in between")
        ->type_name("FLAGS")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("-d,--data", event.data, "Data field, TYPE from 0 to 255; may be repeated")
        ->type_name("TYPE:TEXT|TYPE:0xDIGITS")
        ->allow_extra_args(false);
}

void AddReceiverOptions(CLI::App& command, LxiOptions& options)
{
    CLI::Option* const receiver =
        command.add_option("--to", options.receiver, "One receiver")->type_name("HOST[:PORT]");
    command
        .add_flag_callback(
            "--multicast", [] {}, "To the multicast group, which is usual")
        ->excludes(receiver);
    command.add_flag("--tcp", options.isTcp, "By TCP instead of UDP");
    command.add_option("--sequence", options.sequenceNumber, "Sequence number of the first message")
        ->type_name("N")
        ->capture_default_str();
    command.add_flag("--dry-run", options.isDryRun, "Send nothing");
    command.add_flag("--hex", options.isHex, "Show the bytes that are sent, nothing else");
}

void AddOptions(CLI::App& command, unsigned takes, LxiOptions& options)
{
    if ((takes & kEvent) != 0)
    {
        AddEventOptions(command, options.event);
    }
    if ((takes & kReceiver) != 0)
    {
        AddReceiverOptions(command, options);
    }
    if ((takes & kListening) != 0)
    {
        AddTimeoutOption(command, options.timeoutSeconds)
            .description("End when no event has come for so long, in seconds")
            ->default_str("");
    }
    if ((takes & kCapture) != 0)
    {
        command.add_option("capture", options.capture, "Capture")->type_name("FILE|HEX")->required();
    }
    if ((takes & kCount) != 0)
    {
        command.add_option("-n,--count", options.count, "So many events")
            ->type_name("N")
            ->check(CLI::PositiveNumber);
    }
    if ((takes & kInterface) != 0)
    {
        command.add_option("--bind", options.interface, "IPv4 address of the interface")
            ->type_name("ADDRESS")
            ->capture_default_str();
    }
    if ((takes & kJson) != 0)
    {
        command.add_flag("--json", options.isJson, "As JSON, one object a line");
    }
    command.add_option("-p,--port", options.port, "Port of events")->type_name("PORT")->capture_default_str();
}

} // namespace

void AddLxiCommands(CLI::App& tool, ExitCode& result)
{
    CLI::App& lxi = *tool.add_subcommand("lxi", "LXI events: send, listen, decode captures");
    lxi.require_subcommand(1);
    lxi.footer(kLxiFooter);
    const auto options = std::make_shared<LxiOptions>();
    AddActions(lxi, std::span<const LxiAction>(kActions), options, &AddOptions, result);
}

} // namespace ZoVelkor::Tools
