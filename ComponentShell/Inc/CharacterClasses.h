#pragma once

// Characters as the standards of messages know them: those of ASCII, whatever the locale.
namespace ZoVelkor
{

/// A decimal digit.
constexpr bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

/// A letter of the alphabet.
constexpr bool IsLetter(char c) noexcept
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// White space of a program message: all control characters but the line feed, and the blank (IEEE 488.2
/// section 7.4.1.2).
constexpr bool IsWhiteSpace(char c) noexcept
{
    return c >= 0 && c <= ' ' && c != '\n';
}

/// Capital of an ASCII letter; other characters stay as they are.
constexpr char ToCapital(char c) noexcept
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace ZoVelkor
