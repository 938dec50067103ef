#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZoVelkor::Tools
{

/// Finds the ends of SCPI messages in bytes as they come or go: the LF outside definite-length blocks.
///
/// A block begins with # and a digit from 1 to 9 where an item can begin, and not inside a string. An LF
/// inside a string ends the message too. Standard: IEEE 488.2 sections 7.7.6 and 8.7.9.
class CMessageScanner
{
public:
    /// Takes bytes up to the end of the message and no further; the byte behind an end begins a new one.
    ///
    /// @return how many bytes it took
    std::size_t Take(std::string_view bytes);

    /// The last byte that was taken ended a message.
    bool IsEnd() const noexcept { return m_state == Progress::End; }
    /// A message has begun and not ended.
    bool IsInside() const noexcept { return m_isInside; }
    /// A question mark outside strings and blocks was in the message that has begun or ended last.
    bool HasQuestion() const noexcept { return m_hasQuestion; }

private:
    enum class Progress : std::uint8_t
    {
        End,
        ItemStart,
        Item,
        Text,       ///< inside a string
        BlockMark,  ///< behind the #
        BlockDigits ///< in the length of a block
    };

    void TakeOne(char byte);
    Progress StateAfter(char byte);
    Progress TakeLengthDigit(char byte);

    Progress m_state = Progress::End;
    bool m_isInside = false;
    bool m_hasQuestion = false;
    char m_quote = '\0';
    int m_digits = 0;            ///< digits of a block's length that are still to come
    std::size_t m_block = 0;     ///< length as far as it is known
    std::size_t m_blockLeft = 0; ///< bytes of the block that are still to come
};

} // namespace ZoVelkor::Tools
