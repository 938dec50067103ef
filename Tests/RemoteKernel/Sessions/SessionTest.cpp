#include "CErrorRecorder.h"
#include "CTestApplication.h"
#include "Root.h"
#include "Sessions/CSession.h"

#include <gtest/gtest.h>

#include <thread>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
class Session : public testing::Test
{
protected:
    static std::string Run(CSession& session, std::string bytes)
    {
        return std::string(session.Process({bytes.data(), bytes.size()}));
    }

    /// Takes the oldest error through the service, since a query would have its own limits.
    std::string NextError()
    {
        short code = 0;
        CComBSTR text;
        m_instrument.kernel.ErrorManagement().GetNextError(m_session.RemotePath(), &code, &text);
        std::string error = std::to_string(code) + ',';
        for (const wchar_t c : text.View())
        {
            error += static_cast<char>(c);
        }
        return error;
    }

    TestInstrument m_instrument;
    CSession m_session{m_instrument.kernel.Parts(),
                       {.message = {.maxText = 64, .maxBlock = 1000}, .maxResponse = 20}};
};

TEST_F(Session, GivesTheSameAnswerHoweverTheBytesAreCut)
{
    const std::string script =
        "TEXT 'a;b';:LAST?\nBLOC #15\n;'\"#;BLOC?\n*OPC?\nNOSUCH\n\n*OPC?;SYST:ERR:COUN?\n";
    const std::string expected = "\"4:0:a;b;\"\n#15\n;'\"#\n1\n1;1\n";
    EXPECT_EQ(Run(m_session, script), expected);
    for (std::size_t step = 1; step < 10; ++step)
    {
        EXPECT_EQ(Run(m_session, "*CLS\n"), "");
        std::string answers;
        for (std::size_t place = 0; place < script.size(); place += step)
        {
            answers += Run(m_session, script.substr(place, step));
        }
        EXPECT_EQ(answers, expected) << "in pieces of " << step;
    }
}

struct BrokenStringCase
{
    const char* name;
    const char* messages;
    const char* errors;
};

constexpr BrokenStringCase kBrokenStrings[] = {
    {"TheRestIsDropped", "TEXT \"ab\ncd\"\n", "-151 "},
    {"WhatFollowsTheRestToo", "TEXT 'ab\nc''d' , 'x';*OPC\n", "-151 "},
    {"AHeaderThatNobodyKnows", "NOSUCH 'ab\ncd'\n", "-113 "},
    {"OnlyTheNextLineIsTheRest", "TEXT 'ab\n*CLS\ncd'\n", "-111 "},
    {"AMessageWithAString", "TEXT 'ab\nTEXT ';';NOSUCH\n", "-151 -113 "},
    {"AMessageWithAnEmptyString", "TEXT 'ab\nTEXT '';NOSUCH\n", "-151 -113 "},
    {"TheSameMistakeTwice", "TEXT 'ab\nTEXT 'cd\n", "-151 -151 "},
    {"ACommandBeforeTheNextMistake", "TEXT 'ab\n*ESE 400;TEXT '\n", "-151 -222 -151 "},
    {"AnotherQuote", "TEXT 'ab\ncd\"\n", "-151 -111 "},
    {"NoMistakeBefore", "TEXT 'ab'\ncd'\n", "-111 "},
    {"BytesOfABlockAreNoQuotes", "BLOC #11',1\nFOO'\n", "-108 -111 "},
};

TEST_F(Session, LineFeedInsideAStringIsOneError)
{
    for (const auto& row : kBrokenStrings)
    {
        Run(m_session, "*CLS\n");
        EXPECT_EQ(Run(m_session, row.messages), "") << row.name;
        std::string errors;
        for (std::string error = NextError(); !error.starts_with("0,"); error = NextError())
        {
            errors += error.substr(0, error.find(',')) + ' ';
        }
        EXPECT_EQ(errors, row.errors) << row.name;
    }
}

TEST_F(Session, DeviceClearForgetsABrokenString)
{
    Run(m_session, "TEXT 'ab\n");
    NextError();
    m_session.DeviceClear();
    m_session.FinishClear();
    EXPECT_EQ(Run(m_session, "cd'\n"), "");
    EXPECT_EQ(NextError().substr(0, 5), "-111,");
}

