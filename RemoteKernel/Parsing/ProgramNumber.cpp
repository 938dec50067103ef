#include "ProgramNumber.h"

#include "CharacterClasses.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

namespace
{
const char* SkipWhite(const char* place, const char* end) noexcept
{
    while (place != end && IsWhiteSpace(*place))
    {
        ++place;
    }
    return place;
}

/// Counts digits from the first one that is not zero.
struct DigitCounter
{
    std::size_t all = 0;
    std::size_t significant = 0;

    const char* Run(const char* place, const char* end) noexcept
    {
        for (; place != end && IsDigit(*place); ++place)
        {
            ++all;
            significant += significant != 0 || *place != '0' ? 1 : 0;
        }
        return place;
    }
};

bool IsElementEnd(const char* place, const char* end) noexcept
{
    place = SkipWhite(place, end);
    return place == end || *place == ',' || *place == ';';
}

short MissingDigits(const char* place, const char* end) noexcept
{
    return IsElementEnd(place, end) ? kScpiNumericDataError : kScpiInvalidCharacterInNumber;
}

short ScanExponent(const char*& place, const char* end, Decimal& number) noexcept
{
    const char* letter = SkipWhite(place, end);
    if (letter == end || (*letter != 'E' && *letter != 'e'))
    {
        return 0;
    }
    if (letter + 1 != end && IsLetter(letter[1]))
    {
        return 0; // a unit such as EXHZ
    }
    const char* digits = SkipWhite(letter + 1, end);
    const bool negative = digits != end && *digits == '-';
    if (digits != end && (*digits == '-' || *digits == '+'))
    {
        ++digits;
    }
    if (digits == end || !IsDigit(*digits))
    {
        return MissingDigits(digits, end);
    }
    int exponent = 0;
    for (place = digits; place != end && IsDigit(*place); ++place)
    {
        // Stops just beyond the limit, so that digits without end do not overflow.
        exponent = std::min(exponent * 10 + (*place - '0'), kMaxExponent + 1);
    }
    number.hasExponent = true;
    number.exponent = negative ? -exponent : exponent;
    return exponent > kMaxExponent ? kScpiExponentTooLarge : short{0};
}

unsigned int DigitValue(char c) noexcept
{
    const char capital = ToCapital(c);
    if (IsDigit(capital))
    {
        return static_cast<unsigned int>(capital - '0');
    }
    return IsLetter(capital) ? static_cast<unsigned int>(capital - 'A') + 10U : 255U;
}

/// Significant digits of a mantissa, without sign, point and leading zeros.
struct Digits
{
    std::array<char, kMaxDigits + 1> digits{};
    std::size_t count = 0;
    int scale = 0; ///< power of ten of the last digit
};

Digits CollectDigits(const Decimal& number, int exponent) noexcept
{
    Digits digits;
    digits.scale = number.exponent + exponent;
    bool afterPoint = false;
    for (std::size_t i = 0; i < number.mantissaLength; ++i)
    {
        const char c = number.mantissa[i];
        afterPoint = afterPoint || c == '.';
        if (!IsDigit(c))
        {
            continue;
        }
        digits.scale -= afterPoint ? 1 : 0;
        if (digits.count != 0 || c != '0')
        {
            digits.digits[digits.count++] = c;
        }
    }
    return digits;
}

/// Tells of most numbers, without looking at their digits, that a double holds them.
bool MayBeTooSmall(const Decimal& number, int exponent) noexcept
{
    constexpr int kSmallestExponent = std::numeric_limits<double>::min_exponent10;
    const int sum = number.exponent + exponent;
    return !number.zero && sum - static_cast<int>(number.mantissaLength) < kSmallestExponent;
}

/// What is to be handed on for a number that a double may not hold; empty: the number as it stands.
///
/// @param text  the number as it stands
std::string_view SmallNumberText(const Decimal& number, int exponent, std::string_view text) noexcept
{
    constexpr double kSmallest = std::numeric_limits<double>::min();
    constexpr int kSmallestExponent = std::numeric_limits<double>::min_exponent10;
    const Digits digits = CollectDigits(number, exponent);
    if (digits.scale + static_cast<int>(digits.count) > kSmallestExponent)
    {
        return {};
    }
    text.remove_prefix(text.front() == '+' ? 1 : 0);
    double value = 0; // stays 0 for a number too small for any double
    std::from_chars(text.data(), text.data() + text.size(), value);
    const double magnitude = std::fabs(value);
    if (magnitude > kSmallest)
    {
        return {};
    }
    // What is rounded up to the smallest double is a range error to the C library all the same.
    constexpr std::string_view kSmallestText = "-2.2250738585072014E-308";
    return magnitude < kSmallest ? "0" : kSmallestText.substr(number.negative ? 0 : 1);
}

/// Cuts the fraction off and carries the rounding on; one digit more may result.
void RoundDigits(Digits& digits) noexcept
{
    const auto cut = static_cast<std::size_t>(-digits.scale);
    const std::size_t kept = digits.count - std::min(cut, digits.count);
    const bool up = cut <= digits.count && digits.count != 0 && digits.digits[kept] >= '5';
    digits.count = kept;
    digits.scale = 0;
    if (!up)
    {
        return;
    }
    std::size_t place = kept;
    while (place > 0 && digits.digits[place - 1] == '9')
    {
        digits.digits[--place] = '0';
    }
    if (place > 0)
    {
        ++digits.digits[place - 1];
        return;
    }
    std::copy_backward(digits.digits.begin(), digits.digits.begin() + kept, digits.digits.begin() + kept + 1);
    digits.digits[0] = '1';
    ++digits.count;
}

short WriteAsItStands(const Decimal& number, int exponent, TextBuffer& text) noexcept
{
    if (!text.Append(number.mantissa, number.mantissaLength))
    {
        return kScpiTooMuchData;
    }
    const int sum = number.exponent + exponent;
    if (sum == 0)
    {
        return 0;
    }
    char buffer[16] = {'E'};
    const char* const last = std::to_chars(buffer + 1, buffer + sizeof buffer, sum).ptr;
    return text.Append(buffer, static_cast<std::size_t>(last - buffer)) ? short{0} : kScpiTooMuchData;
}

short WriteSmallDecimal(const Decimal& number, int exponent, TextBuffer& text) noexcept
{
    const std::size_t begin = text.length;
    const short error = WriteAsItStands(number, exponent, text);
    const std::string_view written(text.text + begin, text.length - begin);
    const std::string_view small =
        error == 0 ? SmallNumberText(number, exponent, written) : std::string_view();
    if (!small.empty())
    {
        text.length = begin;
        text.Append(small.data(), small.size());
    }
    return error;
}

} // namespace

