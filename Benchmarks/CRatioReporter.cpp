#include "CRatioReporter.h"

#include <cstdio>
#include <utility>

namespace ZoVelkor::Benchmarks
{

void CRatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
    {
        // With repetitions the median stands for the benchmark, else the only run does.
        if (run.aggregate_name.empty() || run.aggregate_name == "median")
        {
            m_values[run.run_name.function_name] =
                run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
            for (const auto& [name, counter] : run.counters)
            {
                m_values[run.run_name.function_name + '/' + name] = counter.value;
            }
        }
    }
}

void CRatioReporter::Finalize()
{
    ConsoleReporter::Finalize();
    for (const Ratio& ratio : m_ratios)
    {
        const auto numerator = m_values.find(ratio.numerator);
        const auto denominator = m_values.find(ratio.denominator);
        if (numerator != m_values.end() && denominator != m_values.end())
        {
            std::printf("%-60s %8.3f\n", ratio.meaning.c_str(), numerator->second / denominator->second);
        }
    }
}

int RunWithRatios(int argc, char** argv, std::vector<Ratio> ratios)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
    {
        return 1;
    }
    CRatioReporter reporter(std::move(ratios));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

} // namespace ZoVelkor::Benchmarks
