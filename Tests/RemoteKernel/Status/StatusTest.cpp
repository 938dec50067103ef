#include "CCommandExecutionData.h"
#include "CScpiSinkFramework.h"
#include "CTestApplication.h"
#include "Root.h"
#include "ScpiErrorCodes.h"
#include "ScpiParserData.h"
#include "ScpiStatusData.h"
#include "Sessions/CSession.h"
#include "Status/StatusBits.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{

constexpr unsigned char kService = static_cast<unsigned char>(kStatusService);

class CServiceRecorder final : public IServiceRequestObserver
{
public:
    void ServiceRequest(bool requested) noexcept override { m_requests += requested ? '1' : '0'; }
    std::string m_requests;
};

class Status : public testing::Test
{
protected:
    static std::string Run(CSession& session, std::string message)
    {
        message += '\n';
        std::string answer(session.Process({message.data(), message.size()}));
        return answer.empty() ? answer : answer.substr(0, answer.size() - 1);
    }
    std::string Run(std::string message) { return Run(m_session, std::move(message)); }

    CComPtr<IZOScpiStatusRegister> Find(long path, const wchar_t* name)
    {
        CComPtr<IZOScpiStatusRegister> statusRegister;
        m_instrument.kernel.StatusManagement().GetRegister(path, name, &statusRegister);
        return statusRegister;
    }
    CComPtr<IZOScpiStatusRegister> Instrument(const wchar_t* name) { return Find(kScpiInstrumentPath, name); }

    TestInstrument m_instrument;
    CSession m_session{m_instrument.kernel.Parts()};
};

TEST_F(Status, Conversations)
{
    struct Row
    {
        const char* message;
        const char* answer;
    };
    // clang-format off
    const Row rows[] = {
        {"*ESR?;*ESR?", "128;0"},
        {"*ESE?;*SRE?;*PRE?;*PSC?;*STB?;*IST?", "0;0;0;1;16;0"},
        // Masks: numbers, other bases, names, lists of both; rounded as every integer.
        {"*ESE 37;*ESE?;*ESE #H25;*ESE?;*ESE 1.4;*ESE?;*ESE 0;*ESE?", "37;37;1;0"},
        {"*ESE pon,OPC;*ESE?;*ESE OPC,16,#B10;*ESE?;*ESE (CME, exe,2);*ESE?;*ESE 0", "129;19;50"},
        {"*SRE OPER,MAV;*SRE?;*SRE 255;*SRE?;*SRE RQS;*SRE?", "144;191;0"},
        {"*PRE PP7,ESBit,dd1;*PRE?;*PRE 65535;*PRE?;*PRE 0", "32801;65535"},
        {"*PSC 0;*PSC?;*PSC -32767;*PSC?;*PSC 0.4;*PSC?;*PSC 2;*PSC?", "0;1;0;1"},
        {"*ESE 256;*ESE -1;*SRE 1e30;*PSC 32768;*ESE (16,300);SYST:ERR:COUN?", "5"},
        {"*ESR?;*STB?", "16;20"}, // EXE; error queue and the answer before
        {"SYST:ERR:ALL?", "-222,\"Data out of range;parameter 1: 256\",-222,\"Data out of range;parameter 1: -1\","
         "-222,\"Data out of range;parameter 1: 1000000000000000000000000000000\","
         "-222,\"Data out of range;parameter 1: 32768\",-222,\"Data out of range;parameter 1: (16,300)\""},
        {"*ESE?;*SRE?;*PSC?;*STB?", "0;0;1;16"},
        {"*ESE ( );:SYST:ERR?;*CLS", "-171,\"Invalid expression;parameter 1: \""},
        {"*ESE (CME,XYZ)", ""},
        {"STAT:QUE?;*ESR?", "-171,\"Invalid expression;parameter 1: XYZ\";32"},
        {"*ESE XYZ", ""},
        {"STAT:QUE:NEXT?;:STAT:QUE?", "-141,\"Invalid character data;parameter 1: XYZ\";0,\"No error\""},
        // Classes of errors; -350 is one of them.
        {"*CLS;FAIL? 1;*ESR?;FAIL? 1;*CLS;*ESR?", "16;0"},
        {"BOGUS", ""},
        {"*ESR?;*CLS", "32"},
        // The summary follows mask and events.
        {"*ESE 16;FAIL? 1;*STB?;*SRE 32;*STB?;*ESE 0;*STB?;*ESE 16;*STB?;*ESR?;*STB?;*CLS;*STB?", "36;116;20;116;16;20;16"},
        {"*PRE 4;*IST?;FAIL? 1;*IST?;*CLS;*IST?;*PRE RQS;*SRE 16;*IST?;*SRE 0;*IST?;*PRE 0", "0;1;0;1;0"},
        // SCPI registers.
        {"STAT:OPER?;:STAT:OPER:COND?;ENAB?;PTR?;NTR?;:STAT:QUES:POW:ENAB?;PTR?", "0;0;0;32767;0;32767;32767"},
        {"STAT:OPER:ENAB TRIG,SWE;ENAB?;PTR 65535;PTR?;NTR #HFF;NTR?;ENAB #Q17;ENAB?", "40;32767;255;15"},
        {"STAT:OPER:ENAB 65536;:STAT:QUES:FREQ:ENAB CAL;:STAT:QUES:ENAB POW,FREQ;ENAB?", ""},
        {"SYST:ERR?;:SYST:ERR?", "-222,\"Data out of range;parameter 1: 65536\";-148,\"Character data not allowed;parameter 1: "
         "CAL\""},
        {"STAT:OPER:ENAB 1;:STAT:QUES:POW:ENAB 1;:STAT:PRES;:STAT:OPER:ENAB?;PTR?;NTR?;:STAT:QUES:POW:ENAB?", "0;32767;0;32767"},
        {"*RST;*ESE 5;:STAT:QUES:ENAB 8;*RST;*ESE?;:STAT:QUES:ENAB?;:STAT:PRES;*ESE?", "5;8;5"},
    };
    // clang-format on
    for (const Row& row : rows)
    {
        EXPECT_EQ(Run(row.message), row.answer) << row.message;
    }
}

