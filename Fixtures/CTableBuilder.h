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

using Words = std::vector<std::pair<std::string, std::uint32_t>>;

struct TestParameter
{
    std::uint32_t type;
    std::uint32_t flags = 0;
    Words units{};
    Words words{};
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
                       std::vector<TestParameter> parameters = {})
    {
        const bool isCommon = pattern.front() == '*';
        Node* node = isCommon ? &m_common : &m_root;
        for (pattern.remove_prefix(isCommon ? 1 : 0); !pattern.empty();)
        {
            node = &Child(*node, TakeKeyword(pattern));
        }
        node->nodata = nodata;
        node->data = data;
        node->flags |= flags | (isCommon ? CCMD : 0U);
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
    struct Node
    {
        std::string keyword;
        std::string expression;
        std::int32_t nodata = DEF;
        std::int32_t data = DEF;
        std::uint32_t flags = 0;
        std::vector<TestParameter> parameters;
        std::vector<Node> children;
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

    static Node& Child(Node& parent, std::string keyword)
    {
        const std::size_t stem = std::min(keyword.find('#'), keyword.size());
        const std::string suffix = keyword.substr(stem);
        keyword.erase(stem);
        for (Node& child : parent.children)
        {
            if (child.keyword == keyword)
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

    static std::uint32_t EmitWords(std::vector<_CMD_SET_RECORD>& table, const Words& words)
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

    static std::uint32_t EmitParameters(std::vector<_CMD_SET_RECORD>& table, const Node& node)
    {
        const std::uint32_t start = node.parameters.empty() ? 0 : Append(table, node.parameters.size());
        for (std::uint32_t i = 0; i < node.parameters.size(); ++i)
        {
            const TestParameter& parameter = node.parameters[i];
            const std::uint32_t units = EmitWords(table, parameter.units);
            const std::uint32_t words = EmitWords(table, parameter.words);
            const std::uint32_t next = i + 1 < node.parameters.size() ? start + i + 1 : 0;
            const auto count = static_cast<std::uint32_t>(parameter.words.size());
            table[start + i].par = {"p", parameter.type, units, count, words, next, parameter.flags};
        }
        return start;
    }

    static std::uint32_t EmitGroup(std::vector<_CMD_SET_RECORD>& table, const Node& parent)
    {
        const auto& nodes = parent.children;
        const std::uint32_t start = nodes.empty() ? 0 : Append(table, nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            const Node& node = nodes[i];
            const auto length = i == 0 ? static_cast<std::uint32_t>(nodes.size()) : 0U;
            const std::uint32_t children = EmitGroup(table, node);
            table[start + i].hdr = {{}, node.nodata, node.data, children, length, 0, node.flags};
            std::strncpy(table[start + i].hdr.szKeyword, node.keyword.c_str(), kTableTextSize - 1);
        }
        return start;
    }

    static void AttachParameters(std::vector<_CMD_SET_RECORD>& table, const Node& parent, std::uint32_t group)
    {
        for (std::uint32_t i = 0; i < parent.children.size(); ++i)
        {
            const std::uint32_t parameters = EmitParameters(table, parent.children[i]);
            table[group + i].hdr.iDatatype = parameters;
            AttachParameters(table, parent.children[i], table[group + i].hdr.iSubStart);
        }
    }

    static void
    AppendExpressions(std::vector<_CMD_SET_RECORD>& table, const Node& parent, std::uint32_t group)
    {
        for (std::uint32_t i = 0; i < parent.children.size(); ++i)
        {
            const Node& node = parent.children[i];
            if (!node.expression.empty())
            {
                _CS_NSE& record = table[Append(table, 1)].nse;
                std::strncpy(record.szExpression, node.expression.c_str(), kTableExpressionSize - 1);
                record.iValue = NSE_HEADER | (group + i);
            }
            AppendExpressions(table, node, table[group + i].hdr.iSubStart);
        }
    }

    Node m_common;
    Node m_root;
};

/// An owner for a source; only its address counts.
inline std::shared_ptr<CApplication> MakeOwner()
{
    auto owner = std::make_shared<int>();
    auto* const address = reinterpret_cast<CApplication*>(owner.get());
    return {std::move(owner), address};
}

} // namespace ZoVelkor::RemoteKernel::Testing
