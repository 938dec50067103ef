#include "CScriptedServer.h"
#include "CTerminal.h"
#include "Instrument/CDemoInstrument.h"
#include "Scpi/CHeaderCompletion.h"
#include "ToolRunner.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <future>

namespace ZoVelkor::Tools::Testing
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class DemoScpi : public ToolTest
{
protected:
    /// Runs `zo scpi`; @ in the arguments stands for the instrument's address.
    ToolRun Scpi(std::string arguments, std::string_view input = "") const
    {
        if (const std::size_t place = arguments.find('@'); place != std::string::npos)
        {
            arguments.replace(place, 1, m_instrument.Address());
        }
        return Run("scpi " + arguments, input);
    }

    const Demo::CDemoInstrument m_instrument{
        {.port = 0, .registryFile = (Folder() / "registry.db").string()}};
};

struct ScpiRow
{
    const char* arguments;
    const char* input;
    int exitCode;
    const char* out;
    const char* err;
};

// clang-format off
constexpr ScpiRow kRows[] = {
    {"query @ *IDN? FREQ:CENT?",              "", 0, "Zo,Demo Analyser,0,1.0.0\n3000000000\n", ""},
    {"query @ 'FREQ:CENT 1GHz;CENT?'",        "", 0, "1000000000\n", ""},
    {"query @ SYST:ERR?",                     "", 0, "0,\"No error\"\n", ""},
    {"query @ 'FOO;SYST:ERR?' *IDN?",         "", 1, "", "zo: FOO;SYST:ERR?: -113,\"Undefined header;FOO\"\n"},
    {"query @ TRAC?",                         "", 1, "", "zo: TRAC?: -230,"},
    {"query @ FREQ:CENT?;FOO?",               "", 1, "3000000000\n", "zo: FREQ:CENT?;FOO?: -113,"},
    {"query @ --no-check *IDN?",              "", 0, "Zo,Demo Analyser,0,1.0.0\n", ""},
    {"query @ --no-check FOO? --timeout 0.05","", 3, "", "no complete answer within 0.05 s (0 bytes of it came)\n"},
    {"query @ *IDN? -o -",                    "", 0, "Zo,Demo Analyser,0,1.0.0\n", ""},
    {"query @ *IDN? *IDN? -o x",              "", 2, "", "zo: --output goes with one command\n"},
    {"query @",                               "", 2, "", "command is required"},
    {"query 'a b/c' *IDN?",                   "", 2, "", "zo: a b/c: neither"},
    {"query [::1]:1 *IDN?",                   "", 3, "", "zo: cannot connect to [::1]:1: "},
    {"query TCPIP::127.0.0.1::1::SOCKET X",   "", 3, "", "zo: cannot connect to 127.0.0.1:1: Connection refused\n"},
    {"write @ *RST *IDN? 'FREQ:CENT 2GHz'",   "", 0, "", ""},
    {"write @ 'FREQ:CENT 99GHz' *CLS",        "", 1, "", "zo: FREQ:CENT 99GHz: -222,\"Data out of range\"\n"},
    {"write @ 'MMEM:DATA \"x\",' -i missing", "", 3, "", "zo: cannot read missing: No such file"},
    {"read @ --timeout 0.05",                 "", 3, "", "no complete answer within 0.05 s"},
    {"@", "*IDN?\n \nFREQ:SPAN 1 MHz\r\nFREQ:SPAN?",    0, "Zo,Demo Analyser,0,1.0.0\n1000000\n", ""},
    {"console @", "FOO\nBAR?\n*IDN?\n",       1, "Zo,Demo Analyser,0,1.0.0\n",
     "zo: FOO: -113,\"Undefined header;FOO\"\nzo: BAR?: -113,\"Undefined header;BAR?\"\n"},
    {"",                                      "", 2, "", "zo: scpi: an address or a subcommand is required"},
};
// clang-format on

TEST_F(DemoScpi, CommandsAnswersAndExitCodes)
{
    for (const ScpiRow& row : kRows)
    {
        SCOPED_TRACE(row.arguments);
        EXPECT_EQ(Scpi("write @ *RST *CLS").exitCode, 0);
        const ToolRun run = Scpi(row.arguments, row.input);
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_EQ(run.out, row.out);
        EXPECT_THAT(run.err, HasSubstr(row.err));
        EXPECT_EQ(run.err.empty(), *row.err == '\0') << run.err;
    }
}

