#include "CBScpiStatusRegister.h"
#include "CComObject.h"
#include "ExecutionFakes.h"
#include "ScpiStatusData.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <new>
#include <thread>

namespace
{

using namespace ZoVelkor;

/// A register that records what its children send and can refuse it.
struct CRecordingRegister : CBScpiStatusRegister
{
    using CBase = CBScpiStatusRegister;
    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override
    {
        updates.emplace_back(mask, value);
        const HRESULT own = CBase::ModifyCondition(mask, value);
        return updates.size() == failingUpdate ? failure() : own;
    }
    HRESULT GetNegTrans(wchar_t* word) override { return readFailure ? E_FAIL : CBase::GetNegTrans(word); }
    HRESULT DoGetScpiStatusData(tagScpiStatusData*) override { return lockedAction(); }

    std::function<HRESULT()> lockedAction; ///< runs in GetData with the lock held
    std::vector<std::pair<wchar_t, wchar_t>> updates;
    std::size_t failingUpdate = 0; ///< counted from 1
    std::function<HRESULT()> failure = [] { return E_UNEXPECTED; };
    bool readFailure = false;
};

using CRegister = CComObject<CRecordingRegister, IZOScpiStatusRegister>;
/// Registers without records: many threads may use them.
using CPlainRegister = CComObject<CBScpiStatusRegister, IZOScpiStatusRegister>;
using Updates = std::vector<std::pair<wchar_t, wchar_t>>;
using Words = std::array<wchar_t, 5>; ///< condition, negative and positive filter, events, enable

constexpr wchar_t kTop = static_cast<wchar_t>(0x80000000U);
constexpr wchar_t kAll = -1;
constexpr wchar_t kWide = 0x10002;
constexpr wchar_t kF = 0xFFFF; // default of the positive filter

Words WordsOf(IZOScpiStatusRegister& object)
{
    Words words{};
    EXPECT_EQ(object.GetSnapshot(&words[0], &words[1], &words[2], &words[3], &words[4]), S_OK);
    return words;
}

/// One operation, its result, and the words of child and parent afterwards.
struct Step
{
    std::function<HRESULT()> act;
    HRESULT result;
    Words child;
    Words parent;
};

struct StatusRegister : testing::Test
{
    StatusRegister()
    {
        child->SetupParentRegister(parent, 0x20);
        parent->SetupParentRegister(root, 0x40);
        child->SetDeviceClearHandle(deviceClear.Get());
    }

    void Run(const std::vector<Step>& steps)
    {
        for (std::size_t i = 0; i < steps.size(); ++i)
        {
            EXPECT_EQ(steps[i].act(), steps[i].result) << "step " << i;
            EXPECT_EQ(WordsOf(*child), steps[i].child) << "step " << i;
            EXPECT_EQ(WordsOf(*parent), steps[i].parent) << "step " << i;
        }
    }

