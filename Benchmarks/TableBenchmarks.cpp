// Command tables: what it costs to join the tables of many applications, and to list the commands of the
// joined table or to write it as source text. The cost of a record must not grow with the number of records:
// an instrument that starts with all its options merges tens of thousands of them.
#include "CRatioReporter.h"
#include "CScpiParserTable.h"
#include "CScpiPropErrorStrategy.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

namespace
{

using namespace ZoVelkor;

constexpr std::uint32_t kPlugIns = 10;
constexpr std::uint32_t kCommandsPerSubsystem = 20;
/// A command is a header and its parameter with one word.
constexpr std::uint32_t kRecordsPerSubsystem = 1 + 3 * kCommandsPerSubsystem;

using Records = std::vector<_CMD_SET_RECORD>;

void Name(char (&field)[kTableTextSize], const std::string& text)
{
    text.copy(field, kTableTextSize - 1);
}

/// A root group of subsystems, half of them the same in every plug-in, each with commands of its own.
Records MakeTable(std::uint32_t plugIn, std::uint32_t recordCount)
{
    const std::uint32_t subsystems = recordCount / kRecordsPerSubsystem;
    Records table(std::size_t{subsystems} * kRecordsPerSubsystem);
    for (std::uint32_t i = 0; i < subsystems; ++i)
    {
        const std::uint32_t child = subsystems + i * kCommandsPerSubsystem;
        table[i].hdr = {{}, DEF, DEF, child, i == 0 ? subsystems : 0, 0, 0};
        Name(table[i].hdr.szKeyword, i % 2 == 0 ? fmt::format("SYS{}", i) : fmt::format("S{}P{}", i, plugIn));
        for (std::uint32_t j = 0; j < kCommandsPerSubsystem; ++j)
        {
            const std::uint32_t command = child + j;
            const std::uint32_t parameter =
                subsystems * (1 + kCommandsPerSubsystem) + 2 * (command - subsystems);
            const std::uint32_t length = j == 0 ? kCommandsPerSubsystem : 0;
            table[command].hdr = {{}, 1, 1, 0, length, parameter, QMARK | HDR_SET};
            Name(table[command].hdr.szKeyword, fmt::format("COM{}P{}", j, plugIn));
            table[parameter].par = {"value", ARG_SFLOAT | MNEM, 0, 1, parameter + 1, 0, 0};
            table[parameter + 1].chr = {"AUTO", 1, 1, {}};
        }
    }
    return table;
}

/// The plug-ins, with their tables.
struct Instrument
{
    explicit Instrument(std::uint32_t recordCount)
    {
        for (std::uint32_t i = 0; i < kPlugIns; ++i)
        {
            tables.push_back(MakeTable(i, recordCount));
            const auto size = static_cast<std::uint32_t>(tables.back().size() * sizeof(_CMD_SET_RECORD));
            plugins.push_back({tables.back().data(), size, {}, std::to_string(i)});
            records += tables.back().size();
        }
    }

    void Merge()
    {
        CScpiPropErrorStrategy errors;
        unsigned long size = 0;
        table.MergePlugins(errors, plugins, joined, sinks, size);
        if (errors.GetErrorCounter() != 0 || size == 0)
        {
            std::abort();
        }
    }

    std::vector<Records> tables;
    std::list<CScpiParserTable::PlugInData> plugins;
    std::size_t records = 0;
    CScpiParserTable table;
    std::valarray<_CMD_SET_RECORD> joined;
    std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>> sinks;
};

/// Time of one record, so that the quotient of two sizes tells how the cost grows.
void ReportPerRecord(benchmark::State& state, std::size_t records)
{
    state.counters["records"] = static_cast<double>(records);
    state.counters["s/record"] =
        benchmark::Counter(static_cast<double>(records),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Merge(benchmark::State& state, std::uint32_t recordsPerPlugIn)
{
    Instrument instrument(recordsPerPlugIn);
    for (auto _ : state)
    {
        instrument.Merge();
    }
    ReportPerRecord(state, instrument.records);
}
BENCHMARK_CAPTURE(Merge, Small, 1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Merge, Large, 10'000)->Unit(benchmark::kMillisecond);

void List(benchmark::State& state, std::uint32_t recordsPerPlugIn)
{
    Instrument instrument(recordsPerPlugIn);
    instrument.Merge();
    std::list<std::string> lines;
    for (auto _ : state)
    {
        instrument.table.GetAllCommands(false, true, lines);
        benchmark::DoNotOptimize(lines);
    }
    ReportPerRecord(state, instrument.joined.size());
}
BENCHMARK_CAPTURE(List, Small, 1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(List, Large, 10'000)->Unit(benchmark::kMillisecond);

void Generate(benchmark::State& state, std::uint32_t recordsPerPlugIn)
{
    Instrument instrument(recordsPerPlugIn);
    instrument.Merge();
    for (auto _ : state)
    {
        std::ostringstream source;
        std::ostringstream header;
        instrument.table.DumpSourceHeader(source, header);
        benchmark::DoNotOptimize(source.view().size());
    }
    ReportPerRecord(state, instrument.joined.size());
}
BENCHMARK_CAPTURE(Generate, Small, 1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Generate, Large, 10'000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"Merge/Large", "Merge/Small", "merging 10.2 times the records (10.2: in proportion)"},
            {"List/Large", "List/Small", "listing 10.2 times the records (10.2: in proportion)"},
            {"Generate/Large", "Generate/Small", "source of 10.2 times the records (10.2: in proportion)"},
        });
}
