// Status registers beside the lock that they cannot do without, and register expressions.
//
//   chain       one bit of the leaf travels through three registers to the root; every call changes
//               condition, events and summary of all three. A batch of prepared chains is set in the timed
//               part and made ready again outside it
//   rounds      set and take back one bit of the leaf and read the events of all three, by 1 thread and by 8
//               threads with a bit each, on one chain and on a chain each
//   lock        a recursive lock entered and left: a chain needs at least three
//   expression  OPER,MAV,16 to a value, and all bits of the status byte to names

#include "CBScpiStatusRegister.h"
#include "CComObject.h"
#include "CCritSectionLocker.h"
#include "CRatioReporter.h"
#include "CScpiExpression.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <semaphore>
#include <string>
#include <thread>

namespace
{

using ZoVelkor::CCritSection;
using ZoVelkor::CCritSectionLocker;
using ZoVelkor::CScpiExpression;
using CRegister = CComObject<ZoVelkor::CBScpiStatusRegister, ZoVelkor::IZOScpiStatusRegister>;

constexpr int kThreads = 8;

class CChain
{
public:
    CChain()
    {
        middle->SetupParentRegister(root, 1);
        leaf->SetupParentRegister(middle, 1);
        for (const CComPtr<CRegister>& part : {root, middle, leaf})
        {
            part->SetEnable(0xFF);
        }
    }

    /// Takes conditions and events back in all three, so that the next change travels to the root again.
    void MakeReady() const
    {
        wchar_t events = 0;
        leaf->ClearCondition();
        leaf->GetEvents(&events);
        middle->GetEvents(&events);
        root->GetEvents(&events);
    }

    CComPtr<CRegister> root = CRegister::Create();
    CComPtr<CRegister> middle = CRegister::Create();
    CComPtr<CRegister> leaf = CRegister::Create();
};

void ChainChange(benchmark::State& state)
{
    constexpr std::size_t kBatch = 64;
    const std::array<CChain, kBatch> chains;
    while (state.KeepRunningBatch(kBatch))
    {
        const auto begin = std::chrono::steady_clock::now();
        for (const CChain& chain : chains)
        {
            chain.leaf->ModifyCondition(1, 1);
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(elapsed.count());
        short summary = 0;
        chains.back().root->GetSummary(&summary);
        if (summary == VARIANT_FALSE)
        {
            state.SkipWithError("the root did not change");
            break;
        }
        for (const CChain& chain : chains)
        {
            chain.MakeReady();
        }
    }
}
BENCHMARK(ChainChange)->UseManualTime();

/// One round per iteration; with a chain for itself, every set changes all three registers.
void RunRounds(benchmark::State& state, const CChain& chain)
{
    const auto bit = static_cast<wchar_t>(1U << static_cast<unsigned>(state.thread_index()));
    for (auto _ : state)
    {
        wchar_t events = 0;
        chain.leaf->ModifyCondition(bit, bit);
        chain.leaf->ModifyCondition(bit, 0);
        chain.leaf->GetEventBits(bit, &events);
        chain.middle->GetEvents(&events);
        chain.root->GetEvents(&events);
        benchmark::DoNotOptimize(events);
    }
}

void OneThread(benchmark::State& state)
{
    const CChain chain;
    RunRounds(state, chain);
}
BENCHMARK(OneThread)->UseRealTime();

void SharedChain(benchmark::State& state)
{
    static const CChain chain;
    RunRounds(state, chain);
}
BENCHMARK(SharedChain)->Threads(kThreads)->UseRealTime();

void OwnChains(benchmark::State& state)
{
    const CChain chain;
    RunRounds(state, chain);
}
BENCHMARK(OwnChains)->Threads(kThreads)->UseRealTime();

void Lock(benchmark::State& state)
{
    CCritSection section;
    for (auto _ : state)
    {
        const CCritSectionLocker locker(section);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Lock)->UseRealTime();

void ReadExpression(benchmark::State& state)
{
    long value = 0;
    std::string error;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(CScpiExpression::GetRegisterValueFromExpression(
            "OPER,MAV,16", value, error, CScpiExpression::s_StatusByteTrafo));
    }
}
BENCHMARK(ReadExpression)->UseRealTime();

void WriteExpression(benchmark::State& state)
{
    std::string text;
    for (auto _ : state)
    {
        CScpiExpression::GetRegisterValueAsExpression(0xFF, text, CScpiExpression::s_StatusByteTrafo);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(WriteExpression)->UseRealTime();

int RunAll(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"ChainChange", "Lock", "change through three registers / lock"},
            {"SharedChain", "OneThread", "rounds: 8 threads on one chain / 1 thread"},
            {"OwnChains", "OneThread", "rounds: 8 threads on own chains / 1 thread"},
            {"ReadExpression", "Lock", "expression to value / lock"},
            {"WriteExpression", "Lock", "value to expression / lock"},
        });
}

} // namespace

int main(int argc, char** argv)
{
    // A lock is cheaper in a process with one thread, which no instrument has.
    std::binary_semaphore end(0);
    const std::jthread other([&end] { end.acquire(); });
    const int result = RunAll(argc, argv);
    end.release();
    return result;
}
