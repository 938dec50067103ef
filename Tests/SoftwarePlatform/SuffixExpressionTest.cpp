#include "CErrorRecorder.h"
#include "CNumericSuffixExpression.h"

#include <climits>
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <thread>

namespace
{

using namespace ZoVelkor;

constexpr long kMin = INT_MIN;
constexpr long kMax = INT_MAX;

// clang-format off
constexpr const char *kCharacter = "invalid character in numeric expression", *kBehindEnd = "unexpected character in numeric expression",
    *kEnd = "unexpected end of expression", *kEqual = "missing equal character", *kDigit = "missing numeric digit",
    *kConversion = "numeric conversion error", *kSeparator = "invalid seperator character";

constexpr std::tuple<const char*, long, long, const char*> kAccepted[] = { // text, domain, ranges
    {"", 0, kMax, ""}, {"1-4", 0, kMax, "1-4"}, {"4-1", 0, kMax, "1-4"}, {"1..n", 0, kMax, "1-2147483647"},
    {"1...N", 0, 9, "1-9"}, {"20-*", 0, 9, "9-20"}, {"1,2;5", 0, kMax, "1,2,5"}, {"9..13", 0, 10, "9-13"},
    {"-3", -9, kMax, "-3"}, {"-3--5", -9, kMax, "-5..-3"}, {"-3...5;7", -9, kMax, "-3..5,7"}, {"-3-n", kMin, -2, "-3..-2"},
    {"010", 0, kMax, "8"}, {"-010", -9, kMax, "-8"}, {"08", 0, kMax, "0"}, {"018-12", 0, kMax, "1-12"}, {"1.", 0, kMax, "1"},
    {"1.;2", 0, kMax, "1,2"}, {"*", -2, 9, "-2..9"}, {"*", 9, -2, "-2..9"},
    {"*", LONG_MIN, LONG_MAX, "-2147483648..2147483647"}, {"<10", 1, 99, "1-9"}, {"<=20", 1, 99, "1-20"},
    {">=40", 1, 99, "40-99"}, {">50", 1, 99, "51-99"}, {"==7", 1, 99, "7"}, {"==100", 1, 99, "100"}, {"!5", 1, 99, "1-4,6-99"},
    {"!1", 1, 99, "2-99"}, {"!99", 1, 99, "1-98"}, {">-1", -9, 9, "0-9"}, {"<1", 1, 99, ""}, {"<=0", 1, 99, ""},
    {">99", 1, 99, ""}, {">=100", 1, 99, ""}, {">2147483647", 0, kMax, ""}, {"<-2147483648", kMin, kMax, ""},
    {"!2147483647", kMin, kMax, "-2147483648..2147483646"}, {"!-2147483648", kMin, kMax, "-2147483647..2147483647"}};

constexpr std::tuple<const char*, bool, long, const char*> kRejected[] = { // text, whether negative ones are allowed, offset, error
    {"x", false, 0, kCharacter}, {" 1", false, 0, kCharacter}, {"n", false, 0, kCharacter}, {"=", false, 1, kEqual},
    {"=5", false, 1, "unexpected character"}, {"**", false, 1, kBehindEnd}, {"<3,4", false, 2, kBehindEnd},
    {"<", false, 1, kDigit}, {"!=5", false, 1, kDigit}, {"<>5", false, 1, kDigit}, {"==", false, 2, kDigit},
    {"-3", false, 0, kDigit}, {"-", true, 1, kDigit}, {"--3", true, 1, kDigit}, {"1,", false, 2, kDigit},
    {"1,;2", false, 2, kDigit}, {"1--3", false, 2, kDigit}, {"1 2", false, 1, kSeparator}, {"1.5", false, 2, kSeparator},
    {"1-n5", false, 3, kSeparator}, {"1-2.", false, 3, kSeparator}, {"0x10", false, 1, kSeparator}, {"1-", false, 2, kEnd},
    {"1..", false, 3, kEnd}, {"1-x", false, 2, "unexpected character"}, {"1....5", false, 4, "unexpected character"},
    {"2147483648", false, 10, kConversion}, {"<-2147483649", true, 12, kConversion},
    {"1-99999999999999999999,2", false, 22, kConversion}};

constexpr std::pair<const char*, const char*> kNormalised[] = {
    {"1-3;4-6;10", "1-6,10"}, {"10,4-6,1-3", "1-6,10"}, {"1-9,2-3,11", "1-9,11"}, {"1,1,3", "1,3"}, {"7", "7"},
    {"2147483647,5,0-2147483647", "0-2147483647"}, {"", ""},
    {"2147483646,-2147483648,-2147483647..n", "-2147483648..2147483647"}};
// clang-format on

CNumericSuffixExpression Expression(const std::string& text, long minimum = 0, long maximum = INT_MAX)
{
    CNumericSuffixExpression expression;
    long position = -1;
    std::string error = "before";
    EXPECT_TRUE(expression.SetExpression(text, position, error, minimum, maximum)) << text << ": " << error;
    EXPECT_EQ(position, 0);
    EXPECT_EQ(error, "");
    return expression;
}

TEST(SuffixExpression, AcceptedTextsGiveTheseRanges)
{
    for (const auto& [text, minimum, maximum, ranges] : kAccepted)
    {
        EXPECT_EQ(Expression(text, minimum, maximum).GetExpressionString(), ranges) << text;
    }
}

TEST(SuffixExpression, RejectedTextsLeaveNoExpression)
{
    for (const auto& [text, negative, offset, message] : kRejected)
    {
        CErrorRecorder recorder;
        CNumericSuffixExpression expression = Expression("1");
        long position = -1;
        std::string error;
        EXPECT_FALSE(expression.SetExpression(text, negative, position, error)) << text;
        EXPECT_EQ(position, offset) << text;
        EXPECT_EQ(error, message) << text;
        EXPECT_THROW(static_cast<void>(expression.CheckValue(1)), CShellError) << text;
        EXPECT_THROW(static_cast<void>(expression.CompareRanges(nullptr)), CShellError);
        const auto report = recorder.Take().at(0).report;
        EXPECT_EQ(report.message, "null pointer detected (m_pExpression.Get()).");
        EXPECT_EQ(static_cast<std::uint32_t>(report.result), 0x80000005U);
    }
}

TEST(SuffixExpression, QuestionsSeeTheEndsOfRanges)
{
    const auto expression = Expression("3-5;10", -9);
    for (long value = 0; value < 13; ++value)
    {
        EXPECT_EQ(expression.CheckValue(value), (value >= 3 && value <= 5) || value == 10) << value;
        EXPECT_EQ(expression.CheckRange(value - 1, value),
                  (value >= 3 && value <= 6) || value == 10 || value == 11);
    }
    const auto touching = Expression("1-3");
    const auto between = Expression("1-2;6-9;11");
    EXPECT_TRUE(expression.CompareRanges(&touching) && touching.CompareRanges(&expression));
    EXPECT_FALSE(expression.CompareRanges(&between) || between.CompareRanges(&expression));
    EXPECT_FALSE(Expression("").CheckValue(0) || Expression("").CompareRanges(&touching));
}

TEST(SuffixExpression, NormaliseSortsAndJoins)
{
    for (const auto& [text, ranges] : kNormalised)
    {
        auto expression = Expression(text, kMin);
        expression.Normalise();
        EXPECT_EQ(expression.GetExpressionString(), ranges) << text;
    }
}

/// Any ranges, written as text, parse back to themselves in any domain; joining them keeps their values.
TEST(SuffixExpression, TextsParseBackToTheSameRanges)
{
    std::mt19937 random(20);
    const auto number = [&](long low, long high) {
        const long last = random() % 2 == 0 ? high : std::min(high, low + 20);
        return std::uniform_int_distribution<long>(low, last)(random);
    };
    for (int round = 0; round < 2000; ++round)
    {
        const long minimum = number(number(0, 1) == 0 ? -10 : kMin, kMax);
        const long maximum = number(minimum, kMax);
        const long lowest = minimum < 0 ? std::max(kMin, minimum - 5) : 0;
        CNumericSuffixExpression::RangeList ranges;
        for (long count = number(1, 6); count > 0; --count)
        {
            const long low = number(lowest, kMax);
            ranges.emplace_back(low, number(low, kMax));
        }
        const std::string text = CNumericSuffixExpression::GetExpressionString(ranges);
        const auto expression = Expression(text, minimum, maximum);
        ASSERT_EQ(expression.GetExpressionString(), text) << minimum << ".." << maximum;
        auto joined = expression;
        joined.Normalise();
        EXPECT_EQ(expression.GetExpressionString(), text) << "a copy has changed its original";
        for (int probe = 0; probe < 10; ++probe)
        {
            const long value = number(lowest, kMax);
            EXPECT_EQ(joined.CheckValue(value), expression.CheckValue(value)) << text << ' ' << value;
        }
    }
}

TEST(SuffixExpression, HelpShowsTextsThatAreAccepted)
{
    std::istringstream help(CNumericSuffixExpression::GetHelp());
    int lines = 0;
    for (std::string line; std::getline(help, line); ++lines)
    {
        EXPECT_EQ(line.find_first_not_of(' ', line.find(' ')), 8U) << line;
        Expression(line.substr(0, line.find(' ')));
    }
    EXPECT_EQ(lines, 11);
    EXPECT_EQ(CNumericSuffixExpression::GetGrammar().find("';\nNumber            = [ '-' ]"), 51U);
}

TEST(SuffixExpression, CopiesKeepTheOldRangesInTheirThreads)
{
    auto original = Expression("5,1-4");
    const auto use = [copy = original] {
        for (int round = 0; round < 500; ++round)
        {
            CNumericSuffixExpression other = copy;
            other.Normalise();
            EXPECT_EQ(copy.GetExpressionString(), "5,1-4");
        }
    };
    std::jthread threads[] = {std::jthread(use), std::jthread(use)};
    original = Expression("7");
    EXPECT_EQ(original.GetExpressionString(), "7");
}

} // namespace
