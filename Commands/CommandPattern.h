#pragma once

#include "CommandMistakes.h"
#include "KeywordForms.h"
#include "ScpiCommandTable.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace ZoVelkor::Commands
{

/// Nodes of one header, alternatives included.
inline constexpr std::size_t kMaxPatternNodes = 16;

/// One keyword of a header pattern.
struct PatternNode
{
    std::string_view keyword;  ///< as it is written, VOLTage; without star, brackets and suffix
    std::string_view suffixes; ///< which numeric suffixes it takes, "1-3"; empty: it takes none
    bool optional = false;     ///< it may be left out
    bool alternative = false;  ///< another name of the node before it
};

/// The header of a command as a manual writes it, taken apart (SCPI-99 vol. 1, 5.1).
///
///     [SOURce<1-3>]:VOLTage[:LEVel][:IMMediate][:AMPLitude]
///     FREQuency[:CW|:FIXed]
///     *TST?
///
/// A keyword's capitals are its short form. Brackets enclose what may be left out; a bar in them separates
/// names of one node, the first of which is the one that may be left out, at the end of a header only. Angle
/// brackets hold the numeric suffixes that a node takes (grammar: CNumericSuffixExpression). A question mark at
/// the end promises that the command is a query and nothing else.
struct HeaderPattern
{
    std::array<PatternNode, kMaxPatternNodes> nodes{}; ///< from left to right
    std::size_t count = 0;                             ///< of them
    std::size_t suffixCount = 0; ///< nodes that take a numeric suffix, alternatives counted once
    bool common = false;         ///< a common command (IEEE 488.2 section 10)
    bool queryOnly = false;      ///< it ends in a question mark
};

/// @cond machinery
constexpr bool IsCapital(char c)
{
    return c >= 'A' && c <= 'Z';
}

constexpr bool IsSmall(char c)
{
    return c >= 'a' && c <= 'z';
}

/// Length of the capitals that a keyword begins with, digits at its end apart: its short form.
constexpr std::size_t WrittenShortForm(std::string_view keyword)
{
    return LeadingCapitals(WithoutDigits(keyword)).size();
}

/// Length of the short form that the standard gives a keyword (SCPI-99 vol. 1, 6.2.1).
constexpr std::size_t StandardShortForm(std::string_view keyword)
{
    constexpr std::size_t kLongest = 4;
    keyword = WithoutDigits(keyword);
    if (keyword.size() <= kLongest)
    {
        return keyword.size();
    }
    const bool hasVowel =
        std::string_view("AEIOU").find(ToCapital(keyword[kLongest - 1])) != std::string_view::npos;
    return hasVowel && !IsDigit(keyword[kLongest]) ? kLongest - 1 : kLongest;
}

/// Compares without regard to case.
constexpr bool AreSameWord(std::string_view left, std::string_view right)
{
    if (left.size() != right.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        if (ToCapital(left[i]) != ToCapital(right[i]))
        {
            return false;
        }
    }
    return true;
}

/// Tells whether a client could mean either of two keywords: they end in the same digits, and a form of one is a
/// form of the other.
constexpr bool AreAmbiguous(std::string_view left, std::string_view right)
{
    const std::string_view longLeft = WithoutDigits(left);
    const std::string_view longRight = WithoutDigits(right);
    const std::string_view shortLeft = LeadingCapitals(longLeft);
    const std::string_view shortRight = LeadingCapitals(longRight);
    return left.substr(longLeft.size()) == right.substr(longRight.size()) &&
           (AreSameWord(longLeft, longRight) || AreSameWord(shortLeft, shortRight) ||
            AreSameWord(shortLeft, longRight) || AreSameWord(longLeft, shortRight));
}

/// Short form of the last keyword that must be written, for messages.
constexpr std::string_view CommandName(const HeaderPattern& header)
{
    std::string_view name = header.nodes[0].keyword;
    for (std::size_t i = 0; i < header.count; ++i)
    {
        const PatternNode& node = header.nodes[i];
        name = node.optional || node.alternative ? name : node.keyword;
    }
    return header.common ? name : name.substr(0, WrittenShortForm(name));
}

/// Checks one keyword or word of a list; does not return for a bad one.
constexpr void CheckKeyword(std::string_view keyword)
{
    constexpr std::size_t kLongestKeyword = 12;
    if (keyword.empty() || !IsCapital(keyword.front()))
    {
        KeywordMustBeginWithACapital();
    }
    if (keyword.size() > kLongestKeyword)
    {
        KeywordIsLongerThanTwelveCharacters();
    }
    const std::size_t shortForm = WrittenShortForm(keyword);
    for (std::size_t i = 0; i < keyword.size(); ++i)
    {
        const char c = keyword[i];
        if (!IsDigit(c) && c != '_' && !(i < shortForm ? IsCapital(c) : IsSmall(c)))
        {
            KeywordHasACharacterThatIsNoLetterOrDigit();
        }
    }
    if (shortForm != StandardShortForm(keyword))
    {
        CapitalsAreNotTheShortFormOfTheKeyword();
    }
}

/// Takes a header pattern apart, from left to right.
class CPatternReader
{
public:
    constexpr explicit CPatternReader(std::string_view text) : m_text(text) {}

    constexpr HeaderPattern Read()
    {
        if (m_text.ends_with('?'))
        {
            m_pattern.queryOnly = true;
            m_text.remove_suffix(1);
        }
        if (Skip('*'))
        {
            ReadCommon();
            return m_pattern;
        }
        Skip(':');
        bool isFirst = true;
        while (m_place < m_text.size())
        {
            ReadNode(isFirst);
            isFirst = false;
        }
        if (m_pattern.count == 0 || m_isOpen)
        {
            PatternEndsWithoutAKeyword();
        }
        return m_pattern;
    }

private:
    constexpr char Next() const { return m_place < m_text.size() ? m_text[m_place] : '\0'; }
    constexpr bool Skip(char c)
    {
        const bool isThere = Next() == c;
        m_place += isThere ? 1 : 0;
        return isThere;
    }

    constexpr void ReadCommon()
    {
        m_pattern.common = true;
        const std::string_view word = m_text.substr(m_place);
        for (const char c : word)
        {
            if (!IsCapital(c))
            {
                CommonCommandHasOnlyCapitals();
            }
        }
        if (word.empty() || word.size() > 12)
        {
            KeywordIsLongerThanTwelveCharacters();
        }
        m_pattern.nodes[m_pattern.count++] = {.keyword = word, .suffixes = {}};
    }

    /// One node with its colon, or a bracket with what it encloses.
    constexpr void ReadNode(bool isFirst)
    {
        if (m_hasAlternatives)
        {
            AlternativesMustStandAtTheEnd();
        }
        if (Skip('['))
        {
            ReadBracket();
            return;
        }
        if (!isFirst && !m_isOpen && !Skip(':'))
        {
            KeywordsMustBeSeparatedByColons();
        }
        m_isOpen = false;
        ReadKeyword({.optional = false, .alternative = false});
    }

    constexpr void ReadBracket()
    {
        Skip(':');
        ReadKeyword({.optional = true, .alternative = false});
        while (Skip('|'))
        {
            m_hasAlternatives = true;
            Skip(':');
            ReadKeyword({.optional = false, .alternative = true});
        }
        m_isOpen = Skip(':'); // [SOURce:]VOLTage
        if (!Skip(']'))
        {
            BracketWithoutItsPartner();
        }
    }

    struct Kind
    {
        bool optional;
        bool alternative;
    };

    constexpr void ReadKeyword(Kind kind)
    {
        const std::size_t begin = m_place;
        while (m_place < m_text.size() &&
               std::string_view("[]<>:|").find(m_text[m_place]) == std::string_view::npos)
        {
            ++m_place;
        }
        PatternNode node{m_text.substr(begin, m_place - begin), {}, kind.optional, kind.alternative};
        CheckKeyword(node.keyword);
        if (Skip('<'))
        {
            node.suffixes = ReadSuffixes();
            m_pattern.suffixCount += kind.alternative ? 0 : 1;
        }
        if (Next() == ']' && !kind.optional && !kind.alternative)
        {
            BracketWithoutItsPartner();
        }
        if (m_pattern.count == kMaxPatternNodes)
        {
            PatternHasTooManyKeywords();
        }
        m_pattern.nodes[m_pattern.count++] = node;
    }

    constexpr std::string_view ReadSuffixes()
    {
        const std::size_t end = m_text.find('>', m_place);
        if (end == std::string_view::npos || end == m_place)
        {
            NumericSuffixesMustStandInAngleBrackets();
        }
        const std::string_view suffixes = m_text.substr(m_place, end - m_place);
        if (suffixes.size() >= kTableExpressionSize)
        {
            NumericSuffixesAreTooLong();
        }
        m_place = end + 1;
        return suffixes;
    }

    std::string_view m_text;
    std::size_t m_place = 0;
    bool m_isOpen = false; // the colon of the next keyword stood in the bracket
    bool m_hasAlternatives = false;
    HeaderPattern m_pattern;
};

/// @endcond

/// Takes a header pattern apart; a bad one does not compile.
constexpr HeaderPattern ReadHeaderPattern(std::string_view text)
{
    return CPatternReader(text).Read();
}

} // namespace ZoVelkor::Commands
