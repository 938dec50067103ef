#pragma once

#include "CommandPattern.h"

#include <concepts>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace ZoVelkor::Commands
{

/// A word of a parameter, and what it stands for.
///
/// An enumeration's words are found through a function beside it:
/// @code
/// enum class Waveform { Sine, Square };
/// constexpr Word<Waveform> kWaveforms[] = {{"SINusoid", Waveform::Sine}, {"SQUare", Waveform::Square}};
/// constexpr std::span<const Word<Waveform>> ScpiWords(Waveform) { return kWaveforms; }
/// @endcode
template <class T>
struct Word
{
    std::string_view text; ///< as a manual writes it; the capitals are what a query answers
    T value;               ///< what it stands for

    /// A text that is no SCPI keyword does not compile.
    consteval Word(std::string_view word, T meaning) : text(word), value(meaning) { CheckKeyword(word); }
};

/// An enumeration that has words.
template <class T>
concept WordEnumeration = std::is_enum_v<T> && requires(T value)
{
    {
        ScpiWords(value)
        } -> std::convertible_to<std::span<const Word<T>>>;
};

/// @return the short form of the value's word; empty for a value without one
template <WordEnumeration T>
std::string WordOf(T value)
{
    for (const Word<T>& word : ScpiWords(value))
    {
        if (word.value == value)
        {
            return ShortForm(word.text);
        }
    }
    return {};
}

/// @param place  counts from 1, as the command table has it
/// @return nothing for a place that is none
template <WordEnumeration T>
constexpr std::optional<T> WordAt(long place)
{
    const std::span<const Word<T>> words = ScpiWords(T{});
    const auto index = static_cast<std::size_t>(place) - 1;
    return index < words.size() ? std::optional<T>(words[index].value) : std::nullopt;
}

} // namespace ZoVelkor::Commands
