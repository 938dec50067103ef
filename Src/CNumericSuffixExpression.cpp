#include "CNumericSuffixExpression.h"

#include "CharacterClasses.h"
#include "ErrorRaising.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Src/CNumericSuffixExpression");

using RangeList = CNumericSuffixExpression::RangeList;

constexpr long kLowest = std::numeric_limits<std::int32_t>::min();
constexpr long kHighest = std::numeric_limits<std::int32_t>::max();

constexpr const char* kGrammar = "NumericExpression = ( Operator Number ) | List | '*';\n"
                                 "Number            = [ '-' ] Digit { Digit } ;\n"
                                 "List              = ListElement { ( ';' | ',' ) ListElement } ;\n"
                                 "ListElement       = Number | Range ;\n"
                                 "Range             = Number ( '-' | '..' | '...' ) ( Number | Infinity ) ;\n"
                                 "Operator          = '<' | '<=' | '==' | '>=' | '>' | '!' ;\n"
                                 "Infinity          = 'n' | 'N' | '*';";

constexpr const char* kHelp = "1,2,3   valid are 1, 2 or 3\n"
                              "1-4     valid are 1, 2, 3 or 4\n"
                              "1-2;5   valid are 1, 2 or 5\n"
                              "<10     less than 10\n"
                              "<=20    less or equal 20\n"
                              ">=40    greater or equal 40\n"
                              ">50     greater 50\n"
                              "9..13   valid are 9 to 13\n"
                              "!5      invalid is five\n"
                              "*       all values accepted\n"
                              "1..n    any positive value";

constexpr const char* kInvalidCharacter = "invalid character in numeric expression";
constexpr const char* kCharacterBehindEnd = "unexpected character in numeric expression";
constexpr const char* kUnexpectedCharacter = "unexpected character";
constexpr const char* kUnexpectedEnd = "unexpected end of expression";
constexpr const char* kMissingEqual = "missing equal character";
constexpr const char* kMissingDigit = "missing numeric digit";
constexpr const char* kConversionError = "numeric conversion error";
// Deliberate: programs compare the text as it has always been spelled.
constexpr const char* kInvalidSeparator = "invalid seperator character";

/// An operator makes a range from the domain's minimum to its number, one from there to the maximum, or both;
/// the steps are added to the number. A longer sign stands before its beginning.
struct Operator
{
    std::string_view sign;
    std::optional<long> stepBelow;
    std::optional<long> stepAbove;
};

constexpr Operator kOperators[] = {{"<=", 0, std::nullopt},
                                   {"<", -1, std::nullopt},
                                   {">=", std::nullopt, 0},
                                   {">", std::nullopt, 1},
                                   {"!", -1, 1}};

constexpr bool IsInfinity(char c) noexcept
{
    return c == '*' || c == 'n' || c == 'N';
}

struct Domain
{
    long minimum;
    long maximum;
};

class CExpressionParser
{
public:
    CExpressionParser(std::string_view text, Domain domain) noexcept : m_text(text), m_domain(domain) {}

    bool Parse()
    {
        if (AtEnd())
        {
            return true;
        }
        if (IsNumberStart())
        {
            return ParseList();
        }
        return ParseOperator() && (AtEnd() || Fail(kCharacterBehindEnd));
    }

    RangeList TakeRanges() noexcept { return std::move(m_ranges); }
    std::size_t Position() const noexcept { return m_position; }
    const char* Error() const noexcept { return m_error; }

private:
    bool AtEnd() const noexcept { return m_position == m_text.size(); }
    char Next() const noexcept { return AtEnd() ? '\0' : m_text[m_position]; }
    bool IsNumberStart() const noexcept { return Next() == '-' || IsDigit(Next()); }

    bool Accept(std::string_view sign) noexcept
    {
        const bool found = m_text.substr(m_position, sign.size()) == sign;
        m_position += found ? sign.size() : 0;
        return found;
    }

    bool Fail(const char* error) noexcept
    {
        m_error = error;
        return false;
    }

    /// Leaves an empty range out: an operator at an end of the domain has nothing beyond it.
    void AddUnlessEmpty(long low, long high)
    {
        if (low <= high)
        {
            m_ranges.emplace_back(low, high);
        }
    }

    bool ParseNumber(long& number)
    {
        const std::size_t start = m_position;
        if (m_domain.minimum < 0)
        {
            Accept("-");
        }
        if (!IsDigit(Next()))
        {
            return Fail(kMissingDigit);
        }
        while (IsDigit(Next()))
        {
            ++m_position;
        }
        // Deliberate: base 0 reads a leading zero as octal, as tables have been written for it. The digits
        // end for the conversion at an 8 or 9 then: 08 is 0.
        const std::string digits(m_text.substr(start, m_position - start));
        errno = 0;
        number = std::strtol(digits.c_str(), nullptr, 0);
        const bool fits = errno != ERANGE && number >= kLowest && number <= kHighest;
        return fits || Fail(kConversionError);
    }

    bool ParseInfinity(long& number) noexcept
    {
        if (!IsInfinity(Next()))
        {
            return Fail(AtEnd() ? kUnexpectedEnd : kUnexpectedCharacter);
        }
        ++m_position;
        number = m_domain.maximum;
        return true;
    }

    bool ParseOperator()
    {
        if (Accept("*"))
        {
            AddUnlessEmpty(m_domain.minimum, m_domain.maximum);
            return true;
        }
        if (Accept("="))
        {
            return ParseEqual();
        }
        const auto* const operation =
            std::find_if(std::begin(kOperators), std::end(kOperators), [this](const Operator& each) {
                return Accept(each.sign);
            });
        return operation != std::end(kOperators) ? ParseOpenRange(*operation) : Fail(kInvalidCharacter);
    }