TEST_F(Session, GivesTheMemoryOfLargeMessagesBackOnRequest)
{
    CSession session(m_instrument.kernel.Parts());
    const std::string block = "BLOC #6500000" + std::string(500'000, 'x');
    EXPECT_EQ(Run(session, block.substr(0, 300'000)), "");
    EXPECT_FALSE(session.HoldsMemory()) << "it is in use";
    session.ReleaseMemory();
    EXPECT_EQ(Run(session, block.substr(300'000) + ";BLOC?\n").size(), block.size() - 5 + 1);
    EXPECT_TRUE(session.HoldsMemory());
    session.ClearResponse();
    session.ReleaseMemory();
    EXPECT_FALSE(session.HoldsMemory());
}

struct LimitCase
{
    const char* name;
    std::string message;
    std::string answer;
    const char* error;
};

TEST_F(Session, HoldsItsLimitsAndGoesOn)
{
    const std::string blanks(59, ' ');
    const std::string large(1001, '\n');
    const LimitCase cases[] = {
        {"Text", blanks + "*OPC?", "1\n", "0,No error"},
        {"LongText", blanks + " *OPC?", "", "-363,Input buffer overrun;Program message too long"},
        {"Block", "BLOC #41000" + large.substr(1), "", "0,No error"},
        {"LongBlock", "BLOC #41001" + large + ";*OPC?", "", "-223,Too much data;Block too long"},
        {"Response", "TEXT '1234567890123';:LAST?", "\"4:0:1234567890123;\"\n", "0,No error"},
        {"LongResponse", "*OPC?;:LAST?;*OPC?", "", "-430,Query deadlocked;Response too long"},
    };
    for (const LimitCase& row : cases)
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Run(m_session, row.message + "\n"), row.answer);
        EXPECT_EQ(NextError(), row.error);
    }
}

TEST_F(Session, EntriesAreCutAndKeptPrintable)
{
    IZOScpiErrorManagement& errors = m_instrument.kernel.ErrorManagement();
    const std::wstring detail = L"\x20AC\n" + std::wstring(300, L'x');
    EXPECT_EQ(errors.SetError(m_session.RemotePath(), -222, detail.c_str()), S_OK);
    EXPECT_EQ(errors.SetError(m_session.RemotePath(), 0, nullptr), S_FALSE);
    EXPECT_EQ(errors.SetError(m_session.RemotePath() + 1, -222, nullptr), E_INVALIDARG);
    CComBSTR text;
    short code = 0;
    EXPECT_EQ(errors.GetNextError(m_session.RemotePath(), &code, &text), S_OK);
    EXPECT_EQ(text, CComBSTR((L"Data out of range;??" + std::wstring(235, L'x')).c_str()));
    text.Empty();
    EXPECT_EQ(errors.GetNextError(m_session.RemotePath(), &code, &text), S_FALSE);
    EXPECT_EQ(text, CComBSTR(L"No error"));
}

TEST_F(Session, OtherSessionsDoNotWaitForItsOperations)
{
    CSession other(m_instrument.kernel.Parts());
    Run(m_session, "OVER;OVER\n");
    EXPECT_EQ(Run(other, "*OPC?\n"), "1\n");
    std::string answer;
    std::thread waiting([&] { answer = Run(m_session, "*WAI;*OPC?\n"); });
    EXPECT_EQ(Run(other, "INT 5;LAST?\n"), "\"2:0:5;\"\n");
    m_instrument.sink->EndOperations();
    waiting.join();
    EXPECT_EQ(answer, "1\n");
}

TEST_F(Session, CancelEndsItsWait)
{
    Run(m_session, "OVER\n");
    std::string answer = "none";
    std::thread waiting([&] { answer = Run(m_session, "*OPC?;*IDN?\n*IDN?\n"); });
    m_session.Cancel();
    waiting.join();
    EXPECT_EQ(answer, "");
}

class CCompletionRecorder final : public IOperationCompleteObserver
{
public:
    void OperationComplete(long remotePath) noexcept override { m_paths.push_back(remotePath); }
    std::vector<long> m_paths;
};

TEST(PendingOperations, NoticeComesOnceAndWhenTheLastOneEnds)
{
    CCompletionRecorder recorder;
    const auto operations = CComObject<CPendingOperations, IZOScpiPendingOperations>::Create();
    operations->SetObserver(&recorder);
    ASSERT_TRUE(operations->AddPath(7));
    unsigned long first = 0;
    unsigned long second = 0;
    EXPECT_EQ(operations->BeginOperation(8, &first), E_INVALIDARG);
    ASSERT_EQ(operations->BeginOperation(7, &first), S_OK);
    ASSERT_EQ(operations->BeginOperation(7, &second), S_OK);
    operations->RequestOperationComplete(7);
    EXPECT_EQ(operations->EndOperation(first), S_OK);
    EXPECT_EQ(operations->EndOperation(first), S_FALSE);
    EXPECT_TRUE(recorder.m_paths.empty());
    EXPECT_EQ(operations->EndOperation(second), S_OK);
    EXPECT_EQ(recorder.m_paths, std::vector<long>{7});
    ASSERT_EQ(operations->BeginOperation(7, &first), S_OK);
    operations->RequestOperationComplete(7);
    operations->CancelOperationComplete(7);
    operations->EndOperation(first);
    EXPECT_EQ(recorder.m_paths.size(), 1U);
    ASSERT_EQ(operations->BeginOperation(7, &first), S_OK);
    operations->RemovePath(7);
    EXPECT_EQ(operations->EndOperation(first), S_FALSE);
}

TEST_F(Session, UnregisterWaitsForTheRunningHandler)
{
    std::thread holding([this] { Run(m_session, "HOLD\n"); });
    ASSERT_EQ(WaitForSingleObject(m_instrument.sink->m_holdEntered.Get(), 30'000), WAIT_OBJECT_0);
    std::atomic<bool> released{false};
    std::thread releasing([&] {
        // The new set is visible before the wait, so a new message no longer finds the application.
        CSession other(m_instrument.kernel.Parts());
        while (Run(other, "SYST:HELP:SYNT? 'INT'\n") != "\"\"\n")
        {}
        released = true;
        SetEvent(m_instrument.sink->m_holdRelease.Get());
    });
    EXPECT_EQ(m_instrument.kernel.ObjectRegistration().UnregisterObject(m_instrument.id), S_OK);
    EXPECT_TRUE(released);
    EXPECT_EQ(m_instrument.sink->m_running, 0);
    holding.join();
    releasing.join();
    EXPECT_EQ(m_instrument.kernel.ObjectRegistration().UnregisterObject(m_instrument.id), S_FALSE);
    EXPECT_EQ(Run(m_session, "*OPC?;LAST?\n"), "1\n");
}

/// A sink that takes another application with it when it goes.
class CLeadingSink : public CTestSink
{
public:
    CLeadingSink(IZOScpiObjectRegistration& registration, const GUID& follower)
        : m_registration(registration),
          m_follower(follower)
    {}

protected:
    ~CLeadingSink() { EXPECT_EQ(m_registration.UnregisterObject(m_follower), S_OK); }

private:
    IZOScpiObjectRegistration& m_registration;
    const GUID m_follower;
};

TEST(Registration, ApplicationThatGoesMayUnregisterAnother)
{
    TestInstrument instrument;
    IZOScpiObjectRegistration& registration = instrument.kernel.ObjectRegistration();
    auto sink = CComObject<CLeadingSink, IZOScpiExecutionSink>::Create(registration, instrument.id);
    const auto table = CTableBuilder().Add("LEADer", CTestSink::kAnswerList, DEF, QMARK, {}).Build();
    CComPtr<IZOScpiParser> parser = MakeParser(table, sink);
    const tagZO_SCPI_PARSER_OBJECT leader{L"leader", ZO_PARSER_TYPE_INSTRUMENT, parser, {1, 2, 3, {}}};
    ASSERT_EQ(registration.RegisterObject(&leader), S_OK);
    parser.Release();
    sink.Release();
    EXPECT_EQ(registration.UnregisterObject(leader.m_guidObjectId), S_OK);
    EXPECT_EQ(registration.UnregisterObject(instrument.id), S_FALSE);
}

TEST(Registration, RefusesDamagedTablesAndSaysWhy)
{
    TestInstrument instrument;
    CErrorRecorder recorder;
    auto table = CTestSink::Table();
    GUID id{};
    table[0].hdr.iSubStart = 5000;
    EXPECT_EQ(instrument.Register(table, id), E_INVALIDARG);
    const auto entries = recorder.Take();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_NE(entries[0].report.message.find("\"tester\": record 0, SubStart"), std::string::npos)
        << entries[0].report.message;
    EXPECT_EQ(instrument.Register({}, id), E_INVALIDARG);
    EXPECT_EQ(instrument.kernel.ObjectRegistration().RegisterObject(nullptr), E_POINTER);
}

TEST(RemoteKernel, IsFoundAtTheRootWhileItRuns)
{
    TestInstrument instrument;
    CComPtr<IZOScpiObjectRegistration> found;
    ASSERT_EQ(instrument.kernel.Start(), S_OK);
    EXPECT_EQ(ZoGetRegisteredInterface(&IID_IZOScpiObjectRegistration, &found), S_OK);
    CSession session(instrument.kernel.Parts());
    instrument.kernel.Stop();
    EXPECT_TRUE(session.IsCancelled());
    CErrorRecorder recorder;
    GUID id{};
    EXPECT_EQ(instrument.Register(instrument.table, id), E_UNEXPECTED);
    EXPECT_EQ(ZoGetRegisteredInterface(&IID_IZOScpiObjectRegistration, &found), E_NOINTERFACE);
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
