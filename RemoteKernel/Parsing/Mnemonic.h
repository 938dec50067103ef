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
struct tagMnemonicKey
{
    static constexpr std::size_t kCapacity = 16;

    std::uint64_t iLow = 0;
    std::uint64_t iHigh = 0;

    bool operator==(const tagMnemonicKey&) const = default;
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
struct tagMnemonic
{
    tagMnemonicKey key;
    std::size_t iLength = 0;
};

/// Reads the characters of one class from the start of a text.
constexpr tagMnemonic
ReadMnemonic(const char* begin,
             const char* end,
             const std::array<unsigned char, 256>& characters = kMnemonicCharacters) noexcept
{
    tagMnemonic mnemonic;
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
            mnemonic.iLength = length;
            return mnemonic;
        }
        mnemonic.key.iLow |= c << shift;
    }
    for (unsigned int shift = 0; shift < 64 && next() != 0; shift += 8, ++length)
    {
        mnemonic.key.iHigh |= next() << shift;
    }
    while (next() != 0)
    {
        ++length;
    }
    mnemonic.iLength = length;
    return mnemonic;
}

/// Keeps the first characters of a key.
constexpr tagMnemonicKey CutMnemonic(tagMnemonicKey key, std::size_t length) noexcept
{
    if (length < 8)
    {
        return {key.iLow & ((std::uint64_t{1} << (8 * length)) - 1), 0};
    }
    if (length < tagMnemonicKey::kCapacity)
    {
        return {key.iLow, key.iHigh & ((std::uint64_t{1} << (8 * (length - 8))) - 1)};
    }
    return key;
}

} // namespace ZoVelkor::RemoteKernel
