#include "Conformance/CConformanceTarget.h"
#include "DemoFixture.h"

namespace ZoVelkor::Demo::Conformance
{
namespace
{

// clang-format off
constexpr ConversationCase kAccepted[] = {
    {"ResetState",
     "SENS4:FREQ:CENT 5;SPAN 5;:SENS2:RES:RANG 5;:SOUR2:VOLT 5;:OUTP2 ON;"
      ":TRIG:SOUR BUS;COUN 5;DEL 5;*RST",
     "SENS4:FREQ:CENT?;SPAN?;:SENS2:RES:RANG?;:SOUR2:VOLT?;:OUTP2?;:TRIG:SOUR?;COUN?;DEL?",
     "1E6;1E9;1000;0;0;IMM;1;0"},
    {"ResetState2",
     "DISP:TEXT 'a';:TRAC:DATA #11a;:ROUT:CLOS (@1);:TEST:INT 5;NUMB 5;*RST",
     "DISP:TEXT?;:TRAC:DATA?;:ROUT:CLOS? (@1);:TEST:INT?;NUMB?", "\"\";#10;0;0;0"},
    {"ChannelsAreApart",
     "FREQ:CENT 1;:SENS2:FREQ:CENT 2;:SENS4:FREQ:CENT 4;:SENS2:FREQ:SPAN 7;:SENS3:RES:RANG 8",
     "SENS:FREQ:CENT?;:SENS2:FREQ:CENT?;:SENS3:FREQ:CENT?;SPAN?;:SENS4:FREQ:CENT?;:RES:RANG?;"
      ":SENS3:RES:RANG?", "1;2;1E6;1E9;4;1000;8"},
    {"SourcesAreApart",
     "SOUR1:VOLT -10;:SOUR2:VOLT:LEV:IMM:AMPL 10 V;:OUTP2:STAT 1",
     "SOUR:VOLT?;:SOUR2:VOLT:IMM?;:OUTP?;:OUTP2?", "-10;10;0;1"},
    {"Units",
     "FREQ:CENT 0.5 GHZ;SPAN 2 MHZ;:RES:RANG 3 MOHM;:SOUR:VOLT -250 MV;:TRIG:DEL 20 MS",
     "FREQ:CENT?;SPAN?;:RES:RANG?;:SOUR:VOLT?;:TRIG:DEL?", "5E8;2E6;3E6;-0.25;0.02"},
    {"SettingWords",
     "FREQ:CENT MAX;SPAN MIN;:SENS2:FREQ:CENT 5;CENT DEF;:TRIG:COUN MAXimum;DEL MAX;:SOUR:VOLT MIN",
     "FREQ:CENT?;SPAN?;:SENS2:FREQ:CENT?;:TRIG:COUN?;DEL?;:SOUR:VOLT?", "1E9;0;1E6;1000;10;-10"},
    {"QueryWords",
     "FREQ:CENT 5",
     "FREQ:CENT? MIN;CENT? MAX;CENT? DEF;SPAN? DEF;:TRIG:COUN? MIN;COUN? MAX;DEL? MAX;:RES:RANG? DEF",
     "0;1E9;1E6;1E9;1;1000;10;1000"},
    {"Steps",
     "FREQ:CENT UP;:SENS2:FREQ:CENT DOWN;:SENS3:FREQ:CENT 50 KHZ;CENT DOWN",
     "FREQ:CENT?;:SENS2:FREQ:CENT?;:SENS3:FREQ:CENT?", "1.1E6;9E5;0"},
    {"CountIsRounded", "TRIG:COUN 2.5", "TRIG:COUN?", "3"},
    {"WordWithDigitShort", "TRIG:SOUR TIM1", "TRIG:SOUR?", "TIM1"},
    {"WordWithDigitLong", "TRIG:SOUR TIMER2", "TRIG:SOUR?", "TIM2"},
    {"WordWithDigitSmall", "TRIG:SOUR timer1", "TRIG:SOUR?", "TIM1"},
    {"OtherWords", "TRIG:SOUR EXTERNAL", "TRIG:SOUR?", "EXT"},
    {"Text", "DISP:TEXT \"it's \"\"ok\"\"\"", "DISP:TEXT?", "\"it's \"\"ok\"\"\""},
    {"EmptyBlock", "TRAC:DATA #15hello;DATA #10", "TRAC:DATA?", "#10"},
    {"DefiniteBlock", "TRAC:DATA #205hello", "TRAC:DATA?", "#15hello"},
    {"IndefiniteBlock", "TRAC:DATA #0he;lo", "TRAC:DATA?", "#15he;lo"},
    {"Sums", "", "CALC:SUM? 1,2;SUM? 1.5,#H10,-3", "3;14.5"},
    {"SumsOfSpecialNumbers",
     "", "CALC:SUM? INF,NINF;SUM? NAN,NINF;SUM? INF,INF;SUM? -9.9E37,1;SUM? 1,2,NAN",
     "9.91E37;9.91E37;9.9E37;-9.9E37;9.91E37"},
    {"Switches", "ROUT:CLOS (@8);CLOS (@1,3:4)", "ROUT:CLOS? (@1:5,8)", "1,0,1,1,0,0"},
    {"Integers",
     "TEST:INT -2147483648",
     "TEST:INT?;INT #H7FFFFFFF;INT?;INT #Q17;INT?;INT #B101;INT?", "-2147483648;2147483647;15;5"},
    {"Numbers", "TEST:NUMB -1.5E-3", "TEST:NUMB?;NUMB #HFF;NUMB?", "-1.5E-3;255"},
    {"SpecialNumbers",
     "TEST:NUMB INF",
     "TEST:NUMB?;NUMB NINF;NUMB?;NUMB NAN;NUMB?", "9.9E37;-9.9E37;9.91E37"},
    {"RoundedBooleans", "OUTP 0.4;:OUTP2 0.5", "OUTP?;:OUTP2?;:OUTP -0.5;OUTP?", "0;1;1"},
    {"EventAndQuery", "TEST:EVEN", "TEST:QONL?;SLOW?", "42;0"},
    {"IndefiniteAnswer", "", "TEST:QONL?;IND?", "42;#0ABC"},
};
// clang-format on

constexpr ConversationCase kRefused[] = {
    {"CenterTooHigh", "FREQ:CENT 1.1E9", "FREQ:CENT?", "1E6", -222},
    {"CenterNegative", "FREQ:CENT -1", "FREQ:CENT?", "1E6", -222},
    {"CenterInfinite", "FREQ:CENT INF", "FREQ:CENT?", "1E6", -222},
    {"CenterStepBeyond", "FREQ:CENT MAX;CENT UP", "FREQ:CENT?", "1E9", -222},
    {"SpanHasNoSteps", "FREQ:SPAN DOWN", "FREQ:SPAN?", "1E9", -141},
    {"SenseSuffix", "SENS5:FREQ:CENT 1", "FREQ:CENT?", "1E6", -114},
    {"SourceSuffix", "SOUR3:VOLT 1", "SOUR:VOLT?", "0", -114},
    {"OutputSuffix", "OUTP0 1", "OUTP?", "0", -114},
    {"RangeUnit", "RES:RANG 1 V", "RES:RANG?", "1000", -131},
    {"VoltageTooHigh", "SOUR:VOLT 10.001", "SOUR:VOLT?", "0", -222},
    {"OutputWord", "OUTP YES", "OUTP?", "0", -141},
    {"OutputTwice", "OUTP 1,1", "OUTP?", "0", -108},
    {"UnknownTimer", "TRIG:SOUR TIMER3", "TRIG:SOUR?", "IMM", -141},
    {"TimerWithoutDigit", "TRIG:SOUR TIM", "TRIG:SOUR?", "IMM", -141},
    {"NumberForWord", "TRIG:SOUR 1", "TRIG:SOUR?", "IMM", -128},
    {"WordInWordQuery", "TRIG:COUN 2", "TRIG:SOUR? MIN", nullptr, -108},
    {"OwnWordInWordQuery", "", "TRIG:SOUR? BUS", nullptr, -108},
    {"TextInTextQuery", "", "DISP:TEXT? 'a'", nullptr, -108},
    {"LimitInTextQuery", "", "DISP:TEXT? MIN", nullptr, -108},
    {"WordInBooleanQuery", "", "OUTP? ON", nullptr, -108},
    {"WordInIntegerQuery", "", "TEST:INT? MIN", nullptr, -108},
    {"BlockInBlockQuery", "", "TRAC:DATA? #11a", nullptr, -108},
    {"StepInQuery", "", "FREQ:CENT? UP", nullptr, -141},
    {"CountTooLow", "TRIG:COUN 0", "TRIG:COUN?", "1", -222},
    {"CountTooHigh", "TRIG:COUN 1001", "TRIG:COUN?", "1", -222},
    {"CountUnit", "TRIG:COUN 1 S", "TRIG:COUN?", "1", -138},
    {"DelayTooLong", "TRIG:DEL 10.1 S", "TRIG:DEL?", "0", -222},
    {"NumberForText", "DISP:TEXT 1", "DISP:TEXT?", "\"\"", -128},
    {"TextForBlock", "TRAC:DATA #11a;DATA 'b'", "TRAC:DATA?", "#11a", -158},
    {"SumOfOne", "", "CALC:SUM? 1", nullptr, -109},
    {"SumOfFour", "", "CALC:SUM? 1,2,3,4", nullptr, -108},
    {"SumOfNothing", "", "CALC:SUM?", nullptr, -109},
    {"QueryBehindIndefinite", "", "TEST:QONL?;IND?;EVEN;QONL?", "42;#0ABC", -440},
    {"SumIsNoSetting", "CALC:SUM 1,2", "OUTP?", "0", -113},
    {"SwitchTooHigh", "ROUT:CLOS (@1);CLOS (@2,9)", "ROUT:CLOS? (@1,2)", "1,0", -222},
    {"QueryOfNoSwitch", "", "ROUT:CLOS? (@)", nullptr, -224},
    {"IntegerTooLarge", "TEST:INT 7;INT 2147483648", "TEST:INT?", "7", -222},
    {"HexTooLarge", "TEST:INT 7;INT #H80000000", "TEST:INT?", "7", -222},
    {"IntegerUnit", "TEST:INT 7 HZ", "TEST:INT?", "0", -138},
    {"IntegerWord", "TEST:INT MAX", "TEST:INT?", "0", -148},
    {"NumberUnit", "TEST:NUMB 1 V", "TEST:NUMB?", "0", -138},
    {"NumberTooLarge", "TEST:NUMB 7;NUMB 1E400", "TEST:NUMB?", "7", -222},
    {"EventWithData", "TEST:EVEN 1", "OUTP?", "0", -108},
    {"EventIsNoQuery", "", "TEST:EVEN?", nullptr, -113},
    {"QueryIsNoEvent", "TEST:QONL", "OUTP?", "0", -113},
    {"SlowTooLong", "TEST:SLOW 60.1", "TEST:SLOW?", "0", -222},
    {"SlowNegative", "TEST:SLOW -1", "TEST:SLOW?", "0", -222},
    {"OwnError", "TEST:ERR -32768", "OUTP?", "0", -32768},
    {"OwnPositiveError", "TEST:ERR 32767", "OUTP?", "0", 32767},
    {"OwnCommandError", "TEST:ERR -101", "OUTP?", "0", -101},
    {"ErrorZero", "TEST:ERR 0", "OUTP?", "0", -224},
    {"ErrorTooLarge", "TEST:ERR 32768", "OUTP?", "0", -222},
    {"ConditionTooLarge", "TEST:COND OPER,32768", "OUTP?", "0", -222},
    {"ConditionWithoutValue", "TEST:COND QUES", "OUTP?", "0", -109},
    {"UnknownRegister", "TEST:COND STAT,1", "OUTP?", "0", -141},
    {"NoFurtherCommands", "FREQ:STAR 1", "OUTP?", "0", -113},
    {"NoOptionalDataNode", "", "TRAC?", nullptr, -113},
};

class ConformanceConversation : public DemoFixture
{
protected:
    ConformanceConversation() : DemoFixture(DemoProfile::Conformance) {}
};

TEST_F(ConformanceConversation, AcceptedCommandsTakeEffect)
{
    ExpectConversations(kAccepted);
}

TEST_F(ConformanceConversation, RefusedCommandsChangeNothing)
{
    ExpectConversations(kRefused);
}

TEST_F(ConformanceConversation, TextsAndBlocksHaveALongestLength)
{
    const std::string text(kMaxDisplayText, 'x');
    Client().Write("DISP:TEXT '" + text + "';TEXT '" + text + "y'");
    EXPECT_EQ(Client().Query("DISP:TEXT?"), '"' + text + '"');
    EXPECT_EQ(NextError(), -223);

    const std::string data(kMaxTraceBytes, '\n');
    Client().Write("TRAC:DATA #565536" + data + ";DATA #565537" + data + "y");
    Client().Write("TRAC:DATA #72000000" + std::string(2'000'000, '\n') + ";DATA #0" +
                   std::string(2'000'000, 'x'));
    Client().Write("TRAC:DATA?");
    EXPECT_EQ(Client().ReadBlock(), data);
    EXPECT_EQ(NextError(), -223);
    EXPECT_EQ(NextError(), -223);
    EXPECT_EQ(NextError(), -223);
    EXPECT_EQ(NextError(), 0);
}

TEST_F(ConformanceConversation, ConditionsReachTheRegistersOfAllClients)
{
    CScpiClient other = Connect();
    EXPECT_EQ(Client().Query("TEST:COND OPER,32767;COND QUESTIONABLE,5;*OPC?"), "1");
    EXPECT_EQ(other.Query("STAT:OPER:COND?;:STAT:QUES:COND?"), "32767;5");
    EXPECT_EQ(Client().Query("TEST:COND OPER,#H10;*RST;:STAT:OPER:COND?;:STAT:QUES:COND?"), "16;5");
    EXPECT_EQ(Client().Query("TEST:COND QUES,1;COND QUES,32768;:STAT:QUES:COND?"), "1");
    EXPECT_EQ(NextError(), -222);
    EXPECT_EQ(NextError(), 0);
}

TEST_F(ConformanceConversation, SlowCommandsOfOneClientAreAwaitedTogether)
{
    CScpiClient other = Connect();
    EXPECT_EQ(Client().Query("TEST:SLOW 0.05 S;SLOW 100 MS;SLOW?"), "1");
    EXPECT_EQ(other.Query("*OPC?;:TEST:SLOW?"), "1;1") << "another client does not wait";
    EXPECT_EQ(Client().Query("*OPC?;:TEST:SLOW?"), "1;0");
    EXPECT_EQ(Client().Query("TEST:SLOW 0;*WAI;SLOW?"), "0");
    EXPECT_EQ(NextError(), 0);
}

TEST_F(ConformanceConversation, ResetAndTheEndDoNotWaitForSlowCommands)
{
    Client().Write("TEST:SLOW 60;SLOW 60");
    EXPECT_EQ(Client().Query("TEST:SLOW?;*RST;SLOW?;*OPC?"), "1;0;1");
    Client().Write("TEST:SLOW 60");
    Restart();
    EXPECT_EQ(Client().Query("TEST:SLOW?"), "0");
}

TEST_F(ConformanceConversation, SlowCommandsBeyondTheLimitAreRefused)
{
    for (std::size_t i = 0; i <= COperationTimer::kMaxOperations; ++i)
    {
        Client().Write("TEST:SLOW 60");
    }
    EXPECT_EQ(NextError(), -213);
    EXPECT_EQ(NextError(), 0);
    EXPECT_EQ(Client().Query("*RST;*OPC?"), "1");
}

} // namespace
} // namespace ZoVelkor::Demo::Conformance
