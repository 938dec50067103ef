#include "CScriptedController.h"
#include "TaskMemory.h"
#include "VirtualSlots.h"

#include <span>
#include <sys/resource.h>

namespace
{

using namespace ZoVelkor;
using C = CScriptedController;
using Controller = CControllerTest;

unsigned char g_message[] = "a,b";
constexpr char kMethod[] = "Fatal execution result of method";

// clang-format off
TEST(ControllerSlots, AreInOrder)
{
    using I = IZOScpiController;
    using B = CBScpiController;
    const auto found = VirtualSlots(
        &I::WriteMessage, &I::ReadResponse, &I::WriteString, &I::ReadString, &I::Write, &I::Read, &I::Clear, &I::Trigger, &I::Local, &I::Remote,
        &I::ReadStatusByte, &I::LocalLockout, &I::ResetInterrupt, &I::WaitInterrupt, &I::SetInterruptCallback, &I::ClearInterruptCallback,
        &I::EnableInterruptCallback, &I::DisableInterruptCallback, &I::Abort, &I::LockDevice, &I::UnlockDevice, &I::ReadToFile, &I::WriteFromFile,
        &I::GetLastError, &I::get_OperationFailed, &I::get_Timeout, &I::put_Timeout, &I::get_RemoteState, &I::put_RemoteState,
        &I::get_LocalLockoutState, &I::put_LocalLockoutState, &I::get_InterruptActive, &I::put_InterruptActive,
        &B::DoTrigger, &B::DoClear, &B::DoLocal, &B::DoRemote, &B::DoReadStatusByte, &B::DoLocalLockout, &B::DoRead, &B::DoWrite,
        &B::DoGetRemoteState, &B::DoGetLocalLockoutState, &B::DoFetchData, &B::DoFetchString, &B::CheckProtocolError, &B::DoEnableInterrupt,
        &B::DoDisableInterrupt);
    for (std::size_t i = 0; i < found.size(); ++i)
    {
        EXPECT_EQ(found[i], i + (i < 33 ? 3 : 5)) << "a destructor takes two slots";
    }
    EXPECT_EQ(VirtualSlots(&IZOScpiInterrupt::Signal).front(), 4U);
}

/// One request: what the transport is asked, and what is got when it answers and when it does not.
struct Operation
{
    std::function<HRESULT(C&, std::string&)> run;
    std::string requested, outputs, outputsOnFailure, refusal;
    std::string raised; ///< for every result but S_OK
};

HRESULT RunRead(C& c, std::string& out)
{
    unsigned char buffer[] = "-----";
    long got = 77;
    short end = 7;
    const HRESULT result = c.Read(4, buffer, &got, &end);
    return out = C::Line(buffer, got, end), result;
}

HRESULT RunReadResponse(C& c, std::string& out)
{
    unsigned char* text = g_message;
    const HRESULT result = c.ReadResponse(&text);
    out = text != nullptr ? reinterpret_cast<char*>(text) : "null";
    return CoTaskMemFree(text), result;
}

HRESULT RunReadString(C& c, std::string& out)
{
    CComBSTR text;
    const HRESULT result = c.ReadString(&text);
    return out = text.IsNull() ? "null" : CZoString(text).ToStdString(), result;
}

HRESULT RunPoll(C& c, std::string& out)
{
    unsigned char stb = 7;
    const HRESULT result = c.ReadStatusByte(&stb);
    return out = C::Line(int{stb}), result;
}

const Operation kOperations[] = {
    {[](C& c, auto&) { return c.WriteMessage(g_message); }, "Write a,b 3 1 check ", "", "", "Fatal WriteMessage execution error", ""},
    {RunReadResponse, "Read 1 0 0 check ", "answer", "null", "Fatal ReadResponse execution error", ""},
    {[](C& c, auto&) { return c.WriteString(CComBSTR(5, L"a\0\u00E4\u20AC\u0416")); }, std::string("Write a\0\xE4\x80? 5 1 check ", 22), "", "", kMethod, ""},
    {[](C& c, auto&) { return c.WriteString(CComBSTR(L"")); }, "Write  0 1 check ", "", "", kMethod, ""},
    {RunReadString, "Read 1 0 0 check ", "answer", "null", kMethod, ""},
    {[](C& c, auto&) { return c.Write(g_message, 2, VARIANT_TRUE); }, "Write a, 2 1 check ", "", "", kMethod, ""},
    {[](C& c, auto&) { return c.Write(g_message, 2, 1); }, "Write a, 2 0 check ", "", "", kMethod, ""},
    {RunRead, "Read 1 1 4 check ", "answ- 4 0 ", "----- 0 0 ", "Fatal Read execution error", ""},
    {[](C& c, auto&) { return c.Clear(); }, "Clear check ", "", "", "Fatal Clear execution error", ""},
    {[](C& c, auto&) { return c.Trigger(); }, "Trigger check ", "", "", "Fatal Trigger execution error", ""},
    {[](C& c, auto&) { return c.Local(); }, "Local check ", "", "", "Fatal Local execution error", ""},
    {[](C& c, auto&) { return c.Remote(); }, "Remote check ", "", "", "Fatal Remote execution error", ""},
    {RunPoll, "Poll check ", "193 ", "0 ", "Fatal ReadStatusByte execution error", ""},
    {[](C& c, auto&) { return c.LocalLockout(5); }, "Lockout 5 check ", "", "", "Fatal LocalLockout execution error", ""},
    {[](C& c, auto&) { return c.put_RemoteState(5); }, "Remote check check ", "", "", "Fatal Remote execution error", "Fatal put_RemoteState execution error"},
    {[](C& c, auto&) { return c.put_RemoteState(0); }, "Local check check ", "", "", "Fatal Local execution error", "Fatal put_RemoteState execution error"},
    {[](C& c, auto&) { return c.put_LocalLockoutState(5); }, "Lockout 5 check check ", "", "", "Fatal LocalLockout execution error",
        "Fatal put_LocalLockoutState execution error"},
};

TEST_F(Controller, RequestsWaitForTheirAnswer)
{
    constexpr std::pair<unsigned, HRESULT> kAnswers[] = {
        {kDone, S_OK}, {kDone | kFromThread, S_OK}, {kError | kFromThread, E_FAIL}, {kError | kDone, E_FAIL}, {kAborted | kFromThread, E_ABORT},
        {kAborted | kError | kDone, E_ABORT}, {0, E_PENDING}, {kDone | kLate, E_PENDING}, {kThrow, E_FAIL}, {kRefused | kDone, kRefusal}};
    for (const Operation& row : kOperations)
    {
        for (const auto& [answer, expected] : kAnswers)
        {
            C c({answer});
            c.incoming = "answer";
            std::string outputs;
            HRESULT result = expected;
            const std::string& message = expected == kRefusal ? row.refusal : expected != S_OK ? row.raised : "";
            EXPECT_EQ(Raised([&] { result = row.run(c, outputs); }), message.empty() ? "" : C::Line("hResult == S_OK", message, expected)) << answer;
            EXPECT_EQ(result, expected) << row.requested << answer;
            // The status byte is handed over whenever it has come.
            const bool hasCome = expected == S_OK || (row.requested == "Poll check " && (answer & kDone) != 0 && (answer & kLate) == 0);
            if (message.empty()) { EXPECT_EQ(outputs, hasCome ? row.outputs : row.outputsOnFailure) << row.requested << answer; }
            if (message.empty() && !c.isQuiet) { EXPECT_EQ(c.log, row.requested) << answer; }
            if (expected == kRefusal) { EXPECT_EQ(c.log, row.requested.substr(0, row.requested.find("check"))) << "nothing follows"; }
            EXPECT_EQ(c.LastError(), "No error");
        }
    }
}

TEST_F(Controller, LateAnswersCountForTheTriggerOnly)
{
    C c({kDone | kLate, kDone | kLate, 0});
    c.put_Timeout(1);
    EXPECT_EQ(c.Clear(), E_PENDING);
    c.late();
    EXPECT_EQ(c.Clear(), E_PENDING) << "forgotten";
    c.late();
    EXPECT_EQ(c.Trigger(), S_OK) << "kept";
    EXPECT_EQ(c.Abort(), S_OK);
    EXPECT_EQ(c.Trigger(), E_ABORT);
    c.script = {kDone};
    EXPECT_EQ(c.Remote(), S_OK) << "an abort ends the request under way only";
}

TEST_F(Controller, AnswersThatCannotBeTrueAreRefused)
{
    struct Case { long excess, fetchExcess; HRESULT fetchResult, result; };
    std::string out;
    for (const auto& [excess, fetchExcess, fetchResult, result] : std::initializer_list<Case>{
             {1L << 31, 0, S_OK, E_UNEXPECTED}, {-7, 0, S_OK, E_UNEXPECTED}, {0, 1, S_OK, E_UNEXPECTED}, {0, -4, S_OK, E_UNEXPECTED},
             {0, 0, S_FALSE, S_FALSE}, {0, 0, E_FAIL, E_FAIL}})
    {
        C c;
        std::tie(c.excess, c.fetchExcess, c.fetchResult, c.incoming) = std::tuple(excess, fetchExcess, fetchResult, "abc");
        EXPECT_EQ(RunRead(c, out), result);
        EXPECT_TRUE(out.ends_with(" 0 0 ")) << out;
        c.incoming = "abc";
        EXPECT_EQ(Raised([&] { RunReadResponse(c, out); }), C::Line("hResult == S_OK Fatal ReadResponse execution error", result));
        EXPECT_EQ(RunReadString(c, out), fetchResult);
        EXPECT_EQ(out, fetchResult == S_OK ? c.incoming : "null");
    }
    C c;
    c.incoming = "abc";
    EXPECT_EQ(RunRead(c, out), S_OK);
    EXPECT_EQ(out, "abc-- 3 -1 ") << "with END";
}

/// A transport that looks at what it was lent when the operation takes an unanswered request back.
struct CLentController : C
{
    using C::C;
    HRESULT DoWrite(unsigned char* data, long length, bool) override { return lent = {data, data + length}, S_OK; }
    HRESULT CheckProtocolError() override { return outgoing.assign(lent.begin(), lent.end()), S_OK; }
    std::span<unsigned char> lent;
};

TEST_F(Controller, DataIsLentUntilTheRequestIsTakenBack)
{
    CLentController c({0});
    const std::string longText(3000, '\xE4');
    EXPECT_EQ(c.WriteString(CComBSTR(longText.c_str())), E_PENDING);
    EXPECT_TRUE(c.outgoing == longText);
}

TEST_F(Controller, NullPointersAreReported)
{
    C c;
    const std::pair<std::function<HRESULT()>, std::string> kRows[] = {
        {[&] { return c.WriteMessage(nullptr); }, "text"}, {[&] { return c.ReadResponse(nullptr); }, "text"},
        {[&] { return c.WriteString(nullptr); }, "text"}, {[&] { return c.ReadString(nullptr); }, "text"},
        {[&] { return c.Write(nullptr, 0, 0); }, "data"}, {[&] { return c.Read(0, nullptr, &length, &end); }, "buffer"},
        {[&] { return c.Read(0, g_message, nullptr, &end); }, "got"}, {[&] { return c.Read(0, g_message, &length, nullptr); }, "end"},
        {[&] { return c.ReadStatusByte(nullptr); }, "stb"}, {[&] { return c.SetInterruptCallback(nullptr); }, "cb"},
        {[&] { return c.ReadToFile(nullptr, 0, &length, &end); }, "fileName"}, {[&] { return c.ReadToFile(file, 0, nullptr, &end); }, "got"},
        {[&] { return c.ReadToFile(file, 0, &length, nullptr); }, "end"}, {[&] { return c.WriteFromFile(nullptr, 0, 0, &length); }, "fileName"},
        {[&] { return c.WriteFromFile(file, 0, 0, nullptr); }, "sent"}, {[&] { return c.GetLastError(nullptr); }, "text"},
        {[&] { return c.get_OperationFailed(nullptr); }, "failed"}, {[&] { return c.get_Timeout(nullptr); }, "piTimeout"},
        {[&] { return c.get_RemoteState(nullptr); }, "pvtbRemoteState"}, {[&] { return c.get_LocalLockoutState(nullptr); }, "pvtbLockoutState"},
        {[&] { return c.get_InterruptActive(nullptr); }, "pvtbInterruptActive"}};
    for (const auto& [run, parameter] : kRows)
    {
        HRESULT result = E_POINTER;
        const std::string line = C::Line(parameter + " != NULL", "Null pointer detected (" + parameter + ")", E_POINTER);
        EXPECT_EQ(Raised([&] { result = run(); }), parameter.starts_with('p') ? line : "") << "getters of properties raise";
        const auto reports = errors.Take();
        ASSERT_EQ(reports.size(), 1U) << parameter;
        EXPECT_EQ(C::Line(reports[0].report.condition, reports[0].report.message, result), line);
    }
    EXPECT_EQ(c.log.find_first_not_of("chek "), std::string::npos) << c.log;
}

TEST_F(Controller, OtherOperationsAndRanges)
{
    C c({0});
    constexpr long kBig = 1L << 31;
    const std::tuple<std::function<HRESULT()>, HRESULT, std::string> kRows[] = {
        {[&] { return c.LockDevice(); }, E_NOTIMPL, "check "}, {[&] { return c.UnlockDevice(); }, E_NOTIMPL, "check "},
        {[&] { return c.EnableInterruptCallback(); }, S_FALSE, "enable check "},
        {[&] { return c.get_InterruptActive(&end), HRESULT{end}; }, VARIANT_TRUE, "check "},
        {[&] { return c.DisableInterruptCallback(); }, E_FAIL, "disable check "},
        {[&] { return c.get_InterruptActive(&end), HRESULT{end}; }, VARIANT_FALSE, "check "},
        {[&] { return c.put_InterruptActive(9), c.get_InterruptActive(&end), HRESULT{end}; }, 9, "check check "},
        {[&] { return c.get_RemoteState(&end), HRESULT{end}; }, 7, "check "}, {[&] { return c.get_LocalLockoutState(&end), HRESULT{end}; }, 8, "check "},
        {[&] { return c.ResetInterrupt(); }, S_OK, ""}, {[&] { return c.WaitInterrupt(); }, E_PENDING, "check "},
        {[&] { return c.ClearInterruptCallback(); }, S_OK, "check "}, {[&] { return c.Abort(); }, S_OK, "check "},
        {[&] { return c.put_Timeout(0xFFFFFFFFL); }, S_OK, "check "}, {[&] { return c.put_Timeout(1L << 32); }, E_INVALIDARG, "check "},
        {[&] { return c.put_Timeout(-kBig - 1); }, E_INVALIDARG, "check "},
        {[&] { return c.get_Timeout(&length), length == 0xFFFFFFFFL ? S_OK : E_FAIL; }, S_OK, "check "},
        {[&] { return c.put_Timeout(-kBig); }, S_OK, "check "},
        {[&] { return c.Read(kBig, g_message, &length, &end); }, E_INVALIDARG, "check "},
        {[&] { return c.Read(-1, g_message, &length, &end); }, E_INVALIDARG, "check "},
        {[&] { return c.Write(g_message, kBig, 0); }, E_INVALIDARG, "check "}, {[&] { return c.Write(g_message, -1, 0); }, E_INVALIDARG, "check "},
        {[&] { return c.ReadToFile(file, kBig, &length, &end); }, E_INVALIDARG, "check "},
        {[&] { return c.WriteFromFile(file, -kBig - 1, 0, &length); }, E_INVALIDARG, "check "}};
    for (const auto& [run, result, log] : kRows)
    {
        c.log.clear();
        EXPECT_EQ(run(), result) << log;
        EXPECT_EQ(c.log, log);
    }
}

TEST_F(Controller, WorksWithoutEventsAsFarAsPossible)
{
    const C first; // sanitizers look a type up once, and need a descriptor for that
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
    const rlimit none{0, former.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    C c;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &former), 0);
    EXPECT_EQ(c.Clear(), E_UNEXPECTED);
    EXPECT_EQ(c.WaitInterrupt(), E_UNEXPECTED);
    EXPECT_EQ(Raised([&] { c.Abort(); }), C::Line("0 != bResult", "abort pending call failed.", ZO_E_SHELL));
}