TEST_F(Status, ErrorsSetTheBitOfTheirClass)
{
    // clang-format off
    const std::pair<short, int> rows[] = {
        {-100, 32}, {-199, 32}, {-200, 16}, {-299, 16}, {-300, 8}, {-399, 8}, {1, 8}, {32767, 8}, {-400, 4},
        {-499, 4}, {-500, 128}, {-600, 64}, {-700, 2}, {-800, 1}, {-99, 0}, {-900, 0}};
    // clang-format on
    for (const auto& [code, bit] : rows)
    {
        Run("*CLS");
        m_instrument.kernel.ErrorManagement().SetError(m_session.RemotePath(), code, nullptr);
        EXPECT_EQ(Run("*ESR?"), std::to_string(bit)) << code;
    }
    Run("*CLS");
    for (int i = 0; i <= 100; ++i)
    {
        m_instrument.kernel.ErrorManagement().SetError(m_session.RemotePath(), kScpiExecutionError, nullptr);
    }
    EXPECT_EQ(Run("*ESR?"), "24") << "a full queue adds -350";
}

TEST_F(Status, InstrumentStateReachesEverySessionAndOnlyItsOwnErrorsDo)
{
    CSession other(m_instrument.kernel.Parts());
    const auto power = Instrument(L"stat:ques:POWER");
    ASSERT_NE(power, nullptr);
    Run("STAT:QUES:ENAB POW");
    power->ModifyCondition(2, 2);
    CSession late(m_instrument.kernel.Parts());
    Run("BOGUS");
    EXPECT_EQ(Run("*STB?"), "12");
    EXPECT_EQ(Run(other, "*STB?;*ESR?"), "8;128");
    EXPECT_EQ(Run(late, "*STB?"), "8");
    EXPECT_EQ(Run(other, "STAT:QUES:COND?;EVEN?"), "8;8");
    EXPECT_EQ(Run("*STB?"), "4") << "somebody has read the event";
    EXPECT_EQ(Run("STAT:QUES:POW?;:STAT:QUES:COND?"), "2;0");
    power->PulseCondition(1);
    EXPECT_EQ(Run(late, "STAT:QUES:COND?;*CLS;:STAT:QUES:COND?;*STB?"), "8;0;16");
    EXPECT_EQ(Run("STAT:OPER:ENAB 8;*SRE OPER"), "");
    Instrument(L"STATus:OPERation")->ModifyCondition(8, 8);
    EXPECT_EQ(Run("*STB?;:STAT:PRES;*STB?"), "196;20") << "the summary follows the mask of STATus:PRESet";
}

