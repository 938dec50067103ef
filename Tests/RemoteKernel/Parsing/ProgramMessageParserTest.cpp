#include "CComPtr.h"
#include "CCommandRecorder.h"
#include "ParserTestTable.h"
#include "Parsing/CProgramMessageParser.h"

#include <gtest/gtest.h>

#include <ostream>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
struct Row
{
    const char* szName;
    std::string message;
    std::string log;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.message;
}

class CParserFixture
{
public:
    CParserFixture() : m_table(MakeParserTestTable()), m_index(std::vector{Source()}) {}

    std::string Run(std::string message)
    {
        m_recorder.m_log.clear();
        m_complete = m_parser.Parse(m_index, message, m_recorder);
        return m_recorder.m_log;
    }

    CommandSource Source() const { return {m_table.data(), m_table.size(), MakeOwner()}; }

    std::vector<_CMD_SET_RECORD> m_table;
    CCommandIndex m_index;
    CProgramMessageParser m_parser;
    CCommandRecorder m_recorder;
    bool m_complete = false;
};

class Conversation : public testing::TestWithParam<Row>
{};

TEST_P(Conversation, RunsOrRefuses)
{
    CParserFixture fixture;
    EXPECT_EQ(fixture.Run(GetParam().message), GetParam().log);
}

const std::string k255Digits(255, '7');
const std::string k1027(1027, 'x');

// One row a line.
// clang-format off
const Row kHeaders[] = {
    {"Empty", "", ""},
    {"BlankUnits", " ;;\t; *CLS ;; \r", "6"},
    {"ShortForm", "SENS:FREQ:CENT 1", "11 [1] num'1'"},
    {"LongFormAnyCase", ":seNSe2:frequency:cenTER 1", "11 [2] num'1'"},
    {"NeitherForm", "SENS:FREQU:CENT 1", "!-113"},
    {"DefaultNodeLeftOut", "FREQ:CENT?", "10? [1]"},
    {"DefaultNodesAtEnd",
     "SOUR2:VOLT 1;:SOUR:VOLT:LEV:AMPL 2;:SOUR:VOLT:IMM3?", "17 [2,1] num'1'; 17 [1,1] num'2'; 16? [1,3]"},
    {"PathMemory", "SENS3:FREQ:CENT 1;SPAN 2;*CLS;CENT?", "11 [3] num'1'; 13 [3] num'2'; 6; 10? [3]"},
    {"PathMemoryBelowLeftOutNode", "FREQ:CENT 1;SPAN 2", "11 [1] num'1'; 13 [1] num'2'"},
    {"PathMemoryWithDefaultNode", "SOUR2:VOLT:LEV 1;IMM2:AMPL 2", "17 [2,1] num'1'; 17 [2,2] num'2'"},
    {"PathMemoryAsWritten",
     "SOUR2:VOLT 1;VOLT:OFFS 2;:FREQ:CENT?", "17 [2,1] num'1'; 19 [2] num'2'; 10? [1]"},
    {"RootResetsSuffix", "SENS3:FREQ:CENT?;:FREQ:CENT?", "10? [3]; 10? [1]"},
    {"RootForgetsPath", "FREQ:CENT?;:SPAN?", "10? [1]; !-113"},
    {"UndefinedDropsRest", "*CLS;FOO;*CLS", "6; !-113"},
    {"NoQueryForm", "TEST:EVEN?", "!-113"},
    {"NoSettingForm", "TEST:QONL", "!-113"},
    {"SuffixNotTaken", "TRIG2:COUN?", "!-113"},
    {"SuffixLargest", "SENS2147483647:FREQ:CENT?", "10? [2147483647]"},
    {"SuffixTooLarge", "SENS2147483648:FREQ:CENT?", "!-114"},
    {"SuffixesInRange", "TEST:CHAN4:X2?;:TEST:CHAN12:X2147483647:Y0?", "70? [4,2,1]; 70? [12,2147483647,0]"},
    {"SuffixBehindRange", "*CLS;TEST:CHAN5:X2?;*CLS", "6; !-114"},
    {"SuffixBehindLastRange", "TEST:CHAN13:X2?", "!-114"},
    {"SuffixZero", "TEST:CHAN0:X2?", "!-114"},
    {"LeftOutSuffixIsOne", "TEST:CHAN:X2?;:TEST:CHAN:X?", "70? [1,2,1]; !-114"},
    {"SuffixBehindUnknownCommand", "TEST:CHAN5:X2", "!-113"},
    {"KeywordWithDigits", "COMM:RS232 1", "67 num'1'"},
    {"KeywordWithOtherDigits", "COMM:RS485 1", "!-113"},
    {"KeywordWithDigitsAndSuffix", "COMM:TX1 1;TX12 1", "69 [1] num'1'; 69 [2] num'1'"},
    {"MnemonicOf13", "ABCDEFGHIJKLM", "!-112"},
    {"SecondMnemonicOf13", "FOO:ABCDEFGHIJKLM", "!-112"},
    {"Ampersand", "SETUP&", "!-101"},
    {"NotAscii", "FREQ\xB0:CENT", "!-101"},
    {"DigitFirst", "1FREQ", "!-101"},
    {"LineFeedInside", "*CLS\n*CLS", "!-101"},
    {"NoSeparator", "*ESE\"1\"", "!-111"},
    {"CommaBehindHeader", "*ESE,1", "!-111"},
    {"DataBehindQuestionMark", "FREQ:CENT?MAX", "!-111"},
    {"TwoColons", "SENS::FREQ:CENT?", "!-102"},
    {"ColonAtEnd", "FREQ:", "!-102"},
    {"StarAlone", "*", "!-102"},
    {"StarBelowRoot", ":*CLS", "!-102"},
    {"CommonWithPath", "*CLS:FOO", "!-102"},
    {"TwoQuestionMarks", "*IDN??", "!-102"},
    {"DataFirst", "\"FREQ\"", "!-102"},
};

