#include "CScriptedController.h"
#include "TaskMemory.h"

#include <sys/resource.h>

namespace
{

using namespace ZoVelkor;
using C = CScriptedController;
using Run = std::function<HRESULT(C&, std::string&)>;
using Controller = CControllerTest;

TEST(ControllerSlots, AreInOrder)
{
    // clang-format off
    using I = IZOScpiController;
    const std::vector slots = {
        C::Slot(&I::WriteMessage), C::Slot(&I::ReadResponse), C::Slot(&I::WriteString), C::Slot(&I::ReadString), C::Slot(&I::Write),
        C::Slot(&I::Read), C::Slot(&I::Clear), C::Slot(&I::Trigger), C::Slot(&I::Local), C::Slot(&I::Remote), C::Slot(&I::ReadStatusByte),
        C::Slot(&I::LocalLockout), C::Slot(&I::ResetInterrupt), C::Slot(&I::WaitInterrupt), C::Slot(&I::SetInterruptCallback),
        C::Slot(&I::ClearInterruptCallback), C::Slot(&I::EnableInterruptCallback), C::Slot(&I::DisableInterruptCallback),
        C::Slot(&I::Abort), C::Slot(&I::LockDevice), C::Slot(&I::UnlockDevice), C::Slot(&I::ReadToFile), C::Slot(&I::WriteFromFile),
        C::Slot(&I::GetLastError), C::Slot(&I::get_OperationFailed), C::Slot(&I::get_Timeout), C::Slot(&I::put_Timeout),
        C::Slot(&I::get_RemoteState), C::Slot(&I::put_RemoteState), C::Slot(&I::get_LocalLockoutState), C::Slot(&I::put_LocalLockoutState),
        C::Slot(&I::get_InterruptActive), C::Slot(&I::put_InterruptActive)};
    using B = CBScpiController;
    const std::vector own = { // behind the two slots of the destructor
        C::Slot(&B::DoTrigger), C::Slot(&B::DoClear), C::Slot(&B::DoLocal), C::Slot(&B::DoRemote), C::Slot(&B::DoReadStatusByte),
        C::Slot(&B::DoLocalLockout), C::Slot(&B::DoRead), C::Slot(&B::DoWrite), C::Slot(&B::DoGetRemoteState),
        C::Slot(&B::DoGetLocalLockoutState), C::Slot(&B::DoFetchData), C::Slot(&B::DoFetchString), C::Slot(&B::CheckProtocolError),
        C::Slot(&B::DoEnableInterrupt), C::Slot(&B::DoDisableInterrupt)};
    // clang-format on
    for (std::size_t i = 0; i < slots.size(); ++i)
    {
        EXPECT_EQ(slots[i], i + 3);
    }
    for (std::size_t i = 0; i < own.size(); ++i)
    {
        EXPECT_EQ(own[i], slots.size() + 5 + i);
    }
    EXPECT_EQ(C::Slot(&IZOScpiInterrupt::Signal), 4U);
}

/// One request: what the transport is asked, and what is got when it answers and when it does not.
struct tagOperation
{
    const char* name;
    Run run;
    std::string requested;
    std::string outputs;
    std::string outputsOnFailure;
    const char* refusal;
    const char* raised = nullptr; ///< raised for every result but S_OK
};

unsigned char g_message[] = "a,b";
constexpr char kMethod[] = "Fatal execution result of method";
constexpr char kPutRemote[] = "Fatal put_RemoteState execution error";

HRESULT RunReadResponse(C& c, std::string& out)
{
    unsigned char* text = g_message;
    const HRESULT hr = c.ReadResponse(&text);
    out = text != nullptr ? reinterpret_cast<char*>(text) : "null";
    CoTaskMemFree(text);
    return hr;
}

HRESULT RunReadString(C& c, std::string& out)
{
    BSTR text = nullptr;
    const HRESULT hr = c.ReadString(&text);
    out = text != nullptr ? CZoString(text).ToStdString() : "null";
    SysFreeString(text);
    return hr;
}

HRESULT RunRead(C& c, std::string& out)
{
    std::array<unsigned char, 5> buffer{'-', '-', '-', '-', '-'};
    long got = 77;
    short end = 7;
    const HRESULT hr = c.Read(4, buffer.data(), &got, &end);
    out = Line(std::string(buffer.begin(), buffer.end()), got, end);
    return hr;
}

HRESULT RunPoll(C& c, std::string& out)
{
    unsigned char stb = 7;
    const HRESULT hr = c.ReadStatusByte(&stb);
    out = Line(int{stb});
    return hr;
}

// clang-format off
const tagOperation kOperations[] = {
    {"WriteMessage", [](C& c, auto&) { return c.WriteMessage(g_message); }, "Write a,b 3 1 check ", "", "", "Fatal WriteMessage execution error"},
    {"ReadResponse", RunReadResponse, "Read 1 0 0 check ", "answer", "null", "Fatal ReadResponse execution error"},
    {"WriteString", [](C& c, auto&) { return c.WriteString(CComBSTR(5, L"a\0\u00E4\u20AC\u0416")); },
        std::string("Write a\0\xE4\x80? 5 1 check ", 22), "", "", kMethod},
    {"WriteNothing", [](C& c, auto&) { return c.WriteString(CComBSTR(L"")); }, "Write  0 1 check ", "", "", kMethod},
    {"ReadString", RunReadString, "Read 1 0 0 check ", "answer", "null", kMethod},
    {"WriteWithEnd", [](C& c, auto&) { return c.Write(g_message, 2, VARIANT_TRUE); }, "Write a, 2 1 check ", "", "", kMethod},
    {"WriteWithout", [](C& c, auto&) { return c.Write(g_message, 2, 1); }, "Write a, 2 0 check ", "", "", kMethod},
    {"Read", RunRead, "Read 1 1 4 check ", "answ- 4 0 ", "----- 0 0 ", "Fatal Read execution error"},
    {"Clear", [](C& c, auto&) { return c.Clear(); }, "Clear check ", "", "", "Fatal Clear execution error"},
    {"Trigger", [](C& c, auto&) { return c.Trigger(); }, "Trigger check ", "", "", "Fatal Trigger execution error"},
    {"Local", [](C& c, auto&) { return c.Local(); }, "Local check ", "", "", "Fatal Local execution error"},
    {"Remote", [](C& c, auto&) { return c.Remote(); }, "Remote check ", "", "", "Fatal Remote execution error"},
    {"ReadStatusByte", RunPoll, "Poll check ", "193 ", "0 ", "Fatal ReadStatusByte execution error"},
    {"LocalLockout", [](C& c, auto&) { return c.LocalLockout(5); }, "Lockout 5 check ", "", "", "Fatal LocalLockout execution error"},
    {"PutRemote", [](C& c, auto&) { return c.put_RemoteState(5); }, "Remote check check ", "", "", "Fatal Remote execution error", kPutRemote},
    {"PutLocal", [](C& c, auto&) { return c.put_RemoteState(0); }, "Local check check ", "", "", "Fatal Local execution error", kPutRemote},
    {"PutLockout", [](C& c, auto&) { return c.put_LocalLockoutState(5); }, "Lockout 5 check check ", "", "",
        "Fatal LocalLockout execution error", "Fatal put_LocalLockoutState execution error"},
};

struct tagAnswerCase
{
    tagAnswer answer;
    HRESULT result;
    bool acknowledged = false;
};
const tagAnswerCase kAnswers[] = {
    {tagAnswer::Now, S_OK, true}, {tagAnswer::OtherThread, S_OK, true}, {tagAnswer::Error, E_FAIL},
    {tagAnswer::ErrorAndDone, E_FAIL, true}, {tagAnswer::Aborted, E_ABORT}, {tagAnswer::Everything, E_ABORT, true},
    {tagAnswer::Never, E_PENDING}, {tagAnswer::Late, E_PENDING}, {tagAnswer::Throw, E_FAIL},
};
// clang-format on

TEST_F(Controller, RequestsWaitForTheirAnswer)
{
    for (const tagOperation& row : kOperations)
    {
        for (const tagAnswerCase& answer : kAnswers)
        {
            C c({answer.answer});
            c.incoming = "answer";
            EXPECT_EQ(c.put_Timeout(answer.result == E_PENDING ? 1 : -1), S_OK);
            c.log.clear();
            const std::string where =
                std::string(row.name) + " " + std::to_string(static_cast<int>(answer.answer));
            std::string outputs;
            if (row.raised != nullptr && answer.result != S_OK)
            {
                ExpectRaised([&] { row.run(c, outputs); }, row.raised, "hResult == S_OK", answer.result);
                continue;
            }
            EXPECT_EQ(row.run(c, outputs), answer.result) << where;
            // The status byte is handed over whenever it has come.
            const bool hasCome =
                answer.result == S_OK || (answer.acknowledged && row.requested == "Poll check ");
            EXPECT_EQ(outputs, hasCome ? row.outputs : row.outputsOnFailure) << where;
            if (answer.result != E_ABORT)
            {
                EXPECT_EQ(c.log, row.requested) << where;
            }
            EXPECT_EQ(c.LastError(), "No error");
        }
    }
}

TEST_F(Controller, RefusedRequestsAreRaised)
{
    for (const tagOperation& row : kOperations)
    {
        C c({tagAnswer::Refused});
        std::string outputs;
        ExpectRaised([&] { row.run(c, outputs); }, row.refusal, "hResult == S_OK", kRefusal);
        EXPECT_EQ(c.log, row.requested.substr(0, row.requested.find("check"))) << "nothing follows";
    }
}

TEST_F(Controller, LateAnswersCountForTheTriggerOnly)
{
    C c({tagAnswer::Late, tagAnswer::Late, tagAnswer::Never});
    EXPECT_EQ(c.Clear(), E_PENDING);
    c.late();
    EXPECT_EQ(c.Clear(), E_PENDING) << "forgotten";
    c.late();
    EXPECT_EQ(c.Trigger(), S_OK) << "kept";
    EXPECT_EQ(c.Abort(), S_OK);
    EXPECT_EQ(c.Trigger(), E_ABORT);
    c.script = {tagAnswer::Now};
    EXPECT_EQ(c.Remote(), S_OK) << "an abort ends the request under way only";
}

TEST_F(Controller, AnswersThatCannotBeTrueAreRefused)
{
    for (const auto& [excess, fetchExcess, fetchResult, result] :
         std::initializer_list<std::tuple<long, long, HRESULT, HRESULT>>{
             {1L << 31, 0,  S_OK,    E_UNEXPECTED},
             {-7,       0,  S_OK,    E_UNEXPECTED},
             {0,        1,  S_OK,    E_UNEXPECTED},
             {0,        -4, S_OK,    E_UNEXPECTED},
             {0,        0,  S_FALSE, S_FALSE     },
             {0,        0,  E_FAIL,  E_FAIL      }
    })
    {
        C c;
        c.excess = excess;
        c.fetchExcess = fetchExcess;
        c.fetchResult = fetchResult;
        c.incoming = "abc";
        std::string out;
        EXPECT_EQ(RunRead(c, out), result);
        EXPECT_NE(out.find(" 0 0 "), std::string::npos) << out;
        c.incoming = "abc";
        ExpectRaised([&] { RunReadResponse(c, out); },
                     "Fatal ReadResponse execution error",
                     "hResult == S_OK",
                     result);
        EXPECT_EQ(RunReadString(c, out), fetchResult);
        EXPECT_EQ(out, fetchResult == S_OK ? c.incoming : "null");
    }
    C c;
    std::string out;
    c.incoming = "abc";
    EXPECT_EQ(RunRead(c, out), S_OK);
    EXPECT_EQ(out, "abc-- 3 -1 ") << "with END";
    const std::string longText(3000, '\xE4');
    EXPECT_EQ(c.WriteString(CComBSTR(longText.c_str())), S_OK);
    EXPECT_EQ(c.outgoing, longText);
}

// clang-format off
TEST_F(Controller, NullPointersAreReported)
{
    C c;
    wchar_t* const name = file;
    short* const noShort = nullptr;
    struct tagNullCase { std::function<HRESULT()> run; const char* name; bool raises = false; };
    const tagNullCase kRows[] = {
        {[&] { return c.WriteMessage(nullptr); }, "text"}, {[&] { return c.ReadResponse(nullptr); }, "text"},
        {[&] { return c.WriteString(nullptr); }, "text"}, {[&] { return c.ReadString(nullptr); }, "text"},
        {[&] { return c.Write(nullptr, 0, 0); }, "data"}, {[&] { return c.Read(0, nullptr, &length, &end); }, "buffer"},
        {[&] { return c.Read(0, g_message, nullptr, &end); }, "got"}, {[&] { return c.Read(0, g_message, &length, nullptr); }, "end"},
        {[&] { return c.ReadStatusByte(nullptr); }, "stb"}, {[&] { return c.SetInterruptCallback(nullptr); }, "cb"},
        {[&] { return c.ReadToFile(nullptr, 0, &length, &end); }, "fileName"}, {[&] { return c.ReadToFile(name, 0, nullptr, &end); }, "got"},
        {[&] { return c.ReadToFile(name, 0, &length, nullptr); }, "end"}, {[&] { return c.WriteFromFile(nullptr, 0, 0, &length); }, "fileName"},
        {[&] { return c.WriteFromFile(name, 0, 0, nullptr); }, "sent"}, {[&] { return c.GetLastError(nullptr); }, "text"},
        {[&] { return c.get_OperationFailed(nullptr); }, "failed"}, {[&] { return c.get_Timeout(nullptr); }, "piTimeout", true},
        {[&] { return c.get_RemoteState(noShort); }, "pvtbRemoteState", true},
        {[&] { return c.get_LocalLockoutState(noShort); }, "pvtbLockoutState", true},
        {[&] { return c.get_InterruptActive(noShort); }, "pvtbInterruptActive", true}};
    for (const auto& [run, parameter, raises] : kRows)
    {
        HRESULT hr = E_POINTER;
        EXPECT_EQ(Raised([&] { hr = run(); }).has_value(), raises) << parameter;
        EXPECT_EQ(hr, E_POINTER) << parameter;
        const auto reports = errors.Take();
        ASSERT_EQ(reports.size(), 1U) << parameter;
        EXPECT_EQ(reports[0].report.message, std::string("Null pointer detected (") + parameter + ")");
        EXPECT_EQ(reports[0].report.condition, std::string(parameter) + " != NULL");
        EXPECT_EQ(reports[0].report.result, E_POINTER);
    }
    EXPECT_EQ(c.log.find_first_not_of("chek "), std::string::npos) << c.log;
}

TEST_F(Controller, OtherOperationsAndRanges)
{
    C c({tagAnswer::Never});
    constexpr long kBig = 1L << 31;
    struct tagCase { const char* name; std::function<HRESULT()> run; HRESULT result; std::string log; };
    const tagCase kRows[] = {
        {"Lock", [&] { return c.LockDevice(); }, E_NOTIMPL, "check "}, {"Unlock", [&] { return c.UnlockDevice(); }, E_NOTIMPL, "check "},
        {"Enable", [&] { return c.EnableInterruptCallback(); }, S_FALSE, "enable check "},
        {"IsEnabled", [&] { return c.get_InterruptActive(&end), HRESULT{end}; }, VARIANT_TRUE, "check "},
        {"Disable", [&] { return c.DisableInterruptCallback(); }, E_FAIL, "disable check "},
        {"IsDisabled", [&] { return c.get_InterruptActive(&end), HRESULT{end}; }, VARIANT_FALSE, "check "},
        {"PutActive", [&] { return c.put_InterruptActive(9), c.get_InterruptActive(&end), HRESULT{end}; }, 9, "check check "},
        {"RemoteState", [&] { return c.get_RemoteState(&end), HRESULT{end}; }, 7, "check "},
        {"LockoutState", [&] { return c.get_LocalLockoutState(&end), HRESULT{end}; }, 8, "check "},
        {"ResetInterrupt", [&] { return c.ResetInterrupt(); }, S_OK, ""}, {"WaitInterrupt", [&] { return c.WaitInterrupt(); }, E_PENDING, "check "},
        {"ClearCallback", [&] { return c.ClearInterruptCallback(); }, S_OK, "check "}, {"Abort", [&] { return c.Abort(); }, S_OK, "check "},
        {"Infinite", [&] { return c.put_Timeout(0xFFFFFFFFL); }, S_OK, "check "}, {"TooLong", [&] { return c.put_Timeout(1L << 32); }, E_INVALIDARG, "check "},
        {"TooNegative", [&] { return c.put_Timeout(-kBig - 1); }, E_INVALIDARG, "check "},
        {"TimeoutKept", [&] { return c.get_Timeout(&length), length == 0xFFFFFFFFL ? S_OK : E_FAIL; }, S_OK, "check "},
        {"Negative", [&] { return c.put_Timeout(-kBig); }, S_OK, "check "},
        {"ReadBig", [&] { return c.Read(kBig, g_message, &length, &end); }, E_INVALIDARG, "check "},
        {"ReadNegative", [&] { return c.Read(-1, g_message, &length, &end); }, E_INVALIDARG, "check "},
        {"WriteBig", [&] { return c.Write(g_message, kBig, 0); }, E_INVALIDARG, "check "},
        {"WriteNegative", [&] { return c.Write(g_message, -1, 0); }, E_INVALIDARG, "check "},
        {"ReceiveBig", [&] { return c.ReadToFile(file, kBig, &length, &end); }, E_INVALIDARG, "check "},
        {"SendBig", [&] { return c.WriteFromFile(file, -kBig - 1, 0, &length); }, E_INVALIDARG, "check "}};
    for (const tagCase& row : kRows)
    {
        c.log.clear();
        EXPECT_EQ(row.run(), row.result) << row.name;
        EXPECT_EQ(c.log, row.log) << row.name;
    }
}

TEST_F(Controller, WorksWithoutEventsAsFarAsPossible)
{
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
    const rlimit none{0, former.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    auto c = std::make_unique<C>();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &former), 0);
    EXPECT_EQ(c->Clear(), E_UNEXPECTED);
    EXPECT_EQ(c->WaitInterrupt(), E_UNEXPECTED);
    ExpectRaised([&] { c->Abort(); }, "abort pending call failed.", "0 != bResult", ZO_E_SHELL);
}