TEST_F(Status, ServiceIsRequestedOnceForEachReason)
{
    CServiceRecorder recorder;
    m_session.SetServiceRequestObserver(&recorder);
    Run("*CLS;*ESE 16;*SRE ESB");
    Run("FAIL? 1");
    EXPECT_EQ(recorder.m_requests, "1");
    EXPECT_EQ(m_session.SerialPoll(), 36 | kService);
    EXPECT_EQ(m_session.SerialPoll(), 36) << "the poll has ended the request";
    EXPECT_EQ(Run("*STB?"), "100") << "the master summary stays";
    Run("FAIL? 1");
    EXPECT_EQ(m_session.SerialPoll() & kService, 0) << "no new reason";
    Run("*ESR?;:FAIL? 1");
    EXPECT_NE(m_session.SerialPoll() & kService, 0) << "the bit has risen again";
    Run("*CLS");
    EXPECT_EQ(recorder.m_requests, "1010");
    Run("FAIL? 1;*ESR?");
    EXPECT_EQ(m_session.SerialPoll() & kService, 0) << "the reason is gone";
    Run("*SRE 0;:FAIL? 1");
    EXPECT_EQ(m_session.SerialPoll() & kService, 0);
    Run("*SRE ESB");
    EXPECT_NE(m_session.SerialPoll() & kService, 0) << "enabled while the bit is set";
    Run("*SRE 0;*SRE ESB");
    EXPECT_NE(m_session.SerialPoll() & kService, 0) << "enabled once more";
}

TEST_F(Status, MessageAvailableFollowsTheOutputQueue)
{
    CServiceRecorder recorder;
    m_session.SetServiceRequestObserver(&recorder);
    EXPECT_EQ(Run("*STB?;*STB?"), "0;16");
    EXPECT_EQ(m_session.SerialPoll(), kStatusMessageAvailable);
    m_session.ClearResponse();
    EXPECT_EQ(m_session.SerialPoll(), 0);
    const auto statusByte = Find(m_session.RemotePath(), L"*stb");
    const auto condition = [&statusByte] {
        wchar_t word = 0;
        statusByte->GetCondition(&word);
        return word;
    };
    Run("*OPC?");
    EXPECT_EQ(condition(), kStatusMessageAvailable);
    Run("*SRE MAV");
    EXPECT_EQ(condition(), 0);
    recorder.m_requests.clear();
    Run("*OPC?");
    m_session.ClearResponse();
    EXPECT_EQ(recorder.m_requests, "10");
}

TEST_F(Status, OperationCompleteIsSetBeforeTheWaitEnds)
{
    for (int i = 0; i < 100; ++i)
    {
        std::thread ending([this] {
            WaitForSingleObject(m_instrument.sink->m_operationBegun.Get(), INFINITE);
            m_instrument.sink->EndOperations();
        });
        EXPECT_EQ(Run("*CLS;OVER;*OPC;*OPC?;*ESR?"), "1;1");
        ending.join();
    }
    EXPECT_EQ(Run("OVER;*OPC;*CLS"), "");
    m_instrument.sink->EndOperations();
    EXPECT_EQ(Run("*ESR?;*OPC;*ESR?"), "0;1") << "*CLS has taken the request back";
}

TEST_F(Status, RegistersAreFoundByName)
{
    const long path = m_session.RemotePath();
    IZOScpiStatusManagement& management = m_instrument.kernel.StatusManagement();
    struct Row
    {
        long path;
        const wchar_t* name;
        HRESULT result;
    };
    // clang-format off
    const Row rows[] = {
        {path, L"STATus:OPERation", S_OK}, {path, L"stat:OPERATION", S_OK},
        {kScpiInstrumentPath, L"STAT:QUES:FREQ", S_OK}, {path, L"*ESR", S_OK},
        {kScpiInstrumentPath, L"*ESR", S_FALSE}, {path, L"STAT", S_FALSE}, {path, L"STATu:OPER", S_FALSE},
        {path, L"STAT:OPER:", S_FALSE}, {path, L"", S_FALSE}, {path + 1, L"STAT:OPER", E_INVALIDARG},
        {path, nullptr, E_POINTER}};
    // clang-format on
    for (const Row& row : rows)
    {
        CComPtr<IZOScpiStatusRegister> statusRegister;
        EXPECT_EQ(management.GetRegister(row.path, row.name, &statusRegister), row.result);
        EXPECT_EQ(statusRegister != nullptr, row.result == S_OK);
    }
    EXPECT_EQ(management.GetRegister(path, L"*ESR", nullptr), E_POINTER);
    EXPECT_EQ(management.SerialPoll(path, nullptr), E_POINTER);
    tagScpiStatusData data{};
    ASSERT_EQ(Find(path, L"STAT:QUES:POW")->GetData(&data), S_OK);
    EXPECT_EQ(std::wstring(data.szName), L"STATus:QUEStionable:POWer");
    EXPECT_EQ(data.enable, 0x7FFF);
    EXPECT_EQ(data.parentMask, 8);
}

