#include "Analyzer/CAnalyzerApplication.h"
#include "CRemoteKernel.h"
#include "CTcpServer.h"
#include "Conformance/CConformanceCommands.h"
#include "DemoFixture.h"
#include "Generator/CGeneratorCommands.h"

#include <atomic>
#include <thread>

namespace ZoVelkor::Demo
{
namespace
{

// clang-format off
constexpr ConversationCase kConversations[] = {
    {"ResetState", "SOUR2:FREQ 2E9;POW 5;:SOUR:LIST:FREQ 1E6,2E6;:OUTP ON;:DISP:BRIG 1;*RST",
     "SOUR2:FREQ?;POW?;:SOUR:LIST:FREQ?;:OUTP?;:DISP:BRIG?", "1E9;-30;1E9;0;0.5"},
    {"AllNames", "SOUR:FREQ 1 MHZ;:SOUR2:FREQ:CW 2 MHZ;:SOUR1:FREQ:FIX 3 MHZ;:SOUR:POW -10 DBM;:SOUR2:POW:LEV:IMM:AMPL -20",
     "SOUR:FREQ?;FREQ:CW?;FIXED?;:SOUR2:FREQ?;:SOUR:POW:AMPL?;:SOUR:POW:IMM?;:SOUR2:POW:LEV?", "3E6;3E6;3E6;2E6;-10;-10;-20"},
    {"Limits", "SOUR:FREQ MIN;:SOUR:POW MAX;:SOUR2:POW 0;POW DEF",
     "SOUR:FREQ?;FREQ? MAX;FREQ? DEF;POW?;POW? MIN;:SOUR2:POW?", "1E5;6E9;1E9;20;-130;-30"},
    {"Steps", "SOUR:FREQ UP;:SOUR2:FREQ DOWN;:SOUR:POW DOWN;:DISP:BRIG UP", "SOUR:FREQ?;:SOUR2:FREQ?;:SOUR:POW?;:DISP:BRIG?",
     "1.001E9;0.999E9;-31;0.75"},
    {"StepStopsAtLimit", "SOUR:FREQ 0.5 MHZ;FREQ DOWN;:SOUR:POW 19.5;POW UP", "SOUR:FREQ?;POW?", "1E5;20"},
    {"ChannelsAreApart", "OUTP2:STAT ON;:SOUR2:LIST:FREQ 1 MHZ,2e6, 3MHZ", "OUTP?;:OUTP2?;:SOUR2:LIST:FREQ?;:SOUR:LIST:FREQ?",
     "0;1;1E6,2E6,3E6;1E9"},
    {"WindowsKept", "SOUR:FREQ 3 GHZ;POW 10;:SOUR2:FREQ 10 MHZ;POW -100",
     "CALC:LIM:FAIL?;:CALC:LIM2:FAIL?;:CALC:LIM3:FAIL?;:CALC:LIM4:FAIL?", "0;0;0;0"},
    {"WindowsLeft", "SOUR:FREQ 3.1 GHZ;:SOUR2:POW -100.5",
     "CALC:LIM:FAIL?;:CALC:LIM2:FAIL?;:CALC:LIM3:FAIL?;:CALC:LIM4:FAIL?", "1;0;0;1"},
    {"SharedNodes", "DISP:TEXT 'a';BRIG 0.25;:CALC:MARK:X 1 GHZ", "DISP:BRIG?;TEXT?;:CALC:MARK:X?;:CALC:LIM:FAIL?", "0.25;\"a\";1E9;0"},
    // Refused
    {"StepBeyondLimit", "SOUR:FREQ MIN;FREQ DOWN", "SOUR:FREQ?", "1E5", -222},
    {"TooLow", "SOUR:FREQ 99.9 KHZ", "SOUR:FREQ?", "1E9", -222}, {"TooStrong", "SOUR2:POW 20.1 DBM", "SOUR2:POW?", "-30", -222},
    {"WrongUnit", "SOUR:POW 1 V", "SOUR:POW?", "-30", -131}, {"SourceSuffix", "SOUR3:FREQ 2E9", "SOUR:FREQ?", "1E9", -114},
    {"ListSuffix", "SOUR0:LIST:FREQ 2E9", "SOUR:LIST:FREQ?", "1E9", -114}, {"OutputSuffix", "OUTP3 ON", "OUTP?;:OUTP2?", "0;0", -114},
    {"InnerSuffix", "SOUR:FREQ2:CW 2E9", "SOUR:FREQ?", "1E9", -113}, {"EmptyList", "SOUR:LIST:FREQ", "SOUR:LIST:FREQ?", "1E9", -109},
    {"BadListChangesNothing", "SOUR:LIST:FREQ 1E6,2E6;FREQ 3E6,7E9", "SOUR:LIST:FREQ?", "1E6,2E6", -222},
    {"WordInList", "SOUR:LIST:FREQ 1E6,MAX", "SOUR:LIST:FREQ?", "1E9", -148}, {"LimitSuffix", "", "CALC:LIM5:FAIL?", nullptr, -114},
    {"LimitIsNoSetting", "CALC:LIM:FAIL 1", "CALC:LIM:FAIL?", "0", -113}, {"TooBright", "DISP:BRIG 1.01", "DISP:BRIG?", "0.5", -222},
    {"ListQueryWithNumber", "", "SOUR:LIST:FREQ? 1E6", nullptr, -108},
};
// clang-format on

using GeneratorConversation = DemoFixture;

TEST_F(GeneratorConversation, HoldsWithTheAnalyserBesideIt)
{
    ExpectConversations(kConversations);
}

TEST_F(GeneratorConversation, ListTakesSoManyPointsAndFollowsTheFormat)
{
    std::string list = "SOUR:LIST:FREQ 1E6";
    for (std::size_t i = 1; i < kMaxListPoints; ++i)
    {
        list += ",1E6";
    }
    Client().Write(list);
    EXPECT_EQ(Numbers(Client().Query("SOUR:LIST:FREQ?")), std::vector<double>(kMaxListPoints, 1e6));
    Client().Write(list + ",2E6");
    EXPECT_EQ(NextError(), -223);
    Client().Write("FORM REAL,64;:SOUR:LIST:FREQ?");
    EXPECT_EQ(Client().ReadBlock().size(), kMaxListPoints * sizeof(double));
    EXPECT_EQ(NextError(), 0);
}

TEST_F(GeneratorConversation, HelpListsBothApplications)
{
    Client().Write("SYST:HELP:HEAD?");
    const std::string headers = Client().ReadBlock();
    // clang-format off
    for (const char* const header : {
             ":SOURce:FREQuency[:CW]", ":SOURce:FREQuency:FIXed", ":SOURce:POWer[:LEVel][:IMMediate][:AMPLitude]",
             ":OUTPut[:STATe]", ":CALCulate:LIMit:FAIL?/qonly/", ":CALCulate:MARKer:X", ":DISPlay:BRIGhtness", ":DISPlay:TEXT[:DATA]"})
    // clang-format on
    {
        EXPECT_NE(headers.find(header), std::string::npos) << header << " is not in\n" << headers;
    }
}

/// Remote control with the analyser, and a generator that comes and goes while clients talk to both.
class ComingAndGoing : public testing::Test
{
protected:
    using CScpiClient = Testing::CScpiClient;
    static constexpr int kRounds = 150;
    static constexpr int kMostRounds = 100 * kRounds;

