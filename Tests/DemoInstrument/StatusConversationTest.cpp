#include "DemoFixture.h"

namespace ZoVelkor::Demo
{
namespace
{

class StatusConversation : public DemoFixture
{
protected:
    void WaitForBits(const std::string& query, int mask, int bits)
    {
        WaitForAnswer(query, [=](int word) { return (word & mask) == bits; });
    }
    void WaitForPhase(int phase) { WaitForBits("STAT:OPER:COND?", ~0, phase); }
};

TEST_F(StatusConversation, ConditionsFollowTheSweep)
{
    EXPECT_EQ(Client().Query("SWE:TIME 1000;:TRIG:SOUR BUS;:INIT;:STAT:OPER:COND?"), "32");
    EXPECT_EQ(Client().Query("TRIG:SOUR IMM;:STAT:OPER:COND?"), "32") << "the sweep keeps its settings";
    Client().Write("TRIG");
    WaitForPhase(8);
    EXPECT_EQ(Client().Query("ABOR;:STAT:OPER:COND?;*OPC?"), "0;1");
    EXPECT_EQ(Client().Query("TRIG:SOUR BUS;:INIT;:STAT:OPER:COND?;*RST;:STAT:OPER:COND?;:TRIG:SOUR?"),
              "32;0;IMM");
    EXPECT_EQ(NextError(), 0);
}

TEST_F(StatusConversation, EventsTellWhatHappened)
{
    const std::string sweep = "INIT;*TRG;*WAI;:STAT:OPER:COND?;EVEN?";
    EXPECT_EQ(Client().Query("SWE:TIME MIN;:TRIG:SOUR BUS;:" + sweep), "0;42");
    EXPECT_EQ(Client().Query(sweep), "0;40") << "nothing to settle";
    EXPECT_EQ(Client().Query("STAT:OPER:NTR 8;PTR 0;:" + sweep), "0;8") << "the end of the sweep";
}

TEST_F(StatusConversation, OperationCompleteRequestsServiceWhenTheSweepEnds)
{
    constexpr int kService = 64;
    Client().Write("*CLS;*ESE 1;*SRE 32;:SWE:TIME MIN;:TRIG:SOUR BUS;:INIT;*OPC");
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(std::stoi(Client().Query("*STB?")) & kService, 0) << "the sweep waits";
    }
    Client().Write("*TRG");
    WaitForBits("*STB?", kService, kService);
    EXPECT_EQ(Client().Query("STAT:OPER:COND?"), "0");
    EXPECT_EQ(Client().Query("*ESR?"), "1");
    EXPECT_EQ(std::stoi(Client().Query("*STB?")) & kService, 0);
    EXPECT_EQ(Client().Query("*ESR?"), "0");
}

TEST_F(StatusConversation, CommonTriggerIsForTheSweepThatWaits)
{
    Client().Write("*TRG");
    EXPECT_EQ(NextError(), -211);
    EXPECT_EQ(Client().Query("SWE:TIME MIN;:TRIG:SOUR BUS;:INIT;*TRG;*OPC?"), "1");
    EXPECT_EQ(NextError(), 0);
    Client().Write("*TRG");
    EXPECT_EQ(NextError(), -211);
}

struct QuestionableCase
{
    const char* name;
    const char* settings;
    const char* power;
    const char* frequency;
};

constexpr QuestionableCase kQuestionable[] = {
    {"Reset", "*CLS", "0", "0"},
    {"LevelAbove", ":SENS4:POW:RLEV -11 DBM", "8", "0"},
    {"LevelBelow", ":SENS4:POW:RLEV -9 DBM", "0", "0"},
    {"SweepTooShort", ":SWE:TIME 24 ms;:SENS2:BAND 100", "0", "2"},
    {"SweepLongEnough", ":SWE:TIME 26 ms;:SENS2:BAND 100", "0", "0"},
    {"CoupledTime", ":SENS2:BAND 100", "0", "0"},
};

TEST_F(StatusConversation, QuestionableTellsOfTheLastSweep)
{
    const std::string ask = "STAT:QUES:POW:COND?;:STAT:QUES:FREQ:COND?";
    for (const QuestionableCase& row : kQuestionable)
    {
        SCOPED_TRACE(row.name);
        const std::string expected = std::string(row.power) + ";" + row.frequency;
        Client().Write("*RST;" + std::string(row.settings));
        EXPECT_EQ(Client().Query(ask), "0;0") << "not before a sweep";
        EXPECT_EQ(Client().Query("INIT;*WAI;:" + ask), expected);
        EXPECT_EQ(Client().Query("POW:RLEV DEF;:INIT;:ABOR;:" + ask), expected) << "the sweep did not finish";
        EXPECT_EQ(Client().Query("*RST;:" + ask), "0;0");
    }
    EXPECT_EQ(NextError(), 0);
}

} // namespace
} // namespace ZoVelkor::Demo
