#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::Benchmarks
{

/// Two benchmarks of one run, and which is to be divided by which.
struct Ratio
{
    std::string numerator;   ///< name of a benchmark, or of one of its counters: "name/counter"
    std::string denominator; ///< name of another one
    std::string meaning;     ///< what the quotient says
};

/// Console output, followed by the quotients of times measured in this very run: processor time, or the
/// clock's time where the benchmark asks for it.
class CRatioReporter : public benchmark::ConsoleReporter
{
public:
    explicit CRatioReporter(std::vector<Ratio> ratios) : m_ratios(std::move(ratios)) {}

    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    std::vector<Ratio> m_ratios;
    std::map<std::string, double> m_values; // times in nanoseconds, and counters
};

/// Runs all registered benchmarks; the body of main.
int RunWithRatios(int argc, char** argv, std::vector<Ratio> ratios);

} // namespace ZoVelkor::Benchmarks