    CErrorRecorder errors;
    CUniqueEvent deviceClear{CreateEvent(TRUE, FALSE)};
    CComPtr<CRegister> root = CRegister::Create();
    CComPtr<CRegister> parent = CRegister::Create();
    CComPtr<CRegister> child = CRegister::Create();
    wchar_t word = 0x77;
};

// clang-format off
TEST_F(StatusRegister, LatchesTransitions)
{
    constexpr std::array<wchar_t, 7> kRows[] = { // condition before, filters, mask, value, condition and events after
        {0, 0, kF, 4, 4, 4, 4}, {4, 0, kF, 4, 4, 4, 0}, {4, 0, kF, 0, kAll, 4, 0}, {4, 0, kF, 4, 0, 0, 0},
        {4, 4, kF, 4, 0, 0, 4}, {0, 4, 0xFFFB, 4, 4, 4, 0}, {1, 0, kF, 4, 0xFE, 5, 4}, {3, 1, kF, 15, 12, 12, 13},
        {0, 0, kTop, kTop, kAll, kTop, kTop}, {0, 0, 2, 12, 12, 12, 0}};
    for (const auto& [before, negTrans, posTrans, mask, value, condition, latched] : kRows)
    {
        const auto object = CRegister::Create();
        object->DoSetRegisterMask(kAll);
        object->SetPosTrans(0);
        object->ModifyCondition(kAll, before);
        object->SetNegTrans(negTrans);
        object->SetPosTrans(posTrans);
        EXPECT_EQ(object->ModifyCondition(mask, value), S_OK);
        EXPECT_EQ(WordsOf(*object), (Words{condition, negTrans, posTrans, latched, 0})) << long{mask} << '/' << long{value};
    }
}

TEST_F(StatusRegister, CountsBitsModulo32)
{
    for (const auto& [bit, mask] : std::initializer_list<std::pair<long, wchar_t>>{
             {0, 1}, {31, kTop}, {32, 1}, {33, 2}, {-1, kTop}, {-31, 2}, {-32, 1}, {1L << 40, 1}})
    {
        EXPECT_EQ(child->SetCondition(bit, 5), S_OK);
        EXPECT_EQ(WordsOf(*child)[0], mask) << bit;
        EXPECT_EQ(child->SetCondition(bit, 0), S_OK);
        EXPECT_EQ(WordsOf(*child)[0], 0) << bit;
    }
    EXPECT_TRUE(child->updates.empty()) << "SetCondition is no call of ModifyCondition";
}

TEST_F(StatusRegister, SummaryGoesToTheParentWhenItChanges)
{
    Run({
        {[&] { return child->SetEnable(12) || child->ModifyCondition(1, 1); }, S_OK, {1, 0, kF, 1, 12}, {0, 0, kF, 0, 0}},
        {[&] { return child->ModifyCondition(12, 12); }, S_OK, {13, 0, kF, 13, 12}, {32, 0, kF, 32, 0}},
        {[&] { return child->GetEventBits(4, &word); }, S_OK, {13, 0, kF, 9, 12}, {32, 0, kF, 32, 0}},
        {[&] { return child->SetEnable(1); }, S_OK, {13, 0, kF, 9, 1}, {32, 0, kF, 32, 0}},
        {[&] { return child->SetEnable(2); }, S_OK, {13, 0, kF, 9, 2}, {0, 0, kF, 32, 0}},
        {[&] { return child->SetEnable(8); }, S_OK, {13, 0, kF, 9, 8}, {32, 0, kF, 32, 0}},
        {[&] { return child->GetEvents(&word); }, S_OK, {13, 0, kF, 0, 8}, {0, 0, kF, 32, 0}},
        {[&] { return child->SetParentUpdate(0) || child->PulseCondition(0x18); }, S_OK, {5, 0, kF, 16, 8}, {0, 0, kF, 32, 0}},
        {[&] { return child->PulseCondition(8); }, S_OK, {5, 0, kF, 24, 8}, {0, 0, kF, 32, 0}},
    });
    EXPECT_EQ(word, 9);
    EXPECT_EQ(parent->updates, (Updates{{32, 32}, {32, 0}, {32, 32}, {32, 0}}));
    short summary = 1;
    EXPECT_EQ(child->GetSummary(&summary), S_OK);
    EXPECT_EQ(summary, VARIANT_TRUE);
}

TEST_F(StatusRegister, PresetLeavesSummaryAloneAndMasksNothing)
{
    Run({
        {[&] { return child->ModifyCondition(4, 4) || child->SetPresetDefaults(1, kWide, 4); }, S_OK, {4, 0, kF, 4, 0}, {0, 0, kF, 0, 0}},
        {[&] { return child->Preset(); }, S_OK, {4, 1, kWide, 4, 4}, {0, 0, kF, 0, 0}},
        {[&] { return child->SetPosTrans(0x1FFFF); }, S_OK, {4, 1, 0xFFFF, 4, 4}, {0, 0, kF, 0, 0}},
        {[&] { return child->SetNegTrans(0x1FFFF); }, S_OK, {4, 0xFFFF, 0xFFFF, 4, 4}, {0, 0, kF, 0, 0}},
        {[&] { return child->SetEnable(0x1FFFF); }, S_OK, {4, kF, kF, 4, 0x1FFFF}, {0, 0, kF, 0, 0}},
    });
    wchar_t negative = 0, positive = 0;
    EXPECT_EQ(child->GetPresetDefaults(&negative, &positive, &word), S_OK);
    EXPECT_TRUE(negative == 1 && positive == kWide && word == 4);
}

TEST_F(StatusRegister, DeepSettingsReachTheRootUnlessTheSummaryChanged)
{
    parent->failingUpdate = root->failingUpdate = 1;
    Run({
        {[&] { child->ModifyCondition(4, 4); return child->SetEnableDeep(4); }, E_UNEXPECTED, {4, 0, kF, 4, 4}, {32, 0, kF, 32, 0}},
        {[&] { return parent->SetEnable(1) || child->SetEnableDeep(4); }, S_OK, {4, 0, kF, 4, 4}, {32, 0, kF, 32, 33}},
        {[&] { return child->SetEnableDeep(6); }, S_OK, {4, 0, kF, 4, 6}, {32, 0, kF, 32, 33}},
        {[&] { return parent->SetPosTrans(1) || root->SetPosTrans(0); }, S_OK, {4, 0, kF, 4, 6}, {32, 0, 1, 32, 33}},
        {[&] { return child->SetPosTransDeep(0x10006); }, S_OK, {4, 0, 6, 4, 6}, {32, 0, 33, 32, 33}},
        {[&] { return child->SetNegTransDeep(0x10007); }, S_OK, {4, 7, 6, 4, 6}, {32, 32, 33, 32, 33}},
        {[&] { return child->SetParentUpdate(0) || parent->SetPosTrans(2); }, S_OK, {4, 7, 6, 4, 6}, {32, 32, 2, 32, 33}},
        {[&] { return child->SetPosTransDeep(5); }, S_OK, {4, 7, 5, 4, 6}, {32, 32, 2, 32, 33}},
    });
    EXPECT_EQ(WordsOf(*root), (Words{64, 64, 64, 64, 64}));
}

TEST_F(StatusRegister, ClearEventsWritesTheParentsFilterBack)
{
    parent->failingUpdate = 2;
    Run({
        {[&] { return parent->SetNegTrans(32) || child->SetEnable(4); }, S_OK, {0, 0, kF, 0, 4}, {0, 32, kF, 0, 0}},
        {[&] { return child->SetCondition(2, 1); }, S_OK, {4, 0, kF, 4, 4}, {32, 32, kF, 32, 0}},
        {[&] { return parent->GetEvents(&word); }, S_OK, {4, 0, kF, 4, 4}, {32, 32, kF, 0, 0}},
        {[&] { return parent->DoSetRegisterMask(0); }, S_OK, {4, 0, kF, 4, 4}, {32, 32, kF, 0, 0}},
        // The filter latches the summary's end; then it is written and meets the mask.
        {[&] { return child->ClearEvents(); }, E_UNEXPECTED, {4, 0, kF, 0, 4}, {0, 0, kF, 32, 0}},
        {[&] { return parent->SetPresetDefaults(8, 9, 0) || parent->Preset(); }, S_OK, {4, 0, kF, 0, 4}, {0, 8, 9, 32, 0}},
        {[&] { parent->readFailure = true; return child->ClearEvents(); }, S_OK, {4, 0, kF, 0, 4}, {0, 8, 9, 32, 0}},
    });
    EXPECT_EQ(parent->updates.size(), 3U) << "told even without a change";
    EXPECT_EQ(CRegister::Create()->ClearEvents(), S_OK);
}

TEST_F(StatusRegister, ClearsConditionsSilentlyAndKeepsChangesThatTheParentRefuses)
{
    parent->failingUpdate = 1;
    Run({
        {[&] { return child->SetNegTrans(15) || child->SetEnable(4); }, S_OK, {0, 15, kF, 0, 4}, {0, 0, kF, 0, 0}},
        {[&] { return child->SetCondition(2, 1); }, E_UNEXPECTED, {4, 15, kF, 4, 4}, {32, 0, kF, 32, 0}},
        {[&] { parent->failingUpdate = 2; parent->failure = []() -> HRESULT { throw std::bad_alloc(); };
               return child->WaitEventBits(-1, 4, &word); }, E_OUTOFMEMORY, {4, 15, kF, 0, 4}, {0, 0, kF, 32, 0}},
        {[&] { return child->SetCondition(1, 1); }, S_OK, {6, 15, kF, 2, 4}, {0, 0, kF, 32, 0}},
        {[&] { return child->ClearSummaryCondition(33); }, S_OK, {4, 15, kF, 2, 4}, {0, 0, kF, 32, 0}},
        {[&] { return child->ClearCondition(); }, S_OK, {0, 15, kF, 2, 4}, {0, 0, kF, 32, 0}},
    });
    EXPECT_EQ(word, 4);
}
// clang-format on

TEST_F(StatusRegister, PulseRaisesFailures)
{
    for (const char* const condition :
         {"ModifyCondition( iMask, iMask ) == S_OK", "ModifyCondition( iMask, 0 ) == S_OK"})
    {
        ++child->failingUpdate;
        child->updates.clear();
        EXPECT_THROW(static_cast<void>(child->PulseCondition(3)), CShellError);
        const auto entries = errors.Take();
        EXPECT_EQ(Lines(entries), std::string(condition) + "|Status register runtime error|thrown\n");
        EXPECT_STREQ(entries.at(0).report.sourceUnit, "Interfaces/_Src/CBScpiStatusRegister");
        EXPECT_EQ(entries.at(0).report.result, E_UNEXPECTED);
    }
}

TEST_F(StatusRegister, RefusesNullPointers)
{
    EXPECT_EQ(child->GetPresetDefaults(&word, &word, nullptr), E_POINTER);
    EXPECT_EQ(child->WaitEventBits(-1, 1, nullptr), E_POINTER);
    EXPECT_EQ(errors.Take().at(0).report.message, "Null pointer detected (enable)");
    EXPECT_EQ(child->GetSnapshot(nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(child->GetData(nullptr), E_POINTER);
    tagScpiStatusData data{};
    EXPECT_EQ(CPlainRegister::Create()->GetData(&data), E_NOTIMPL);
    CComPtr<IZOScpiStatusRegister> found;
    errors.Take();
    EXPECT_EQ(child->GetParentRegister(&found, nullptr), E_POINTER);
    EXPECT_EQ(errors.Take().at(0).report.message, "Null pointer detected (mask)");
    EXPECT_TRUE(found == nullptr);
    EXPECT_EQ(child->GetParentRegister(&found, &word), S_OK);
    EXPECT_TRUE(found == parent && word == 0x20);
    EXPECT_DEATH(static_cast<void>(child->GetParentRegister(nullptr, nullptr)), "parent != nullptr");
}

using Wait = HRESULT (IZOScpiStatusRegister::*)(long, wchar_t, wchar_t*);

struct StatusWaits : StatusRegister, testing::WithParamInterface<Wait>
{
    using Result = std::pair<HRESULT, wchar_t>;

    /// @param ended  is set when the wait is over; 0 for none
    std::future<Result> Start(wchar_t mask, HANDLE ended = 0)
    {
        return std::async(std::launch::async, [this, mask, ended] {
            wchar_t bits = 0x77;
            const HRESULT result = (*child.*GetParam())(-1, mask, &bits);
            SetEvent(ended);
            return Result(result, bits);
        });
    }

    /// Sets bits so briefly that only a thread that already waits for them can notice.
    Result Wake(std::future<Result>& wait, wchar_t mask)
    {
        child->lockedAction = [=, this] {
            return child->PulseCondition(mask) || child->GetEventBits(mask, &word);
        };
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (wait.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        {
            tagScpiStatusData data{};
            child->GetData(&data);
            if (std::chrono::steady_clock::now() > deadline)
            {
                SetEvent(deviceClear.Get()); // E_ABORT instead of a wait without end
            }
        }
        return wait.get();
    }
};

TEST_P(StatusWaits, EndAtOnceOrSayWhyNot)
{
    const auto wait = [&](long timeoutMs, wchar_t mask) {
        return (*child.*GetParam())(timeoutMs, mask, &word);
    };
    child->ModifyCondition(6, 6);
    EXPECT_EQ(wait(-1, 3), S_OK);
    EXPECT_EQ(word, 2);
    EXPECT_EQ(wait(-1, 0), S_OK);
    EXPECT_EQ(WordsOf(*child)[3], GetParam() == &IZOScpiStatusRegister::WaitEventBits ? 4 : 6);
    EXPECT_EQ(wait(0, 1) + wait(1, 1) + wait(-2, 1), 3 * S_FALSE);
    SetEvent(deviceClear.Get());
    EXPECT_EQ(wait(0xFFFFFFFFL, 1), E_ABORT);
    child->SetDeviceClearHandle(INVALID_HANDLE_VALUE);
    EXPECT_EQ(wait(-1, 1), E_ABORT);
    child->SetDeviceClearHandle(0);
    EXPECT_EQ(wait(-1, 1), E_FAIL);
}

TEST_P(StatusWaits, SecondWaiterReleasesTheFirstAndWokenWaitersGetNothing)
{
    const CUniqueEvent ended[] = {CUniqueEvent(CreateEvent(TRUE, FALSE)),
                                  CUniqueEvent(CreateEvent(TRUE, FALSE))};
    std::array waits{Start(2, ended[0].Get()), Start(4, ended[1].Get())};
    const HANDLE handles[] = {ended[0].Get(), ended[1].Get()};
    const DWORD released = WaitForMultipleObjects(2, handles, FALSE, 30'000);
    if (released > 1)
    {
        SetEvent(deviceClear.Get());
        FAIL() << "both wait still";
    }
    EXPECT_EQ(waits[released].get(), Result(S_OK, 0));
    EXPECT_EQ(Wake(waits[1 - released], released == 0 ? 4 : 2), Result(S_OK, 0));
}

constexpr Wait kWaits[] = {&IZOScpiStatusRegister::WaitConditionBits, &IZOScpiStatusRegister::WaitEventBits};
INSTANTIATE_TEST_SUITE_P(Parts, StatusWaits, testing::ValuesIn(kWaits));

TEST_F(StatusRegister, EventWaitTellsTheParentAgainWhenWokenByTheSummary)
{
    child->SetEnable(2);
    // A waiter that is late takes the event itself; then it gets a longer start.
    for (int yields = 1; word != 0; yields *= 2)
    {
        parent->updates.clear();
        child->ModifyCondition(2, 0);
        std::jthread waiter([&] { EXPECT_EQ(child->WaitEventBits(-1, 2, &word), S_OK); });
        for (int i = 0; i < yields; ++i)
        {
            std::this_thread::yield();
        }
        child->ModifyCondition(2, 2);
    }
    EXPECT_EQ(parent->updates, Updates(2, {0x20, 0x20}));
    EXPECT_EQ(WordsOf(*child)[3], 2);
}

/// One waiter against many setters: each round must see its bit, and no summary may stay behind.
TEST_F(StatusRegister, LosesNeitherWakeUpNorSummaryUnderLoad)
{
    constexpr int kRounds = 500;
    const std::array chain{CPlainRegister::Create(), CPlainRegister::Create(), CPlainRegister::Create()};
    const auto& [leaf, middle, top] = chain;
    leaf->SetupParentRegister(middle, 0x20);
    middle->SetupParentRegister(top, 1);
    leaf->SetDeviceClearHandle(deviceClear.Get());
    leaf->SetEnable(0x1C);
    middle->SetEnable(0x20);
    std::atomic<bool> isDone = false;
    std::atomic<int> seen = 0;
    std::vector<std::jthread> threads;
    for (const wchar_t bit : {4, 8, 16})
    {
        threads.emplace_back([&, bit] {
            while (!isDone)
            {
                wchar_t bits = 0;
                leaf->PulseCondition(bit);
                leaf->GetEventBits(bit, &bits);
                middle->GetEvents(&bits);
                top->ClearCondition();
            }
        });
    }
    threads.emplace_back([&] {
        for (int round = 0; round < kRounds; ++round)
        {
            leaf->ModifyCondition(2, 2);
            seen.wait(round);
        }
    });
    for (int round = 1; round <= kRounds; ++round)
    {
        wchar_t bits = 0;
        HRESULT result = S_OK;
        while (result == S_OK && (bits & 2) == 0)
        {
            result = leaf->WaitConditionBits(20000, 2, &bits);
        }
        EXPECT_EQ(result, S_OK) << round;
        leaf->ModifyCondition(2, 0);
        seen = round;
        seen.notify_one();
    }
    isDone = true;
    threads.clear();
    leaf->GetEvents(&word);
    middle->GetEvents(&word);
    EXPECT_EQ(WordsOf(*middle)[0] + WordsOf(*top)[0], 0);
}

} // namespace
