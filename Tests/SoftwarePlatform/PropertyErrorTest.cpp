#include "CPerformanceDiagnose.h"
#include "CScpiPropErrorStrategy.h"
#include "CScpiTransaction.h"
#include "ExecutionFakes.h"

#include <map>

namespace
{

using namespace ZoVelkor;

/// Notes what it is told, and whether it is about the expected value.
struct NotingObject : CObjectDataReference
{
    void PropertyError(const void* value, const std::string& text) override { Note("E:" + text, value); }
    void PropertyWarning(const void* value, const std::string& text) override { Note("W:" + text, value); }
    void Note(const std::string& text, const void* p)
    {
        notes += text + (p == expected ? ";" : "@elsewhere;");
    }

    const void* expected = nullptr;
    std::string notes;
};

/// A strategy, its object and its reports.
struct StrategyRun
{
    explicit StrategyRun(int mode, bool warnings = false, bool empty = false, bool strict = false)
    {
        strategy.SetMember(
            &object, static_cast<tagEnumScpiNodeRepairUpdateMode>(mode), warnings, empty, strict);
    }
    /// What went to the object and to the shell, what was captured, and the counter.
    std::string Outcome()
    {
        return object.notes + Lines(recorder.Take()) + strategy.ReportCapturedErrors(0) + '#' +
               std::to_string(strategy.GetErrorCounter());
    }

    NotingObject object;
    CErrorRecorder recorder;
    CScpiPropErrorStrategy strategy;
};

constexpr std::tuple<int, const char*, const char*> kProblems[] = {
    // mode, outcome of an error and of a warning
    {0, "#0", "#0"},
    {1, "m#1", "#0"},
    {2, "#0", "#0"},
    {4, "#0", "#0"},
    {8, "E:m;#1", "W:m;#0"},
    {9, "#0", "#0"},
    {16, "false|m\n#1", "#0"}};

TEST(PropErrorStrategy, ModeAndWarningsDecideWhereAProblemGoes)
{
    for (const auto& [mode, asError, asWarning] : kProblems)
    {
        for (const bool warnings : {false, true})
        {
            StrategyRun run(mode, warnings);
            run.object.expected = &mode;
            run.strategy.PropError(&mode, "m");
            EXPECT_EQ(run.Outcome(), warnings ? asWarning : asError) << mode;
        }
    }
    StrategyRun run(16);
    run.strategy.PropError(nullptr, "m");
    const auto report = run.recorder.Take().at(0).report;
    EXPECT_TRUE(report.object == &run.object && report.result == ZO_E_SHELL);
    EXPECT_STREQ(report.sourceUnit, "Remote/Src/CScpiPropErrorStrategy");
}

TEST(PropErrorStrategy, WithoutObjectTheShellIsToldInstead)
{
    StrategyRun run(8);
    run.strategy = CScpiPropErrorStrategy();
    run.strategy.PropErrorRelaxed(nullptr, "new");
    run.strategy.SetMember(nullptr, ZO_SCPI_NODE_REPORT_TO_OBJECT, false, false, false);
    run.strategy.PropError(nullptr, "m");
    EXPECT_EQ(run.Outcome(), "false|new\nfalse|m\n#2");
    run.strategy.SetMember(nullptr, ZO_SCPI_NODE_REPORT_TO_OBJECT, true, false, false);
    run.strategy.PropError(nullptr, "m");
    EXPECT_EQ(run.Outcome(), "false|m\n#2");
}

TEST(PropErrorStrategy, ConditionalProblemsFollowTheirFlag)
{
    for (const bool flag : {false, true})
    {
        StrategyRun run(1, false, flag, flag);
        run.strategy.CheckUndefinedLong(5, 5);
        run.strategy.CheckUndefinedLong(5, 6);
        run.strategy.CheckNullGuid(GUID_NULL);
        run.strategy.CheckNullGuid({1, 0, 0, {}});
        run.strategy.PropErrorEmpty(nullptr, "empty");
        EXPECT_EQ(run.Outcome(),
                  flag ? "This value is undefined\nUndefined GUID config error\nempty#3" : "#0");
        EXPECT_EQ(run.strategy.ReportCapturedErrors(1), flag ? "This value is undefined" : "");
        EXPECT_EQ(run.strategy.ReportCapturedErrors(4), run.strategy.ReportCapturedErrors(-1));
        run.strategy.ResetErrorCounter();
        run.strategy.PropErrorRelaxed(nullptr, "relaxed");
        EXPECT_EQ(run.Outcome(), flag ? "#0" : "relaxed#1");
        EXPECT_NE(run.strategy.IsStrict(), run.strategy.IsRelaxed());
    }
}

TEST(PropErrorStrategy, OnlyRepairModeChangesTextsAndDoesSoWithChecksOff)
{
    for (const auto& [mode, asError, asWarning] : kProblems)
    {
        for (const char* flags : {"", "nochecks"})
        {
            ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), flags, "test");
            StrategyRun run(mode, false, true);
            CComBSTR value(L"bad");
            run.object.expected = std::addressof(value);
            run.strategy.PropErrorBstrRepair(value, "m", std::string("go\0od", 5));
            EXPECT_EQ(value.View(), mode == 2 ? std::wstring_view(L"go\0od", 5) : L"bad") << mode;
            EXPECT_EQ(run.Outcome(), *flags == '\0' ? asError : "#0") << mode;
        }
    }
    ApplyDiagnoseFlags(*get_RemoteDiagnoseControl(), "", "test");
}