struct CInterrupt final : IZOScpiInterrupt
{
    explicit CInterrupt(std::function<HRESULT()> onSignal = [] { return S_OK; }) : action(std::move(onSignal)) {}
    HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    HRESULT ResetSignal() override { return ADD_FAILURE(), E_FAIL; }
    HRESULT Signal() override { return ++calls, action(); }

    std::function<HRESULT()> action;
    std::atomic<ULONG> references = 0;
    std::atomic<int> calls = 0;
};

TEST_F(Controller, InterruptsReachTheCallback)
{
    struct tagCase { short active; std::function<HRESULT()> action; int calls; std::optional<HRESULT> result; };
    const tagCase kRows[] = {
        {VARIANT_FALSE, [] { return E_FAIL; }, 0, S_OK}, {1, [] { return E_FAIL; }, 0, S_OK},
        {VARIANT_TRUE, [] { return S_OK; }, 1, S_OK}, {VARIANT_TRUE, [] { return S_FALSE; }, 1, S_FALSE},
        {VARIANT_TRUE, [] { return E_FAIL; }, 1, {}}, {VARIANT_TRUE, []() -> HRESULT { throw std::runtime_error("x"); }, 1, {}}};
    for (const tagCase& row : kRows)
    {
        CInterrupt callback(row.action);
        C c({tagAnswer::Never});
        c.SetInterruptCallback(&callback);
        c.put_InterruptActive(row.active);
        std::optional<HRESULT> result;
        const auto report = Raised([&] { result = c.DoInterrupt(); });
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(callback.calls, row.calls);
        if (report)
        {
            ExpectRaised([&] { c.DoInterrupt(); }, "scpi interrupt signal callback execution error",
                         "! ((unsigned long)(hResult) >> 31 == 1)", ZO_E_SHELL);
        }
        EXPECT_EQ(c.WaitInterrupt(), S_OK) << "whatever the callback did";
        EXPECT_EQ(c.Clear(), E_PENDING);
        EXPECT_EQ(c.WaitInterrupt(), S_OK) << "a request leaves the interrupt set";
        c.Abort();
        EXPECT_EQ(c.WaitInterrupt(), E_ABORT) << "an abort goes first";
        EXPECT_EQ(c.Clear(), E_PENDING);
        c.ResetInterrupt();
        EXPECT_EQ(c.WaitInterrupt(), E_PENDING);
        CInterrupt second;
        EXPECT_EQ(c.SetInterruptCallback(&second), S_OK);
        EXPECT_EQ(callback.references, 0U);
        second.action = [&] { return c.ClearInterruptCallback(); };
        c.put_InterruptActive(VARIANT_TRUE);
        EXPECT_EQ(c.DoInterrupt(), S_OK) << "the callback may clear itself";
        EXPECT_EQ(c.DoInterrupt(), S_OK);
        EXPECT_EQ(second.calls, 1);
        EXPECT_EQ(second.references, 0U);
    }
}
// clang-format on