/// REGister? <name>,<part>: answers a word of a register.
class CRegisterSink : public CBScpiExecutionSink
{
public:
    // clang-format off
    HRESULT Execute(IUnknown* context, long remotePath, unsigned long command, short isQuery,
                    long* numericSuffixes, unsigned long argumentCount, tagZO_SCPI_PARAMETER* arguments,
                    wchar_t* header, IZOScpiOutputBuffer* output) override
    // clang-format on
    {
        const tagZO_SCPI_PARSER_DATA data = MakeScpiParserData(
            context, remotePath, command, isQuery, numericSuffixes, argumentCount, arguments, header, output);
        CCommandExecutionData record(data, this);
        return CScpiSinkFramework::RunCommand(record, [&](CCommandExecutionData& call) {
            CComPtr<IZOScpiManager> manager;
            long path = -1;
            context->QueryInterface(IID_IZOScpiManager, reinterpret_cast<void**>(&manager));
            EXPECT_EQ(manager->GetRemotePath(nullptr), E_POINTER);
            EXPECT_EQ(manager->GetRemotePath(&path), S_OK);
            EXPECT_EQ(path, remotePath);
            return call.OutputRegisterValue(arguments[0].szText, std::atol(arguments[1].szText));
        });
    }
};

TEST_F(Status, HandlersAnswerWordsOfRegisters)
{
    const auto sink = CComObject<CRegisterSink, IZOScpiExecutionSink>::Create();
    const std::vector<_CMD_SET_RECORD> table =
        CTableBuilder().Add("REGister", 0, DEF, QMARK, {{ARG_STRG}, {ARG_SINT}}).Build();
    GUID id{};
    ASSERT_EQ(m_instrument.Register(table, id, sink), S_OK);
    Run("*CLS;*ESE 20;:STAT:OPER:NTR 9");
    Instrument(L"STAT:OPER")->ModifyCondition(6, 6);
    EXPECT_EQ(Run("REG? 'STAT:OPER',0;REG? 'STAT:OPER',3;REG? '*ESR',2;REG? 'STAT:OPER',4"), "6;9;20;32767");
    EXPECT_EQ(Run("REG? 'STAT:OPER',1;REG? 'STAT:OPER',1"), "6;0") << "reading events clears them";
    for (const std::string none : {"STAT:NONE',0", "STAT:OPER',-1", "STAT:OPER',5"})
    {
        EXPECT_EQ(Run("REG? '" + none + ";:SYST:ERR?"), "-200,\"Execution error\"") << none;
    }
}

TEST_F(Status, WaitsEndWithTheSessionAndWithTheKernel)
{
    const auto own = Find(m_session.RemotePath(), L"*ESR");
    const auto shared = Instrument(L"STAT:OPER");
    const auto wait = [](IZOScpiStatusRegister* statusRegister, HRESULT& result) {
        return std::thread([statusRegister, &result] {
            wchar_t bits = 0;
            result = statusRegister->WaitConditionBits(-1, 0x10, &bits);
        });
    };
    HRESULT ownResult = S_OK;
    HRESULT sharedResult = S_OK;
    std::thread waitingOwn = wait(own, ownResult);
    std::thread waitingShared = wait(shared, sharedResult);
    m_session.Cancel();
    waitingOwn.join();
    m_instrument.kernel.Stop();
    waitingShared.join();
    EXPECT_EQ(ownResult, E_ABORT);
    EXPECT_EQ(sharedResult, E_ABORT);
}