    bool ParseEqual()
    {
        long number = 0;
        if (!Accept("="))
        {
            return Fail(AtEnd() ? kMissingEqual : kUnexpectedCharacter);
        }
        if (!ParseNumber(number))
        {
            return false;
        }
        m_ranges.emplace_back(number, number);
        return true;
    }

    bool ParseOpenRange(const Operator& sign)
    {
        long number = 0;
        if (!ParseNumber(number))
        {
            return false;
        }
        if (sign.stepBelow)
        {
            AddUnlessEmpty(m_domain.minimum, number + *sign.stepBelow);
        }
        if (sign.stepAbove)
        {
            AddUnlessEmpty(number + *sign.stepAbove, m_domain.maximum);
        }
        return true;
    }

    bool ParseList()
    {
        while (ParseElement())
        {
            if (AtEnd())
            {
                return true;
            }
            if (!Accept(";") && !Accept(","))
            {
                return Fail(kInvalidSeparator);
            }
        }
        return false;
    }

    bool ParseElement()
    {
        long low = 0;
        if (!ParseNumber(low))
        {
            return false;
        }
        long high = low;
        if (Accept("...") || Accept("..") || Accept("-"))
        {
            if (!ParseUpperEnd(high))
            {
                return false;
            }
        }
        else
        {
            Accept("."); // Deliberate: a single dot behind a number is no range mark and no error, "1." is 1.
        }
        // Deliberate: the ends of a range may stand in either order.
        m_ranges.emplace_back(std::min(low, high), std::max(low, high));
        return true;
    }

    bool ParseUpperEnd(long& high) { return IsNumberStart() ? ParseNumber(high) : ParseInfinity(high); }

    std::string_view m_text;
    Domain m_domain;
    std::size_t m_position = 0;
    const char* m_error = "";
    RangeList m_ranges;
};

Domain MakeDomain(long minimum, long maximum) noexcept
{
    const auto [low, high] = std::minmax(minimum, maximum);
    return {std::clamp(low, kLowest, kHighest), std::clamp(high, kLowest, kHighest)};
}

} // namespace

bool CNumericSuffixExpression::SetExpression(
    const std::string& text, long& errorPosition, std::string& errorText, long minimum, long maximum)
{
    CExpressionParser parser(text, MakeDomain(minimum, maximum));
    const bool parsed = parser.Parse();
    if (parsed)
    {
        m_pExpression = CSharedPointer<const RangeList>::Create(parser.TakeRanges());
    }
    else
    {
        ReleaseExpression();
    }
    errorPosition = parsed ? 0 : static_cast<long>(parser.Position());
    errorText = parser.Error();
    return parsed;
}

bool CNumericSuffixExpression::SetExpression(const std::string& text,
                                             bool allowNegative,
                                             long& errorPosition,
                                             std::string& errorText)
{
    return SetExpression(text, errorPosition, errorText, allowNegative ? kLowest : 0, kHighest);
}

const RangeList& CNumericSuffixExpression::GetRanges() const
{
    if (m_pExpression == nullptr)
    {
        ThrowError(ZO_ERROR(nullptr,
                            "m_pExpression.Get() != NULL",
                            "null pointer detected (m_pExpression.Get()).",
                            E_POINTER));
    }
    return *m_pExpression;
}

bool CNumericSuffixExpression::CheckValue(long value) const
{
    return CheckRange(value, value);
}

bool CNumericSuffixExpression::CheckRange(long low, long high) const
{
    const RangeList& ranges = GetRanges();
    return std::any_of(ranges.begin(), ranges.end(), [=](const auto& range) {
        return range.first <= high && range.second >= low;
    });
}

bool CNumericSuffixExpression::CompareRanges(const CNumericSuffixExpression* pOther) const
{
    if (pOther == nullptr)
    {
        ThrowError(ZO_NULL_POINTER(nullptr, "pOther"));
    }
    const RangeList& ranges = GetRanges();
    return std::any_of(ranges.begin(), ranges.end(), [=](const auto& range) {
        return pOther->CheckRange(range.first, range.second);
    });
}

void CNumericSuffixExpression::Normalise()
{
    if (m_pExpression == nullptr || m_pExpression->size() < 2)
    {
        return;
    }
    RangeList sorted(*m_pExpression);
    sorted.sort();
    RangeList joined;
    for (const auto& range : sorted)
    {
        // Ranges that touch are joined as well; in 64 bits the ends of 32 bits do not wrap.
        if (joined.empty() || range.first - 1 > joined.back().second)
        {
            joined.push_back(range);
        }
        else
        {
            joined.back().second = std::max(joined.back().second, range.second);
        }
    }
    m_pExpression = CSharedPointer<const RangeList>::Create(std::move(joined));
}

std::string CNumericSuffixExpression::GetExpressionString() const
{
    return m_pExpression != nullptr ? GetExpressionString(*m_pExpression) : std::string();
}

std::string CNumericSuffixExpression::GetExpressionString(const RangeList& ranges)
{
    std::string text;
    for (const auto& [low, high] : ranges)
    {
        const char* const separator = text.empty() ? "" : ",";
        // A minus sign behind a minus would read badly, so negative ranges are written with dots.
        const char* const mark = low < 0 || high < 0 ? ".." : "-";
        text += low == high ? fmt::format("{}{}", separator, low)
                            : fmt::format("{}{}{}{}", separator, low, mark, high);
    }
    return text;
}

std::string CNumericSuffixExpression::GetHelp()
{
    return kHelp;
}

std::string CNumericSuffixExpression::GetGrammar()
{
    return kGrammar;
}

} // namespace ZoVelkor
