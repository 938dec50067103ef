#include "CCommandSink.h"
#include "CScpiParserTable.h"
#include "CTestApplication.h"
#include "ScpiTableCheck.h"
#include "Sessions/CSession.h"

#include <gtest/gtest.h>

#include <array>
#include <list>
#include <string>
#include <vector>

namespace ZoVelkor::Commands
{
namespace
{

enum class Waveform
{
    Sine,
    Square,
    Triangle,
    FirstTimer,
    SecondTimer
};

constexpr Word<Waveform> kWaveforms[] = {
    {"SINusoid", Waveform::Sine},
    {"SQUare", Waveform::Square},
    {"TRIangle", Waveform::Triangle},
    {"TIMer1", Waveform::FirstTimer},
    {"TIMer2", Waveform::SecondTimer},
};

constexpr std::span<const Word<Waveform>> ScpiWords(Waveform)
{
    return kWaveforms;
}

using Channel = CNumericSuffix<struct ChannelTag>;

/// A power supply of three channels.
struct PowerSupply
{
    void SetVoltage(Channel channel, double volts)
    {
        if (m_tripped.at(channel.Index()))
        {
            throw CCommandError(101, "channel " + std::to_string(channel.Number()));
        }
        m_volts.at(channel.Index()) = volts;
    }
    double Voltage(Channel channel) const { return m_volts.at(channel.Index()); }
    std::vector<double> Trace() const { return {1, -2.5, 1e-9}; }
    std::pair<std::vector<float>, int> TraceAndCount() const { return {{0.5F, 1.5F}, 2}; }
    void Initiate(CCommandCall& call) { m_operation = call.BeginOverlapped(); }
    void Complete() { m_operation = {}; }
    void Load(std::string_view name, CBlockInput block)
    {
        m_loaded = block.ReadAll(8);
        m_text = name;
    }
    BlockResult Loaded() const { return {m_loaded}; }
    void Close(CChannelList list) { m_closed = list.Channels(4); }
    std::vector<long> Closed() const { return m_closed; }
    void SetList(std::vector<double> volts) { m_list = std::move(volts); }
    std::size_t ListLength() const { return m_list.size(); }
    void Beep(std::optional<double> hertz, std::optional<bool> loud)
    {
        m_text = hertz ? "tone" : "beep";
        m_text += loud.value_or(false) ? "!" : "";
    }
    CCommandResult<double> Measure(Channel channel) const
    {
        return m_tripped.at(channel.Index()) ? CCommandResult<double>(CCommandError(-230)) : Voltage(channel);
    }
    long long Serial() const { return 12'345'678'901; }
    void Throw() { throw std::runtime_error("never told"); }
    void SetLimit(double amperes) { m_limit = amperes; }
    double Limit() const { return m_limit; }

    std::array<double, 3> m_volts{};
    std::array<bool, 3> m_tripped{};
    std::array<double, 3> m_amperes{1, 1, 1};
    std::array<bool, 3> m_output{};
    Waveform m_waveform = Waveform::Sine;
    std::string m_text;
    std::uint8_t m_count = 0;
    std::vector<double> m_list;
    std::vector<long> m_closed{0};
    std::vector<std::byte> m_loaded;
    double m_limit = 0;
    CPendingOperation m_operation;
};

constexpr auto kCommands = DeclareCommands<PowerSupply>(
    Command("[SOURce<1-3>]:VOLTage[:LEVel][:IMMediate][:AMPLitude]")
        .Setting(&PowerSupply::SetVoltage, Number("V").Range(0, 30).Default(5))
        .Query(&PowerSupply::Voltage),
    Command("[SOURce<1-3>]:CURRent")
        .Variable(&PowerSupply::m_amperes, Number("A").Range(0, 5).Default(1).Step(2)),
    Command("[SOURce<1-3>]:POWer:LIMit")
        .Setting(&PowerSupply::SetLimit, Number("W").Infinite())
        .Query(&PowerSupply::Limit),
    Command("OUTPut<1-3>[:STATe]").Variable(&PowerSupply::m_output, Boolean()),
    Command("FUNCtion[:SHAPe|:TYPE]").Variable(&PowerSupply::m_waveform, Words<Waveform>()),
    Command("DISPlay:TEXT").Variable(&PowerSupply::m_text, Text().AtMost(6)),
    Command("DISPlay:COUNt").Variable(&PowerSupply::m_count, Integer()),
    Command("TRACe[:DATA]?").Query(&PowerSupply::Trace),
    Command("TRACe:ALL").Query(&PowerSupply::TraceAndCount),
    Command("MMEMory:DATA").Setting(&PowerSupply::Load),
    Command("MMEMory:SIZE").Query([](PowerSupply& supply) { return supply.m_loaded.size(); }),
    Command("MMEMory:LOADed").Query(&PowerSupply::Loaded),
    Command("ROUTe:CLOSe").Setting(&PowerSupply::Close).Query(&PowerSupply::Closed),
    Command("LIST:VOLTage")
        .Setting(&PowerSupply::SetList, Number("V").Range(0, 30))
        .Query(&PowerSupply::ListLength),
    Command("SYSTem:BEEPer").Setting(&PowerSupply::Beep),
    Command("INITiate[:IMMediate]").Event(&PowerSupply::Initiate),
    Command("ABORt").Event(&PowerSupply::Complete),
    Command("MEASure<1-3>:VOLTage").Query(&PowerSupply::Measure),
    Command("SERial").Query(&PowerSupply::Serial),
    Command("FAULt").Event(&PowerSupply::Throw).Service());

/// The power supply behind a kernel, and one session.
class DeclaredCommandsTest : public testing::Test
{
protected:
    DeclaredCommandsTest()
    {
        const auto table = CCommandSink<kCommands>::Table();
        EXPECT_EQ(m_instrument.Register({table.begin(), table.end()}, m_id, m_sink), S_OK);
    }

