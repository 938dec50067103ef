#include "ScpiConsole.h"

#include "AnswerOutput.h"
#include "CLineEditor.h"
#include "Common/CInterruptWatcher.h"
#include "Common/ToolFiles.h"
#include "Instrument/CInstrumentLink.h"
#include "ScpiExchange.h"

#include <fmt/format.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <unistd.h>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::string_view kAskHeaders = "SYSTem:HELP:HEADers?";

/// Where the history is kept; empty when there is no such place.
std::string HistoryFile()
{
    std::filesystem::path folder;
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if (state != nullptr && std::filesystem::path(state).is_absolute())
    {
        folder = state;
    }
    else if (home != nullptr)
    {
        folder = std::filesystem::path(home) / ".local" / "state";
    }
    else
    {
        return {};
    }
    folder /= "zosoftwareplatform";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return (folder / "scpi_history").string();
}

/// A line that is more than blanks.
bool IsCommand(std::string_view line)
{
    return line.find_first_not_of(" \t\r") != std::string_view::npos;
}

ExitCode RunScript(CInstrumentLink& link)
{
    CAnswerPrinter printer;
    ExitCode result = ExitCode::Success;
    for (std::string line; std::getline(std::cin, line);)
    {
        if (IsCommand(line) && TellErrors(line, CarryOut(link, {line}, printer)))
        {
            result = ExitCode::Failed;
        }
    }
    return result;
}

/// An instrument that has no such listing leaves a console without completion.
CHeaderCompletion FetchHeaders(CInstrumentLink& link)
try
{
    CAnswerText listing;
    CarryOut(link, {kAskHeaders}, listing);
    return CHeaderCompletion(listing.Text());
}
catch (const CToolError& error)
{
    Tell(fmt::format("no completion of headers: {}", error.what()));
    link.Connect();
    return {};
}

void CarryOutShown(CInstrumentLink& link, const std::string& line)
try
{
    CAnswerPrinter printer;
    for (const std::string& error : CarryOut(link, {line}, printer))
    {
        fmt::print(stderr, "{}\n", error);
    }
}
catch (const CToolError& error)
{
    // What the instrument still sends belongs to nothing any more.
    Tell(fmt::format("{}; connecting again", error.what()));
    link.Connect();
}

ExitCode RunPrompt(CInstrumentLink& link, CInterruptWatcher& watcher)
{
    std::setlocale(LC_CTYPE, "");
    CLineEditor editor(link.Address() + "> ", HistoryFile(), FetchHeaders(link));
    for (;;)
    {
        // At the prompt the key is a character, so a signal from now on is meant for the line.
        watcher.Forget();
        const auto line = editor.ReadLine();
        if (!line)
        {
            break;
        }
        if (*line == "exit" || *line == "quit")
        {
            return ExitCode::Success;
        }
        if (IsCommand(*line))
        {
            CarryOutShown(link, *line);
        }
    }
    fmt::print("\n");
    return ExitCode::Success;
}

} // namespace

ExitCode RunConsole(const InstrumentAddress& address, std::chrono::milliseconds timeout)
{
    const bool isTerminal = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
    CInterruptWatcher watcher(isTerminal ? IdleInterrupt::Remember : IdleInterrupt::Exit);
    CInstrumentLink link(address, timeout, &watcher);
    link.Connect();
    return isTerminal ? RunPrompt(link, watcher) : RunScript(link);
}

} // namespace ZoVelkor::Tools
