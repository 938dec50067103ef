#include "CCommandTree.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace ZoVelkor::Benchmarks
{
namespace
{

/// Places in the table while headers are written; the real indexes are known only when all headers stand.
constexpr std::uint32_t kNumberParameter = 1;
constexpr std::uint32_t kBlockParameter = 2;

struct tagKind
{
    std::string_view name;
    tagTarget target;
};

constexpr tagKind kKinds[] = {
    {"filler-set",   tagTarget::Filler  },
    {"filler-query", tagTarget::Filler  },
    {"set",          tagTarget::Setting },
    {"span",         tagTarget::Setting },
    {"start",        tagTarget::Setting },
    {"stop",         tagTarget::Setting },
    {"step",         tagTarget::Setting },
    {"query",        tagTarget::Query   },
    {"idn",          tagTarget::Identity},
    {"block",        tagTarget::Block   },
    {"list",         tagTarget::List    },
};

template <std::size_t N>
void SetText(char (&target)[N], std::string_view text)
{
    if (text.size() >= N)
    {
        throw std::runtime_error("keyword too long: " + std::string(text));
    }
    std::ranges::copy(text, target);
}

} // namespace

CCommandTree::CCommandTree(const std::string& path)
{
    std::ifstream file(path);
    if (!file)
    {
        throw std::runtime_error("cannot read " + path);
    }
    for (std::string line; std::getline(file, line);)
    {
        AddLine(line);
    }
    AppendGroup(m_common.children, CCMD);
    AppendGroup(m_root.children, 0);
    AppendParameters();
}

void CCommandTree::AddLine(std::string_view line)
{
    const std::size_t tab = line.find('\t');
    const auto kind = std::ranges::find(kKinds, line.substr(0, tab), &tagKind::name);
    if (tab == std::string_view::npos || kind == std::end(kKinds))
    {
        throw std::runtime_error("malformed line: " + std::string(line));
    }
    AddPattern(kind->target, line.substr(tab + 1));
}

void CCommandTree::AddPattern(tagTarget target, std::string_view pattern)
{
    const bool query = pattern.ends_with('?');
    if (query)
    {
        pattern.remove_suffix(1);
    }
    tagNode* node = &m_root;
    if (pattern.starts_with('*'))
    {
        node = &m_common;
        pattern.remove_prefix(1);
    }
    while (!pattern.empty())
    {
        const bool optional = pattern.front() == '[';
        pattern.remove_prefix(optional ? 1 : 0);
        pattern.remove_prefix(pattern.front() == ':' ? 1 : 0);
        const std::size_t end = std::min(pattern.find_first_of("[]:"), pattern.size());
        node = &Descend(*node, pattern.substr(0, end), optional);
        pattern.remove_prefix(end + (optional ? 1 : 0));
    }
    (query ? node->bQuery : node->bSetting) = true;
    (query ? node->query : node->setting) = target;
}

CCommandTree::tagNode& CCommandTree::Descend(tagNode& parent, std::string_view token, bool optional)
{
    const bool suffix = token.ends_with('#');
    std::string keyword(token.substr(0, token.size() - (suffix ? 1 : 0)));
    if (optional)
    {
        keyword = '[' + keyword + ']';
    }
    const auto found = std::ranges::find(parent.children, keyword, &tagNode::keyword);
    if (found != parent.children.end())
    {
        return *found;
    }
    tagNode& child = parent.children.emplace_back();
    child.keyword = keyword;
    child.bSuffix = suffix;
    return child;
}

std::uint32_t CCommandTree::AppendGroup(const std::vector<tagNode>& nodes, std::uint32_t flags)
{
    const std::size_t start = m_records.size();
    for (const tagNode& node : nodes)
    {
        _CMD_SET_RECORD record{};
        SetText(record.hdr.szKeyword, node.keyword);
        record.hdr.iNodataMode = node.bQuery ? static_cast<std::int32_t>(node.query) : DEF;
        record.hdr.iDataMode = node.bSetting ? static_cast<std::int32_t>(node.setting) : DEF;
        record.hdr.iDatatype = ParameterOf(node);
        record.hdr.iFollow =
            flags | (node.bSuffix ? NSUFF : 0U) | (node.bQuery ? QMARK : 0U) | (node.bSetting ? HDR_SET : 0U);
        m_records.push_back(record);
    }
    if (!nodes.empty())
    {
        m_records[start].hdr.iLength = static_cast<std::uint32_t>(nodes.size());
    }
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        if (!nodes[i].children.empty())
        {
            m_records[start + i].hdr.iSubStart = AppendGroup(nodes[i].children, 0);
        }
    }
    return static_cast<std::uint32_t>(start);
}

std::uint32_t CCommandTree::ParameterOf(const tagNode& node) const
{
    if (!node.bSetting)
    {
        return 0;
    }
    return node.setting == tagTarget::Block ? kBlockParameter : kNumberParameter;
}

void CCommandTree::AppendParameters()
{
    const auto headers = static_cast<std::uint32_t>(m_records.size());
    for (_CMD_SET_RECORD& record : m_records)
    {
        record.hdr.iDatatype += record.hdr.iDatatype == 0 ? 0 : headers - 1;
    }
    _CMD_SET_RECORD number{};
    SetText(number.par.szName, "number");
    number.par.iType = ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT;
    number.par.iSuffixList = headers + 2;
    _CMD_SET_RECORD block{};
    SetText(block.par.szName, "data");
    block.par.iType = ARG_BLOCK;
    _CMD_SET_RECORD unit{};
    SetText(unit.sfx.szSuffix, "HZ");
    unit.sfx.iEnum = 1;
    unit.sfx.iLength = 1;
    m_records.insert(m_records.end(), {number, block, unit});
}

} // namespace ZoVelkor::Benchmarks
