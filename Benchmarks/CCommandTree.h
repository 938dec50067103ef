#pragma once

#include "ScpiCommandTable.h"

#include <string>
#include <vector>

namespace ZoVelkor::Benchmarks
{

/// What the handler of a generated command does.
enum class Target : std::int32_t
{
    Setting = 0, ///< takes one number in HZ
    Query,       ///< answers one number
    Block,       ///< takes one block
    List,        ///< answers 1000 numbers
    Identity,    ///< *IDN?
    Filler       ///< is never called
};

/// Command table made from a listing of patterns as gen_tree.py prints them: `KIND<TAB>PATTERN`.
///
/// The set form and the query form of one header become one record, as in a table written by hand.
class CCommandTree
{
public:
    /// @throws std::runtime_error when the file cannot be read or a line is malformed
    explicit CCommandTree(const std::string& path);

    const std::vector<_CMD_SET_RECORD>& Records() const { return m_records; }

private:
    std::vector<_CMD_SET_RECORD> m_records;
};

} // namespace ZoVelkor::Benchmarks
