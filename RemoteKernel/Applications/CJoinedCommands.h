#pragma once

#include "CApplicationRegistry.h"
#include "CBScpiCommands.h"

#include <valarray>

namespace ZoVelkor::RemoteKernel
{

/// The command tables of all applications as one tree, the kernel's own first.
class CJoinedCommands : public CBScpiCommands
{
public:
    /// @param set  must outlive the tree
    explicit CJoinedCommands(const ApplicationSet& set);

    /// Size of the joined table in bytes; 0 when the tables do not join.
    unsigned long Size() const noexcept { return m_size; }

protected:
    const tagZO_SCPI_PARSER_TREE* DoGetParserTree() override { return &m_tree; }

private:
    std::valarray<_CMD_SET_RECORD> m_table;
    unsigned long m_size = 0;
    tagZO_SCPI_PARSER_TREE m_tree{};
};

} // namespace ZoVelkor::RemoteKernel