TEST_F(DemoScpi, HelpHasAnExampleAtEveryLevel)
{
    for (const std::string level : {"", " query", " write", " read", " console"})
    {
        EXPECT_THAT(Scpi(level + " --help").out, HasSubstr("Example: zo scpi" + level)) << level;
    }
}

TEST_F(DemoScpi, FilesTravelAsBlocks)
{
    // The controller transfers pieces of 314159 bytes.
    for (const std::string& content : {std::string(),
                                       std::string("\n"),
                                       std::string("a\n#15\0b", 7),
                                       std::string(314159, '\n'),
                                       std::string(1000000, 'x')})
    {
        Write("ä b.bin", content);
        ASSERT_EQ(Scpi("write @ 'MMEM:DATA \"x\",' --input 'ä b.bin'").err, "");
        ASSERT_EQ(Scpi("query @ 'MMEM:DATA? \"x\"' --output 'ö'").err, "");
        EXPECT_TRUE(Read("ö") == content) << content.size();
        EXPECT_TRUE(Scpi("query @ 'MMEM:DATA? \"x\"' -o -").out == content) << content.size();
    }
    Write("x", "#15a\nb\n?");
    EXPECT_EQ(Scpi("write @ 'MMEM:DATA \"?\",' -i x").exitCode, 0);
    EXPECT_EQ(Scpi("query @ 'MMEM:DATA? \"?\"'").out, "#18#15a\nb\n?\n");
    EXPECT_EQ(Scpi("query @ 'MMEM:DATA? \"y\"' -o y").exitCode, 1);
    EXPECT_FALSE(Exists("y"));
    EXPECT_EQ(Scpi("write @ 'FOO ' -i x").err, "zo: FOO : -113,\"Undefined header;FOO\"\n");
}

TEST_F(ToolTest, AnAnswerThatEndsEarlyLeavesANamedRest)
{
    CScriptedServer server;
    auto end = std::async(std::launch::async, [&] {
        return Run("scpi query " + server.Address().Text() + " X? -o x --timeout 60");
    });
    CPeer peer = server.Accept();
    EXPECT_EQ(peer.ReadTo("*STB?\n"), "X?\nSYSTem:ERRor?\n*STB?\n");
    peer.Send("#15abc");
    peer.FinishSending();
    const ToolRun run = end.get();
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.err, EndsWith("(6 bytes of it came); x is not complete\n"));
}

TEST_F(ToolTest, UnaskedResponsesAreRead)
{
    CScriptedServer server;
    auto end =
        std::async(std::launch::async, [&] { return Run("scpi read " + server.Address().Text() + " -o x"); });
    server.Accept().Send("#13a\nb\n");
    EXPECT_EQ(end.get().err, "");
    EXPECT_EQ(Read("x"), "a\nb");
}

TEST_F(DemoScpi, TheConsoleEditsCompletesRemembersAndSurvivesCtrlC)
{
    const std::string prompt = m_instrument.Address() + "> ";
    struct Step
    {
        const char* keys;
        const char* shown;
    };
    // clang-format off
    constexpr Step kSteps[] = {
        {"*IDN?\n",                       "Zo,Demo Analyser,0,1.0.0\r\n"},
        {"freq:ce\t?\n",                  "\r\n3000000000\r\n"},
        {"FREQ:CENT 1 GHz;sp\t?\n",       "\r\n2000000000\r\n"},
        {":SENS:B\t",                     "BANDwidth  BWIDth"},
        {"\x03",                          "^C\r\n"},
        {"FOO\n",                         "-113,\"Undefined header;FOO\"\r\n"},
        {"TRIG:SOUR BUS;:INIT;*OPC?\n",   "*OPC?\r\n"},
        {"\x03",                          ": interrupted; connecting again\r\n"},
        {"\x10\x10\x10\x10\x10\n",            "Zo,Demo Analyser,0,1.0.0\r\n"},
    };
    // clang-format on
    CTerminal terminal(Folder(), {"scpi", m_instrument.Address(), "--timeout", "60"});
    EXPECT_THAT(terminal.WaitFor(prompt), EndsWith(prompt));
    for (const Step& step : kSteps)
    {
        SCOPED_TRACE(step.keys);
        terminal.Type(step.keys);
        EXPECT_THAT(terminal.WaitFor(step.shown), EndsWith(step.shown));
        if (&step != &kSteps[6])
        {
            EXPECT_THAT(terminal.WaitFor(prompt), EndsWith(prompt));
            continue;
        }
        // The line is on its way when the sweep waits for its trigger; before, the key would be a character.
        while (Scpi("query @ STAT:OPER:COND?").out != "32\n")
        {}
    }
    terminal.Type("\x04");
    EXPECT_EQ(terminal.WaitForExit(), 0);
    EXPECT_THAT(Read("zosoftwareplatform/scpi_history"), HasSubstr("\nFOO\n"));
}