    ComingAndGoing()
    {
        EXPECT_EQ(m_kernel.Start(), S_OK);
        m_analyzer.emplace();
        m_server.Start();
    }

    /// Registers and unregisters the generator until the end; each state lasts for some round of a client.
    void ChangeUntilDone()
    {
        for (std::optional<CGeneratorApplication> generator; !m_done;)
        {
            generator.has_value() ? generator.reset() : void(generator.emplace());
            const unsigned int rounds = m_rounds;
            if (!m_done)
            {
                m_rounds.wait(rounds);
            }
        }
    }
    /// Sends a message again and again and counts its answers: as expected, or else refused as unknown.
    void Talk(const std::string& message, const std::string& answer, int& answered, int& refused)
    {
        CScpiClient client(m_server.Port());
        // On a busy machine the generator may stay away for all of the usual rounds.
        for (int i = 0; i < kRounds || (answered == 0 && i < kMostRounds); ++i)
        {
            client.Write(message);
            client.Write("SYST:ERR?");
            const std::string line = client.ReadLine();
            const bool isRefused = line.starts_with("-113,");
            ++(isRefused ? refused : answered);
            if (!isRefused)
            {
                EXPECT_EQ(line, answer);
                EXPECT_EQ(client.ReadLine(), "0,\"No error\"");
            }
            FinishRound();
        }
    }
    void FinishRound()
    {
        ++m_rounds;
        m_rounds.notify_all();
    }

    RemoteKernel::CRemoteKernel m_kernel{RemoteKernel::InstrumentIdentity()};
    std::optional<CAnalyzerApplication> m_analyzer;
    Transports::CTcpServer m_server{{.port = 0}};
    std::atomic<unsigned int> m_rounds = 0;
    std::atomic<bool> m_done = false;
};

TEST_F(ComingAndGoing, EachMessageIsAnsweredWhollyOrUnknown)
{
    // clang-format off
    struct TalkCase { const char* message; const char* answer; int answered = 0; int refused = 0; } talks[] = {
        {"SOUR:FREQ 2 GHZ;:SOUR:FREQ?", "2000000000"}, {"SOUR2:FREQ 3 GHZ;:SOUR2:FREQ?", "3000000000"}, {"DISP:BRIG?", "0.5"},
        {"SENS3:FREQ:CENT 1 GHZ;CENT?;:DISP:TEXT 'a';TEXT?", "1000000000;\"a\""}};
    // clang-format on
    std::jthread changes([this] { ChangeUntilDone(); });
    {
        std::vector<std::jthread> clients;
        for (TalkCase& talk : talks)
        {
            clients.emplace_back(
                [this, &talk] { Talk(talk.message, talk.answer, talk.answered, talk.refused); });
        }
    }
    m_done = true;
    FinishRound();
    int refused = 0;
    for (const TalkCase& talk : talks)
    {
        EXPECT_GT(talk.answered, 0) << talk.message;
        refused += talk.refused;
    }
    EXPECT_GT(refused, 0);
    EXPECT_EQ(talks[3].refused, 0) << "the analyser was there all the time";
}

TEST_F(ComingAndGoing, SlowCommandsEndWithTheirApplication)
{
    std::optional<Conformance::CConformanceApplication> conformance(std::in_place);
    CScpiClient waiting(m_server.Port());
    CScpiClient other(m_server.Port());
    waiting.Write("TEST:SLOW 60;*OPC?;:SYST:ERR?;:TEST:SLOW?");
    while (other.Query("TEST:SLOW?") != "1")
    {}
    conformance.reset();
    EXPECT_EQ(waiting.ReadLine(), "1;0,\"No error\"");
    EXPECT_TRUE(waiting.Query("SYST:ERR?").starts_with("-113,"));
}

} // namespace
} // namespace ZoVelkor::Demo
