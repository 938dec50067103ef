#include "CLxiTime.h"

#include <climits>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <tuple>

namespace
{

using namespace ZoVelkor;

constexpr long long kLargest = 140'737'488'355'327;
constexpr TimeInterval kOne = 65536;
constexpr unsigned long kMax = 0xFFFFFFFF;

/// A negative time comes from an interval; its fields are set afterwards.
CLxiTime T(bool isNegative, unsigned short epoch, unsigned long seconds, unsigned long nanoSeconds)
{
    CLxiTime time = CLxiTimeInterval(isNegative ? -kOne : kOne);
    time.SetEpoch(epoch), time.SetSeconds(seconds), time.SetNanoSeconds(nanoSeconds);
    return time;
}

// clang-format off
const std::tuple<CLxiTime, char, CLxiTime, CLxiTime> kArithmetic[] = {
    {T(0, 0, 1, 999'999'999), '+', T(0, 0, 2, 1), T(0, 0, 4, 0)}, {T(0, 0, 1, 0), '+', T(1, 0, 1, 1), T(1, 0, 0, 1)},
    // epochs are added apart from the sum, with the carry, and wrap
    {T(0, 5, 1, 0), '+', T(1, 7, 3, 0), T(1, 12, 2, 0)}, {T(0, 1, kMax, 0), '+', T(0, 1, 1, 0), T(0, 3, 0, 0)},
    {T(0, 65535, kMax, 0), '+', T(0, 1, 1, 0), T(0, 1, 0, 0)},
    {T(0, 0, kMax, kMax), '+', T(0, 0, kMax, kMax), T(0, 1, 6, 589'934'590)},
    // epochs are in the difference, which has epoch 0 or 1
    {T(0, 0, 1, 0), '-', T(0, 0, 2, 0), T(1, 0, 1, 0)}, {T(0, 0, 1, 5), '-', T(1, 0, 2, 6), T(0, 0, 3, 11)},
    {T(0, 9, 3, 0), '-', T(0, 9, 1, 0), T(0, 0, 2, 0)}, {T(0, 3, 0, 0), '-', T(0, 2, 0, 0), T(0, 1, 0, 0)},
    {T(0, 2, 7, 0), '-', T(0, 0, 0, 0), T(0, 1, 7, 0)}, {T(0, 65535, 7, 0), '-', T(0, 65535, 9, 1), T(1, 0, 2, 1)},
    {T(0, 2, 633'437'444, 854'775'808), '-', T(0, 0, 0, 0), T(1, 1, 633'437'444, 854'775'808)}, // 2^63 ns wrap
    // halves keep the sign; beyond 2^63 ns they wrap
    {T(1, 0, 3, 1), '/', {}, T(1, 0, 1, 500'000'000)}, {T(0, 1, 0, 0), '/', {}, T(0, 0, 0x80000000, 0)},
    {T(0, 2, 2, 0), '/', {}, T(0, 1, 1, 0)}, {T(0, 3, 0, 0), '/', {}, T(0, 0, 2'780'921'092, 854'775'808)}};
TEST(LxiTime, ArithmeticFollowsItsRules)
{
    for (const auto& [left, operation, right, result] : kArithmetic)
    {
        CLxiTime time = left;
        operation == '/' ? time.Div2() : operation == '+' ? time.Add(right) : time.Sub(right);
        EXPECT_TRUE(time == result) << std::string(left) << operation << std::string(right) << " gave " << std::string(time);
    }
}

/// Both orders are checked; one of the two is greater unless both are equal.
const std::tuple<CLxiTime, CLxiTime> kGreaterAndLess[] = {
    {T(0, 0, 0, 0), T(1, 0, 0, 0)}, {T(0, 0, 0, 0), T(1, 9, 9, 9)}, {T(0, 2, 0, 0), T(0, 1, 9, 9)},
    {T(1, 2, 0, 0), T(1, 1, 0, 0)}, // deliberate: epochs have no sign
    {T(0, 0, 2, 0), T(0, 0, 1, 9)}, {T(1, 0, 1, 9), T(1, 0, 2, 0)}, {T(0, 0, 1, 2), T(0, 0, 1, 1)}, {T(1, 0, 1, 1), T(1, 0, 1, 2)}};
// clang-format on
TEST(LxiTime, LaterThan)
{
    for (const auto& [greater, less] : kGreaterAndLess)
    {
        EXPECT_TRUE(greater > less && !(less > greater) && !(greater > greater))
            << std::string(greater) << " > " << std::string(less);
        EXPECT_TRUE(less <= greater && !(greater <= less) && less <= less)
            << std::string(less) << " <= " << std::string(greater);
    }
}

TEST(LxiTime, PackedForms)
{
    EXPECT_TRUE(CLxiTime(0x5'0000'0007) == CLxiTime(0, 5, 7));
    EXPECT_TRUE(CLxiTime(2, 0x1'0000'0005, 0x1'0000'0007) == CLxiTime(2, 0x5'0000'0007)) << "32 bits kept";
    CLxiTime time = T(1, 3, 5, 7);
    EXPECT_EQ(time.GetTimeWihtoutEpoch(), 0x5'0000'0007U);
    EXPECT_EQ(time.GetUTC(), 0x5'FFFF'FFF9U) << "seconds are not negated";
    EXPECT_EQ(T(0, 3, 5, 7).GetUTC(), 0x5'0000'0007U);
    time.Reset();
    EXPECT_TRUE(time == T(1, 0, 0, 0)) << "the sign stays";
}

CComBSTR Owned(BSTR text)
{
    CComBSTR owner;
    owner.Attach(text);
    return owner;
}

TEST(LxiTime, LocalTimeFollowsTheZoneAndNothingElse)
{
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    const CLxiTime summer = T(1, 9, 1'750'000'000, 7'999'999); // 2025-06-15 15:06:40 UTC
    EXPECT_TRUE(Owned(summer.GetLocal()) == L"Sunday June 15 17:06:40 2025");
    EXPECT_TRUE(Owned(summer.GetLocalSimpleFormat()) == L"17:06:40.007");
    EXPECT_TRUE(Owned(CLxiTime(0, 0, kMax).GetLocalSimpleFormat()) == L"01:00:00.4294");
    EXPECT_TRUE(Owned(CLxiTime(0, kMax, 0).GetLocal()) == L"Sunday February 07 07:28:15 2106");
    std::array<unsigned short, 7> f{};
    std::apply([&](auto&... fields) { summer.GetLocal(fields...); }, f);
    EXPECT_EQ(f, (std::array<unsigned short, 7>{2025, 6, 15, 17, 6, 40, 7}));
}

// clang-format off
const std::tuple<CLxiTime, long long, bool> kIntervals[] = {
    {T(0, 0, 2, 3), 2'000'000'003, false}, {T(1, 0, 2, 3), -2'000'000'003, false}, {T(0, 0, 140'737, 488'355'327), kLargest, false},
    {T(0, 0, 140'737, 488'355'328), kLargest, true}, {T(1, 0, 140'737, 488'355'328), -kLargest, true}, {T(1, 3, 0, 0), -kLargest, true},
    {T(0, 3, kMax, kMax), kLargest, true}, {T(0, 4, 0, 0), kLargest, true}, {T(1, 4, 0, 0), kLargest, true}};
// clang-format on
TEST(LxiTime, IntervalsAndBackWithoutTheSignBeyondEpoch3)
{
    for (const auto& [time, nanoSeconds, isOverFlow] : kIntervals)
    {
        const CLxiTimeInterval interval = time;
        EXPECT_EQ(interval.GetNanoSeconds(), nanoSeconds) << std::string(time);
        EXPECT_EQ(interval.IsOverFlow(), isOverFlow) << std::string(time);
        EXPECT_EQ(CLxiTime(interval) == time, !isOverFlow) << std::string(time);
    }
}

TEST(LxiTimeInterval, LimitsNanoSeconds)
{
    CLxiTimeInterval interval(5);
    for (const long long set : {kLargest, kLargest + 1, -kLargest, -kLargest - 1, 0LL, LLONG_MAX, LLONG_MIN})
    {
        interval.SetNanoSeconds(set);
        EXPECT_EQ(TimeInterval(interval), std::clamp(set, -kLargest, kLargest) * kOne) << set;
        EXPECT_EQ(interval.IsOverFlow(), set > kLargest || set < -kLargest) << set;
    }
    interval.Add(3);
    interval.Reset();
    EXPECT_TRUE(interval.IsOverFlow() && TimeInterval(interval) == 0) << "Reset leaves the flag alone";
}

// clang-format off
const std::tuple<const char*, TimeInterval, TimeInterval, std::array<TimeInterval, 3>> kScaled[] = {
    // left, right, {sum, difference, half of left}
    {"carry of the fraction", kOne + 40'000, 2 * kOne + 30'000, {4 * kOne + 4'464, -kOne + 10'000, 0}},
    {"toward zero", -3 * kOne, kOne, {-2 * kOne, -4 * kOne, -kOne}},
    {"lower bits of a negative sum", 1, -kOne - 65'533, {-2, kOne + 4, 0}},
    {"a fraction alone is added by Sub, too", 5, 3, {8, 8, 0}},
    {"sums leave the range and wrap", LLONG_MAX, LLONG_MAX, {-2, 0, LLONG_MAX / 2 / kOne * kOne}}};
// clang-format on
TEST(LxiTimeInterval, ScaledArithmetic)
{
    for (const auto& [name, left, right, results] : kScaled)
    {
        CLxiTimeInterval sum(left), difference(left), half(left);
        sum.Add(right), difference.Sub(right), half.Div2();
        EXPECT_EQ((std::array<TimeInterval, 3>{sum, difference, half}), results) << name;
        EXPECT_FALSE(sum.IsOverFlow()) << name;
    }
}

TEST(LxiTimeInterval, EndsOfTheRange)
{
    EXPECT_EQ(CLxiTimeInterval(-kOne).GetNanoSeconds(), -1);
    EXPECT_EQ(TimeInterval(CLxiTimeInterval(-kOne - 1)), -1) << "a negative fraction does not come back";
    EXPECT_EQ(CLxiTimeInterval(LLONG_MIN).GetNanoSeconds(), -kLargest - 1);
    EXPECT_FALSE(CLxiTimeInterval(LLONG_MIN).IsOverFlow());
    CLxiTimeInterval huge(LLONG_MAX);
    for (int doublings = 0; doublings != 20; ++doublings)
    {
        huge.Add(huge);
    }
    EXPECT_EQ(huge.GetNanoSeconds(), -16) << "64 bits wrap";
}

TEST(LxiTime, TextsAreFilledUpWithBlanks)
{
    EXPECT_EQ(std::string(CLxiTime(9, 5, 0)), "5.         ");
    EXPECT_EQ(std::string(CLxiTime(0, kMax, kMax)), "4294967295.4294967295");
    EXPECT_TRUE(CComBSTR(T(1, 0, 5, 7)) == L"-5.        7");
    const std::string blanks(63, ' ');
    EXPECT_EQ(std::string(CLxiTimeInterval(3 * kOne + 7)), blanks + "3.0007");
    EXPECT_EQ(std::string(CLxiTimeInterval(-3 * kOne)), "-" + blanks + "3.0000");
    EXPECT_EQ(std::string(CLxiTimeInterval((1LL << 32) * kOne + 65535)), blanks + "0.65535");
    EXPECT_EQ(std::string(CLxiTimeInterval(0xFFFFFFFFLL * kOne)), blanks.substr(1) + "-1.0000");
}

} // namespace
