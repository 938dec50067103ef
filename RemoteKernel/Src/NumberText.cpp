#include "NumberText.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
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
    if (magnitude >= kSmallestFixed && magnitude < kLargestFixed)
    {
        return fmt::format_to(place, FMT_COMPILE("{}"), value);
    }
    char text[kMaxNumberText];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    return CopyAsNr3(place, {text, end});
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