    std::string Run(std::string message)
    {
        message += '\n';
        std::string response(m_session.Process(message));
        return response.empty() ? response : response.substr(0, response.size() - 1);
    }

    PowerSupply m_supply;
    CComPtr<CComObject<CCommandSink<kCommands>, IZOScpiExecutionSink>> m_sink =
        CComObject<CCommandSink<kCommands>, IZOScpiExecutionSink>::Create(m_supply);
    RemoteKernel::Testing::TestInstrument m_instrument;
    GUID m_id{};
    RemoteKernel::CSession m_session{m_instrument.kernel.Parts()};
};

struct Talk
{
    const char* message;
    const char* answer; ///< of the message, and then of the error queue
};

constexpr const char* kNoError = "0,\"No error\"";

constexpr Talk kTalks[] = {
    {"VOLT 12 V;VOLT?", "12"},
    {"SOUR2:VOLT:LEV:IMM:AMPL 1500 mV;:SOURCE2:VOLTAGE?;:VOLT?", "1.5;0"},
    {"VOLT? MIN;VOLT? MAX;VOLT? DEF", "0;30;5"},
    {"VOLT MAX;VOLT?", "30"},
    {"VOLT DEF;VOLT?", "5"},
    {"CURR UP;CURR?;CURR DOWN;CURR?", "3;1"},
    {"SOUR3:CURR 0.1;CURR?", "0.1"},
    {"POW:LIM INF;LIM?;LIM NINF;LIM?", "9.9E37;-9.9E37"},
    {"OUTP2 ON;OUTP2?;:OUTP1:STAT?", "1;0"},
    {"FUNC SQU;FUNC?;FUNC:SHAP TRIANGLE;:FUNC?;:FUNC:TYPE?", "SQU;TRI;TRI"},
    {"FUNC TIM2;FUNC?;FUNC TIMER1;FUNC?", "TIM2;TIM1"},
    {"DISP:TEXT 'a\"b';TEXT?", "\"a\"\"b\""},
    {"DISP:COUN 255;COUN?;COUN #H10;COUN?", "255;16"},
    {"TRAC?", "1,-2.5,1.0E-09"},
    {"TRAC:ALL?", "0.5,1.5,2"},
    {"MMEM:DATA 'n',#13abc;:MMEM:SIZE?;LOAD?", "3;#13abc"},
    {"ROUT:CLOS (@1,3:4);CLOS?", "1,3,4"},
    {"LIST:VOLT 1,2,3;VOLT?", "3"},
    {"SYST:BEEP;:DISP:TEXT?", "\"beep\""},
    {"SYST:BEEP 440,ON;:DISP:TEXT?", "\"tone!\""},
    {"MEAS2:VOLT?;:SER?", "0;12345678901"},
};

TEST_F(DeclaredCommandsTest, TalksAsDeclared)
{
    for (const Talk& talk : kTalks)
    {
        m_supply = {};
        EXPECT_EQ(Run(talk.message), talk.answer) << talk.message;
        EXPECT_EQ(Run("SYST:ERR?"), kNoError) << talk.message;
    }
}

constexpr Talk kRefusals[] = {
    {"VOLT 31", "-222,\"Data out of range;VOLT 31 V, allowed 0 V to 30 V\""},
    {"VOLT -1E-9", "-222,\"Data out of range;VOLT -1e-09 V, allowed 0 V to 30 V\""},
    {"CURR 5;CURR UP", "-222,\"Data out of range;CURR 7 A, allowed 0 A to 5 A\""},
    {"VOLT UP", "-141,\"Invalid character data;parameter 1: UP\""},
    {"VOLT INF", "-224,\"Illegal parameter value\""},
    {"VOLT", "-109,\"Missing parameter;VOLT\""},
    {"VOLT 1,2", "-108,\"Parameter not allowed;parameter 2: 2\""},
    {"VOLT? 1", "-128,\"Numeric data not allowed;parameter 1: 1\""},
    {"VOLT 'a'", "-158,\"String data not allowed;parameter 1: 'a'\""},
    {"VOLT 1 A", "-131,\"Invalid suffix;parameter 1: 1 A\""},
    {"SOUR4:VOLT 1", "-114,\"Header suffix out of range;SOUR4:VOLT\""},
    {"FUNC COS", "-141,\"Invalid character data;parameter 1: COS\""},
    {"DISP:TEXT '1234567'", "-223,\"Too much data\""},
    {"DISP:COUN 256", "-222,\"Data out of range;COUN 256, allowed 0 to 255\""},
    {"DISP:COUN -1", "-222,\"Data out of range;COUN -1, allowed 0 to 255\""},
    {"MMEM:DATA 'n',#19123456789", "-223,\"Too much data\""},
    {"ROUT:CLOS (@1:5)", "-223,\"Too much data\""},
    {"ROUT:CLOS (1)", "-171,\"Invalid expression\""},
    {"LIST:VOLT 1,40,2", "-222,\"Data out of range;VOLT 40 V, allowed 0 V to 30 V\""},
    {"SYST:BEEP 1,0,1", "-108,\"Parameter not allowed;parameter 3: 1\""},
    {"TRAC 1", "-113,\"Undefined header;TRAC\""},
    {"FAUL", "-200,\"Execution error\""},
};

TEST_F(DeclaredCommandsTest, RefusalsSayWhatIsWrongAndChangeNothing)
{
    for (const Talk& talk : kRefusals)
    {
        m_supply = {};
        EXPECT_EQ(Run(talk.message), "") << talk.message;
        EXPECT_EQ(Run("SYST:ERR?"), talk.answer) << talk.message;
        EXPECT_EQ(Run("VOLT?;:LIST:VOLT?;:DISP:TEXT?;COUN?;:MMEM:SIZE?"), "0;0;\"\";0;0") << talk.message;
    }
}

TEST_F(DeclaredCommandsTest, HandlersTellErrorsByThrowingAndByReturning)
{
    m_supply.m_tripped[1] = true;
    Run("SOUR2:VOLT 1");
    EXPECT_EQ(Run("SYST:ERR?").substr(0, 4), "101,");
    EXPECT_EQ(Run("MEAS2:VOLT?"), "");
    EXPECT_EQ(Run("SYST:ERR?").substr(0, 5), "-230,");
    m_supply.m_text = "a\nb";
    EXPECT_EQ(Run("DISP:TEXT?"), "") << "a line feed would end the response";
    EXPECT_EQ(Run("SYST:ERR?").substr(0, 5), "-200,");
}

TEST_F(DeclaredCommandsTest, AnOverlappedCommandIsPendingWhileItsTokenLives)
{
    Run("*CLS;INIT;*OPC");
    EXPECT_EQ(Run("*ESR?"), "0");
    Run("ABOR");
    EXPECT_EQ(Run("*OPC?;*ESR?"), "1;1");
}

TEST(DeclaredTable, IsSoundAndListedAsWritten)
{
    const auto table = CCommandSink<kCommands>::Table();
    EXPECT_FALSE(CheckScpiTable(table.data(), table.size(), tagScpiTableRules::Keywords));
    CScpiParserTable listing;
    listing.SetParserTable(const_cast<_CMD_SET_RECORD*>(table.data()));
    std::list<std::string> lines;
    listing.GetAllCommands(false, false, lines);
    EXPECT_EQ(lines.front(), "[:SOURce]:VOLTage[:LEVel][:IMMediate][:AMPLitude]");
    EXPECT_EQ(lines.size(), 20U) << "the other name of FUNCtion is a line of its own, FAULt is for service";
    listing.GetAllCommands(true, false, lines);
    EXPECT_EQ(lines, std::list<std::string>{":FAULt/nquery/"});
}

} // namespace
} // namespace ZoVelkor::Commands
