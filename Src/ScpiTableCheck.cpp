#include "ScpiTableCheck.h"

#include "ParserTableRules.h"

namespace ZoVelkor
{

std::size_t FindSuffixExpressionStart(const _CMD_SET_RECORD* table, std::size_t count)
{
    std::size_t start = table == nullptr ? 0 : count;
    while (start > 0 && (table[start - 1].nse.iValue & NSE_HEADER) != 0)
    {
        --start;
    }
    return start;
}

std::vector<tagSuffixExpression> FindSuffixExpressions(const _CMD_SET_RECORD* table, std::size_t count)
{
    std::vector<tagSuffixExpression> expressions;
    const std::size_t start = FindSuffixExpressionStart(table, count);
    for (std::size_t i = start; table != nullptr && i < count; ++i)
    {
        const std::size_t header = table[i].nse.iValue & ~NSE_HEADER;
        const std::string_view text = TableText(table[i].nse.szExpression);
        if (header < start && text.size() < kTableExpressionSize)
        {
            expressions.push_back({header, text});
        }
    }
    return expressions;
}

} // namespace ZoVelkor
