#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// Longest program mnemonic, suffix digits included (IEEE 488.2 section 7.6.1.4.1).
inline constexpr std::size_t kMaxMnemonicLength = 12;

/// A keyword in capitals, packed into two words so that comparing takes two instructions.
///
/// Characters beyond the sixteenth are not kept: no keyword of a table is that long.
struct MnemonicKey
{
    static constexpr std::size_t kCapacity = 16;

    std::uint64_t low = 0;
    std::uint64_t high = 0;

    bool operator==(const MnemonicKey&) const = default;
};

namespace Detail
{
constexpr std::array<unsigned char, 256> MakeMnemonicCharacters(std::string_view further)
{
    std::array<unsigned char, 256> characters{};
    for (unsigned char c = 'A'; c <= 'Z'; ++c)
    {
        characters[c] = c;
        characters[c | 0x20U] = c;
    }
    for (unsigned char c = '0'; c <= '9'; ++c)
    {
        characters[c] = c;
    }
    for (const char c : further)
    {
        characters[static_cast<unsigned char>(c)] = static_cast<unsigned char>(c);
    }
    return characters;
}
} // namespace Detail

/// Capital of each character that may stand in a program mnemonic, 0 for the others.
inline constexpr std::array<unsigned char, 256> kMnemonicCharacters = Detail::MakeMnemonicCharacters("_");

/// As kMnemonicCharacters for a unit suffix, which may be a compound such as V/S or M.S-2.
inline constexpr std::array<unsigned char, 256> kUnitCharacters = Detail::MakeMnemonicCharacters("/.^-");

/// Characters with which a keyword, a mnemonic or a unit of a table can be reached by a client.
inline constexpr std::array<unsigned char, 256> kTableCharacters = Detail::MakeMnemonicCharacters("_/.^-");

/// A mnemonic that has been read from a text.
struct Mnemonic
{
    MnemonicKey key;
    std::size_t length = 0;
};

/// Reads the characters of one class from the start of a text.
constexpr Mnemonic
ReadMnemonic(const char* begin,
             const char* end,
             const std::array<unsigned char, 256>& characters = kMnemonicCharacters) noexcept
{
    Mnemonic mnemonic;
    const auto available = static_cast<std::size_t>(end - begin);
    std::size_t length = 0;
    const auto next = [&]() -> std::uint64_t {
        return length < available ? characters[static_cast<unsigned char>(begin[length])] : 0U;
    };
    for (unsigned int shift = 0; shift < 64; shift += 8, ++length)
    {
        const std::uint64_t c = next();
        if (c == 0)
        {
            mnemonic.length = length;
            return mnemonic;
        }
        mnemonic.key.low |= c << shift;
    }
    for (unsigned int shift = 0; shift < 64 && next() != 0; shift += 8, ++length)
    {
        mnemonic.key.high |= next() << shift;
    }
    while (next() != 0)
    {
        ++length;
    }
    mnemonic.length = length;
    return mnemonic;
}

/// Keeps the first characters of a key.
constexpr MnemonicKey CutMnemonic(MnemonicKey key, std::size_t length) noexcept
{
    if (length < 8)
    {
        return {key.low & ((std::uint64_t{1} << (8 * length)) - 1), 0};
    }
    if (length < MnemonicKey::kCapacity)
    {
        return {key.low, key.high & ((std::uint64_t{1} << (8 * (length - 8))) - 1)};
    }
    return key;
}

} // namespace ZoVelkor::RemoteKernel
