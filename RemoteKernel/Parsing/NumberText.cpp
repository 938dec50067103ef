#include "NumberText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

namespace
{

constexpr double kPositiveInfinity = 9.9E37;
constexpr double kNegativeInfinity = -9.9E37;
constexpr double kNotANumber = 9.91E37;

constexpr double kSmallestFixed = 1E-4;
constexpr double kLargestFixed = 1E16;
/// Below this every whole double is an exact integer, and quicker to write as one.
constexpr double kExactInteger = 9007199254740992.0;

char* Copy(char* place, std::string_view text) noexcept
{
    std::memcpy(place, text.data(), text.size());
    return place + text.size();
}

char* WriteNonFinite(char* place, double value) noexcept
{
    if (std::isnan(value))
    {
        return Copy(place, "9.91E37");
    }
    return Copy(place, value > 0 ? "9.9E37" : "-9.9E37");
}

/// Gives text of the form 1e+20 the shape of NR3, 1.0E+20; other text is copied.
char* CopyAsNr3(char* place, std::string_view text) noexcept
{
    const std::size_t exponent = text.find('e');
    if (exponent == std::string_view::npos)
    {
        return Copy(place, text);
    }
    const std::string_view mantissa = text.substr(0, exponent);
    place = Copy(place, mantissa);
    if (mantissa.find('.') == std::string_view::npos)
    {
        place = Copy(place, ".0");
    }
    *place++ = 'E';
    return Copy(place, text.substr(exponent + 1));
}

/// Two digits for each number below 100.
constexpr auto kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i)
    {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Decimal digits of a number, in a buffer with so much room around them that whole words can be copied.
class CDigits
{
public:
    static constexpr std::size_t kMaxCount = 20;

    explicit CDigits(std::uint64_t value) noexcept // NOLINT(*-member-init): the rest is never looked at
    {
        for (; value >= 100'000'000; value /= 100'000'000)
        {
            auto low = static_cast<std::uint32_t>(value % 100'000'000);
            for (int pair = 0; pair < 4; ++pair, low /= 100)
            {
                PutPair(low % 100);
            }
        }
        auto high = static_cast<std::uint32_t>(value);
        for (; high >= 10; high /= 100)
        {
            PutPair(high % 100);
        }
        if (high != 0)
        {
            m_text[--m_first] = static_cast<char>('0' + high);
        }
    }

    std::size_t Count() const noexcept { return kMaxCount - m_first; }

    /// Copies the digits from one place on, and whatever follows them: kMaxCount bytes in all.
    void CopyFrom(std::size_t digit, char* target) const noexcept
    {
        std::memcpy(target, m_text + m_first + digit, kMaxCount);
    }

private:
    void PutPair(std::uint32_t value) noexcept
    {
        m_first -= 2;
        std::memcpy(m_text + m_first, kDigitPairs.data() + std::size_t{2} * value, 2);
    }

    char m_text[2 * kMaxCount]; // the digits end in the middle
    std::size_t m_first = kMaxCount;
};

/// Digits with the point somewhere among or around them: 0.00012, 12.5, 1250.
char* WriteNr2(char* place, const CDigits& digits, int pointPlace) noexcept
{
    const auto count = static_cast<int>(digits.Count());
    if (pointPlace <= 0)
    {
        place = std::fill_n(Copy(place, "0."), -pointPlace, '0');
        digits.CopyFrom(0, place);
        return place + count;
    }
    digits.CopyFrom(0, place);
    if (pointPlace >= count)
    {
        return std::fill_n(place + count, pointPlace - count, '0');
    }
    place[pointPlace] = '.';
    digits.CopyFrom(static_cast<std::size_t>(pointPlace), place + pointPlace + 1);
    return place + count + 1;
}

/// One digit before the point, at least one behind it and two in the exponent: 1.0E+20.
char* WriteNr3(char* place, const CDigits& digits, int exponent) noexcept
{
    const std::size_t count = digits.Count();
    place = WriteNr2(place, digits, 1);
    if (count == 1)
    {
        place = Copy(place, ".0");
    }
    place = Copy(place, exponent < 0 ? "E-" : "E+");
    const int magnitude = std::abs(exponent);
    if (magnitude < 10)
    {
        *place++ = '0';
    }
    return WriteInteger(place, std::int64_t{magnitude});
}

template <class T>
char* WriteShortest(char* place, T value) noexcept
{
    if (!std::isfinite(value))
    {
        return WriteNonFinite(place, static_cast<double>(value));
    }
    const auto magnitude = static_cast<double>(std::fabs(value));
    if (magnitude < kExactInteger &&
        static_cast<double>(static_cast<std::int64_t>(value)) == static_cast<double>(value))
    {
        return WriteInteger(place, static_cast<std::int64_t>(value));
    }
    if (value < 0)
    {
        *place++ = '-';
    }
    // fmt's public functions spend more time on their options than on the digits; a trace has many numbers.
    const auto decimal = fmt::detail::dragonbox::to_decimal(std::fabs(value));
    const CDigits digits(decimal.significand);
    const int pointPlace = static_cast<int>(digits.Count()) + decimal.exponent;
    return magnitude >= kSmallestFixed && magnitude < kLargestFixed ? WriteNr2(place, digits, pointPlace)
                                                                    : WriteNr3(place, digits, pointPlace - 1);
}

} // namespace

char* WriteInteger(char* place, std::int64_t value) noexcept
{
    return std::to_chars(place, place + kMaxNumberText, value).ptr;
}

char* WriteInteger(char* place, std::uint64_t value) noexcept
{
    return std::to_chars(place, place + kMaxNumberText, value).ptr;
}

char* WriteReal(char* place, double value) noexcept
{
    return WriteShortest(place, value);
}

char* WriteReal(char* place, float value) noexcept
{
    return WriteShortest(place, value);
}

char* WriteRealWithDigits(char* place, double value, int digits) noexcept
{
    if (!std::isfinite(value))
    {
        return WriteNonFinite(place, value);
    }
    char text[kMaxNumberText];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr;
    return CopyAsNr3(place, {text, end});
}

char* WriteNonDecimal(char* place,
                      std::uint64_t pattern,
                      unsigned bitsPerDigit,
                      unsigned minimumDigits) noexcept
{
    *place++ = '#';
    *place++ = bitsPerDigit == 4 ? 'H' : bitsPerDigit == 3 ? 'Q' : 'B';
    const auto significantBits = static_cast<unsigned>(std::bit_width(pattern));
    const unsigned needed = std::max(1U, (significantBits + bitsPerDigit - 1) / bitsPerDigit);
    const unsigned digits = std::max(needed, minimumDigits);
    for (unsigned digit = digits; digit-- > 0;)
    {
        const unsigned shift = digit * bitsPerDigit;
        const std::uint64_t value = shift < 64 ? (pattern >> shift) & ((1U << bitsPerDigit) - 1) : 0;
        *place++ = "0123456789ABCDEF"[value];
    }
    return place;
}

double ReplaceNonFinite(double value) noexcept
{
    if (std::isfinite(value))
    {
        return value;
    }
    return std::isnan(value) ? kNotANumber : value > 0 ? kPositiveInfinity : kNegativeInfinity;
}

} // namespace ZoVelkor::RemoteKernel
