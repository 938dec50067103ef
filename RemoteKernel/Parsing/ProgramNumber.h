#pragma once

#include <cstddef>
#include <cstdint>

namespace ZoVelkor::RemoteKernel
{

/// Digits of a mantissa, leading zeros not counted (IEEE 488.2 section 7.7.2.4.1).
inline constexpr std::size_t kMaxDigits = 255;

/// Magnitude of an exponent (ibidem).
inline constexpr int kMaxExponent = 32000;

/// A decimal number in place.
struct Decimal
{
    const char* mantissa = nullptr; ///< sign, digits and point
    std::size_t mantissaLength = 0;
    int exponent = 0;
    bool hasExponent = false;
    bool hasPoint = false;
    bool negative = false;
    bool zero = true;
};

/// Reads a decimal number in the flexible form: blanks may surround the E of the exponent.
///
/// @param[in,out] place  first character; afterwards behind the number, also after -123 and -124
/// @return 0, or -120, -121, -123, -124
short ScanDecimal(const char*& place, const char* end, Decimal& number) noexcept;

/// Reads the digits behind \#H, \#Q or \#B.
///
/// @param bits  bits of one digit: 4, 3 or 1
/// @return 0, -120 without digits, -121 for a wrong digit, -222 above 64 bits
short ScanNonDecimal(const char*& place, const char* end, unsigned int bits, std::uint64_t& value) noexcept;

/// Room for the text of a number.
struct TextBuffer
{
    char* text = nullptr;
    std::size_t capacity = 0;
    std::size_t length = 0;

    /// @return false when the text does not fit; nothing is stored then
    bool Append(const char* piece, std::size_t count) noexcept;
};

/// Writes a number with its exponent raised by that of a multiplier; the digits stay as they are. A number
/// too small for a normal double is written as 0, so that handlers, who convert the text, meet no range error.
///
/// @return 0 or -223
short WriteDecimal(const Decimal& number, int exponent, TextBuffer& text) noexcept;

/// Writes a number rounded to an integer, halves away from zero (IEEE 488.2 section 7.7.2.4.2).
///
/// @return 0, or -222 when the integer has more digits than there is room
short WriteRounded(const Decimal& number, int exponent, TextBuffer& text) noexcept;

/// Tells whether a rounded text is zero, so that a sign before it has no meaning.
bool IsZeroText(const char* text, std::size_t length) noexcept;

} // namespace ZoVelkor::RemoteKernel