struct CInterrupt : CFake<IZOScpiInterrupt>
{
    explicit CInterrupt(std::function<HRESULT()> onSignal = [] { return S_OK; }) : action(std::move(onSignal)) {}
    HRESULT ResetSignal() override { return ADD_FAILURE(), E_FAIL; }
    HRESULT Signal() override { return ++calls, action(); }

    std::function<HRESULT()> action;
    std::atomic<int> calls = 0;
};

TEST_F(Controller, InterruptsReachTheCallback)
{
    const std::string raised =
        C::Line("! ((unsigned long)(hResult) >> 31 == 1)", "scpi interrupt signal callback execution error", ZO_E_SHELL);
    const std::tuple<short, std::function<HRESULT()>, int, HRESULT, std::string> kRows[] = {
        {VARIANT_FALSE, [] { return E_FAIL; }, 0, S_OK, ""}, {short{1}, [] { return E_FAIL; }, 0, S_OK, ""},
        {VARIANT_TRUE, [] { return S_OK; }, 1, S_OK, ""}, {VARIANT_TRUE, [] { return S_FALSE; }, 1, S_FALSE, ""},
        {VARIANT_TRUE, [] { return E_FAIL; }, 1, 77, raised}, {VARIANT_TRUE, []() -> HRESULT { throw std::runtime_error("x"); }, 1, 77, raised}};
    CInterrupt second;
    C c({0});
    for (const auto& [active, action, calls, expected, message] : kRows)
    {
        CInterrupt callback(action);
        HRESULT result = 77;
        c.SetInterruptCallback(&callback);
        c.put_InterruptActive(active);
        EXPECT_EQ(Raised([&] { result = c.DoInterrupt(); }), message);
        EXPECT_EQ(C::Line(result, callback.calls), C::Line(expected, calls));
        EXPECT_EQ(c.Clear(), E_PENDING);
        EXPECT_EQ(c.WaitInterrupt(), S_OK) << "whatever the callback did, and requests leave it set";
        EXPECT_EQ(c.SetInterruptCallback(&second), S_OK);
        c.ResetInterrupt();
    }
    second.action = [&] { return c.ClearInterruptCallback(); };
    EXPECT_EQ(c.DoInterrupt(), S_OK) << "the callback may clear itself";
    EXPECT_EQ(c.DoInterrupt(), S_OK);
    EXPECT_EQ(second.calls, 1);
    c.Abort();
    EXPECT_EQ(c.WaitInterrupt(), E_ABORT) << "an abort goes first";
    EXPECT_EQ(c.Clear(), E_PENDING);
    c.ResetInterrupt();
    EXPECT_EQ(c.WaitInterrupt(), E_PENDING);
}

