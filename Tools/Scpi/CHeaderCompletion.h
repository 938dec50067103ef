#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// How a line can go on at its end.
struct Completion
{
    std::size_t replaced = 0;         ///< characters at the end of the line that give way to the text
    std::string text;                 ///< as far as it is certain; empty when nothing is
    std::vector<std::string> choices; ///< what the word at the end can become, when there are several
};

/// Completes the headers of an instrument from the list that it gives of them.
///
/// Threads: like a plain value.
class CHeaderCompletion
{
public:
    CHeaderCompletion() = default;
    /// @param listing  what SYSTem:HELP:HEADers? answers, without its block header: one header a line,
    ///                 optional nodes in brackets, /qonly/ and /nquery/ behind a header (SCPI-99 vol. 2,
    ///                 21.11.1). Lines of another form are passed over.
    explicit CHeaderCompletion(std::string_view listing);

    bool IsEmpty() const noexcept { return m_nodes.size() <= 1; }

    /// Completes the header at the end of a line.
    ///
    /// Follows the levels of the line's earlier commands as an instrument does (SCPI-99 vol. 1, 6.2.4). A
    /// keyword counts in its short and long form, in any case and with any numeric suffix. A complete keyword
    /// stays as it is typed, another becomes the long form, in small letters behind small letters.
    Completion Complete(std::string_view line) const;

private:
    struct Node
    {
        std::string keyword; ///< as listed: FREQuency; common commands with their *
        bool isOptional = false;
        bool isSetting = false;
        bool isQuery = false;
        std::vector<std::size_t> children{};
    };
    using Nodes = std::vector<std::size_t>;

    void AddHeader(std::string_view line);
    void MarkCommand(const Nodes& path, std::string_view forms);
    std::size_t AddNode(std::size_t parent, std::string_view keyword, bool isOptional);
    Nodes Reachable(const Nodes& parents) const;
    Nodes Step(const Nodes& parents, std::string_view keyword) const;
    void FollowCommand(std::string_view command, Nodes& level) const;
    Completion CompleteWord(std::string_view word, const Nodes& nodes) const;
    void GoOn(const Nodes& nodes, Completion& completion) const;

    std::vector<Node> m_nodes{1}; ///< the first one is the root
};

} // namespace ZoVelkor::Tools
