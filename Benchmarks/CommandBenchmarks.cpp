// The whole way of a command in process: from the bytes of a complete line to the response bytes.
//
// Each line runs over command trees of 9, 20, 100, 1000 and 5000 entries, with the called commands in the
// middle:
//   set         one number with unit        SENS1:FREQ:CENT 10 MHz
//   longset     the same in long form, with exponent
//   query       one number answered
//   idn         a common command
//   compound5   five commands of one message, four of them by path memory
//   undef       a header that does not exist; the cost includes queueing its error and emptying the queue
// and over the tree of 100 entries:
//   block1M        a block of 1 MiB, in one piece
//   block1M_1460   the same in pieces of 1460 bytes, as a network delivers it
//   list1000       1000 numbers answered as text
//
// The yardstick of the same run is a dispatcher that does next to nothing: it upper-cases the header, looks
// it up whole in a hash map, and converts one number. The counter allocs says how often the heap was asked
// per line.

#include "AllocationCounter.h"
#include "CBenchmarkApplication.h"
#include "CCommandTree.h"
#include "CRatioReporter.h"
#include "CRemoteKernel.h"
#include "Sessions/CSession.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <unordered_map>

namespace ZoVelkor::Benchmarks
{
namespace
{

using RemoteKernel::CRemoteKernel;
using RemoteKernel::CSession;

constexpr int kTreeSizes[] = {9, 20, 100, 1000, 5000};
constexpr std::size_t kBlockSize = std::size_t{1} << 20;
constexpr std::size_t kSegmentSize = 1460;

struct Workload
{
    const char* name;
    const char* line;
};

constexpr Workload kWorkloads[] = {
    {"set", "SENS1:FREQ:CENT 10 MHz\n"},
    {"longset", ":SENSe1:FREQuency:CENTer 10.000000000E+6 HZ\n"},
    {"query", "SENS1:FREQ:CENT?\n"},
    {"idn", "*IDN?\n"},
    {"compound5", "SENS1:FREQ:CENT 10 MHz;SPAN 1 MHz;STAR 9.5 MHz;STOP 10.5 MHz;CENT?\n"},
    {"undef", "SENS1:FREQ:NOSUCH 1\n"},
};

/// A kernel with one generated tree, and a session.
class CBench
{
public:
    explicit CBench(int entries)
        : m_tree(std::string(ZO_TREE_DIR "/tree-") + std::to_string(entries) + ".txt"),
          m_kernel({.manufacturer = "Zo", .model = "Benchmark", .serialNumber = "1", .firmwareLevel = "1.0"}),
          m_sink(CComObject<CBenchmarkApplication, IZOScpiExecutionSink>::Create())
    {
        RegisterBenchmarkApplication(m_kernel, m_tree, m_sink);
        m_session = std::make_unique<CSession>(m_kernel.Parts());
    }

    CRemoteKernel& Kernel() { return m_kernel; }
    CSession& Session() { return *m_session; }

    /// Runs a line; blocks may be changed in place by the parser, so each run gets its own copy.
    std::string_view Run(std::string_view line)
    {
        std::memcpy(m_line, line.data(), line.size());
        return m_session->Process({m_line, line.size()});
    }

private:
    CCommandTree m_tree;
    CRemoteKernel m_kernel;
    CComPtr<CComObject<CBenchmarkApplication, IZOScpiExecutionSink>> m_sink;
    std::unique_ptr<CSession> m_session;
    char m_line[256] = {};
};

void CountAllocations(benchmark::State& state, std::uint64_t before)
{
    state.counters["allocs"] =
        static_cast<double>(AllocationCount() - before) / static_cast<double>(state.iterations());
}

void RunLine(benchmark::State& state, const Workload& workload, int entries)
{
    CBench bench(entries);
    const std::string_view line = workload.line;
    const bool undefined = line.find("NOSUCH") != std::string_view::npos;
    bench.Run(line);
    unsigned long errors = 0;
    bench.Kernel().ErrorManagement().GetErrorCount(bench.Session().RemotePath(), &errors);
    if ((errors != 0) != undefined)
    {
        state.SkipWithError("unexpected errors");
        return;
    }
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(bench.Run(line));
        if (undefined)
        {
            bench.Kernel().ErrorManagement().ClearErrors(bench.Session().RemotePath());
        }
    }
    CountAllocations(state, before);
}

std::string BlockMessage()
{
    return "TRAC1:DATA #7" + std::to_string(kBlockSize) + std::string(kBlockSize, '\n') + "\n";
}

void BlockInOnePiece(benchmark::State& state)
{
    CBench bench(100);
    std::string message = BlockMessage();
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(bench.Session().Process(message));
    }
    CountAllocations(state, before);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlockSize));
}

