#include "ProgramNumber.h"

#include "CharacterClasses.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

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
struct tagDigitCounter
{
    std::size_t iAll = 0;
    std::size_t iSignificant = 0;

    const char* Run(const char* place, const char* end) noexcept
    {
        for (; place != end && IsDigit(*place); ++place)
        {
            ++iAll;
            iSignificant += iSignificant != 0 || *place != '0' ? 1 : 0;
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

short ScanExponent(const char*& place, const char* end, tagDecimal& number) noexcept
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
        exponent = std::min(exponent * 10 + (*place - '0'), kMaxExponent + 1);
    }
    number.bHasExponent = true;
    number.iExponent = negative ? -exponent : exponent;
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
struct tagDigits
{
    std::array<char, kMaxDigits + 1> aDigits{};
    std::size_t iCount = 0;
    int iScale = 0; ///< power of ten of the last digit
};

tagDigits CollectDigits(const tagDecimal& number, int exponent) noexcept
{
    tagDigits digits;
    digits.iScale = number.iExponent + exponent;
    bool afterPoint = false;
    for (std::size_t i = 0; i < number.iMantissaLength; ++i)
    {
        const char c = number.pMantissa[i];
        afterPoint = afterPoint || c == '.';
        if (!IsDigit(c))
        {
            continue;
        }
        digits.iScale -= afterPoint ? 1 : 0;
        if (digits.iCount != 0 || c != '0')
        {
            digits.aDigits[digits.iCount++] = c;
        }
    }
    return digits;
}

/// Cuts the fraction off and carries the rounding on; one digit more may result.
void RoundDigits(tagDigits& digits) noexcept
{
    const auto cut = static_cast<std::size_t>(-digits.iScale);
    const std::size_t kept = digits.iCount - std::min(cut, digits.iCount);
    const bool up = cut <= digits.iCount && digits.iCount != 0 && digits.aDigits[kept] >= '5';
    digits.iCount = kept;
    digits.iScale = 0;
    if (!up)
    {
        return;
    }
    std::size_t place = kept;
    while (place > 0 && digits.aDigits[place - 1] == '9')
    {
        digits.aDigits[--place] = '0';
    }
    if (place > 0)
    {
        ++digits.aDigits[place - 1];
        return;
    }
    std::copy_backward(
        digits.aDigits.begin(), digits.aDigits.begin() + kept, digits.aDigits.begin() + kept + 1);
    digits.aDigits[0] = '1';
    ++digits.iCount;
}
} // namespace

bool tagTextBuffer::Append(const char* text, std::size_t length) noexcept
{
    if (length > iCapacity - iLength)
    {
        return false;
    }
    std::memcpy(pText + iLength, text, length);
    iLength += length;
    return true;
}

short ScanDecimal(const char*& place, const char* end, tagDecimal& number) noexcept
{
    number.pMantissa = place;
    number.bNegative = *place == '-';
    if (*place == '-' || *place == '+')
    {
        ++place;
    }
    tagDigitCounter counter;
    place = counter.Run(place, end);
    if (place != end && *place == '.')
    {
        number.bHasPoint = true;
        place = counter.Run(place + 1, end);
    }
    number.iMantissaLength = static_cast<std::size_t>(place - number.pMantissa);
    number.bZero = counter.iSignificant == 0;
    if (counter.iAll == 0)
    {
        return MissingDigits(place, end);
    }
    const short error = ScanExponent(place, end, number);
    if (error == 0 && counter.iSignificant > kMaxDigits)
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

short WriteDecimal(const tagDecimal& number, int exponent, tagTextBuffer& text) noexcept
{
    if (!text.Append(number.pMantissa, number.iMantissaLength))
    {
        return kScpiTooMuchData;
    }
    const int sum = number.iExponent + exponent;
    if (sum == 0)
    {
        return 0;
    }
    char buffer[16] = {'E'};
    const char* const last = std::to_chars(buffer + 1, buffer + sizeof buffer, sum).ptr;
    return text.Append(buffer, static_cast<std::size_t>(last - buffer)) ? short{0} : kScpiTooMuchData;
}

short WriteRounded(const tagDecimal& number, int exponent, tagTextBuffer& text) noexcept
{
    tagDigits digits = CollectDigits(number, exponent);
    if (digits.iScale < 0)
    {
        RoundDigits(digits);
    }
    if (digits.iCount == 0)
    {
        return text.Append("0", 1) ? short{0} : kScpiDataOutOfRange;
    }
    const std::size_t zeros = static_cast<std::size_t>(digits.iScale);
    const std::size_t length = digits.iCount + zeros + (number.bNegative ? 1 : 0);
    if (length > text.iCapacity - text.iLength)
    {
        return kScpiDataOutOfRange;
    }
    if (number.bNegative)
    {
        text.Append("-", 1);
    }
    text.Append(digits.aDigits.data(), digits.iCount);
    std::memset(text.pText + text.iLength, '0', zeros);
    text.iLength += zeros;
    return 0;
}

bool IsZeroText(const char* text, std::size_t length) noexcept
{
    return length == 1 && text[0] == '0';
}

} // namespace ZoVelkor::RemoteKernel