bool TextBuffer::Append(const char* piece, std::size_t count) noexcept
{
    if (count > capacity - length)
    {
        return false;
    }
    std::memcpy(text + length, piece, count);
    length += count;
    return true;
}

short ScanDecimal(const char*& place, const char* end, Decimal& number) noexcept
{
    number.mantissa = place;
    number.negative = *place == '-';
    if (*place == '-' || *place == '+')
    {
        ++place;
    }
    DigitCounter counter;
    place = counter.Run(place, end);
    if (place != end && *place == '.')
    {
        number.hasPoint = true;
        place = counter.Run(place + 1, end);
    }
    number.mantissaLength = static_cast<std::size_t>(place - number.mantissa);
    number.zero = counter.significant == 0;
    if (counter.all == 0)
    {
        return MissingDigits(place, end);
    }
    const short error = ScanExponent(place, end, number);
    if (error == 0 && counter.significant > kMaxDigits)
    {
        return kScpiTooManyDigits;
    }
    return error;
}

short ScanNonDecimal(const char*& place, const char* end, unsigned int bits, std::uint64_t& value) noexcept
{
    const char* const first = place;
    bool overflow = false;
    value = 0;
    for (; place != end && DigitValue(*place) < (1U << bits); ++place)
    {
        overflow = overflow || (value >> (64U - bits)) != 0;
        value = (value << bits) | DigitValue(*place);
    }
    if (place == first)
    {
        return MissingDigits(place, end);
    }
    if (place != end && DigitValue(*place) != 255U)
    {
        return kScpiInvalidCharacterInNumber;
    }
    return overflow ? kScpiDataOutOfRange : short{0};
}

short WriteDecimal(const Decimal& number, int exponent, TextBuffer& text) noexcept
{
    return MayBeTooSmall(number, exponent) ? WriteSmallDecimal(number, exponent, text)
                                           : WriteAsItStands(number, exponent, text);
}

short WriteRounded(const Decimal& number, int exponent, TextBuffer& text) noexcept
{
    Digits digits = CollectDigits(number, exponent);
    if (digits.scale < 0)
    {
        RoundDigits(digits);
    }
    if (digits.count == 0)
    {
        return text.Append("0", 1) ? short{0} : kScpiDataOutOfRange;
    }
    const std::size_t zeros = static_cast<std::size_t>(digits.scale);
    const std::size_t length = digits.count + zeros + (number.negative ? 1 : 0);
    if (length > text.capacity - text.length)
    {
        return kScpiDataOutOfRange;
    }
    if (number.negative)
    {
        text.Append("-", 1);
    }
    text.Append(digits.digits.data(), digits.count);
    std::memset(text.text + text.length, '0', zeros);
    text.length += zeros;
    return 0;
}

bool IsZeroText(const char* text, std::size_t length) noexcept
{
    return length == 1 && text[0] == '0';
}

} // namespace ZoVelkor::RemoteKernel
