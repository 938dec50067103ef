#pragma once

#include "Parsing/CCommandIndex.h"
#include "ScpiCommandTable.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZoVelkor::RemoteKernel::Testing
{

using tagWords = std::vector<std::pair<std::string, std::uint32_t>>;

struct tagTestParameter
{
    std::uint32_t iType;
    std::uint32_t iFlags = 0;
    tagWords units{};
    tagWords words{};
};

/// Builds command tables from header patterns: "SENSe#:FREQuency[:CW]" or "[:SENSe#]:...", '#' for a suffix,
/// with the expression of those that are accepted behind it: "OUTPut#1-4:STATe".
class CTableBuilder
{
public:
    CTableBuilder& Add(std::string_view pattern,
                       std::int32_t nodata,
                       std::int32_t data,
                       std::uint32_t flags,
                       std::vector<tagTestParameter> parameters = {})
    {
        const bool isCommon = pattern.front() == '*';
        tagNode* node = isCommon ? &m_common : &m_root;
        for (pattern.remove_prefix(isCommon ? 1 : 0); !pattern.empty();)
        {
            node = &Child(*node, TakeKeyword(pattern));
        }
        node->iNodata = nodata;
        node->iData = data;
        node->iFlags |= flags | (isCommon ? CCMD : 0U);
        node->parameters = std::move(parameters);
        return *this;
    }

    std::vector<_CMD_SET_RECORD> Build() const
    {
        std::vector<_CMD_SET_RECORD> table;
        const std::uint32_t common = EmitGroup(table, m_common);
        const std::uint32_t root = EmitGroup(table, m_root);
        // The root group must directly follow the common commands, so parameters come after all headers.
        AttachParameters(table, m_common, common);
        AttachParameters(table, m_root, root);
        AppendExpressions(table, m_root, root);
        return table;
    }

private:
    struct tagNode
    {
        std::string sKeyword;
        std::string sExpression;
        std::int32_t iNodata = DEF;
        std::int32_t iData = DEF;
        std::uint32_t iFlags = 0;
        std::vector<tagTestParameter> parameters;
        std::vector<tagNode> children;
    };

    /// Cuts the first keyword off and gives it as the table writes it, with what begins with '#' behind it.
    static std::string TakeKeyword(std::string_view& pattern)
    {
        const bool optional = pattern.front() == '[';
        pattern.remove_prefix(optional ? 1 : 0);
        pattern.remove_prefix(pattern.front() == ':' ? 1 : 0);
        const std::size_t length = std::min(pattern.find_first_of("[]:"), pattern.size());
        std::string keyword(pattern.substr(0, length));
        const std::size_t stem = std::min(keyword.find('#'), length);
        pattern.remove_prefix(length + (optional ? 1 : 0));
        if (optional)
        {
            keyword.insert(stem, 1, ']');
            keyword.insert(0, 1, '[');
        }
        return keyword;
    }

    static tagNode& Child(tagNode& parent, std::string keyword)
    {
        const std::size_t stem = std::min(keyword.find('#'), keyword.size());
        const std::string suffix = keyword.substr(stem);
        keyword.erase(stem);
        for (tagNode& child : parent.children)
        {
            if (child.sKeyword == keyword)
            {
                return child;
            }
        }
        const std::string expression = suffix.substr(suffix.empty() ? 0 : 1);
        parent.children.push_back({keyword, expression, DEF, DEF, suffix.empty() ? 0U : NSUFF, {}, {}});
        return parent.children.back();
    }

    static std::uint32_t Append(std::vector<_CMD_SET_RECORD>& table, std::size_t count)
    {
        const auto start = static_cast<std::uint32_t>(table.size());
        table.resize(table.size() + count, _CMD_SET_RECORD{});
        return start;
    }

    static std::uint32_t EmitWords(std::vector<_CMD_SET_RECORD>& table, const tagWords& words)
    {
        const std::uint32_t start = words.empty() ? 0 : Append(table, words.size());
        for (std::size_t i = 0; i < words.size(); ++i)
        {
            _CS_CHR& record = table[start + i].chr;
            std::strncpy(record.szKeyword, words[i].first.c_str(), kTableTextSize - 1);
            record.iEnum = words[i].second;
            record.iLength = i == 0 ? static_cast<std::uint32_t>(words.size()) : 0;
        }
        return start;
    }

    static std::uint32_t EmitParameters(std::vector<_CMD_SET_RECORD>& table, const tagNode& node)
    {
        const std::uint32_t start = node.parameters.empty() ? 0 : Append(table, node.parameters.size());
        for (std::uint32_t i = 0; i < node.parameters.size(); ++i)
        {
            const tagTestParameter& parameter = node.parameters[i];
            const std::uint32_t units = EmitWords(table, parameter.units);
            const std::uint32_t words = EmitWords(table, parameter.words);
            const std::uint32_t next = i + 1 < node.parameters.size() ? start + i + 1 : 0;
            const auto count = static_cast<std::uint32_t>(parameter.words.size());
            table[start + i].par = {"p", parameter.iType, units, count, words, next, parameter.iFlags};
        }
        return start;
    }

    static std::uint32_t EmitGroup(std::vector<_CMD_SET_RECORD>& table, const tagNode& parent)
    {
        const auto& nodes = parent.children;
        const std::uint32_t start = nodes.empty() ? 0 : Append(table, nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            const tagNode& node = nodes[i];
            const auto length = i == 0 ? static_cast<std::uint32_t>(nodes.size()) : 0U;
            const std::uint32_t children = EmitGroup(table, node);
            table[start + i].hdr = {{}, node.iNodata, node.iData, children, length, 0, node.iFlags};
            std::strncpy(table[start + i].hdr.szKeyword, node.sKeyword.c_str(), kTableTextSize - 1);
        }
        return start;
    }

    static void
    AttachParameters(std::vector<_CMD_SET_RECORD>& table, const tagNode& parent, std::uint32_t group)
    {
        for (std::uint32_t i = 0; i < parent.children.size(); ++i)
        {
            const std::uint32_t parameters = EmitParameters(table, parent.children[i]);
            table[group + i].hdr.iDatatype = parameters;
            AttachParameters(table, parent.children[i], table[group + i].hdr.iSubStart);
        }
    }

    static void
    AppendExpressions(std::vector<_CMD_SET_RECORD>& table, const tagNode& parent, std::uint32_t group)
    {
        for (std::uint32_t i = 0; i < parent.children.size(); ++i)
        {
            const tagNode& node = parent.children[i];
            if (!node.sExpression.empty())
            {
                _CS_NSE& record = table[Append(table, 1)].nse;
                std::strncpy(record.szExpression, node.sExpression.c_str(), kTableExpressionSize - 1);
                record.iValue = NSE_HEADER | (group + i);
            }
            AppendExpressions(table, node, table[group + i].hdr.iSubStart);
        }
    }

    tagNode m_common;
    tagNode m_root;
};

/// An owner for a source; only its address counts.
inline std::shared_ptr<CApplication> MakeOwner()
{
    auto owner = std::make_shared<int>();
    auto* const address = reinterpret_cast<CApplication*>(owner.get());
    return {std::move(owner), address};
}

} // namespace ZoVelkor::RemoteKernel::Testing
