// String operations of the library's string class, each beside the bare operation that it stands on.
//
//   append    40 characters behind 40; every append allocates a string of exactly the new length
//   compare   two equal texts of 40 characters
//   find      a keyword near the end of 80 characters; goes through 8-bit text and QString
//   arg       one placeholder; goes through QString
//   number    a double to text and back

#include "CRatioReporter.h"
#include "ZoString.h"

#include <QString>

namespace
{

using ZoVelkor::CZoString;

constexpr char kText[] = "SENSe1:FREQuency:CENTer 10.000000000E+6 HZ;:SENSe1:FREQuency:SPAN 1.0E6 HZ;STOP";
constexpr char kHalf[] = "SENSe1:FREQuency:CENTer 10.000000000E+6 ";

void AppendZoString(benchmark::State& state)
{
    const CZoString half(kHalf);
    for (auto _ : state)
    {
        CZoString text(half);
        text.Append(half);
        benchmark::DoNotOptimize(text.Length());
    }
}
BENCHMARK(AppendZoString);

void AppendWideString(benchmark::State& state)
{
    const std::wstring half{CZoString(kHalf)};
    for (auto _ : state)
    {
        std::wstring text(half);
        text.append(half);
        benchmark::DoNotOptimize(text.size());
    }
}
BENCHMARK(AppendWideString);

void CompareZoString(benchmark::State& state)
{
    const CZoString left(kHalf);
    const CZoString right(kHalf);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(left == right);
    }
}
BENCHMARK(CompareZoString);

void CompareWideString(benchmark::State& state)
{
    const std::wstring left{CZoString(kHalf)};
    std::wstring right = left;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(right);
        benchmark::DoNotOptimize(left == right);
    }
}
BENCHMARK(CompareWideString);

void FindZoString(benchmark::State& state)
{
    const CZoString text(kText);
    const CZoString needle("STOP");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(text.Find(needle, 0, true));
    }
}
BENCHMARK(FindZoString);

void FindQString(benchmark::State& state)
{
    const QString text = QString::fromLatin1(kText);
    const QString needle = QString::fromLatin1("STOP");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(text.indexOf(needle));
    }
}
BENCHMARK(FindQString);

void ArgZoString(benchmark::State& state)
{
    const CZoString format("trace %1 of the analyser");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(format.Arg(12L).Length());
    }
}
BENCHMARK(ArgZoString);

void ArgQString(benchmark::State& state)
{
    const QString format = QString::fromLatin1("trace %1 of the analyser");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(format.arg(12L).size());
    }
}
BENCHMARK(ArgQString);

void NumberZoString(benchmark::State& state)
{
    for (auto _ : state)
    {
        bool ok = false;
        benchmark::DoNotOptimize(CZoString::Number(12345.678).ToDouble(&ok));
    }
}
BENCHMARK(NumberZoString);

void NumberQString(benchmark::State& state)
{
    for (auto _ : state)
    {
        bool ok = false;
        benchmark::DoNotOptimize(QString::number(12345.678).toDouble(&ok));
    }
}
BENCHMARK(NumberQString);

} // namespace

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"AppendZoString", "AppendWideString", "append: CZoString / std::wstring"},
            {"CompareZoString", "CompareWideString", "compare: CZoString / std::wstring"},
            {"FindZoString", "FindQString", "find: CZoString / QString"},
            {"ArgZoString", "ArgQString", "arg: CZoString / QString"},
            {"NumberZoString", "NumberQString", "number: CZoString / QString"},
        });
}