const Row kForms[] = {
    {"Event", "TEST:EVEN", "42"},
    {"EventWithData", "TEST:EVEN 1", "!-108"},
    {"SettingWithoutData", "FREQ:CENT", "!-109"},
    {"SettingAllOptional", "TEST:DEF;DEF 1", "55; 55 num'1'"},
    {"QueryWithLimit", "FREQ:CENT? MAX", "10? [1] word'MAX's2"},
    {"QueryWithNumber", "FREQ:CENT? 1", "!-128"},
    {"QueryWithStep", "FREQ:CENT? UP", "!-141"},
    {"QueryWithoutLimits", "TEST:NUMB? 1", "!-108"},
    {"QueryOfBooleanWithData", "OUTP? ON", "!-108"},
    {"QueryWithWord", "TRIG:SOUR? EXT", "24? char'EXT's2"},
    {"QueryWithUnknownWord", "TRIG:SOUR? MIN", "!-108"},
    {"QueryOfTextWithLimit", "DISP:TEXT? MIN", "!-108"},
    {"QueryOfTextWithWord", "DISP:TEXT? OTHER", "!-148"},
    {"QueryWithLeadingParameter", "MMEM:DATA? 'a'", "40? str'a'"},
    {"QueryWithBlock", "MMEM:DATA? 'a',#11x", "!-108"},
    {"QueryWithExpression", "ROUT:CLOS? (@1,2)", "38? expr'(@1,2)'"},
    {"QueryOnly", "CALC:SUM? 1,2", "36? num'1' num'2'"},
    {"QueryOnlyMissing", "CALC:SUM? 1", "!-109"},
    {"QueryOnlyMissingAll", "CALC:SUM?", "!-109"},
    {"OptionalGiven", "CALC:SUM? 1 , 2 , 3", "36? num'1' num'2' num'3'"},
    {"OneTooMany", "CALC:SUM? 1,2,3,4", "!-108"},
    {"RequiredEmpty", "CALC:SUM? 1,,2", "!-109"},
    {"FirstEmpty", "CALC:SUM? ,2", "!-109"},
    {"OptionalEmpty", "TEST:SEV 1,,2", "53 num'1' none num'2'"},
    {"CommaAtEnd", "TEST:NUMB 1,", "!-108"},
    {"List", "TRAC:LIST 1,2,3", "35 num'1' num'2' num'3'"},
    {"ListWithGap", "TRAC:LIST 1,,3", "!-109"},
    {"MissingSeparator", "TEST:NUMB 1 2", "!-103"},
    {"SemicolonForgotten", "*ESE 1:FREQ:CENT 2", "!-103"},
    {"NoDataElement", "TEST:NUMB &1", "!-101"},
};

