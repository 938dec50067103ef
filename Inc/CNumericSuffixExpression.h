#pragma once

#include "CSharedPointer.h"
#include "ZoExport.h"

#include <list>
#include <string>
#include <utility>

namespace ZoVelkor
{

/// States which numeric suffixes a header accepts: "1-4", ">=40", "1,2;5".
///
/// All values are of 32 bits. The domain stands in for the open ends of operators and for infinity; it does
/// not restrict numbers that an expression names. Copies share the ranges until one of them is changed; the
/// others keep theirs. An object has no expression before SetExpression, and after one that failed.
/// Threads: one object belongs to one thread at a time; copies may live in different threads.
class ZO_EXPORT CNumericSuffixExpression
{
public:
    /// Closed ranges, each with its low and its high end.
    using RangeList = std::list<std::pair<long, long>>;

    /// Parses an expression; GetGrammar tells what is allowed. An empty text is an expression that accepts
    /// nothing.
    ///
    /// @param[out] errorPosition  0; on failure the offset at which parsing stopped
    /// @param[out] errorText  empty; on failure the reason
    /// @param minimum  lowest value of the domain; numbers may have a sign when it is negative. Ends beyond
    ///                 32 bits are drawn in, a reversed domain is turned round
    /// @param maximum  highest value of the domain
    /// @return false on failure; the object then has no expression
    bool SetExpression(
        const std::string& text, long& errorPosition, std::string& errorText, long minimum, long maximum);
    /// The same with the domain 0 to 2147483647, or from -2147483648 when negative values are allowed.
    bool
    SetExpression(const std::string& text, bool allowNegative, long& errorPosition, std::string& errorText);
    /// The object has no expression any more.
    void ReleaseExpression() noexcept { m_pExpression.Release(); }

    /// @name Questions
    /// Each raises CShellError with E_POINTER when there is no expression to ask.
    /// @{

    /// Tells whether a range holds the value.
    bool CheckValue(long value) const;
    /// Tells whether a range overlaps the closed range from low to high.
    bool CheckRange(long low, long high) const;
    /// Tells whether a range overlaps one of another expression, which must not be null.
    bool CompareRanges(const CNumericSuffixExpression* pOther) const;
    /// The ranges, in the order of the expression until Normalise; valid until the object changes.
    const RangeList& GetRanges() const;
    /// @}

    /// Sorts the ranges and joins those that overlap or are adjacent; does nothing without expression.
    void Normalise();

    /// The ranges as a list; SetExpression with the same domain makes the same ranges of it. Empty without
    /// expression.
    std::string GetExpressionString() const;
    /// The same for ranges of the caller.
    static std::string GetExpressionString(const RangeList& ranges);

    /// Examples with their meaning, one a line.
    static std::string GetHelp();
    /// The grammar of expressions, one rule a line.
    static std::string GetGrammar();

private:
    CSharedPointer<const RangeList> m_pExpression;
};

} // namespace ZoVelkor
