#pragma once

#include "Mnemonic.h"
#include "ScpiCommandTable.h"
#include "ScpiParameter.h"

#include <cstdint>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

constexpr MnemonicKey MakeWordKey(std::string_view word) noexcept
{
    return ReadMnemonic(word.data(), word.data() + word.size()).key;
}

/// A word with a meaning of its own, whatever the command.
struct SpecialWord
{
    MnemonicKey longForm;
    MnemonicKey shortForm;
    tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE code;
    std::uint32_t types;     ///< a parameter must have one of these types
    std::string_view number; ///< number for which the word stands; empty: none

    constexpr SpecialWord(std::string_view longText,
                          std::string_view shortText,
                          tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE special,
                          std::uint32_t allowed,
                          std::string_view value) noexcept
        : longForm(MakeWordKey(longText)),
          shortForm(MakeWordKey(shortText)),
          code(special),
          types(allowed),
          number(value)
    {}
};

inline constexpr SpecialWord kSpecialWords[] = {
    {"MINIMUM", "MIN", ZO_SCPI_SPECIAL_MINIMUM, ARG_MINMAX, ""},
    {"MAXIMUM", "MAX", ZO_SCPI_SPECIAL_MAXIMUM, ARG_MINMAX, ""},
    {"DEFAULT", "DEF", ZO_SCPI_SPECIAL_DEFAULT, ARG_DEFAULT, ""},
    {"UP", "UP", ZO_SCPI_SPECIAL_UP, ARG_UPDOWN, ""},
    {"DOWN", "DOWN", ZO_SCPI_SPECIAL_DOWN, ARG_UPDOWN, ""},
    {"ON", "ON", ZO_SCPI_SPECIAL_ON, ARG_OFF, ""},
    {"OFF", "OFF", ZO_SCPI_SPECIAL_OFF, ARG_OFF, ""},
    {"KEEP", "KEEP", ZO_SCPI_SPECIAL_KEEP, ARG_KEEP, ""},
    {"INFINITY", "INF", ZO_SCPI_SPECIAL_INFINITY, ARG_PFLOAT_S, "9.9E37"},
    {"NINFINITY", "NINF", ZO_SCPI_SPECIAL_NEGATIVE_INFINITY, ARG_NFLOAT_S, "-9.9E37"},
    {"NAN", "NAN", ZO_SCPI_SPECIAL_NOT_A_NUMBER, ARG_PFLOAT_S | ARG_NFLOAT_S, "9.91E37"},
};

/// Types that let a parameter take words, besides its own list.
inline constexpr std::uint32_t kWordTypes = ARG_MINMAX | ARG_DEFAULT | ARG_UPDOWN | ARG_OFF | ARG_KEEP;

/// The type of a Boolean parameter: numbers and ON, OFF; its words are these before any of its own.
inline constexpr std::uint32_t kBooleanType = ARG_SFLOAT | ARG_OFF | MNEM;

} // namespace ZoVelkor::RemoteKernel