void BlockInSegments(benchmark::State& state)
{
    CBench bench(100);
    std::string message = BlockMessage();
    for (auto _ : state)
    {
        for (std::size_t start = 0; start < message.size(); start += kSegmentSize)
        {
            const std::size_t length = std::min(kSegmentSize, message.size() - start);
            benchmark::DoNotOptimize(bench.Session().Process({message.data() + start, length}));
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlockSize));
}

void BlockCopy(benchmark::State& state)
{
    const std::string source = BlockMessage();
    std::string target(source.size(), '\0');
    for (auto _ : state)
    {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlockSize));
}

void List(benchmark::State& state)
{
    CBench bench(100);
    if (std::ranges::count(bench.Run("TRAC1:DATA?\n"), ',') != 999)
    {
        state.SkipWithError("wrong number of values");
        return;
    }
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(bench.Run("TRAC1:DATA?\n"));
    }
    CountAllocations(state, before);
}

void ListWithPrintf(benchmark::State& state)
{
    std::string text;
    char item[40];
    for (auto _ : state)
    {
        text.clear();
        for (int i = 0; i < 1000; ++i)
        {
            const int length = std::snprintf(item, sizeof(item), "%.15g,", -80.0 + 0.037 * i);
            text.append(item, static_cast<std::size_t>(length));
        }
        benchmark::DoNotOptimize(text.data());
    }
}

void Yardstick(benchmark::State& state)
{
    std::unordered_map<std::string, int> commands;
    commands.emplace("SENS1:FREQ:CENT", 1);
    const char line[] = "SENS1:FREQ:CENT 10 MHz\n";
    double value = 0;
    for (auto _ : state)
    {
        const char* blank = std::strchr(line, ' ');
        std::string header(line, blank);
        std::ranges::transform(header, header.begin(), [](unsigned char c) { return std::toupper(c); });
        if (commands.contains(header))
        {
            value = std::strtod(blank, nullptr);
        }
        benchmark::DoNotOptimize(value);
    }
}

std::string NameOf(const Workload& workload, int entries)
{
    return std::string(workload.name) + "/entries:" + std::to_string(entries);
}

std::vector<Ratio> RegisterAll()
{
    std::vector<Ratio> ratios;
    benchmark::RegisterBenchmark("yardstick", Yardstick);
    for (const Workload& workload : kWorkloads)
    {
        for (const int entries : kTreeSizes)
        {
            const std::string name = NameOf(workload, entries);
            benchmark::RegisterBenchmark(name.c_str(), RunLine, workload, entries);
            ratios.push_back({name, "yardstick", name + " / yardstick"});
        }
        ratios.push_back({NameOf(workload, 5000),
                          NameOf(workload, 9),
                          std::string(workload.name) + ": 5000 entries / 9 entries"});
    }
    ratios.push_back({"undef/entries:1000", "set/entries:1000", "undefined header / known header"});
    benchmark::RegisterBenchmark("block1M", BlockInOnePiece);
    benchmark::RegisterBenchmark("block1M_1460", BlockInSegments);
    benchmark::RegisterBenchmark("memcpy1M", BlockCopy);
    benchmark::RegisterBenchmark("list1000", List);
    benchmark::RegisterBenchmark("list1000_printf", ListWithPrintf);
    ratios.push_back({"block1M", "memcpy1M", "block of 1 MiB in one piece / copying it once"});
    ratios.push_back({"block1M_1460", "memcpy1M", "block of 1 MiB in segments / copying it once"});
    ratios.push_back({"list1000", "list1000_printf", "1000 numbers as text / snprintf"});
    return ratios;
}

} // namespace
} // namespace ZoVelkor::Benchmarks

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(argc, argv, ZoVelkor::Benchmarks::RegisterAll());
}
