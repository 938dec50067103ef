#include "HexDump.h"

#include "CToolError.h"
#include "ToolFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kSeparators = " \t\r,:;-";
/// Offsets beyond are no offsets, and a squeezed dump takes no more memory.
constexpr std::size_t kMaxDumpSize = std::size_t{1} << 24U;
/// Digits of offsets as hexdump prints them before words; it is also the width of od.
constexpr std::size_t kWordOffsetDigits = 7;
constexpr std::size_t kMinOffsetDigits = 4;
constexpr std::size_t kWordDigits = 4;

/// Takes what stands up to the first of some characters, and those that follow.
std::string_view TakeToken(std::string_view& rest, std::string_view separators)
{
    const std::string_view token = rest.substr(0, rest.find_first_of(separators));
    rest.remove_prefix(std::min(rest.find_first_not_of(separators, token.size()), rest.size()));
    return token;
}

void SkipFront(std::string_view& text, std::string_view characters)
{
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

bool HasHexPrefix(std::string_view token) noexcept
{
    return token.starts_with("0x") || token.starts_with("0X");
}

std::string_view WithoutPrefix(std::string_view token) noexcept
{
    return HasHexPrefix(token) ? token.substr(2) : token;
}

bool AreDigits(std::string_view token) noexcept
{
    return !token.empty() && token.find_first_not_of(kDigits) == std::string_view::npos;
}

class CHexDumpReader
{
public:
    void TakeLine(std::string_view line)
    {
        ++m_line;
        SkipFront(line, kBlanks);
        line = line.substr(0, line.find_last_not_of(kBlanks) + 1);
        if (line == "*")
        {
            if (m_lineSize == 0)
            {
                Refuse("* stands for no line");
            }
            m_squeezedSize = m_lineSize;
            return;
        }
        TakeOffset(line);
        const std::size_t former = m_bytes.size();
        // Behind these characters a dump repeats the bytes as text.
        line = line.substr(0, line.find_first_of("|>"));
        SkipFront(line, kSeparators);
        while (!line.empty())
        {
            TakeDigits(WithoutPrefix(TakeToken(line, kSeparators)));
        }
        m_lineSize = m_bytes.size() - former;
    }

    std::vector<std::uint8_t> Finish() noexcept { return std::move(m_bytes); }

private:
    [[noreturn]] void Refuse(const std::string& fault) const
    {
        throw CToolError(ExitCode::Failed, fmt::format("line {}: {}", m_line, fault));
    }

    /// Takes the offset that a line begins with, and leaves the digits alone.
    void TakeOffset(std::string_view& line)
    {
        std::string_view rest = line;
        std::string_view token = TakeToken(rest, kBlanks);
        const bool hasColon = token.ends_with(':');
        token = WithoutPrefix(token.substr(0, token.size() - (hasColon ? 1 : 0)));
        if (!AreDigits(token) || token.size() < kMinOffsetDigits)
        {
            return;
        }
        if (m_bytes.empty() && !hasColon)
        {
            // No message begins with zeros.
            m_hasOffsets = token.size() > kMinOffsetDigits && token.find_first_not_of('0') == token.npos;
            m_hasWords = token.size() == kWordOffsetDigits && rest.find_first_of(kBlanks) == kWordDigits;
        }
        if (hasColon || m_hasOffsets)
        {
            GoTo(token);
            line = rest;
        }
        if (hasColon)
        {
            // Two blanks separate the bytes from their repetition as text, which may look like digits.
            line = line.substr(0, line.find("  "));
        }
    }

    /// Lines like the one before have been left out up to here, and padding of a last word comes off.
    void GoTo(std::string_view digits)
    {
        std::size_t offset = 0;
        const auto [end, fault] = std::from_chars(digits.begin(), digits.end(), offset, 16);
        if (fault != std::errc() || offset > kMaxDumpSize)
        {
            Refuse(fmt::format("{} is no offset", digits));
        }
        while (m_squeezedSize != 0 && m_bytes.size() < offset)
        {
            m_bytes.push_back(m_bytes[m_bytes.size() - m_squeezedSize]);
        }
        m_squeezedSize = 0;
        if (m_hasWords && m_bytes.size() == offset + 1)
        {
            m_bytes.pop_back();
        }
        if (!m_bytes.empty() && m_bytes.size() != offset)
        {
            Refuse(fmt::format("the offset is 0x{:x}, but 0x{:x} bytes stand above", offset, m_bytes.size()));
        }
    }

    void TakeDigits(std::string_view token)
    {
        if (!AreDigits(token))
        {
            Refuse(fmt::format("{} are no hexadecimal digits", Printable(token)));
        }
        if (token.size() % 2 != 0)
        {
            Refuse(fmt::format("{} is no whole number of bytes", token));
        }
        const std::size_t former = m_bytes.size();
        for (; !token.empty(); token.remove_prefix(2))
        {
            std::uint8_t byte = 0;
            std::from_chars(token.data(), token.data() + 2, byte, 16);
            m_bytes.push_back(byte);
        }
        if (m_hasWords)
        {
            // Words are printed in the order of the machine, the lower byte behind the upper one.
            std::reverse(m_bytes.begin() + static_cast<std::ptrdiff_t>(former), m_bytes.end());
        }
    }

    std::vector<std::uint8_t> m_bytes;
    std::size_t m_line = 0;
    std::size_t m_lineSize = 0;
    bool m_hasOffsets = false;
    bool m_hasWords = false;
    std::size_t m_squeezedSize = 0; // of the line that a * repeats; 0: none is open
};

} // namespace

bool IsHexText(std::string_view text) noexcept
{
    SkipFront(text, kSeparators);
    bool isHex = !text.empty();
    while (isHex && !text.empty())
    {
        isHex = AreDigits(WithoutPrefix(TakeToken(text, kSeparators)));
    }
    return isHex;
}

std::vector<std::uint8_t> ParseHexDump(std::string_view text)
{
    CHexDumpReader reader;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        reader.TakeLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return reader.Finish();
}

} // namespace ZoVelkor::Tools