const Row kNumbers[] = {
    {"Forms",
     "TRAC:LIST 1,-2.50,.5,5.,+1E3,1.5e-3", "35 num'1' num'-2.50' num'.5' num'5.' num'+1E3' num'1.5E-3'"},
    {"BlanksAroundExponent", "TEST:NUMB 1 E +6", "47 num'1E6'"},
    {"ExponentLimit", "TRAC:LIST 1E32000,1E-32001", "!-123"},
    {"TooSmallForADouble",
     "TRAC:LIST 1E-400,-1E-400,+1E-310,2.225E-308,9E-309,-2.2250738585072012E-308,2.2250738585072014E-308",
     "35 num'0' num'0' num'0' num'0' num'0' num'-2.2250738585072014E-308' num'2.2250738585072014E-308'"},
    {"TooSmallByDigits", "TEST:NUMB ." + std::string(320, '0') + "1;NUMB 0" + std::string(320, '0') + "1E300",
     "47 num'0'; 47 num'0" + std::string(320, '0') + "1E300'"},
    {"DigitLimit", "TEST:NUMB 000" + k255Digits, "47 num'000" + k255Digits + "'"},
    {"TooManyDigits", "TEST:NUMB 1" + k255Digits, "!-124"},
    {"TextTooLong", "TEST:NUMB " + std::string(1028, '0'), "!-223"},
    {"NoDigits", "TEST:NUMB +", "!-120"},
    {"NoExponentDigits", "TEST:NUMB 1E", "!-120"},
    {"WrongExponent", "TEST:NUMB 1E+X", "!-121"},
    {"TwoPoints", "TEST:NUMB 1.2.3", "!-121"},
    {"LetterInNumber", "TEST:NUMB 1A2", "!-121"},
    {"Hexadecimal", "TRIG:COUN #HfF;COUN #Q17;COUN #B101", "27 num'255'; 27 num'15'; 27 num'5'"},
    {"HexadecimalLargest", "TRIG:COUN #HFFFFFFFFFFFFFFFF", "27 num'18446744073709551615'"},
    {"HexadecimalTooLarge", "TRIG:COUN #H10000000000000000;*CLS", "!-222; 6"},
    {"HexadecimalEmpty", "TRIG:COUN #H", "!-120"},
    {"OctalNine", "TRIG:COUN #Q19", "!-121"},
    {"HexadecimalUnit", "FREQ:CENT #H10 HZ", "!-138"},
    {"HexadecimalNotTaken", "TEST:POS #H10", "!-128"},
    {"IntegerRounds", "TRIG:COUN 1.5;COUN 2.49;COUN 9.99E1;COUN -0.4;COUN -0.5;COUN 1.2E3;COUN 4E-9",
     "27 num'2'; 27 num'2'; 27 num'100'; 27 num'0'; 27 num'-1'; 27 num'1200'; 27 num'0'"},
    {"IntegerBeyondText", "TRIG:COUN 1E1027", "!-222"},
    {"NegativeNotTaken", "TEST:POS -1;POS -0;POS 1", "!-222; 49 num'-0'; 49 num'1'"},
    {"CommandErrorBeforeExecutionError", "TEST:POS -1,2;*CLS", "!-108"},
    {"Specials",
     "TEST:NUMB INF;NUMB NINFinity;NUMB nan", "47 num'9.9E37's8; 47 num'-9.9E37's9; 47 num'9.91E37's10"},
    {"SpecialNotForInteger", "TRIG:COUN INF", "!-141"},
    {"NumberNotTaken", "DISP:TEXT 1", "!-128"},
};

const Row kUnits[] = {
    {"BaseUnit", "FREQ:CENT 10HZ", "11 [1] num'10 HZ'u1"},
    {"MegaHertz", "FREQ:CENT 10.5 MHz", "11 [1] num'10.5E6 HZ'u1"},
    {"MegaOhm", "SENS:RES:RANG 1 MOHM", "15 [1] num'1E6 OHM'u1"},
    {"MilliVolt", "SOUR:VOLT 1E1 MV", "17 [1,1] num'1E-2 V'u1"},
    {"LongMultipliers", "TRIG:DEL 1EXS;DEL 1 PES;DEL 1 MAS;DEL 1 AS",
     "29 num'1E18 S'u1; 29 num'1E15 S'u1; 29 num'1E6 S'u1; 29 num'1E-18 S'u1"},
    {"MultipleTooSmallForADouble", "TRIG:DEL 1E-300 AS", "29 num'0 S'u1"},
    {"ExponentVanishes", "FREQ:CENT 1E-3 KHZ", "11 [1] num'1 HZ'u1"},
    {"TableNamesMultiple", "TEST:UNIT 10 kHz;UNIT 1 GHZ", "51 num'10 KHZ'u2; 51 num'1E9 HZ'u1"},
    {"LogarithmicUnit", "TEST:UNIT -10 DBM;UNIT 1 MDBM", "51 num'-10 DBM'u3; !-131"},
    {"MultipleOfMultiple", "TEST:UNIT 1 MKHZ", "!-131"},
    {"CompoundUnit", "TEST:UNIT 1 mV/s", "51 num'1E-3 V/S'u4"},
    {"UnknownUnit", "FREQ:CENT 1 S", "!-131"},
    {"UnitOf13", "FREQ:CENT 1 ABCDEFGHIJKLM", "!-134"},
    {"UnitNotTaken", "TEST:NUMB 1 V", "!-138"},
};

