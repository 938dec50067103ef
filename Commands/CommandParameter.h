#pragma once

#include "CBlockInput.h"
#include "CChannelList.h"
#include "CommandWords.h"
#include "ScpiCommandTable.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ZoVelkor::Commands
{

/// What a command table and the checks of an argument need to know of one parameter.
struct ParameterData
{
    std::string_view name = "value"; ///< at most 15 characters
    std::uint32_t type = 0;          ///< kinds, ARG_...
    std::uint32_t flags = 0;         ///< ARG_FLAG_...
    std::string_view unit;           ///< base unit; empty: none
    /// Text of word i, counted from 0; null without words.
    std::string_view (*word)(std::size_t i) = nullptr;
    std::size_t wordCount = 0; ///< of its own words
    /// Limits in the base unit; of a text the largest length.
    double minimum = -std::numeric_limits<double>::infinity();
    /// See minimum.
    double maximum = std::numeric_limits<double>::infinity();
    double defaultValue = 0;    ///< DEFault
    double step = 0;            ///< for UP and DOWN; 0: these are refused
    bool hasDefault = false;    ///< there is a DEFault
    bool takesInfinity = false; ///< INFinity, NINFinity and NAN are values
};

/// A parameter whose declaration goes on; TParameter is what the operations return.
template <class TParameter>
class ParameterBase
{
public:
    /// Its name in tables and listings, at most 15 characters.
    consteval TParameter Name(std::string_view name) const
    {
        if (name.size() >= kTableTextSize)
        {
            ParameterNameIsLongerThanFifteenCharacters();
        }
        return With([name](ParameterData& changed) { changed.name = name; });
    }

    ParameterData data; ///< what was declared

protected:
    /// A copy with a change.
    template <class TChange>
    consteval TParameter With(TChange change) const
    {
        TParameter changed = static_cast<const TParameter&>(*this);
        change(changed.data);
        return changed;
    }
};

/// The part that numbers and integers share.
template <class TParameter>
class NumericParameter : public ParameterBase<TParameter>
{
public:
    /// Limits in the base unit; a value outside is -222 and names them. MINimum and MAXimum are taken from here.
    consteval TParameter Range(double minimum, double maximum) const
    {
        if (!(minimum <= maximum))
        {
            RangeIsEmpty();
        }
        return this->With([=](ParameterData& changed) {
            changed.minimum = minimum;
            changed.maximum = maximum;
            changed.type |= ARG_MINMAX;
            CheckDefault(changed);
        });
    }

    /// DEFault, and the value of a bound variable after *RST.
    consteval TParameter Default(double value) const
    {
        return this->With([=](ParameterData& changed) {
            changed.defaultValue = value;
            changed.hasDefault = true;
            changed.type |= ARG_DEFAULT;
            CheckDefault(changed);
        });
    }

    /// By how much UP and DOWN change the value.
    consteval TParameter Step(double step) const
    {
        if (!(step > 0))
        {
            StepMustBePositive();
        }
        return this->With([=](ParameterData& changed) {
            changed.step = step;
            changed.type |= ARG_UPDOWN;
        });
    }

private:
    static constexpr void CheckDefault(const ParameterData& parameter)
    {
        const bool isInside =
            parameter.defaultValue >= parameter.minimum && parameter.defaultValue <= parameter.maximum;
        if (parameter.hasDefault && !isInside)
        {
            DefaultIsOutsideTheRange();
        }
    }
};

/// A real number, in any base as well; for a double or float.
class Number : public NumericParameter<Number>
{
public:
    /// @param unit  base unit, "V"; the remote kernel resolves mV and kV
    consteval explicit Number(std::string_view unit = {})
    {
        if (unit.size() >= kTableTextSize)
        {
            UnitIsLongerThanFifteenCharacters();
        }
        data.type = ARG_SFLOAT;
        data.unit = unit;
    }

    /// INFinity, NINFinity and NAN are taken, and given as the C++ values; otherwise they are -224.
    consteval Number Infinite() const
    {
        return With([](ParameterData& changed) { changed.takesInfinity = true; });
    }
    /// Tells whether a handler may take it as this type.
    template <class T>
    static constexpr bool kFits = std::is_floating_point_v<T>;
};

/// A whole number, in any base; for an integer type, whose own range is checked as well.
class Integer : public NumericParameter<Integer>
{
public:
    consteval Integer() { data.type = ARG_SINT; }
    /// Tells whether a handler may take it as this type.
    template <class T>
    static constexpr bool kFits = std::integral<T> && !std::same_as<T, bool>;
};

/// ON, OFF or a number, of which 0 is OFF; for a bool.
class Boolean : public ParameterBase<Boolean>
{
public:
    consteval Boolean() { data.type = ARG_SFLOAT | ARG_OFF | MNEM; }

    /// Value of a bound variable after *RST.
    consteval Boolean Default(bool value) const
    {
        return With([value](ParameterData& changed) {
            changed.defaultValue = value ? 1 : 0;
            changed.hasDefault = true;
        });
    }
    /// Tells whether a handler may take it as this type.
    template <class T>
    static constexpr bool kFits = std::same_as<T, bool>;
};

/// One of an enumeration's words.
template <WordEnumeration T>
class Words : public ParameterBase<Words<T>>
{
public:
    consteval Words()
    {
        this->data.type = MNEM;
        this->data.word = [](std::size_t i) { return ScpiWords(T{})[i].text; };
        this->data.wordCount = ScpiWords(T{}).size();
        CheckWords();
    }

    /// Value of a bound variable after *RST.
    consteval Words Default(T value) const
    {
        return this->With([value](ParameterData& changed) {
            changed.defaultValue = static_cast<double>(static_cast<std::underlying_type_t<T>>(value));
            changed.hasDefault = true;
        });
    }
    /// Tells whether a handler may take it as this type.
    template <class TValue>
    static constexpr bool kFits = std::same_as<TValue, T>;

private:
    static constexpr void CheckWords()
    {
        const std::span<const Word<T>> words = ScpiWords(T{});
        for (std::size_t i = 0; i < words.size(); ++i)
        {
            for (std::size_t other = 0; other < i; ++other)
            {
                if (AreAmbiguous(words[i].text, words[other].text))
                {
                    TwoWordsWithOneShortForm();
                }
            }
        }
    }
};

/// A string in quotes; for std::string or std::string_view.
class Text : public ParameterBase<Text>
{
public:
    consteval Text() { data.type = ARG_STRG; }

    /// Longest text in bytes; a longer one is -223.
    consteval Text AtMost(std::size_t bytes) const
    {
        return With([bytes](ParameterData& changed) { changed.maximum = static_cast<double>(bytes); });
    }
    /// Tells whether a handler may take it as this type.
    template <class T>
    static constexpr bool kFits = std::same_as<T, std::string> || std::same_as<T, std::string_view>;
};

/// An arbitrary block; for a CBlockInput, which reads it while it arrives.
class Block : public ParameterBase<Block>
{
public:
    consteval Block() { data.type = ARG_BLOCK; }
    /// Tells whether a handler may take it as this type.
    template <class T>
    static constexpr bool kFits = std::same_as<T, CBlockInput>;
};

/// A channel list, (@1,3:5); for a CChannelList.
class Channels : public ParameterBase<Channels>
{
public:
    consteval Channels() { data.type = ARG_EXPR; }
    /// Tells whether a handler may take it as this type.
    template <class T>
    static constexpr bool kFits = std::same_as<T, CChannelList>;
};

/// @cond machinery
/// The parameter that suits a handler's argument when the declaration names none.
template <class T>
struct ParameterFor;

template <std::floating_point T>
struct ParameterFor<T>
{
    using Type = Number;
};

template <std::integral T>
struct ParameterFor<T>
{
    using Type = Integer;
};

template <>
struct ParameterFor<bool>
{
    using Type = Boolean;
};

template <WordEnumeration T>
struct ParameterFor<T>
{
    using Type = Words<T>;
};

template <>
struct ParameterFor<std::string>
{
    using Type = Text;
};

template <>
struct ParameterFor<std::string_view>
{
    using Type = Text;
};

template <>
struct ParameterFor<CBlockInput>
{
    using Type = Block;
};

template <>
struct ParameterFor<CChannelList>
{
    using Type = Channels;
};

/// How a handler's argument takes program data: its element, and whether it may be left out or repeated.
template <class T>
struct ArgumentForm
{
    using Element = T;
    static constexpr std::uint32_t kFlags = 0;
};

template <class T>
struct ArgumentForm<std::optional<T>>
{
    using Element = T;
    static constexpr std::uint32_t kFlags = ARG_FLAG_OPT;
};

template <class T>
struct ArgumentForm<std::vector<T>>
{
    using Element = T;
    static constexpr std::uint32_t kFlags = ARG_FLAG_REP;
};

/// @endcond

} // namespace ZoVelkor::Commands
