#include "CScpiParserTableGroups.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace ZoVelkor
{

namespace
{

constexpr int kMaxOffsetWidth = 20;

/// Digits of the largest index of a table that ends there.
int WidthOf(long tableEnd)
{
    int width = 0;
    for (long rest = tableEnd - 1; rest > 0 && width < kMaxOffsetWidth; rest /= 10)
    {
        ++width;
    }
    return width;
}

} // namespace

void CScpiParserTableGroups::Reset()
{
    *this = CScpiParserTableGroups();
}

void CScpiParserTableGroups::AddGroup(tagScpiTableKind kind, long start, long size)
{
    if (size > 0)
    {
        m_groups.at(static_cast<std::size_t>(kind)).push_back(start);
    }
    m_tableEnd = std::max(m_tableEnd, start + std::max(size, 0L));
}

void CScpiParserTableGroups::Finish()
{
    for (std::vector<long>& starts : m_groups)
    {
        std::sort(starts.begin(), starts.end());
        starts.erase(std::unique(starts.begin(), starts.end()), starts.end());
    }
    m_offsetWidth = WidthOf(m_tableEnd);
}

const std::vector<long>& CScpiParserTableGroups::Groups(tagScpiTableKind kind) const
{
    return m_groups.at(static_cast<std::size_t>(kind));
}

void CScpiParserTableGroups::TokeniseEnum(std::string& text,
                                          std::uint32_t& value,
                                          const std::string& name,
                                          std::uint32_t mask)
{
    if ((value & mask) != mask)
    {
        return;
    }
    text += (text.empty() ? "" : "|") + name;
    value &= ~mask;
}

void CScpiParserTableGroups::TokeniseValue(std::string& text, std::uint32_t value)
{
    if (text.empty() || value != 0)
    {
        text += text.empty() ? "" : "|";
        text += std::to_string(value);
    }
}

void CScpiParserTableGroups::DumpOffset(std::ostream& out, long index) const
{
    out << fmt::format("/* [{:>{}}] */ ", index, m_offsetWidth);
}

} // namespace ZoVelkor