const Row kOtherData[] = {
    {"SpecialWords", "FREQ:CENT min;CENT MAXimum;CENT DEF;CENT UP;CENT DOWN",
     "11 [1] word'min's1; 11 [1] word'MAXimum's2; 11 [1] word'DEF's3; 11 [1] word'UP's4; "
     "11 [1] word'DOWN's5"},
    {"OnOffKeep", "OUTP ON;:OUTP OFF;:OUTP 1;:TEST:KEEP KEEP",
     "21 [1] word'ON's6; 21 [1] word'OFF's7; 21 [1] num'1'; 61 word'KEEP's11"},
    {"SpecialNotAdmitted", "TEST:KEEP MAX", "!-141"},
    {"OwnWordFirst", "TEST:MAXM MAX;MAXM MIN", "59 char'MAX's7; 59 word'MIN's1"},
    {"OwnWords", "TRIG:SOUR imm;SOUR EXTernal;SOUR TIM2;SOUR TIMer1",
     "25 char'imm's1; 25 char'EXTernal's2; 25 char'TIM2's4; 25 char'TIMer1's3"},
    {"WordUnknown", "TRIG:SOUR EXTE", "!-141"},
    {"WordWithoutItsDigit", "TRIG:SOUR TIM", "!-141"},
    {"WordTooLong", "TRIG:SOUR ABCDEFGHIJKLM", "!-144"},
    {"WordNotTaken", "TEST:NUMB ABC", "!-148"},
    {"Strings", "DISP:TEXT \"a\"\"b'c\";TEXT 'd''e;,'", "31 str'a\"b'c'; 31 str'd'e;,'"},
    {"StringOpen", "DISP:TEXT \"abc", "!-151"},
    {"StringOpenAfterDoubledQuote", "DISP:TEXT \"abc\"\"", "!-151"},
    {"StringLongest", "DISP:TEXT '" + k1027 + "'", "31 str'" + k1027 + "'"},
    {"StringTooLong", "DISP:TEXT '" + k1027 + "x';TEXT ''", "!-223; 31 str''"},
    {"StringRunsOn", "DISP:TEXT 'a'b", "!-103"},
    {"StringNotTaken", "FREQ:CENT 'a'", "!-158"},
    {"Unquoted", "TEST:PATH C:\\a b  ;PATH 'x;y';PATH DEF", "57 str'C:\\a b'; 57 str'x;y'; 57 word'DEF's3"},
    {"DefiniteBlock", "MMEM:DATA 'f',#206a;,\"\nb ;DATA? 'f'", "41 str'f' block(6)a;,\"\nb; 40? str'f'"},
    {"EmptyBlock", "TRAC:DATA #10", "33 block(0)"},
    {"IndefiniteBlock", "TRAC:DATA #0a;b\"\r", "33 block(5)a;b\"\r"},
    {"IndefiniteNotTaken", "TEST:DBL #0a", "!-168"},
    {"BlockNotTaken", "FREQ:CENT #11a", "!-168"},
    {"BlockTooShort", "TRAC:DATA #15abcd", "!-161"},
    {"BlockBadLength", "TRAC:DATA #2a1b", "!-161"},
    {"BlockBadLetter", "TRAC:DATA #X", "!-161"},
    {"BlockRunsOn", "TRAC:DATA #11ab", "!-103"},
    {"Expression", "ROUT:CLOS (@1,(2:3),\")\")", "39 expr'(@1,(2:3),\")\")'"},
    {"ExpressionOpen", "ROUT:CLOS (@1;*CLS", "!-171"},
    {"ExpressionOpenQuote", "ROUT:CLOS (\"a)", "!-171"},
    {"ExpressionNotTaken", "FREQ:CENT (1)", "!-178"},
    {"AnyKind", "TEST:ANYT 1;ANYT 'a';ANYT (b)", "65 num'1'; 65 str'a'; 65 expr'(b)'"},
};
// clang-format on

constexpr auto kRowName = [](const auto& info) { return std::string(info.param.szName); };
INSTANTIATE_TEST_SUITE_P(Headers, Conversation, testing::ValuesIn(kHeaders), kRowName);
INSTANTIATE_TEST_SUITE_P(Forms, Conversation, testing::ValuesIn(kForms), kRowName);
INSTANTIATE_TEST_SUITE_P(Numbers, Conversation, testing::ValuesIn(kNumbers), kRowName);
INSTANTIATE_TEST_SUITE_P(Units, Conversation, testing::ValuesIn(kUnits), kRowName);
INSTANTIATE_TEST_SUITE_P(OtherData, Conversation, testing::ValuesIn(kOtherData), kRowName);

