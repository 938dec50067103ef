// What the instrument remembers: saved states, clock, name, power-on status, and what the registry tells it.

#include "CRegKey.h"
#include "DemoFixture.h"
#include "Instrument/CInstrumentRegistry.h"
#include "RemoteDiagnoseControl.h"
#include "SystemTime.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace ZoVelkor::Demo
{
namespace
{

class MemoryConversation : public DemoFixture
{
protected:
    static CRegKey Key(const wchar_t* name)
    {
        CRegKey root;
        CRegKey key;
        EXPECT_EQ(root.Create(HKEY_LOCAL_MACHINE, kInstrumentKey), ERROR_SUCCESS);
        EXPECT_EQ(key.Create(root, name), ERROR_SUCCESS);
        return key;
    }
    static void Put(const wchar_t* key, const wchar_t* name, const std::wstring& text)
    {
        EXPECT_EQ(Key(key).SetStringValue(name, text.c_str()), ERROR_SUCCESS);
    }
    static std::wstring Get(const wchar_t* key, const wchar_t* name)
    {
        std::wstring text(10'000, L'\0');
        ULONG length = 10'000;
        EXPECT_EQ(Key(key).QueryStringValue(name, text.data(), &length), ERROR_SUCCESS);
        return text.substr(0, length - 1);
    }
    std::string Query(const std::string& message) { return Client().Query(message); }
};

// Rows are laid out by hand.
// clang-format off
struct Kept { const char* name; const char* send; const char* ask; const char* answer; };

constexpr Kept kKept[] = {
    {"nothing", "*RST", "*PSC?;*ESE?;*SRE?;*PRE?;:SYST:COMM:LAN:HOST?", "1;0;0;0;\"zo-demo\""},
    {"host name", "SYST:COMM:LAN:HOST 'Box-7';*RST", "SYST:COMM:LAN:HOST?", "\"Box-7\""},
    {"date", "SYST:DATE 2040,2,29", "SYST:DATE?", "2040,2,29"},
    {"date of the past", "SYST:DATE 1601,1,1", "SYST:DATE?", "1601,1,1"},
    {"date of the future", "SYST:DATE 30827,12,30", "SYST:DATE?", "30827,12,30"},
    {"masks, flag first", "*PSC 0;*ESE 60;*SRE 4;*PRE 3", "*PSC?;*ESE?;*SRE?;*PRE?", "0;60;4;3"},
    {"masks, flag last", "*PSC 1;*ESE 61;*SRE 5;*PRE 65535;*PSC 0", "*PSC?;*ESE?;*SRE?;*PRE?", "0;61;5;65535"},
    {"masks cleared", "*PSC 0;*ESE 60;*PSC 1;*SRE 8", "*PSC?;*ESE?;*SRE?;*PRE?", "1;0;0;0"},
    {"power-on requests service", "*PSC 0;*ESE 128;*SRE 32", "*STB?;*ESR?;*STB?", "96;128;16"},
    {"analyser", "SENS2:FREQ:STAR 1.1 GHZ;STOP 2.7 GHZ;:SENS3:BAND 300;:SENS4:POW:RLEV -7.5;*SAV 0",
     "*RCL 0;:SENS2:FREQ:STAR?;STOP?;:SENS3:BAND?;BAND:AUTO?;:SENS4:POW:RLEV?;:SENS4:BAND:AUTO?", "1100000000;2700000000;300;0;-7.5;1"},
    {"sweep", "SWE:POIN 101;TIME 1 MS;:DET RMS;:TRIG:SOUR BUS;:CALC:MARK8:X 12345.678;:INIT:CONT 1;*SAV 9",
     "*RCL 9;:SWE:POIN?;TIME?;TIME:AUTO?;:DET?;:TRIG:SOUR?;:CALC:MARK8:X?;:INIT:CONT?", "101;0.001;0;RMS;BUS;12345.678;1"},
    {"text and switches", "DISP:TEXT '\"a b''\xC3\xA4';:ROUT:CLOS (@1,8);*SAV 3", "*RCL 3;:DISP:TEXT?;:ROUT:CLOS? (@1:3,8)",
     "\"\"\"a b'\xC3\xA4\";1;0;0;1"},
    {"empty text", "DISP:TEXT '';*SAV 3", "DISP:TEXT 'x';*RCL 3;:DISP:TEXT?", "\"\""},
    {"generator", "SOUR2:FREQ 2.5 GHZ;POW -11;LIST:FREQ 1 GHZ,123456.7;:OUTP2 ON;:DISP:BRIG 0.75;*SAV 1",
     "*RCL 1;:SOUR2:FREQ?;POW?;LIST:FREQ?;:OUTP2?;:DISP:BRIG?", "2500000000;-11;1000000000;123456.7;1;0.75"},
    {"no sweep goes on", "*SAV 2", "SWE:TIME 1000;:INIT:CONT ON;*RCL 2;:STAT:OPER:COND?;:INIT:CONT?", "0;0"},
    {"the last one", "SWE:POIN 201;*SAV 2;:SWE:POIN 301;*SAV 2.4;:SWE:POIN 401;*SAV 4", "*RCL 2;:SWE:POIN?", "301"},
};

TEST_F(MemoryConversation, SurvivesARestart)
{
    for (const Kept& row : kKept)
    {
        SCOPED_TRACE(row.name);
        Client().Write(row.send);
        EXPECT_EQ(NextError(), 0);
        Restart();
        ExpectSameAnswer(Query(row.ask), row.answer);
        EXPECT_EQ(NextError(), 0);
        Client().Write("*RST;*PSC 1");
    }
}

TEST_F(MemoryConversation, RefusesWithoutChange)
{
    Client().Write("*SAV 0;:SYST:DATE 2030,1,31;:SYST:COMM:LAN:HOST 'a'");
    const char* const ask = "SYST:DATE?;:SYST:COMM:LAN:HOST?;:SWE:POIN?";
    const char* const answer = "2030,1,31;\"a\";101";
    const std::string label(63, 'l');
    const std::string names[] = {"SYST:COMM:LAN:HOST '" + label + "x'", "SYST:COMM:LAN:HOST '" + label + "'", '"' + label + '"'};
    const ConversationCase rows[] = {
        {"never saved", "SWE:POIN 101;*RCL 5", ask, answer, -200}, {"state 10", "SWE:POIN 101;*RCL 10", ask, answer, -222},
        {"save 10", "SWE:POIN 101;*SAV 10", ask, answer, -222}, {"state -1", "SWE:POIN 101;*RCL -1", ask, answer, -222},
        {"no state", "SWE:POIN 101;*RCL", ask, answer, -109}, {"word", "SWE:POIN 101;*SAV MAX", ask, answer, -148},
        {"month 13", "SWE:POIN 101;:SYST:DATE 2030,13,1", ask, answer, -222}, {"month 0", "SWE:POIN 101;:SYST:DATE 2030,0,1", ask, answer, -222},
        {"day 32", "SWE:POIN 101;:SYST:DATE 2030,1,32", ask, answer, -222}, {"no such day", "SWE:POIN 101;:SYST:DATE 2030,2,29", ask, answer, -222},
        {"no leap year", "SWE:POIN 101;:SYST:DATE 2100,2,29", ask, answer, -222}, {"year 1600", "SWE:POIN 101;:SYST:DATE 1600,1,1", ask, answer, -222},
        {"year 30828", "SWE:POIN 101;:SYST:DATE 30828,1,1", ask, answer, -222}, {"16 bits", "SWE:POIN 101;:SYST:DATE 2030,65537,1", ask, answer, -222},
        {"negative", "SWE:POIN 101;:SYST:DATE -1,1,1", ask, answer, -222}, {"two fields", "SWE:POIN 101;:SYST:DATE 2030,1", ask, answer, -109},
        {"hour 24", "SWE:POIN 101;:SYST:TIME 24,0,0", ask, answer, -222}, {"minute 60", "SWE:POIN 101;:SYST:TIME 0,60,0", ask, answer, -222},
        {"second 60", "SWE:POIN 101;:SYST:TIME 0,0,60", ask, answer, -222}, {"query with argument", "SWE:POIN 101;:SYST:TIME? 1", ask, answer, -108},
        {"no name", "SWE:POIN 101;:SYST:COMM:LAN:HOST ''", ask, answer, -224}, {"hyphen", "SWE:POIN 101;:SYST:COMM:LAN:HOST 'a-'", ask, answer, -224},
        {"letter", "SWE:POIN 101;:SYST:COMM:LAN:HOST '\xE4'", ask, answer, -224}, {"long name", names[0].c_str(), "SYST:COMM:LAN:HOST?", "\"a\"", -224},
        {"longest name", names[1].c_str(), "SYST:COMM:LAN:HOST?", names[2].c_str()},
    };
    ExpectConversations(rows);
    EXPECT_EQ(Query("*RCL 5;:SYST:ERR?"), "-200,\"Execution error;State 5 was never saved\"");
    EXPECT_EQ(Query("SYST:DATE 2030,13,1;:SYST:ERR?"), "-222,\"Data out of range;Value out of range (13)\"");
}
// clang-format on

TEST_F(MemoryConversation, ClockGoesOnAndIsNotTheMachines)
{
    const auto before = std::chrono::system_clock::now();
    Client().Write("SYST:DATE 2031,12,31;TIME 23,59,59");
    while (Query("SYST:DATE?") == "2031,12,31")
    {}
    EXPECT_EQ(Query("SYST:DATE?"), "2032,1,1");
    EXPECT_LT(Numbers(Query("SYST:TIME?"))[1], 30) << "a minute and more have passed";
    EXPECT_EQ(Query("SYST:TIME 12,0,0;DATE?"), "2032,1,1");
    EXPECT_EQ(NextError(), 0);
    EXPECT_LT(std::chrono::system_clock::now() - before, std::chrono::hours(1));
    Stop();
    const SystemClockPrimitive primitive = SetSystemClockPrimitive(nullptr);
    SetSystemClockPrimitive(primitive);
    EXPECT_NE(primitive, nullptr) << "also without instrument";
}

TEST_F(MemoryConversation, DamagedStatesAreNotRecalled)
{
    struct Damage
    {
        const wchar_t* part;
        const wchar_t* damaged;
    };
    const Damage damages[] = {
        {L"sweep.points 1001", L"sweep.points 100"},
        {L"sweep.time.auto 1", L"sweep.time.auto 2"},
        {L"channel1.start 0", L"channel1.start 6.1e9"},
        {L"channel2.stop 6", L"channel2.stop nan"},
        {L"detector 1", L"detector 6"},
        {L"detector 1", L"detector 1.5"},
        {L"sweep.points 1001", L"sweep.points 201.5"},
        {L"continuous 0", L"continuous 0.5"},
        {L"marker8 ", L"marker9 "},
        {L"switches 0", L"switches 256"},
        {L"display.text ", L"display.text 4"},
        {L"source2.list 1e+09", L"source2.list 1e+09 9e9"},
        {L"source1.list 1e+09", L"source1.list "},
        {L"brightness 0.5\n", L""},
        {L"continuous", L"\x4e2d"},
    };
    EXPECT_EQ(Query("*SAV 1;:SWE:POIN 201;:SOUR1:POW -9;:SYST:ERR?"), "0,\"No error\"");
    const std::wstring good = Get(kStatesKey, L"1");
    for (const auto& [part, damaged] : damages)
    {
        const std::size_t place = good.find(part);
        ASSERT_NE(place, std::wstring::npos) << good.size();
        Put(kStatesKey, L"1", std::wstring(good).replace(place, std::wcslen(part), damaged));
        EXPECT_EQ(Query("*RCL 1;:SWE:POIN?;:SOUR1:POW?"), "201;-9");
        EXPECT_EQ(NextError(), -314) << place;
    }
    EXPECT_EQ(Key(kStatesKey).SetDWORDValue(L"1", 1), ERROR_SUCCESS);
    EXPECT_EQ(Query("*RCL 1;:SYST:ERR?"), "-314,\"Save recall memory lost;State 1 cannot be read\"");
    Put(kStatesKey, L"1", good);
    EXPECT_EQ(Query("*RCL 1;:SWE:POIN?;:SOUR1:POW?;:SYST:ERR?"), "1001;-30;0,\"No error\"");
}

TEST_F(MemoryConversation, RegistrySaysHowToBegin)
{
    struct Value
    {
        const wchar_t* key;
        const wchar_t* name;
        const wchar_t* text;
        const char* ask;
        const char* answer;
    };
    const Value values[] = {
        {kIdentificationKey, L"SerialNumber", L"4711", "*IDN?", "Zo,Demo Analyser,4711,1.0.0"},
        {kIdentificationKey, L"Manufacturer", L"A,B", "*IDN?", "A B,Demo Analyser,4711,1.0.0"},
        {kFormatKey, L"Data", L"REAL,32", "FORM?", "REAL,32"},
        {kFormatKey, L"Data", L"REAL,33", "FORM?", "ASC,0"},
        {kFormatKey, L"Data", L"HEX", "FORM?", "ASC,0"},
        {kFormatKey, L"ByteOrder", L"SWAP", "FORM:BORD?", "SWAP"},
        {kFormatKey, L"ByteOrder", L"swapped", "FORM:BORD?", "NORM"},
        {kStatusKey, L"PowerOn", L"psc 0\nese 7\nsre 8\npre 9\n", "*PSC?;*ESE?", "0;7"},
        {kStatusKey, L"PowerOn", L"psc 0\nese 256\nsre 8\npre 9\n", "*PSC?;*ESE?", "1;0"},
        {kClockKey, L"OffsetMs", L"99999999999999999999", "SYST:DATE?", nullptr},
        {kClockKey, L"OffsetMs", L"900000000000000000", "SYST:DATE?", nullptr},
        {kClockKey, L"OffsetMs", L"10x", "SYST:DATE?", nullptr},
    };
    const std::string today = Query("SYST:DATE?");
    for (const Value& row : values)
    {
        Put(row.key, row.name, row.text);
        Restart();
        EXPECT_EQ(Query(row.ask), row.answer == nullptr ? today : row.answer) << row.text;
    }
    ::unsetenv("ZO_DIAGNOSE");
    Put(kDiagnosisKey, L"Switches", L"nochecks");
    Restart();
    EXPECT_TRUE(get_RemoteDiagnoseControl()->bScpiChecksDisabled.exchange(false));
}

/// Keeps root from writing what nobody may write.
class CUnprivileged
{
public:
    CUnprivileged() { EXPECT_EQ(::geteuid() == 0 ? ::seteuid(65534) : 0, 0); }
    CUnprivileged(const CUnprivileged&) = delete;
    CUnprivileged& operator=(const CUnprivileged&) = delete;
    ~CUnprivileged() { EXPECT_EQ(::getuid() == 0 ? ::seteuid(0) : 0, 0); }
};

constexpr const char* kNothingKept =
    "*SAV 1;*PSC 0;:SYST:COMM:LAN:HOST 'b';:SYST:DATE 2050,1,1;:SYST:ERR:COUN?";

TEST_F(MemoryConversation, ReadOnlyRegistryIsReadOnly)
{
    Client().Write("SYST:COMM:LAN:HOST 'a';:SWE:POIN 201;*SAV 1");
    EXPECT_EQ(NextError(), 0);
    Stop();
    const std::filesystem::path file = RegistryFile();
    ::chmod(file.parent_path().c_str(), 0777);
    ::chmod(file.c_str(), 0444);
    {
        const CUnprivileged unprivileged;
        Start();
        EXPECT_EQ(Query("SYST:COMM:LAN:HOST?;*RCL 1;:SWE:POIN?"), "\"a\";201");
        EXPECT_EQ(Query(kNothingKept), "4");
        EXPECT_EQ(NextError(), -320);
        EXPECT_EQ(Query("SYST:COMM:LAN:HOST?;:SYST:DATE?;*PSC?"), "\"b\";2050,1,1;0") << "until it ends";
        Stop();
    }
    ::chmod(file.c_str(), 0644);
    Start();
    EXPECT_EQ(Query("SYST:COMM:LAN:HOST?;*PSC?"), "\"a\";1");
}

TEST_F(MemoryConversation, BeginsWithDefaultsWithoutRegistry)
{
    Stop();
    std::ofstream(RegistryFile()) << std::string(8192, 'x');
    testing::internal::CaptureStderr();
    Start();
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("zo-demo-instrument: no registry (0x"), std::string::npos) << log;
    EXPECT_EQ(Query("*IDN?;*PSC?;:SYST:COMM:LAN:HOST?"), "Zo,Demo Analyser,0,1.0.0;1;\"zo-demo\"");
    EXPECT_EQ(Query(kNothingKept), "4");
    EXPECT_EQ(NextError(), -320);
    EXPECT_EQ(Query("*CLS;*RCL 1;*PSC 0;:SYST:ERR:COUN?"), "2");
}

} // namespace
} // namespace ZoVelkor::Demo
