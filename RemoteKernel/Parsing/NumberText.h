#pragma once

#include <cstddef>
#include <cstdint>

namespace ZoVelkor::RemoteKernel
{

/// Room that any number needs as text.
inline constexpr std::size_t kMaxNumberText = 72;

/// Numeric response data (IEEE 488.2 section 8.7, SCPI-99 vol. 1, 7.2.1): each writes to `place`, where
/// kMaxNumberText bytes are free, and returns the end of the text. Nothing depends on the locale.

/// NR1.
char* WriteInteger(char* place, std::int64_t value) noexcept;
char* WriteInteger(char* place, std::uint64_t value) noexcept;

/// Shortest digits that read back as the same value: NR2 from 1E-4 up to below 1E+16, else NR3. Whole
/// numbers have no point. Infinities and not-a-number become 9.9E37, -9.9E37 and 9.91E37.
char* WriteReal(char* place, double value) noexcept;
char* WriteReal(char* place, float value) noexcept;

/// The same, rounded to a number of significant digits, 1 to 17; trailing zeros are left out. NR3 also where
/// there would be more digits before the point than asked for.
char* WriteRealWithDigits(char* place, double value, int digits) noexcept;

/// #H, #Q or #B, with leading zeros up to the number of digits.
///
/// @param bitsPerDigit  4, 3 or 1
/// @param minimumDigits  0 to 64
char* WriteNonDecimal(char* place,
                      std::uint64_t pattern,
                      unsigned bitsPerDigit,
                      unsigned minimumDigits) noexcept;

/// What a response carries for a value that is no finite number; finite values stay.
double ReplaceNonFinite(double value) noexcept;

} // namespace ZoVelkor::RemoteKernel