TEST(ProgramMessageParser, DetailNamesPieceAndPlace)
{
    CParserFixture fixture;
    fixture.Run("TEST:SEV 1, ABC ,2");
    EXPECT_EQ(fixture.m_recorder.m_detail, "parameter 2: ABC");
    fixture.Run("FREQ:C\x01NT 1");
    EXPECT_EQ(fixture.m_recorder.m_detail, "FREQ:C");
    fixture.Run("*CLS;TEST:CHAN5:X2? ;*CLS");
    EXPECT_EQ(fixture.m_recorder.m_detail, "TEST:CHAN5:X2?");
    fixture.Run("TEST:" + std::string(100, 'A'));
    EXPECT_EQ(fixture.m_recorder.m_detail.size(), 40U);
}

TEST(ProgramMessageParser, ExecutorStopsTheMessage)
{
    CParserFixture fixture;
    fixture.m_recorder.m_stop = true;
    EXPECT_EQ(fixture.Run("*CLS;*CLS"), "6");
    EXPECT_FALSE(fixture.m_complete);
}

TEST(ProgramMessageParser, AcceptsWhiteSpaceOfAllKinds)
{
    CParserFixture fixture;
    for (char c = 0; c <= ' '; ++c)
    {
        if (c != '\n')
        {
            const std::string blank(1, c);
            EXPECT_EQ(fixture.Run(blank + "*ESE" + blank + "1" + blank + ";" + blank + "*CLS"),
                      "5 num'1'; 6");
        }
    }
}

TEST(ProgramMessageParser, CountsParametersUpToTheLimit)
{
    CParserFixture fixture;
    std::string message = "TRAC:LIST 1";
    for (std::size_t i = 1; i < kMaxParameters; ++i)
    {
        message += ",1";
    }
    fixture.Run(message);
    EXPECT_EQ(fixture.m_recorder.m_log.size(), 2 + 7 * kMaxParameters);
    EXPECT_EQ(fixture.Run(message + ",1;:*CLS"), "!-223; !-102");
    EXPECT_EQ(fixture.Run(message + ",1;*CLS"), "!-223; 6");
}

TEST(ProgramMessageParser, EveryTruncationIsRefusedOrHarmless)
{
    CParserFixture fixture;
    const std::string message =
        "SENS2:FREQ:CENT 1.5E3 KHZ;:MMEM:DATA 'na''me', #210;;,,\"\"''..;:ROUT:CLOS (@1,(2))";
    for (std::size_t length = 0; length <= message.size(); ++length)
    {
        const std::string log = fixture.Run(message.substr(0, length));
        EXPECT_EQ(log.find('!') == std::string::npos, fixture.m_complete) << length << ": " << log;
    }
    EXPECT_EQ(fixture.m_recorder.m_log,
              "11 [2] num'1.5E6 HZ'u1; 41 str'na'me' block(10);;,,\"\"''..; 39 expr'(@1,(2))'");
}

/// Keeps the block of the first command.
class CBlockKeeper final : public ICommandExecutor
{
public:
    bool ExecuteCommand(const ParsedCommand& command) override
    {
        IZOScpiBlockData* const block = command.arguments[0].pBlockData;
        if (m_kept == nullptr)
        {
            m_kept = block;
        }
        m_addresses.push_back(block);
        return true;
    }

    void ReportError(short, std::string_view) override { ADD_FAILURE(); }

    CComPtr<IZOScpiBlockData> m_kept;
    std::vector<IZOScpiBlockData*> m_addresses;
};

TEST(ProgramMessageParser, BlockKeptByAHandlerStaysDead)
{
    CParserFixture fixture;
    CBlockKeeper keeper;
    std::string message = "TRAC:DATA #13abc;DATA #13def;DATA #13ghi";
    EXPECT_TRUE(fixture.m_parser.Parse(fixture.m_index, message, keeper));
    unsigned char byte = 0;
    unsigned long got = 0;
    EXPECT_EQ(keeper.m_kept->Read(1, &byte, &got), E_ABORT);
    EXPECT_NE(keeper.m_addresses[0], keeper.m_addresses[1]);
    EXPECT_EQ(keeper.m_addresses[1], keeper.m_addresses[2]) << "a reader that nobody keeps is used again";
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
