#pragma once

#include "CommandDeclaration.h"
#include "ScpiCommandTable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace ZoVelkor::Commands
{

/// @cond machinery

/// Handler index of a command's query or event; that of its setting is the next one.
constexpr std::int32_t HandlerIndex(std::size_t command)
{
    return static_cast<std::int32_t>(command * 2);
}

/// Room for the command table of some commands, more than it needs.
struct TableCapacity
{
    std::size_t nodes = 0;
    std::size_t records = 0;
};

constexpr TableCapacity CapacityOf(std::span<const CommandData> commands)
{
    TableCapacity capacity;
    for (const CommandData& command : commands)
    {
        capacity.nodes += command.header.count;
        capacity.records += command.header.count * 2; // a header and its suffixes
        for (std::size_t i = 0; i < command.parameterCount; ++i)
        {
            capacity.records += 2 + command.parameters[i].wordCount; // a parameter, its unit and words
        }
    }
    return capacity;
}

/// One node of the tree that some commands form.
struct TreeNode
{
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    PatternNode text;
    bool common = false;
    std::size_t firstChild = kNone;
    std::size_t lastChild = kNone;
    std::size_t nextSibling = kNone;
    std::size_t command = kNone; ///< which runs here
    std::uint32_t record = 0;
};

/// A list of nodes: the children of one, or a root.
struct NodeList
{
    std::size_t first = TreeNode::kNone;
    std::size_t last = TreeNode::kNone;
};

/// Records under construction, at most TCapacity.
template <std::size_t TCapacity>
struct RecordList
{
    std::array<_CMD_SET_RECORD, TCapacity> records{};
    std::size_t count = 0;

    constexpr std::uint32_t Add(const _CMD_SET_RECORD& record)
    {
        records[count] = record;
        return static_cast<std::uint32_t>(count++);
    }
};

template <std::size_t TSize>
constexpr void CopyText(char (&target)[TSize], std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        target[i] = text[i];
    }
}

/// Makes the command table of some commands: common commands, the root group, its children level by level,
/// parameters, units, words, and the suffix expressions at the end.
template <std::size_t TNodes, std::size_t TRecords>
class CommandTableMaker
{
public:
    constexpr explicit CommandTableMaker(std::span<const CommandData> commands) : m_commands(commands) {}

    constexpr RecordList<TRecords> Make()
    {
        for (std::size_t i = 0; i < m_commands.size(); ++i)
        {
            AddCommand(i);
        }
        PlaceGroup(m_common);
        PlaceGroup(m_root);
        for (std::size_t i = 0; i < m_placed; ++i)
        {
            PlaceGroup({m_nodes[m_order[i]].firstChild, TreeNode::kNone});
        }
        m_list.count = m_placed;
        for (std::size_t i = 0; i < m_placed; ++i)
        {
            WriteHeader(m_order[i]);
        }
        WriteLists();
        WriteSuffixes();
        return m_list;
    }

private:
    constexpr void AddCommand(std::size_t command)
    {
        const CommandData& data = m_commands[command];
        if (!data.hasSetting && !data.hasQuery && !data.hasEvent)
        {
            CommandHasNoHandler();
        }
        if (data.header.queryOnly && !data.hasQuery)
        {
            QuestionMarkButNoQuery();
        }
        if (data.header.queryOnly && (data.hasSetting || data.hasEvent))
        {
            QuestionMarkButAlsoASetting();
        }
        NodeList* level = data.header.common ? &m_common : &m_root;
        NodeList children{};
        std::size_t parent = TreeNode::kNone;
        for (std::size_t i = 0; i < data.header.count; ++i)
        {
            const PatternNode& text = data.header.nodes[i];
            if (!text.alternative && parent != TreeNode::kNone)
            {
                children = {m_nodes[parent].firstChild, m_nodes[parent].lastChild};
                level = &children;
                m_levelParent = parent;
            }
            else if (!text.alternative)
            {
                m_levelParent = TreeNode::kNone;
            }
            const std::size_t node = FindOrAdd(*level, text, data.header.common);
            const bool isLast =
                i + 1 == data.header.count || data.header.nodes[i + 1].alternative || text.alternative;
            if (isLast)
            {
                Claim(node, command);
            }
            if (!text.alternative)
            {
                parent = node;
            }
        }
    }

