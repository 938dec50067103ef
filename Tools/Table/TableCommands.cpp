#include "CScpiParserTable.h"
#include "CScpiPropErrorStrategy.h"
#include "Common/Actions.h"
#include "Common/Subcommands.h"
#include "Common/TimeoutOption.h"
#include "Common/ToolFiles.h"
#include "InstrumentTable.h"
#include "ScpiTableCheck.h"
#include "TableFile.h"
#include "TableGroupList.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <list>
#include <memory>
#include <sstream>
#include <string_view>
#include <valarray>

namespace ZoVelkor::Tools
{

namespace
{

/// What the actions of `zo table` are given.
struct TableOptions
{
    std::vector<std::string> sources;
    std::string output;
    bool isDiagnostic = false;
    bool isForced = false;
    double timeoutSeconds = kDefaultTimeoutSeconds;
};

std::chrono::milliseconds Timeout(const TableOptions& options)
{
    return Milliseconds(options.timeoutSeconds);
}

/// An existing file counts as a file, whatever its name looks like.
std::string ReadSource(const std::string& source, const TableOptions& options)
{
    std::error_code ignored;
    if (source != kStandardStream && !std::filesystem::exists(source, ignored))
    {
        if (const auto address = ParseInstrumentAddress(source))
        {
            return FetchInstrumentTable(*address, Timeout(options));
        }
    }
    // One byte more than there may be, so that a longer file is noticed and an endless one does no harm.
    return ReadInput(source, TableFileLimit() + 1);
}

std::string NameOf(const std::string& source)
{
    return source == kStandardStream ? "standard input" : source;
}

/// A table that is safe to walk through and that the kernel takes.
NamedTable TakeTable(const std::string& name, std::string_view bytes)
{
    NamedTable table{name, {}};
    std::string fault = ParseTableFile(bytes, table.records);
    if (fault.empty())
    {
        const auto found =
            CheckScpiTable(table.records.data(), table.records.size(), tagScpiTableRules::Keywords);
        fault = found ? Printable(found->Message()) : std::string();
    }
    if (!fault.empty())
    {
        throw CToolError(ExitCode::Failed, fmt::format("{}: {}", table.name, fault));
    }
    return table;
}

NamedTable LoadTable(const std::string& source, const TableOptions& options)
{
    return TakeTable(NameOf(source), ReadSource(source, options));
}

CScpiParserTable ParserTableOf(NamedTable& table)
{
    CScpiParserTable parserTable;
    parserTable.SetParserTable(table.records.data(), static_cast<long>(table.records.size()));
    return parserTable;
}

std::list<std::string> ListCommands(NamedTable& table, bool diagnostic, bool syntax)
{
    std::list<std::string> lines;
    ParserTableOf(table).GetAllCommands(diagnostic, syntax, lines);
    return lines;
}

ExitCode PrintCommands(const TableOptions& options, bool syntax)
{
    NamedTable table = LoadTable(options.sources.front(), options);
    std::string text;
    for (const std::string& line : ListCommands(table, options.isDiagnostic, syntax))
    {
        text += Printable(line) + '\n';
    }
    WriteOutput("-", text);
    return ExitCode::Success;
}

ExitCode PrintHeaders(const TableOptions& options)
{
    return PrintCommands(options, false);
}

ExitCode PrintSyntax(const TableOptions& options)
{
    return PrintCommands(options, true);
}

ExitCode PrintGroups(const TableOptions& options)
{
    NamedTable table = LoadTable(options.sources.front(), options);
    WriteOutput("-", DescribeGroups(table));
    return ExitCode::Success;
}

/// Says what is wrong with one table, or what is in it.
ExitCode CheckSource(const std::string& source, const TableOptions& options)
{
    NamedTable table{NameOf(source), {}};
    std::vector<std::string> faults;
    if (const std::string fault = ParseTableFile(ReadSource(source, options), table.records); !fault.empty())
    {
        faults.push_back(fault);
    }
    else
    {
        faults = FindTableFaults(table.records);
    }
    std::string text;
    for (const std::string& fault : faults)
    {
        text += fmt::format("{}: {}\n", table.name, fault);
    }
    if (faults.empty())
    {
        text = fmt::format("{}: sound, {} records, {} commands and {} diagnostic ones\n",
                           table.name,
                           table.records.size(),
                           ListCommands(table, false, false).size(),
                           ListCommands(table, true, false).size());
    }
    WriteOutput("-", text);
    return faults.empty() ? ExitCode::Success : ExitCode::Failed;
}

ExitCode CheckAll(const TableOptions& options)
{
    ExitCode result = ExitCode::Success;
    for (const std::string& source : options.sources)
    {
        ExitCode code = ExitCode::Success;
        try
        {
            code = CheckSource(source, options);
        }
        catch (const CToolError& error)
        {
            Tell(error.what());
            code = error.Code();
        }
        result = std::max(result, code);
    }
    return result;
}

/// Joins tables and tells what the merger has to say about them.
///
/// @param[out] records  keeps the joined table
CScpiParserTable
JoinTables(std::vector<NamedTable>& tables, std::valarray<_CMD_SET_RECORD>& records, unsigned long& size)
{
    std::list<CScpiParserTable::PlugInData> plugins;
    for (NamedTable& table : tables)
    {
        const auto bytes = static_cast<std::uint32_t>(std::span(table.records).size_bytes());
        plugins.push_back({table.records.data(), bytes, nullptr, table.name});
    }
    CScpiPropErrorStrategy errors;
    errors.SetMember(nullptr, ZO_SCPI_NODE_CAPTURE, false, false, false);
    CScpiParserTable joined;
    std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>> sinks;
    joined.MergePlugins(errors, plugins, records, sinks, size);
    std::istringstream messages(errors.ReportCapturedErrors(0));
    for (std::string message; std::getline(messages, message);)
    {
        Tell(Printable(message));
    }
    return joined;
}

ExitCode Merge(const TableOptions& options)
{
    std::vector<NamedTable> tables;
    for (const std::string& source : options.sources)
    {
        tables.push_back(LoadTable(source, options));
    }
    std::valarray<_CMD_SET_RECORD> records;
    unsigned long size = 0;
    const CScpiParserTable joined = JoinTables(tables, records, size);
    const std::size_t count = size / sizeof(_CMD_SET_RECORD);
    if (const auto fault = CheckScpiTable(joined.GetParserTable(), count))
    {
        throw CToolError(ExitCode::Failed, fmt::format("joined table: {}", Printable(fault->Message())));
    }
    WriteOutput(options.output, FormatTableFile({joined.GetParserTable(), count}));
    return ExitCode::Success;
}

/// A record between others that the text cannot give a kind would be missing, and later indexes be wrong.
void CheckForHoles(NamedTable& table)
{
    const std::vector<std::size_t> outside = RecordsOutsideGroups(table);
    if (outside.empty())
    {
        return;
    }
    const std::string text = fmt::format("{}: {} records belong to no group, the first is record {}",
                                         table.name,
                                         outside.size(),
                                         outside.front());
    if (outside.front() + outside.size() != table.records.size())
    {
        throw CToolError(ExitCode::Failed, text + "; the source would not be the same table");
    }
    Tell(text + "; left out");
}

ExitCode WriteSource(const TableOptions& options)
{
    NamedTable table = LoadTable(options.sources.front(), options);
    CheckForHoles(table);
    const std::filesystem::path folder(options.output.empty() ? "." : options.output);
    const std::string sourceName = (folder / "PrsTab.cpp").string();
    const std::string headerName = (folder / "PrsTab.hpp").string();
    for (const std::string& name : {sourceName, headerName})
    {
        std::error_code ignored;
        if (!options.isForced && std::filesystem::exists(name, ignored))
        {
            throw CToolError(ExitCode::Failed, fmt::format("{} exists; --force overwrites it", name));
        }
    }
    std::ostringstream source;
    std::ostringstream header;
    ParserTableOf(table).DumpSourceHeader(source, header);
    WriteOutput(sourceName, source.view());
    WriteOutput(headerName, header.view());
    return ExitCode::Success;
}

ExitCode Save(const TableOptions& options)
{
    const std::string& source = options.sources.front();
    const InstrumentAddress address = TakeInstrumentAddress(source);
    const NamedTable table = TakeTable(source, FetchInstrumentTable(address, Timeout(options)));
    WriteOutput(options.output, FormatTableFile(table.records));
    return ExitCode::Success;
}

// What an action takes on the command line.
constexpr unsigned kOneSource = 0x1;
constexpr unsigned kManySources = 0x2;
constexpr unsigned kAddress = 0x4;
constexpr unsigned kDiagnostic = 0x8;
constexpr unsigned kOutputFile = 0x10;
constexpr unsigned kOutputFolder = 0x20;

using TableAction = ToolAction<TableOptions>;

// clang-format off
constexpr TableAction kActions[] = {
    {"headers", "List the commands, one a line", kOneSource | kDiagnostic,
     "Example: zo table headers TCPIP::localhost::5025::SOCKET", PrintHeaders},
    {"syntax", "List the commands with their parameters", kOneSource | kDiagnostic,
     "Example: zo table syntax demo.tab", PrintSyntax},
    {"groups", "Show the groups of records that a table consists of", kOneSource,
     "Example: zo table groups demo.tab", PrintGroups},
    {"check", "Examine tables and say all that is wrong with them; 1 when one is damaged", kManySources,
     "Example: zo table check analyser.tab generator.tab", CheckAll},
    {"merge", "Join tables; later definitions of a command replace earlier ones, which is told", kManySources | kOutputFile,
     "Example: zo table merge analyser.tab generator.tab -o joined.tab", Merge},
    {"source", "Write a table as C++ text: PrsTab.hpp and PrsTab.cpp", kOneSource | kOutputFolder,
     "Example: zo table source demo.tab -o generated", WriteSource},
    {"save", "Fetch the joined table of a running instrument into a file", kAddress | kOutputFile,
     "Example: zo table save localhost:5025 -o demo.tab", Save},
};
// clang-format on

constexpr const char* kTableFooter =
    "FILE is a table file, - standard input. ADDRESS is a running instrument: TCPIP::host::port::SOCKET or "
    "host:port; it is asked SYSTem:HELP:TABLe?.\n"
    "Example: zo table save localhost:5025 -o demo.tab";

void AddOptions(CLI::App& command, unsigned takes, TableOptions& options)
{
    if ((takes & kManySources) != 0)
    {
        command.add_option("source", options.sources, "Table files or instruments")
            ->type_name("FILE|ADDRESS")
            ->required();
    }
    else
    {
        const bool isAddress = (takes & kAddress) != 0;
        command.add_option("source", options.sources, isAddress ? "Instrument" : "Table file or instrument")
            ->type_name(isAddress ? "ADDRESS" : "FILE|ADDRESS")
            ->required()
            ->expected(1);
    }
    if ((takes & kDiagnostic) != 0)
    {
        command.add_flag(
            "--diagnostic", options.isDiagnostic, "The diagnostic commands instead of the others");
    }
    if ((takes & kOutputFile) != 0)
    {
        command.add_option("-o,--output", options.output, "File to write; - is standard output")
            ->type_name("FILE")
            ->required();
    }
    if ((takes & kOutputFolder) != 0)
    {
        command.add_option("-o,--output", options.output, "Folder to write to; the current one unless given")
            ->type_name("DIR");
        command.add_flag("--force", options.isForced, "Overwrite existing files");
    }
    AddTimeoutOption(command, options.timeoutSeconds);
}

} // namespace

void AddTableCommands(CLI::App& tool, ExitCode& result)
{
    CLI::App& table = *tool.add_subcommand("table", "Command tables: list, check, merge, write as source");
    table.require_subcommand(1);
    table.footer(kTableFooter);
    const auto options = std::make_shared<TableOptions>();
    AddActions(table, std::span<const TableAction>(kActions), options, &AddOptions, result);
}

} // namespace ZoVelkor::Tools
