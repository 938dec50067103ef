#pragma once

#include <iterator>
#include <optional>

/// Characters of the bytes 0x80 to 0x9F; the undefined ones keep the control character of the same value.
inline constexpr wchar_t kCharactersFrom80[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
static_assert(std::size(kCharactersFrom80) == 0x20);

constexpr wchar_t CharacterOf1252(char byte) noexcept
{
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x80 || code >= 0xA0 ? static_cast<wchar_t>(code) : kCharactersFrom80[code - 0x80];
}

constexpr std::optional<char> ByteOf1252(wchar_t character) noexcept
{
    if ((character >= 0 && character < 0x80) || (character >= 0xA0 && character <= 0xFF))
    {
        return static_cast<char>(character);
    }
    for (int i = 0; i < static_cast<int>(std::size(kCharactersFrom80)); ++i)
    {
        if (kCharactersFrom80[i] == character)
        {
            return static_cast<char>(0x80 + i);
        }
    }
    return std::nullopt;
}
