#include "../ComponentShell/CErrorRecorder.h"
#include "CScpiClient.h"
#include "CTcpServer.h"
#include "CTestApplication.h"

#include <gtest/gtest.h>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
using ZoVelkor::Testing::Converse;
using ZoVelkor::Testing::CScpiClient;

struct tagConversation
{
    const char* name;
    const char* script;
};

class Conversation : public testing::TestWithParam<tagConversation>
{
protected:
    Conversation() { m_server.Start(); }

    CErrorRecorder m_recorder;
    tagTestInstrument m_instrument;
    CTcpServer m_server{m_instrument.kernel, {.iPort = 0}};
};

TEST_P(Conversation, GoesAsWritten)
{
    CScpiClient client(m_server.Port());
    Converse(client, GetParam().script);
    Converse(client, "nothing is left over\n-> SYST:ERR:COUN?\n<- 0\n");
}

constexpr tagConversation kConversations[] = {
    {"Identity",                                       "-> *IDN?\n<- Maker,Model,123,1.0\n-> SYSTem:VERSion?\n<- 1999.0\n"          },
    {"AnswersOfOneMessageShareOneLine",                "-> *IDN?;:SYST:VERS?;*OPC?\n<- Maker,Model,123,1.0;1999.0;1\n"              },
    {"CarriageReturnAndBlankLinesAreWhiteSpace",       "->  \n-> *OPC?\r\n<- 1\n-> \r\n-> *OPC?\n<- 1\n"                            },
    {"Number",
     "-> CHAN3:FREQ 10 MHZ;:LAST?\n<- \"3 2:0:10000000 HZ;\"\n-> CHAN:FREQ -1.5e-3;:LAST?\n"
     "<- \"1 2:0:-1.5e-3;\"\n-> INT #HFF;:LAST?\n<- \"2:0:255;\"\n"                                                                 },
    {"SpecialWords",
     "-> CHAN:FREQ MINimum;:LAST?\n<- \"1 7:1:MINimum;\"\n-> STAT ON;:LAST?\n<- \"7:6:ON;\"\n"
     "-> CHAN:FREQ INF;:LAST?\n<- \"1 2:8:9.9E37;\"\n"                                                                              },
    {"Mnemonic",                                       "-> mode neg;:LAST?\n<- \"3:2:neg;\"\n"                                      },
    {"Strings",                                        "-> TEXT 'it''s', \"a \"\"b\"\"\";:LAST?\n<- \"4:0:it's;4:0:a \"\"b\"\";\"\n"},
    {"Expression",                                     "-> ROUT (@1,3:5);:LAST?\n<- \"6:0:(@1,3:5);\"\n"                            },
    {"Blocks",
     "-> BLOCk #15a;b'c\n-> BLOCk?\n<- #15a;b'c\n-> BLOCk #0rest;of\"it\n-> BLOCk?\n<- #210rest;of\"it\n"                           },
    {"FormatBelongsToTheSession",                      "-> FORM 4,0;:LIST? 3\n<- #H0,#H0,#H1\n-> *RST;:LIST? 3\n<- 0,0.5,1\n"       },
    {"CommandErrors",                                  "-> BOGus 1\n-> SYST:ERR?\n<- -113,\"Undefined header;BOGus\"\n"             },
    {"CommandErrorDropsTheRestButNotTheAnswersBefore",
     "-> *OPC?;BOGUS;*IDN?\n<- 1\n-> SYST:ERR:COUN?\n<- 1\n-> *CLS\n"                                                               },
    {"HandlerErrorIsQueuedOnce",
     "-> FAIL? 0;*OPC?\n<- 1\n-> SYST:ERR:ALL?\n<- -221,\"Settings conflict;one \"\"quoted\"\"\"\n"                                 },
    {"QueryThatFailedAnswersNothing",
     "-> *OPC?;FAIL? 1\n<- 1\n-> SYST:ERR:ALL?\n<- -221,\"Settings conflict\"\n"                                                    },
    {"FailureWithoutErrorBecomesExecutionError",
     "-> FAIL? 2;*OPC?\n<- 1\n-> SYST:ERR:ALL?\n<- -200,\"Execution error\"\n"                                                      },
    {"FailureWithErrorKeepsIt",                        "-> FAIL? 3\n-> SYST:ERR:ALL?\n<- -222,\"Data out of range\"\n"              },
    {"ShellExceptionBecomesExecutionError",
     "-> FAIL? 4;*OPC?\n<- 1\n-> SYST:ERR:ALL?\n<- -200,\"Execution error\"\n"                                                      },
    {"OtherExceptionBecomesExecutionError",
     "-> FAIL? 5;*OPC?\n<- 1\n-> SYST:ERR:ALL?\n<- -200,\"Execution error\"\n"                                                      },
    {"CancelledCommandDropsTheRest",                   "-> *IDN?;FAIL? 6;*OPC?\n<- Maker,Model,123,1.0\n"                           },
    {"QuestionableDataKeepsItsAnswer",
     "-> FAIL? 7\n<- half\n-> SYST:ERR?\n<- -231,\"Data questionable;overload\"\n"                                                  },
    {"ErrorQueue",
     "-> SYST:ERR?\n<- 0,\"No error\"\n-> SYST:ERR:ALL?\n<- 0,\"No error\"\n-> FAIL? 1\n-> FAIL? 2\n"
     "-> SYST:ERR:COUN?\n<- 2\n-> SYST:ERR:ALL?\n<- -221,\"Settings conflict\",-200,\"Execution error\"\n"
     "-> FAIL? 1\n-> *CLS\n-> SYST:ERR:NEXT?\n<- 0,\"No error\"\n"                                                                  },
    {"WaitsWithNothingPending",                        "-> *OPC;*WAI;*OPC?\n<- 1\n"                                                 },
    {"SyntaxHelp",
     "-> SYST:HELP:SYNT? \"chan:freq\"\n"
     "<- \":CHANnel:FREQuency <numeric_value>|DEFault|MAXimum|MINimum [HZ]\"\n"
     "-> SYST:HELP:SYNT? '*opc?'\n<- \"*OPC[?]\"\n-> SYST:HELP:SYNT? 'system:error'\n"
     "<- \":SYSTem:ERRor[:NEXT]?\"\n-> SYST:HELP:SYNT? 'NONE'\n<- \"\"\n"                                                           },
};

