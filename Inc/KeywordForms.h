#pragma once

#include "CScpiToken.h"
#include "CharacterClasses.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace ZoVelkor
{

/// The part of a keyword in front of the digits at its end.
constexpr std::string_view WithoutDigits(std::string_view keyword) noexcept
{
    while (!keyword.empty() && IsDigit(keyword.back()))
    {
        keyword.remove_suffix(1);
    }
    return keyword;
}

/// What stands in a syntax form before its first small letter: FREQ of FREQuency; all of one that has none.
template <class TChar>
constexpr std::basic_string_view<TChar> LeadingCapitals(std::basic_string_view<TChar> syntax) noexcept
{
    const auto small = std::find_if(
        syntax.begin(), syntax.end(), [](TChar c) { return c >= TChar{'a'} && c <= TChar{'z'}; });
    return syntax.substr(0, static_cast<std::size_t>(small - syntax.begin()));
}

/// The short form of a keyword of a table; of one without small letters, or that begins with one, by the
/// general rule. Digits at the end belong to both forms: TIMer1 is TIMER1 or TIM1.
inline std::string ShortForm(std::string_view keyword)
{
    const std::string_view stem = WithoutDigits(keyword);
    const std::string_view capitals = LeadingCapitals(stem);
    const bool isTold = !capitals.empty() && capitals.size() < stem.size();
    std::string form = isTold ? std::string(capitals) : CScpiToken::ScpiToken2ShortForm(std::string(stem));
    return form.append(keyword.substr(stem.size()));
}

} // namespace ZoVelkor
