#include "BrokenString.h"

#include "CharacterClasses.h"

#include <algorithm>
#include <cstddef>

namespace ZoVelkor::RemoteKernel
{

namespace
{

/// @param place  of the first character behind a string's opening quote
/// @return place behind the closing quote; npos when there is none
std::size_t FindStringEnd(std::string_view text, std::size_t place, char quote) noexcept
{
    for (place = text.find(quote, place); place != std::string_view::npos;
         place = text.find(quote, place + 2))
    {
        const bool doubled = place + 1 < text.size() && text[place + 1] == quote;
        if (!doubled)
        {
            return place + 1;
        }
    }
    return std::string_view::npos;
}

} // namespace

char FindOpenQuote(std::string_view message) noexcept
{
    // Most messages have no string at all.
    if (message.find('"') == std::string_view::npos && message.find('\'') == std::string_view::npos)
    {
        return '\0';
    }
    std::size_t place = message.find_first_of("\"'#");
    while (place != std::string_view::npos)
    {
        const char found = message[place];
        if (found == '#')
        {
            if (place + 1 < message.size() && IsDigit(message[place + 1]))
            {
                return '\0';
            }
            ++place;
        }
        else
        {
            place = FindStringEnd(message, place + 1, found);
            if (place == std::string_view::npos)
            {
                return found;
            }
        }
        place = message.find_first_of("\"'#", place);
    }
    return '\0';
}

bool IsRestOfString(std::string_view message, char quote) noexcept
{
    if (quote == '\0' || FindOpenQuote(message) == '\0')
    {
        return false;
    }
    const std::size_t end = FindStringEnd(message, 0, quote);
    if (end == std::string_view::npos)
    {
        return false;
    }
    const std::string_view behind = message.substr(end);
    const auto* const next = std::find_if_not(behind.begin(), behind.end(), &IsWhiteSpace);
    return next == behind.end() || *next == ',' || *next == ';';
}

std::string_view FirstHeader(std::string_view message) noexcept
{
    const auto* const begin = std::find_if_not(message.begin(), message.end(), &IsWhiteSpace);
    const auto* const end = std::find_if(begin, message.end(), [](char c) {
        return IsWhiteSpace(c) || c == '"' || c == '\'' || c == ';' || c == '\n';
    });
    return {begin, static_cast<std::size_t>(end - begin)};
}

} // namespace ZoVelkor::RemoteKernel