std::string Verdict(std::int32_t state, std::int32_t reason)
{
    const Acceptance acceptance{state, reason};
    long code = 1;
    CComBSTR text(L"before");
    CScpiTransaction::GetScpiErrorFromAcceptance(state == 0 ? nullptr : &acceptance, code, text);
    return std::to_string(code) + std::string(text.View().begin(), text.View().end());
}

TEST(ScpiTransaction, MapsEveryReason)
{
    // clang-format off
    const std::string kinds = "snnuuvcqiiruuiiiuuuuauuuuuuuuuuudfu"; // one letter for each reason from 0
    const std::map<char, std::string> kErrors = {
        {'s', "-220wrong parameter state"}, {'n', "-231numeric or unit conversion failed"},
        {'v', "-222value is not changeable"}, {'c', "-222value is corrected"}, {'q', "-231numeric calculation error"},
        {'i', "-220invalid object index"}, {'r', "-222value out of range"}, {'a', "-220access permission"},
        {'u', "-220unknown error"}, {'d', "-231parameter value corrected by dependency"}, {'f', "-231dependency failed"}}; // clang-format on
    for (std::size_t i = 0; i < kinds.size(); ++i)
    {
        const auto reason = static_cast<std::int32_t>(i);
        const std::string& error = kErrors.at(kinds[i]);
        EXPECT_EQ(Verdict(2, reason), kinds[i] == 'u' ? "0" : error) << reason;
        for (const std::int32_t rejected : {-1, 3, INT32_MAX, INT32_MIN})
        {
            EXPECT_EQ(Verdict(rejected, reason), error) << rejected << ' ' << reason;
        }
        EXPECT_EQ(Verdict(1, reason), "0") << reason;
    }
    EXPECT_EQ(Verdict(2, INT32_MAX) + Verdict(0, 10), "00");
    EXPECT_EQ(Verdict(2, -1), "-220unknown error");
}

struct FakeTransaction : CFake<IZODatabaseTransaction>
{
    explicit FakeTransaction(HRESULT outcome = S_OK, Acceptance given = {}) : result(outcome), verdict(given)
    {}
    HRESULT FinishTransaction(TransactionAcceptMode, Acceptance* p) override { return *p = verdict, result; }
    HRESULT UndoTransaction() override { return result; }
    HRESULT AbortTransaction() override { return result; }

    const HRESULT result;
    const Acceptance verdict;
};

/// What the transaction gives, its verdict, the result for the handler and its error.
constexpr std::tuple<HRESULT, Acceptance, HRESULT, const char*> kFinishes[] = {
    {S_OK, {3, 10}, S_OK, "0"},
    {S_FALSE, {2, 11}, S_OK, "0"},
    {E_FAIL, {0, 0}, E_FAIL, "0"},
    {E_FAIL, {3, 10}, S_FALSE, "-222value out of range"},
    {E_FAIL, {2, 6}, S_FALSE, "-222value is corrected"},
    {S_FALSE, {2, 32}, S_FALSE, "-231parameter value corrected by dependency"}};

/// A pool with a transaction for reading; kernel commands have none.
struct ReadingPool : CPool
{
    explicit ReadingPool(const Command& command, IZODatabaseTransaction* transaction) : CPool(command.data)
    {
        SetReadTransaction(transaction);
    }
    std::string Error() const { return std::to_string(GetScpiError()) + GetScpiErrorText(); }
};

TEST(PoolTransactions, FailuresRaiseExecutionErrorsAndFinishingThatOfTheVerdict)
{
    const Command command;
    for (const auto& [result, verdict, expected, error] : kFinishes)
    {
        CErrorRecorder recorder;
        FakeTransaction fake{result, verdict};
        CComPtr<IZODatabaseTransaction> transaction(&fake);
        ReadingPool finish(command, nullptr);
        ReadingPool undo(command, nullptr);
        ReadingPool stop(command, &fake);
        EXPECT_EQ(finish.FinishTransaction(transaction, ZO_TRANSACTION_ACCEPT_ALL), expected);
        EXPECT_EQ(finish.Error(), error);
        EXPECT_EQ(Lines(recorder.Take()), "");
        const bool isUndone = SUCCEEDED(result);
        const bool isRight = result == S_OK;
        EXPECT_EQ(undo.UndoTransaction(transaction), isUndone ? S_OK : S_FALSE);
        EXPECT_EQ(stop.StopTransaction(), isRight ? S_OK : S_FALSE);
        EXPECT_EQ(undo.Error() + stop.Error(),
                  std::string(isUndone ? "0" : "-200") + (isRight ? "0" : "-200"));
        const std::string report = Lines(recorder.Take());
        EXPECT_EQ(report.substr(0, report.find('|')),
                  isRight ? "" : "m_pIReadTransaction->AbortTransaction() == S_OK");
    }
}

TEST(PoolTransactions, KernelCommandsHaveNone)
{
    const Command command;
    ReadingPool pool(command, nullptr);
    FakeTransaction fake;
    CComPtr<IZODatabaseTransaction> transaction(&fake);
    EXPECT_EQ(pool.GetReadTransaction(transaction) + pool.GetWriteTransaction(transaction), 2);
    EXPECT_EQ(pool.GetCurrentTransaction(transaction), 1);
    EXPECT_EQ(transaction, nullptr);
    EXPECT_EQ(pool.FinishTransaction(transaction, ZO_TRANSACTION_ACCEPT_EXACT), S_OK);
    EXPECT_EQ(pool.UndoTransaction(transaction) + pool.StopTransaction(), S_OK);
    EXPECT_EQ(pool.Error(), "0");
}

} // namespace