INSTANTIATE_TEST_SUITE_P(Scripts, Conversation, testing::ValuesIn(kConversations), [](const auto& row) {
    return row.param.name;
});

struct tagErrorCase
{
    const char* message;
    short code;
};

constexpr tagErrorCase kErrorCases[] = {
    {"INT 1 2",           -103},
    {"INT 1,2",           -108},
    {"INT",               -109},
    {"TOOLONGMNEMONIC 1", -112},
    {"NOSUCH",            -113},
    {"LAST",              -113},
    {"INT 1a",            -138},
    {"CHAN:FREQ 1E99999", -123},
    {"TEXT 1",            -128},
    {"CHAN:FREQ 1 VOLT",  -131},
    {"MODE SIDEways",     -141},
    {"INT MAX",           -148},
    {"TEXT \"open",       -151},
    {"INT 'text'",        -158},
    {"INT #13abc",        -168},
    {"INT (1)",           -178},
    {"ROUT (1",           -171},
};

using ErrorClasses = Conversation;

TEST_F(ErrorClasses, EachMisuseHasItsErrorAndDisturbsNobody)
{
    CScpiClient other(m_server.Port());
    CScpiClient client(m_server.Port());
    for (const tagErrorCase& row : kErrorCases)
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
    EXPECT_EQ(client.Query("SYST:ERR?").substr(0, 22), "-223,\"Too much data;TE");
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
    EXPECT_EQ(m_instrument.spDevice->m_resets, 2);
    m_instrument.spDevice->m_bHealthy = false;
    m_instrument.spDevice->m_options = L"B1,K2";
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
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