TEST_F(ToolTest, CtrlCEndsACallOutsideTheConsole)
{
    CScriptedServer server;
    CTerminal terminal(Folder(), {"scpi", "query", server.Address().Text(), "X?", "--timeout", "60"});
    CPeer peer = server.Accept();
    peer.ReadTo("*STB?\n");
    terminal.Type("\x03");
    EXPECT_THAT(terminal.WaitFor("interrupted"), EndsWith(server.Address().Text() + ": interrupted"));
    EXPECT_EQ(terminal.WaitForExit(), 130);
}

struct CompletionRow
{
    const char* line;
    const char* completed;
    const char* choices;
};

constexpr const char* kListing =
    "*CLS/nquery/\n*IDN?/qonly/\n:SYSTem:ERRor[:NEXT]?/qonly/\n:SYSTem:ERRor:ALL?/qonly/\n"
    "[:SENSe<1..4>]:FREQuency:CENTer\n[:SENSe]:FREQuency:SPAN\n[:SENSe]:DETector\n"
    ":DISPlay:TEXT[:DATA]\n:TRACe[:DATA]\n:ABORt/nquery/\n\n";

// clang-format off
constexpr CompletionRow kCompletions[] = {
    {"",                  "",                  "*CLS *IDN ABORt DETector DISPlay FREQuency SENSe SYSTem TRACe"},
    {"s",                 "s",                 "sense system"},
    {"S",                 "S",                 "SENSe SYSTem"},
    {"sy",                "system:",           ""},
    {"SYST",              "SYST:",             ""},
    {"system",            "system:",           ""},
    {":SYST:E",           ":SYST:ERRor",       ":ALL :NEXT"},
    {"SYST:ERR:A",        "SYST:ERR:ALL?",     ""},
    {"frequency:ce",      "frequency:center",  ""},
    {"SENS2:FREQ:C",      "SENS2:FREQ:CENTer", ""},
    {"SENS2",             "SENS2:",            ""},
    {"SENS:SENS:",        "SENS:SENS:",        ""},
    {"FREQ:CENT 1;s",     "FREQ:CENT 1;span",  ""},
    {"FREQ:CENT 1;*CLS;S","FREQ:CENT 1;*CLS;SPAN", ""},
    {"FREQ:CENT 1;:A",    "FREQ:CENT 1;:ABORt", ""},
    {"FREQ:CENT 1;A",     "FREQ:CENT 1;A",     ""},
    {"DISP:TEXT \"a;S",   "DISP:TEXT \"a;S",   ""},
    {"DISP:TEXT ';';T",   "DISP:TEXT ';';TEXT", ":DATA"},
    {"DISP:TEXT ';';TEXT","DISP:TEXT ';';TEXT", ":DATA"},
    {"FREQ:CENT ",        "FREQ:CENT ",        ""},
    {"*i",                "*idn?",             ""},
    {"*C",                "*CLS",              ""},
    {":*C",               ":*C",               ""},
    {"FOO:B",             "FOO:B",             ""},
};
// clang-format on

TEST(HeaderCompletion, FollowsTheInstrumentsHeaders)
{
    const CHeaderCompletion completion(kListing);
    for (const CompletionRow& row : kCompletions)
    {
        const Completion result = completion.Complete(row.line);
        std::string line = row.line;
        if (!result.text.empty())
        {
            line.replace(line.size() - result.replaced, result.replaced, result.text);
        }
        EXPECT_EQ(line, row.completed) << row.line;
        EXPECT_EQ(fmt::format("{}", fmt::join(result.choices, " ")), row.choices) << row.line;
    }
    EXPECT_EQ(CHeaderCompletion().Complete("S").text, "");
    for (const char* odd : {"[", "<", "a<", ":", "\n\n", "[:A<1", "?", "/qonly/"})
    {
        CHeaderCompletion(odd).Complete("A");
    }
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
