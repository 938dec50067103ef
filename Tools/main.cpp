#include "Common/Subcommands.h"
#include "Common/ToolFiles.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <csignal>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace ZoVelkor::Tools;

/// A further subcommand is one more row.
constexpr AddSubcommand kSubcommands[] = {
    AddTableCommands, AddScpiCommands, AddRegistryCommands, AddLxiCommands};

constexpr const char* kFooter =
    "Exit codes: 0 success; 1 what was asked for failed (damaged table, no such key, "
    "instrument refused); 2 wrong usage; 3 a file or an instrument cannot be reached; 130 Ctrl-C.\n"
    "Example: zo table headers localhost:5025\n"
    "Example: zo scpi query localhost:5025 '*IDN?'\n"
    "Example: zo registry list HKLM\n"
    "Example: zo lxi listen";

ExitCode Fail(ExitCode code, const char* message)
{
    Tell(message);
    return code;
}

/// Help, the version, or what is wrong with the command line.
ExitCode Answer(const CLI::App& tool, const CLI::ParseError& fault)
{
    std::ostringstream help;
    const bool isHelp = tool.exit(fault, help, std::cerr) == 0;
    WriteOutput("-", help.view());
    return isHelp ? ExitCode::Success : ExitCode::Usage;
}

ExitCode RunTool(int argc, char** argv)
{
    CLI::App tool("Tools for instruments, their command tables and their registry.", "zo");
    tool.set_version_flag("--version", "zo " ZO_TOOL_VERSION);
    tool.require_subcommand(1);
    tool.footer(kFooter);
    ExitCode result = ExitCode::Success;
    for (const AddSubcommand add : kSubcommands)
    {
        add(tool, result);
    }
    try
    {
        tool.parse(argc, argv);
    }
    catch (const CLI::ParseError& fault)
    {
        const std::vector<std::string> unknown = tool.remaining(true);
        if (fault.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) && !unknown.empty())
        {
            return Fail(ExitCode::Usage, ("unknown: " + unknown.front() + "; see --help").c_str());
        }
        return Answer(tool, fault);
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    // Whoever reads a pipe may go; a write then fails and is dealt with there.
    std::signal(SIGPIPE, SIG_IGN);
    try
    {
        return static_cast<int>(RunTool(argc, argv));
    }
    catch (const ReaderGone&)
    {
        return static_cast<int>(ExitCode::Success);
    }
    catch (const CToolError& error)
    {
        return static_cast<int>(Fail(error.Code(), error.what()));
    }
    catch (const std::exception& error)
    {
        return static_cast<int>(Fail(ExitCode::Failed, error.what()));
    }
}