TEST_F(Controller, CopiesHaveTheirOwnEvents)
{
    CInterrupt callback;
    {
        C original({tagAnswer::Late});
        original.put_Timeout(1);
        original.SetInterruptCallback(&callback);
        original.put_InterruptActive(VARIANT_TRUE);
        original.DoAcknowledgeStatus('a');
        original.DoInterrupt();
        C assigned;
        const std::ptrdiff_t before = OpenDescriptors();
        original.ReadToFile(CComBSTR(""), 0, &length, &end);
        C copy(original);
        EXPECT_EQ(OpenDescriptors(), before + 4);
        const auto* const self = &assigned;
        assigned = *self;
        assigned.Abort();
        assigned = original;
        EXPECT_EQ(OpenDescriptors(), before + 4);
        EXPECT_EQ(callback.references, 3U);
        EXPECT_EQ(original.LastError(), "Missing filename.");
        for (C* const other : {&copy, &assigned})
        {
            EXPECT_EQ(other->LastError(), "No error");
            EXPECT_EQ(other->get_Timeout(&length), S_OK);
            EXPECT_EQ(length, 1);
            EXPECT_EQ(other->WaitInterrupt(), E_PENDING) << "neither aborted nor interrupted";
            EXPECT_EQ(other->Trigger(), E_PENDING) << "not done";
            callback.calls = 0;
            EXPECT_EQ(other->DoInterrupt(), S_OK);
            EXPECT_EQ(callback.calls, 1);
        }
        EXPECT_EQ(original.Trigger(), S_OK);
    }
    EXPECT_EQ(callback.references, 0U);
}

TEST_F(Controller, TransportAndAbortRunBesideTheCaller)
{
    CInterrupt callbacks[2];
    {
        C c;
        c.isQuiet = true;
        c.put_InterruptActive(VARIANT_TRUE);
        std::jthread transport([&](const std::stop_token& stop) {
            while (!stop.stop_requested())
            {
                c.DoInterrupt();
                c.DoAcknowledgeStatus('a');
            }
        });
        for (int i = 0; i < 300; ++i)
        {
            c.SetInterruptCallback(&callbacks[i % 2]);
            std::jthread aborting([&] { c.DoAcknowledgeError(), c.Abort(); });
            EXPECT_EQ(c.ReadToFile(CComBSTR("/nowhere/file"), -1, &length, &end), S_FALSE);
            CComBSTR text;
            EXPECT_EQ(c.GetLastError(&text), S_OK);
            c.WaitInterrupt();
            c.ClearInterruptCallback();
        }
    }
    EXPECT_EQ(callbacks[0].references + callbacks[1].references, 0U);
}

} // namespace