    constexpr void Claim(std::size_t node, std::size_t command)
    {
        if (m_nodes[node].command != TreeNode::kNone)
        {
            TwoCommandsWithOneHeader();
        }
        m_nodes[node].command = command;
    }

    constexpr std::size_t FindOrAdd(NodeList& level, const PatternNode& text, bool common)
    {
        for (std::size_t i = level.first; i != TreeNode::kNone; i = m_nodes[i].nextSibling)
        {
            const PatternNode& other = m_nodes[i].text;
            if (other.keyword == text.keyword)
            {
                CheckSame(other, text);
                return i;
            }
            if (common ? other.keyword == text.keyword : AreAmbiguous(other.keyword, text.keyword))
            {
                AreSameWord(other.keyword, text.keyword) ? OneKeywordWithTwoSpellingsOnOneLevel()
                                                         : TwoKeywordsWithOneShortFormOnOneLevel();
            }
        }
        const std::size_t node = m_count++;
        m_nodes[node].text = text;
        m_nodes[node].common = common;
        if (level.last == TreeNode::kNone)
        {
            level.first = node;
        }
        else
        {
            m_nodes[level.last].nextSibling = node;
        }
        level.last = node;
        if (m_levelParent != TreeNode::kNone)
        {
            m_nodes[m_levelParent].firstChild = level.first;
            m_nodes[m_levelParent].lastChild = level.last;
        }
        return node;
    }

    static constexpr void CheckSame(const PatternNode& one, const PatternNode& other)
    {
        if (one.optional != other.optional)
        {
            OneKeywordOptionalAndNot();
        }
        if (one.suffixes != other.suffixes)
        {
            OneKeywordWithDifferentNumericSuffixes();
        }
    }

    /// Gives the nodes of a list consecutive records.
    constexpr void PlaceGroup(const NodeList& list)
    {
        for (std::size_t i = list.first; i != TreeNode::kNone; i = m_nodes[i].nextSibling)
        {
            m_nodes[i].record = static_cast<std::uint32_t>(m_placed);
            m_order[m_placed++] = i;
        }
    }

    constexpr std::uint32_t GroupLength(std::size_t node) const
    {
        const bool isFirst = node == m_common.first || node == m_root.first || IsFirstChild(node);
        std::uint32_t length = 0;
        for (std::size_t i = isFirst ? node : TreeNode::kNone; i != TreeNode::kNone;
             i = m_nodes[i].nextSibling)
        {
            ++length;
        }
        return length;
    }

    constexpr bool IsFirstChild(std::size_t node) const
    {
        for (std::size_t i = 0; i < m_count; ++i)
        {
            if (m_nodes[i].firstChild == node)
            {
                return true;
            }
        }
        return false;
    }

    constexpr void WriteHeader(std::size_t index)
    {
        const TreeNode& node = m_nodes[index];
        _CS_HDR header{{}, DEF, DEF, 0, GroupLength(index), 0, 0};
        WriteKeyword(header.szKeyword, node);
        header.iFollow = (node.common ? CCMD : 0) | (node.text.suffixes.empty() ? 0 : NSUFF);
        if (node.firstChild != TreeNode::kNone)
        {
            header.iSubStart = m_nodes[node.firstChild].record;
        }
        if (node.command != TreeNode::kNone)
        {
            WriteForms(header, node.command);
        }
        m_list.records[node.record] = {.hdr = header};
    }

    static constexpr void WriteKeyword(char (&target)[kTableTextSize], const TreeNode& node)
    {
        std::size_t place = 0;
        const auto add = [&](char c) { target[place++] = c; };
        if (node.text.optional)
        {
            add('[');
        }
        for (const char c : node.text.keyword)
        {
            add(c);
        }
        if (node.text.optional)
        {
            add(']');
        }
    }

    constexpr void WriteForms(_CS_HDR& header, std::size_t index)
    {
        const CommandData& command = m_commands[index];
        header.iNodataMode = command.hasQuery || command.hasEvent ? HandlerIndex(index) : DEF;
        header.iDataMode =
            command.hasSetting || (command.hasEvent && command.hasQuery) ? HandlerIndex(index) + 1 : DEF;
        header.iFollow |= (command.hasQuery ? QMARK : 0) | (header.iDataMode != DEF ? HDR_SET : 0) |
                          (command.service ? HDR_DIAG : 0);
        header.iDatatype = WriteParameters(command);
    }

