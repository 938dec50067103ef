#include "DemoFixture.h"

namespace ZoVelkor::Demo
{
namespace
{

constexpr ConversationCase kAccepted[] = {
    {"CenterAndSpan", "FREQ:CENT 1 GHz;SPAN 100 MHz", "FREQ:STAR?;STOP?", "950E6;1050E6"},
    {"StartAndStop", "sense:frequency:start 100 kHz;stop 300KHZ", "FREQ:CENT?;SPAN?", "2E5;2E5"},
    {"WideSpanMovesCenter", "FREQ:CENT 5 GHZ;SPAN 6E9", "FREQ:CENT?", "3E9"},
    {"StartTakesStopAlong", "FREQ:STOP 1 GHZ;STAR 2 GHZ", "FREQ:STOP?;SPAN?", "2E9;0"},
    {"ChannelsAreApart",
     "SENS4:FREQ:CENT 1 GHZ",
     "SENS4:FREQ:CENT?;:SENS:FREQ:CENT?;:FREQ:CENT?",
     "1E9;3E9;3E9"},
    {"WordsInSetting",
     "FREQ:CENT MIN;:SENS2:FREQ:STAR MAX;:SENS3:FREQ:SPAN 1 HZ;SPAN DEF",
     "FREQ:CENT?;:SENS2:FREQ:STAR?;:SENS3:FREQ:SPAN?",
     "0;6E9;6E9"},
    {"WordsInQuery", "", "FREQ:CENT? MIN;CENT? MAX;CENT? DEFault;SPAN? MAX", "0;6E9;3E9;6E9"},
    {"StepUp", "FREQ:CENT 1 GHZ;SPAN 100 MHZ;CENT UP", "FREQ:CENT?", "1.01E9"},
    {"StepDownStopsAtLimit", "FREQ:STAR 100 MHZ;STAR DOWN", "FREQ:STAR?", "0"},
    {"SpanSteps", "FREQ:SPAN 0;SPAN UP;SPAN UP", "FREQ:SPAN?", "200"},
    {"SpanStepsToZero", "FREQ:SPAN 100;SPAN DOWN", "FREQ:SPAN?", "0"},
    {"BothBandwidthNames", "BAND 30 KHZ", "BWID?;:BAND:RES?;:SENS:BWID:RES:AUTO?", "3E4;3E4;0"},
    {"BandwidthFollowsSpan", "FREQ:SPAN 1 MHZ", "BAND?;BAND:AUTO?", "1E4;1"},
    {"BandwidthAutoOffKeepsValue", "FREQ:SPAN 1 MHZ;:BAND:AUTO OFF;:FREQ:SPAN 1 GHZ", "BAND?", "1E4"},
    {"BandwidthSteps", "BAND 1 KHZ;BAND UP;:SENS2:BAND 1 KHZ;BAND DOWN", "BAND?;:SENS2:BAND?", "3E3;3E2"},
    {"PointsAreRounded", "SWE:POIN 500.6", "SWE:POIN?", "501"},
    {"PointLimits", "", "SWE:POIN? MIN;POIN? MAX;POIN? DEF", "101;100001;1001"},
    {"PointSteps", "SWE:POIN UP", "SWE:POIN?", "2001"},
    {"SweepTime", "SWE:TIME 20 ms", "SWE:TIME?;TIME:AUTO?", "0.02;0"},
    {"SweepTimeFollowsBandwidth", "SWE:TIME 1;TIME:AUTO ON;:SENS3:BAND 10", "SWE:TIME?", "0.25"},
    {"DetectorShortForm", "DET aver", "SENS:DET?", "AVER"},
    {"DetectorLongForm", "DETECTOR NEGATIVE", "DET?", "NEG"},
    {"ReferenceLevel",
     "POW:RLEV -20 DBM;RLEV UP;:SENS4:POW:RLEV MIN",
     "SENS1:POW:RLEV?;:SENS4:POW:RLEV?;RLEV? MAX",
     "-10;-130;30"},
    {"TriggerSource", "TRIG:SEQ:SOUR BUS", "TRIG:SOUR?", "BUS"},
    {"Boolean", "INIT:CONT 1;:INIT:CONT OFF;:BAND:AUTO 0", "INIT:CONT?;:BAND:AUTO?", "0;0"},
    {"DisplayText", "DISP:TEXT 'it''s \"ok\"'", "DISP:TEXT:DATA?", "\"it's \"\"ok\"\"\""},
    {"SwitchesClosed", "ROUT:CLOS (@1,3:5)", "ROUT:CLOS? (@1:6)", "1,0,1,1,1,0"},
    {"JustTheseAreClosed", "ROUT:CLOS (@1);CLOS (@2)", "ROUT:CLOS? (@2,1)", "1,0"},
    {"AllOpen", "ROUT:CLOS (@1:8);CLOS (@)", "ROUT:CLOS? (@1,8)", "0,0"},
    {"Format", "FORM REAL,32;:FORM:BORD SWAP", "FORM?;:FORM:BORD?", "REAL,32;SWAP"},
    {"FormatWithoutWidth", "FORM REAL", "FORM:DATA?", "REAL,64"},
    {"MarkerStays",
     "FREQ:CENT 1 GHZ;SPAN 1 MHZ;:CALC:MARK2:X 1.0001 GHZ",
     "CALC:MARK2:X?;:CALC:MARK8:X?",
     "1000.1E6;1000.5E6"},
    {"MarkerFollowsRange", "CALC:MARK:X 5 GHZ;:FREQ:STOP 1 GHZ", "CALC:MARK:X?;X? MIN;X? MAX", "1E9;0;1E9"},
    {"MarkerOnLoadedTrace", "TRAC -50,-10,-30;:CALC:MARK3:MAX", "CALC:MARK3:X?;Y?", "3E9;-10"},
    {"TraceList", "TRAC4 -1,-2.5,3E1", "TRAC4?", "-1,-2.5,30"},
    {"Reset",
     "FREQ:CENT 1 GHZ;:DET RMS;:ROUT:CLOS (@1);:DISP:TEXT 'a';:TRAC 1;*RST",
     "FREQ:CENT?;:DET?;:ROUT:CLOS? (@1);:DISP:TEXT?",
     "3E9;POS;0;\"\""},
    {"Selftest", "", "*TST?", "0"},
};

// What was set before the refused command holds after it.
constexpr ConversationCase kRefused[] = {
    {"TooHigh", "FREQ:CENT 1 GHZ;CENT 6.1 GHZ", "FREQ:CENT?", "1E9", -222},
    {"Negative", "FREQ:STAR 1 GHZ;STAR -1", "FREQ:STAR?", "1E9", -222},
    {"Infinity", "FREQ:CENT INF", "FREQ:CENT?", "3E9", -222},
    {"StepBeyondLimit", "FREQ:STAR DOWN", "FREQ:STAR?", "0", -222},
    {"SuffixTooHigh", "SENS5:FREQ:CENT 1 GHZ", "FREQ:CENT?", "3E9", -114},
    {"SuffixZero", "SENS0:FREQ:CENT 1 GHZ", "FREQ:CENT?", "3E9", -114},
    {"SweepHasNoSuffix", "SENS2:SWE:POIN 201", "SWE:POIN?", "1001", -114},
    {"SuffixDropsTheRest", "FREQ:CENT 1 GHZ;:SENS5:DET RMS;:SWE:POIN 201", "SWE:POIN?", "1001", -114},
    {"DetectorHasNoSuffix", "SENS4:DET RMS", "DET?", "POS", -114},
    {"BooleanSuffix", "SENS5:BAND:AUTO OFF", "BAND:AUTO?", "1", -114},
    {"WrongUnit", "FREQ:CENT 1 S", "FREQ:CENT?", "3E9", -131},
    {"TooFewPoints", "SWE:POIN 100", "SWE:POIN?", "1001", -222},
    {"TooManyPoints", "SWE:POIN 100002", "SWE:POIN?", "1001", -222},
    {"SweepTimeTooShort", "SWE:TIME 0.9 MS", "SWE:TIME:AUTO?", "1", -222},
    {"UnknownDetector", "DET PEAK", "DET?", "POS", -141},
    {"NumberForDetector", "DET 1", "DET?", "POS", -128},
    {"StringForNumber", "FREQ:CENT '1'", "FREQ:CENT?", "3E9", -158},
    {"MissingParameter", "FREQ:CENT", "FREQ:CENT?", "3E9", -109},
    {"BadFormatWidth", "FORM REAL,16", "FORM?", "ASC,0", -224},
    {"SwitchTooHigh", "ROUT:CLOS (@1);CLOS (@2,9)", "ROUT:CLOS? (@1,2)", "1,0", -222},
    {"SwitchFarTooHigh", "ROUT:CLOS (@1);CLOS (@99999999999999999999)", "ROUT:CLOS? (@1)", "1", -222},
    {"RangeFarTooLong", "ROUT:CLOS (@1);CLOS (@1:99999999)", "ROUT:CLOS? (@1)", "1", -222},
    {"BadChannelList", "ROUT:CLOS (@1);CLOS (1)", "ROUT:CLOS? (@1)", "1", -171},
    {"MarkerOutside", "FREQ:STOP 1 GHZ;:CALC:MARK:X 2 GHZ", "CALC:MARK:X?", "1E9", -222},
    {"MarkerSuffix", "CALC:MARK9:X 1 GHZ", "CALC:MARK:X?", "3E9", -114},
    {"MarkerWithoutTrace", "CALC:MARK:MAX", "CALC:MARK:X?", "3E9", -230},
    {"MarkerOnStaleTrace", "TRAC -50,-10;:FREQ:SPAN 1 GHZ;:CALC:MARK:MAX", "CALC:MARK:X?", "3E9", -230},
    {"TraceSuffix", "TRAC5 1", "FREQ:CENT?", "3E9", -114},
    {"BlockInAsciiFormat", "TRAC 1,2;:TRAC #18abcdefgh", "TRAC?", "1,2", -160},
    {"BlockEndsInsideNumber", "TRAC 1,2;:FORM REAL,64;:TRAC #17abcdefg", "FORM ASC;:TRAC?", "1,2", -160},
    {"EmptyBlock", "TRAC 1,2;:FORM REAL;:TRAC #10", "FORM ASC;:TRAC?", "1,2", -160},
    {"TextAmongNumbers", "TRAC 1,2;:TRAC 3,MAX", "TRAC?", "1,2", -148},
};

// Queries that answer nothing but an error.
constexpr ConversationCase kUnanswered[] = {
    {"EmptyTrace", "", "TRAC3?", nullptr, -230},
    {"MarkerLevelWithoutTrace", "", "CALC:MARK:Y?", nullptr, -230},
    {"DetectorQueryWithWord", "", "DET? POS", nullptr, -108},
    {"FormatQueryWithWord", "", "FORM? ASC", nullptr, -108},
    {"OrderQueryWithWord", "", "FORM:BORD? NORM", nullptr, -108},
    {"TextQueryWithText", "", "DISP:TEXT? 'a'", nullptr, -108},
    {"SwitchesWithoutList", "", "ROUT:CLOS?", nullptr, -109},
    {"NoSuchFile", "", "MMEM:DATA? 'none'", nullptr, -256},
    {"StepInQuery", "", "FREQ:CENT? UP", nullptr, -141},
};

using SettingConversation = DemoFixture;

TEST_F(SettingConversation, AcceptedCommandsTakeEffect)
{
    ExpectConversations(kAccepted);
}

TEST_F(SettingConversation, RefusedCommandsChangeNothing)
{
    ExpectConversations(kRefused);
}

TEST_F(SettingConversation, FailedQueriesOnlyQueueTheirError)
{
    ExpectConversations(kUnanswered);
}

TEST_F(SettingConversation, FilesAreKeptListedAndDeleted)
{
    Client().Write("MMEM:DATA 'b',#13xyz;DATA \"a\",#10;*RST");
    EXPECT_EQ(Client().Query("MMEM:DATA? 'b'"), "#13xyz");
    EXPECT_EQ(Client().Query("MMEM:DATA? 'a'"), "#10");
    EXPECT_EQ(Client().Query("MMEM:CAT?"), "3,1073741821,\"a,BIN,0\",\"b,BIN,3\"");
    Client().Write("MMEM:DATA 'b',#14wxyz;DEL 'a';DEL 'a';DATA 'no name',#10");
    EXPECT_EQ(Client().Query("MMEM:CAT?"), "4,1073741820,\"b,BIN,4\"");
    EXPECT_EQ(NextError(), -256);
    EXPECT_EQ(NextError(), -257);
    EXPECT_EQ(NextError(), 0);
}

TEST_F(SettingConversation, LargeBlocksAreTakenAsTheyArrive)
{
    constexpr std::size_t kSize = 2'400'000;
    const std::string zeros(kSize, '\0');
    const std::string block = "#72400000" + zeros;
    Client().Write("MMEM:DATA 'a'," + block + ";:MMEM:DATA 'b'," + block + "x;:MMEM:DATA 'c',#11c");
    EXPECT_EQ(NextError(), -103);
    Client().Write("MMEM:DATA? 'a'");
    EXPECT_TRUE(Client().ReadBlock() == zeros);
    EXPECT_EQ(Client().Query("MMEM:CAT?"), "2400000,1071341824,\"a,BIN,2400000\"");
    Client().Send("FORM REAL,64;:TRAC " + block + ";:TRAC #9134400000");
    for (int i = 0; i < 56; ++i)
    {
        Client().Send(zeros);
    }
    Client().Write(";:TRAC?");
    EXPECT_TRUE(Client().ReadBlock() == zeros);
    EXPECT_EQ(NextError(), -223);
    EXPECT_EQ(NextError(), 0);
}

TEST_F(SettingConversation, DiagnosticCommandIsNotListed)
{
    Client().Write("SYST:HELP:HEAD?");
    const std::string headers = Client().ReadBlock();
    EXPECT_NE(headers.find("FREQuency:CENTer"), std::string::npos);
    EXPECT_EQ(headers.find("DIAGnostic"), std::string::npos);
    EXPECT_EQ(Client().Query("DIAG:SERV:COUN?"), "0");
}

} // namespace
} // namespace ZoVelkor::Demo
