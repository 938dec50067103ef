#include "AnswerOutput.h"
#include "Common/Actions.h"
#include "Common/CInterruptWatcher.h"
#include "Common/Subcommands.h"
#include "Common/TimeoutOption.h"
#include "Common/ToolFiles.h"
#include "Instrument/CInstrumentLink.h"
#include "ScpiConsole.h"
#include "ScpiExchange.h"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

namespace
{

/// What the actions of `zo scpi` are given.
struct ScpiOptions
{
    std::string address;
    std::vector<std::string> commands;
    std::string output;
    std::string input;
    bool isUnchecked = false;
    double timeoutSeconds = kDefaultTimeoutSeconds;
};

/// A connection that Ctrl-C ends, made for one run of the tool.
struct PeerConnection
{
    explicit PeerConnection(const ScpiOptions& options)
        : link(TakeInstrumentAddress(options.address), Milliseconds(options.timeoutSeconds), &watcher)
    {
        link.Connect();
    }

    CInterruptWatcher watcher{IdleInterrupt::Exit};
    CInstrumentLink link;
};

/// Where answers go: to a file when one is given.
std::unique_ptr<CAnswerTaker> MakeTaker(const ScpiOptions& options)
{
    if (options.output.empty())
    {
        return std::make_unique<CAnswerPrinter>();
    }
    return std::make_unique<CAnswerFile>(options.output);
}

void CheckForOne(const ScpiOptions& options, const std::string& file, const char* option)
{
    if (!file.empty() && options.commands.size() != 1)
    {
        throw CToolError(ExitCode::Usage, fmt::format("{} goes with one command", option));
    }
}

/// Carries the commands out up to the first one that the instrument complains about.
ExitCode CarryOutAll(const ScpiOptions& options, CAnswerTaker& taker)
{
    PeerConnection connection(options);
    for (const std::string& command : options.commands)
    {
        const auto errors = CarryOut(connection.link, {command, options.input, !options.isUnchecked}, taker);
        if (TellErrors(command, errors))
        {
            return ExitCode::Failed;
        }
    }
    return ExitCode::Success;
}

ExitCode Query(const ScpiOptions& options)
{
    CheckForOne(options, options.output, "--output");
    return CarryOutAll(options, *MakeTaker(options));
}

ExitCode Write(const ScpiOptions& options)
{
    CheckForOne(options, options.input, "--input");
    CAnswerDrain drain;
    return CarryOutAll(options, drain);
}

ExitCode Read(const ScpiOptions& options)
{
    const auto taker = MakeTaker(options);
    PeerConnection connection(options);
    TakeResponse(connection.link, *taker);
    return ExitCode::Success;
}

ExitCode Console(const ScpiOptions& options)
{
    if (options.address.empty())
    {
        throw CToolError(ExitCode::Usage, "scpi: an address or a subcommand is required; see --help");
    }
    return RunConsole(TakeInstrumentAddress(options.address), Milliseconds(options.timeoutSeconds));
}

// What an action takes on the command line.
constexpr unsigned kCommands = 0x1;
constexpr unsigned kOutput = 0x2;
constexpr unsigned kInput = 0x4;

using ScpiAction = ToolAction<ScpiOptions>;

// clang-format off
constexpr ScpiAction kActions[] = {
    {"query", "Send commands and show the answers", kCommands | kOutput,
     "Example: zo scpi query localhost:5025 '*IDN?' 'FREQ:CENT?'\n"
     "Example: zo scpi query TCPIP::localhost::5025::SOCKET 'MMEM:DATA? \"a\"' -o a.bin", Query},
    {"write", "Send commands; what they answer is dropped", kCommands | kInput,
     "Example: zo scpi write localhost:5025 '*RST' 'FREQ:CENT 1 GHz'\n"
     "Example: zo scpi write localhost:5025 'MMEM:DATA \"a\",' --input a.bin", Write},
    {"read", "Show the next response that the instrument sends unasked", kOutput,
     "Example: zo scpi read localhost:5025 --timeout 60", Read},
    {"console", "Carry out the lines that are typed, or those of the standard input", 0,
     "Example: zo scpi console localhost:5025\n"
     "Example: zo scpi console localhost:5025 < settings.scpi", Console},
};
// clang-format on

constexpr const char* kScpiFooter =
    "ADDRESS: TCPIP::host::port::SOCKET or host[:port]; the port is 5025 unless given. Without a subcommand: "
    "console.\n"
    "Example: zo scpi query localhost:5025 '*IDN?'\n"
    "Example: zo scpi localhost:5025";

void AddOptions(CLI::App& command, unsigned takes, ScpiOptions& options)
{
    command.add_option("address", options.address, "Instrument")->type_name("ADDRESS")->required();
    if ((takes & kCommands) != 0)
    {
        command.add_option("command", options.commands, "SCPI commands, one message each")
            ->type_name("COMMAND")
            ->required();
        command.add_flag("--no-check",
                         options.isUnchecked,
                         "Do not ask SYSTem:ERRor?; a query that fails then ends with the time-out");
    }
    if ((takes & kOutput) != 0)
    {
        command
            .add_option("-o,--output",
                        options.output,
                        "File for the answer, of a block just the contents; - is standard output")
            ->type_name("FILE");
    }
    if ((takes & kInput) != 0)
    {
        command
            .add_option(
                "-i,--input", options.input, "File to send behind the command as a definite-length block")
            ->type_name("FILE");
    }
    AddTimeoutOption(command, options.timeoutSeconds);
}

} // namespace

void AddScpiCommands(CLI::App& tool, ExitCode& result)
{
    CLI::App& scpi = *tool.add_subcommand("scpi", "Talk to an instrument: queries, settings, files, console");
    scpi.require_subcommand(0, 1);
    scpi.footer(kScpiFooter);
    const auto options = std::make_shared<ScpiOptions>();
    AddActions(scpi, std::span<const ScpiAction>(kActions), options, &AddOptions, result);
    scpi.add_option("address", options->address, "Instrument for a console")->type_name("ADDRESS");
    AddTimeoutOption(scpi, options->timeoutSeconds);
    scpi.callback([options, &scpi, &result] {
        if (scpi.get_subcommands().empty())
        {
            result = Console(*options);
        }
    });
}

} // namespace ZoVelkor::Tools