    /// @return the first record of the chain; 0 without parameters
    constexpr std::uint32_t WriteParameters(const CommandData& command)
    {
        const auto first = static_cast<std::uint32_t>(m_list.count);
        for (std::size_t i = 0; i < command.parameterCount; ++i)
        {
            const ParameterData& parameter = command.parameters[i];
            const bool isLast = i + 1 == command.parameterCount;
            _CS_PAR record{{},
                           parameter.type,
                           0,
                           static_cast<std::uint32_t>(parameter.wordCount),
                           0,
                           0,
                           parameter.flags};
            CopyText(record.szName, parameter.name);
            record.iNextPar = isLast ? 0 : static_cast<std::uint32_t>(m_list.count + 1);
            m_parameters[m_list.count] = &parameter;
            m_list.Add({.par = record});
        }
        return command.parameterCount == 0 ? 0 : first;
    }

    /// Units and words behind all parameters; equal lists stand once.
    constexpr void WriteLists()
    {
        const std::size_t end = m_list.count;
        for (std::size_t i = m_placed; i < end; ++i)
        {
            const ParameterData& parameter = *m_parameters[i];
            _CS_PAR record = m_list.records[i].par;
            record.iSuffixList = parameter.unit.empty() ? 0 : FindUnit(i);
            record.iKeywords = parameter.wordCount == 0 ? 0 : FindWords(i);
            m_list.records[i] = {.par = record};
        }
    }

    constexpr std::uint32_t FindUnit(std::size_t index)
    {
        const ParameterData& parameter = *m_parameters[index];
        for (std::size_t i = m_placed; i < index; ++i)
        {
            if (m_parameters[i]->unit == parameter.unit)
            {
                return m_list.records[i].par.iSuffixList;
            }
        }
        _CS_SFX unit{{}, 1, 1, {}};
        CopyText(unit.szSuffix, parameter.unit);
        return m_list.Add({.sfx = unit});
    }

    /// By their texts: sanitized builds cannot compare functions while they compile.
    static constexpr bool HaveSameWords(const ParameterData& one, const ParameterData& other)
    {
        bool areSame = one.wordCount == other.wordCount;
        for (std::size_t i = 0; areSame && i < one.wordCount; ++i)
        {
            areSame = one.word(i) == other.word(i);
        }
        return areSame;
    }

    constexpr std::uint32_t FindWords(std::size_t index)
    {
        const ParameterData& parameter = *m_parameters[index];
        for (std::size_t i = m_placed; i < index; ++i)
        {
            if (HaveSameWords(*m_parameters[i], parameter))
            {
                return m_list.records[i].par.iKeywords;
            }
        }
        const auto first = static_cast<std::uint32_t>(m_list.count);
        for (std::size_t i = 0; i < parameter.wordCount; ++i)
        {
            _CS_CHR word{{}, static_cast<std::uint32_t>(i + 1), 0, {}};
            CopyText(word.szKeyword, parameter.word(i));
            word.iLength = i == 0 ? static_cast<std::uint32_t>(parameter.wordCount) : 0;
            m_list.Add({.chr = word});
        }
        return first;
    }

    constexpr void WriteSuffixes()
    {
        for (std::size_t i = 0; i < m_placed; ++i)
        {
            const TreeNode& node = m_nodes[m_order[i]];
            if (!node.text.suffixes.empty())
            {
                _CS_NSE expression{{}, NSE_HEADER | node.record};
                CopyText(expression.szExpression, node.text.suffixes);
                m_list.Add({.nse = expression});
            }
        }
    }

    std::span<const CommandData> m_commands;
    std::array<TreeNode, TNodes> m_nodes{};
    std::size_t m_count = 0;
    NodeList m_common;
    NodeList m_root;
    std::size_t m_levelParent = TreeNode::kNone;
    std::array<std::size_t, TNodes> m_order{}; // nodes by record
    std::size_t m_placed = 0;
    std::array<const ParameterData*, TRecords> m_parameters{}; // by record
    RecordList<TRecords> m_list;
};

/// @endcond

} // namespace ZoVelkor::Commands
