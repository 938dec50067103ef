#include "CErrorRecorder.h"
#include "CScpiClient.h"
#include "CTcpServer.h"
#include "CTestApplication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace ZoVelkor::RemoteKernel::Testing
{

using Transports::CTcpServer;

namespace
{
using ZoVelkor::Testing::Converse;
using ZoVelkor::Testing::CScpiClient;

struct ConversationCase
{
    const char* name;
    const char* script;
};

class Conversation : public testing::TestWithParam<ConversationCase>
{
protected:
    Conversation() { m_server.Start(); }

    CErrorRecorder m_recorder;
    TestInstrument m_instrument;
    CTcpServer m_server{{.port = 0}};
};

TEST_P(Conversation, GoesAsWritten)
{
    CScpiClient client(m_server.Port());
    Converse(client, GetParam().script);
    Converse(client, "nothing is left over\n-> SYST:ERR:COUN?\n<- 0\n");
}

constexpr ConversationCase kConversations[] = {
    {"Identity", R"(
-> *IDN?
<- Maker,Model,123,1.0
-> SYSTem:VERSion?
<- 1999.0
)"},
    {"AnswersOfOneMessageShareOneLine", R"(
-> *IDN?;:SYST:VERS?;*OPC?
<- Maker,Model,123,1.0;1999.0;1
)"},
    {"CarriageReturnAndBlankLinesAreWhiteSpace", "->  \n-> *OPC?\r\n<- 1\n-> \r\n-> *OPC?\n<- 1\n"},
    {"Number", R"(
-> CHAN3:FREQ 10 MHZ;:LAST?
<- "3 2:0:10E6 HZ;"
-> CHAN:FREQ -1.5e-3;:LAST?
<- "1 2:0:-1.5E-3;"
-> INT #HFF;:LAST?
<- "2:0:255;"
)"},
    {"SpecialWords", R"(
-> CHAN:FREQ MINimum;:LAST?
<- "1 7:1:MINimum;"
-> SWIT ON;:LAST?
<- "7:6:ON;"
-> CHAN:FREQ INF;:LAST?
<- "1 2:8:9.9E37;"
)"},
    {"Mnemonic", R"(
-> mode neg;:LAST?
<- "3:2:neg;"
)"},
    {"Strings", R"(
-> TEXT 'it''s', "a ""b""";:LAST?
<- "4:0:it's;4:0:a ""b"";"
)"},
    {"Expression", R"(
-> ROUT (@1,3:5);:LAST?
<- "6:0:(@1,3:5);"
)"},
    {"Blocks", R"(
-> BLOCk #15a;b'c
-> BLOCk?
<- #15a;b'c
-> BLOCk #0rest;of"it
-> BLOCk?
<- #210rest;of"it
)"},
    {"FormatBelongsToTheSession", R"(
-> FORM 4,0;:LIST? 3
<- #H0,#H0,#H1
-> *RST;:LIST? 3
<- 0,0.5,1
)"},
    {"CommandErrors", R"(
-> BOGus 1
-> SYST:ERR?
<- -113,"Undefined header;BOGus"
)"},
    {"SuffixOutOfRange", R"(
-> CHAN3:FREQ 1;:CHAN4:FREQ 2;:CHAN2:FREQ 3
-> LAST?
<- "3 2:0:1;"
-> SYST:ERR?
<- -114,"Header suffix out of range;:CHAN4:FREQ"
)"},
    {"CommandErrorDropsTheRestButNotTheAnswersBefore", R"(
-> *OPC?;BOGUS;*IDN?
<- 1
-> SYST:ERR:COUN?
<- 1
-> *CLS
)"},
    {"HandlerErrorIsQueuedOnce", R"(
-> FAIL? 0;*OPC?
<- 1
-> SYST:ERR:ALL?
<- -221,"Settings conflict;one ""quoted"""
)"},
    {"QueryThatFailedAnswersNothing", R"(
-> *OPC?;FAIL? 1
<- 1
-> SYST:ERR:ALL?
<- -221,"Settings conflict"
)"},
    {"FailureWithoutErrorBecomesExecutionError", R"(
-> FAIL? 2;*OPC?
<- 1
-> SYST:ERR:ALL?
<- -200,"Execution error"
)"},
    {"FailureWithErrorKeepsIt", R"(
-> FAIL? 3
-> SYST:ERR:ALL?
<- -222,"Data out of range"
)"},
    {"ShellExceptionBecomesExecutionError", R"(
-> FAIL? 4;*OPC?
<- 1
-> SYST:ERR:ALL?
<- -200,"Execution error"
)"},
    {"OtherExceptionBecomesExecutionError", R"(
-> FAIL? 5;*OPC?
<- 1
-> SYST:ERR:ALL?
<- -200,"Execution error"
)"},
    {"CancelledCommandDropsTheRest", R"(
-> *IDN?;FAIL? 6;*OPC?
<- Maker,Model,123,1.0
)"},
    {"QuestionableDataKeepsItsAnswer", R"(
-> FAIL? 7
<- half
-> SYST:ERR?
<- -231,"Data questionable;overload"
)"},
    {"ErrorQueue", R"(
-> SYST:ERR?
<- 0,"No error"
-> SYST:ERR:ALL?
<- 0,"No error"
-> FAIL? 1
-> FAIL? 2
-> SYST:ERR:COUN?
<- 2
-> SYST:ERR:ALL?
<- -221,"Settings conflict",-200,"Execution error"
-> FAIL? 1
-> *CLS
-> SYST:ERR:NEXT?
<- 0,"No error"
)"},
    {"WaitsWithNothingPending", R"(
-> *OPC;*WAI;*OPC?
<- 1
)"},
    {"SyntaxHelp", R"(
-> SYST:HELP:SYNT? "chan:freq"
<- ":CHANnel:FREQuency <numeric_value>|DEFault|MAXimum|MINimum [HZ]"
-> SYST:HELP:SYNT? '*opc?'
<- "*OPC[?]"
-> SYST:HELP:SYNT? 'system:error'
<- ":SYSTem:ERRor[:NEXT]?"
-> SYST:HELP:SYNT? 'NONE'
<- ""
)"},
};

INSTANTIATE_TEST_SUITE_P(Scripts, Conversation, testing::ValuesIn(kConversations), [](const auto& row) {
    return row.param.name;
});

struct ErrorCase
{
    const char* message;
    short code;
};

constexpr ErrorCase kErrorCases[] = {
    {"INT 1 2", -103},
    {"INT 1,2", -108},
    {"INT", -109},
    {"TOOLONGMNEMONIC 1", -112},
    {"NOSUCH", -113},
    {"LAST", -113},
    {"INT 1a", -138},
    {"CHAN:FREQ 1E99999", -123},
    {"TEXT 1", -128},
    {"CHAN:FREQ 1 VOLT", -131},
    {"MODE SIDEways", -141},
    {"INT MAX", -148},
    {"TEXT \"open", -151},
    {"INT 'text'", -158},
    {"INT #13abc", -168},
    {"INT (1)", -178},
    {"ROUT (1", -171},
};

using ErrorClasses = Conversation;

TEST_F(ErrorClasses, EachMisuseHasItsErrorAndDisturbsNobody)
{
    CScpiClient other(m_server.Port());
    CScpiClient client(m_server.Port());
    for (const ErrorCase& row : kErrorCases)
    {
        client.Write(row.message);
        const std::string error = client.Query("SYST:ERR?");
        EXPECT_EQ(std::stoi(error), row.code) << row.message << " gave " << error;
        EXPECT_EQ(client.Query("SYST:ERR:COUN?"), "0") << row.message;
    }
    EXPECT_EQ(other.Query("SYST:ERR:COUN?"), "0");
}

TEST_F(ErrorClasses, TextThatDoesNotFitIsRefused)
{
    CScpiClient client(m_server.Port());
    client.Write("TEXT '" + std::string(1027, 'x') + "'");
    EXPECT_EQ(client.Query("SYST:ERR:COUN?"), "0");
    client.Write("TEXT '" + std::string(1028, 'x') + "'");
    EXPECT_EQ(client.Query("SYST:ERR?").substr(0, 20), "-223,\"Too much data;");
}

TEST_F(ErrorClasses, FullQueueEndsWithOverflow)
{
    CScpiClient client(m_server.Port());
    for (int i = 0; i < 70; ++i)
    {
        client.Write("FAIL? 3");
    }
    EXPECT_EQ(client.Query("SYST:ERR:COUN?"), "64");
    for (int i = 0; i < 63; ++i)
    {
        ASSERT_EQ(client.Query("SYST:ERR?"), "-222,\"Data out of range\"");
    }
    Converse(client, "-> SYST:ERR?\n<- -350,\"Queue overflow\"\n-> SYST:ERR?\n<- 0,\"No error\"\n");
}

using DeviceCommands = Conversation;

TEST_F(DeviceCommands, ReachEveryApplication)
{
    GUID second{};
    ASSERT_EQ(m_instrument.Register(CTableBuilder().Add("SECond", 0, DEF, QMARK).Build(), second), S_OK);
    CScpiClient client(m_server.Port());
    Converse(client, "-> *TST?;*OPT?\n<- 0;0\n-> *RST\n-> *OPC?\n<- 1\n");
    EXPECT_EQ(m_instrument.device->m_resets, 2);
    m_instrument.device->m_healthy = false;
    m_instrument.device->m_options = L"B1,K2";
    Converse(client, "-> *TST?;*OPT?\n<- 2;B1,K2,B1,K2\n");
}

TEST_F(DeviceCommands, HeaderHelpListsEveryCommandOnce)
{
    CScpiClient client(m_server.Port());
    client.Write("SYST:HELP:HEAD?");
    const std::string lines = '\n' + client.ReadBlock();
    for (const char* line : {"\n*CLS/nquery/\n",
                             "\n*IDN?/qonly/\n",
                             "\n*OPC\n",
                             "\n:SYSTem:ERRor[:NEXT]?/qonly/\n",
                             "\n:BLOCk\n",
                             "\n:CHANnel:FREQuency/nquery/\n"})
    {
        const std::size_t place = lines.find(line);
        EXPECT_NE(place, std::string::npos) << line;
        EXPECT_EQ(lines.find(line, place + 1), std::string::npos) << line;
    }
}

TEST_F(DeviceCommands, JoinedTableTooLargeForItsBlockIsRefused)
{
    std::vector<_CMD_SET_RECORD> records(25'000);
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        _CS_HDR& header = records[i].hdr = {"", 0, DEF, 0, 0, 0, QMARK};
        ("KEY" + std::to_string(i)).copy(header.szKeyword, sizeof header.szKeyword - 1);
    }
    records[0].hdr.iLength = static_cast<std::uint32_t>(records.size());
    GUID large{};
    ASSERT_EQ(m_instrument.Register(records, large), S_OK);
    CScpiClient client(m_server.Port());
    EXPECT_THAT(
        client.Query("SYST:HELP:TABL?;:SYST:ERR?"),
        testing::MatchesRegex("-223,\"Too much data;Command table of 100[0-9]+ bytes, limit 999999\""));
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