TEST_F(Status, RegistersOutliveSessionAndObserver)
{
    CComPtr<IZOScpiStatusRegister> events;
    CComPtr<IZOScpiStatusRegister> statusByte;
    {
        CServiceRecorder recorder;
        CSession session(m_instrument.kernel.Parts());
        session.SetServiceRequestObserver(&recorder);
        Run(session, "*CLS;*ESE 255;*SRE 255");
        events = Find(session.RemotePath(), L"*ESR");
        statusByte = Find(session.RemotePath(), L"*STB");
    }
    EXPECT_EQ(events->SetCondition(0, VARIANT_TRUE), S_OK);
    wchar_t bits = 0;
    EXPECT_EQ(statusByte->WaitConditionBits(-1, kStatusErrorQueue, &bits), E_ABORT);
}

TEST_F(Status, ComponentsMayChangeAnyRegister)
{
    const auto events = Find(m_session.RemotePath(), L"*ESR");
    Run("*CLS");
    events->SetCondition(4, VARIANT_TRUE);
    EXPECT_EQ(Run("*ESR?;:FAIL? 1;*ESR?;*CLS"), "16;16") << "a set bit hides no further event";
    const auto operation = Instrument(L"STAT:OPER");
    CComPtr<IZOScpiStatusRegister> parent;
    wchar_t mask = 0;
    operation->GetParentRegister(&parent, &mask);
    parent->SetCondition(7, VARIANT_TRUE);
    EXPECT_EQ(Run("*STB?"), "128");
    parent->ClearSummaryCondition(7);
    EXPECT_EQ(Run("*STB?"), "0");
    std::thread changing([&] {
        for (wchar_t i = 0; i < 2000; ++i)
        {
            operation->ModifyCondition(1, i & 1);
        }
    });
    for (int i = 0; i < 2000; ++i)
    {
        parent->PulseCondition(kStatusQuestionable);
    }
    changing.join();
    operation->SetPresetDefaults(0, 0x7FFF, 8);
    operation->ModifyCondition(8, 8);
    EXPECT_EQ(Run("STAT:PRES;:STAT:OPER:ENAB?;*STB?"), "8;144") << "the register's own default";
}

/// A parent at which another session strikes while a command of the first one is at work.
class CInterruptedRegister : public CBScpiStatusRegister
{
public:
    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override
    {
        const HRESULT result = CBScpiStatusRegister::ModifyCondition(mask, value);
        if (const auto other = std::exchange(m_other, nullptr); other != nullptr)
        {
            other();
        }
        return result;
    }
    std::function<void()> m_other;
};

TEST_F(Status, SessionsDoNotUndoEachOthersSettings)
{
    const auto parent = CComObject<CInterruptedRegister, IZOScpiStatusRegister>::Create();
    const auto operation = Instrument(L"STAT:OPER");
    operation->SetupParentRegister(parent, 1);
    Run("STAT:OPER:ENAB 8");
    operation->PulseCondition(8);
    wchar_t word = 0;
    parent->m_other = [&] { operation->SetEnable(8); };
    Run("STAT:PRES");
    short summary = 0;
    operation->GetSummary(&summary);
    parent->GetCondition(&word);
    EXPECT_EQ(word != 0, summary != 0) << "the parent knows of the mask that was set meanwhile";
    Run("STAT:OPER:ENAB 8");
    parent->m_other = [&] { parent->SetNegTrans(5); };
    Run("*CLS");
    parent->GetNegTrans(&word);
    EXPECT_EQ(word, 5) << "a filter that was set meanwhile";
    operation->SetupParentRegister(nullptr, 0);
}

TEST_F(Status, SessionsComeAndGoWhileTheStateChanges)
{
    const auto power = Instrument(L"STAT:QUES:POW");
    Run("STAT:QUES:ENAB POW");
    std::atomic<bool> end{false};
    std::thread changing([&] {
        for (wchar_t value = 0; !end; value ^= 1)
        {
            power->ModifyCondition(1, value);
        }
    });
    std::thread reading([&] {
        CSession session(m_instrument.kernel.Parts());
        while (!end)
        {
            Run(session, "*STB?;:STAT:QUES:POW?;:STAT:QUES?;*CLS");
        }
    });
    for (int i = 0; i < 200; ++i)
    {
        CSession session(m_instrument.kernel.Parts());
        Run(session, "*SRE 255;BOGUS");
        Run(session, "*STB?;*CLS");
    }
    end = true;
    changing.join();
    reading.join();
    power->ModifyCondition(1, 0);
    Run("*CLS");
    power->ModifyCondition(1, 1);
    CSession late(m_instrument.kernel.Parts());
    EXPECT_EQ(Run("*STB?") + Run(late, "*STB?"), "88");
}

} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