TEST_F(Controller, CopiesHaveTheirOwnEvents)
{
    CInterrupt callback;
    C original({kDone | kLate});
    original.SetInterruptCallback(&callback);
    original.put_InterruptActive(VARIANT_TRUE);
    original.DoAcknowledgeClear();
    original.DoInterrupt();
    original.ReadToFile(CComBSTR(""), 0, &length, &end);
    C assigned;
    assigned.Abort();
    const std::ptrdiff_t before = OpenDescriptors();
    C copy(original);
    assigned = original;
    EXPECT_EQ(OpenDescriptors(), before + 4);
    EXPECT_EQ(callback.m_references, 3);
    EXPECT_EQ(original.LastError(), "Missing filename.");
    for (C* const other : {&copy, &assigned})
    {
        EXPECT_EQ(other->LastError(), "No error");
        EXPECT_EQ(other->WaitInterrupt(), E_PENDING) << "the time-out is copied, the events are not";
        EXPECT_EQ(other->Trigger(), E_PENDING);
        EXPECT_EQ(other->DoInterrupt(), S_OK);
    }
    EXPECT_EQ(callback.calls, 3);
    EXPECT_EQ(original.Trigger(), S_OK);
}

TEST_F(Controller, TransportAndAbortRunBesideTheCaller)
{
    CInterrupt callbacks[2];
    C c;
    c.isQuiet = true;
    c.put_InterruptActive(VARIANT_TRUE);
    const std::jthread transport([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) { c.DoInterrupt(), c.DoAcknowledgeStatus('a'); }
    });
    for (int i = 0; i < 300; ++i)
    {
        c.SetInterruptCallback(&callbacks[i % 2]);
        const std::jthread aborting([&] { c.DoAcknowledgeError(), c.Abort(); });
        EXPECT_EQ(c.ReadToFile(CComBSTR("/nowhere/file"), -1, &length, &end), S_FALSE);
        CComBSTR text;
        EXPECT_EQ(c.GetLastError(&text), S_OK);
        c.WaitInterrupt();
        c.ClearInterruptCallback();
    }
}

} // namespace
// clang-format on
