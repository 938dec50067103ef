#include "CHeaderCompletion.h"

#include "CScpiToken.h"
#include "KeywordForms.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::size_t kRoot = 0;
constexpr std::string_view kStructure = ":[]";
constexpr std::string_view kBlanks = " \t";

bool IsKeywordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '*';
}

std::string Capitals(std::string_view text)
{
    return CScpiToken::ScpiToken2LongForm(std::string(text));
}

std::string SmallLetters(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
        return static_cast<char>(std::tolower(c));
    });
    return text;
}

bool HasCapitals(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isupper(c) != 0; });
}

bool IsKeyword(std::string_view listed, std::string_view typed)
{
    const auto isOneOf = [&](const std::string& text) {
        return text == LeadingCapitals(listed) || text == Capitals(listed);
    };
    return isOneOf(Capitals(typed)) || isOneOf(Capitals(WithoutDigits(typed)));
}

/// The commands of a line, at least one; separators in strings are text.
std::vector<std::string_view> SplitCommands(std::string_view line)
{
    std::vector<std::string_view> commands;
    std::size_t begin = 0;
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        const char c = line[i];
        if (quote != '\0' || c == '"' || c == '\'')
        {
            quote = quote == '\0' ? c : (c == quote ? '\0' : quote);
        }
        else if (c == ';')
        {
            commands.push_back(line.substr(begin, i - begin));
            begin = i + 1;
        }
    }
    commands.push_back(line.substr(begin));
    return commands;
}

std::string_view WithoutLeadingBlanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

void Order(std::vector<std::string>& texts)
{
    std::sort(texts.begin(), texts.end());
    texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
}

std::string CommonBeginning(const std::vector<std::string>& texts)
{
    std::string common = texts.front();
    for (const std::string& text : texts)
    {
        const auto [end, other] = std::mismatch(common.begin(), common.end(), text.begin(), text.end());
        common.erase(end, common.end());
    }
    return common;
}

} // namespace

CHeaderCompletion::CHeaderCompletion(std::string_view listing)
{
    while (!listing.empty())
    {
        const std::size_t end = std::min(listing.find('\n'), listing.size());
        AddHeader(listing.substr(0, end));
        listing.remove_prefix(std::min(end + 1, listing.size()));
    }
}

void CHeaderCompletion::AddHeader(std::string_view line)
{
    Nodes path{kRoot};
    bool isOptional = false;
    while (!line.empty() &&
           (IsKeywordCharacter(line[0]) || kStructure.find(line[0]) != std::string_view::npos))
    {
        const auto* const end = std::find_if_not(line.begin(), line.end(), &IsKeywordCharacter);
        const auto length = static_cast<std::size_t>(end - line.begin());
        if (length > 0)
        {
            path.push_back(AddNode(path.back(), line.substr(0, length), isOptional));
        }
        else
        {
            isOptional = line[0] == '[' || (line[0] == ':' && isOptional);
        }
        line.remove_prefix(std::max<std::size_t>(length, 1));
        // How an instrument shows a numeric suffix differs; none is needed here.
        if (line.starts_with('<'))
        {
            line.remove_prefix(std::min(line.find('>'), line.size() - 1) + 1);
        }
    }
    MarkCommand(path, line);
}

/// @param forms  what stands behind the header
void CHeaderCompletion::MarkCommand(const Nodes& path, std::string_view forms)
{
    const bool isQueryOnly = forms.starts_with('?') || forms.find("/qonly/") != std::string_view::npos;
    const bool isQuery = isQueryOnly || forms.find("/nquery/") == std::string_view::npos;
    for (std::size_t i = path.size() - 1; i > 0; --i)
    {
        Node& node = m_nodes[path[i]];
        node.isSetting = node.isSetting || !isQueryOnly;
        node.isQuery = node.isQuery || isQuery;
        if (!node.isOptional)
        {
            break; // with an optional end left out, the node before it is the command
        }
    }
}

std::size_t CHeaderCompletion::AddNode(std::size_t parent, std::string_view keyword, bool isOptional)
{
    for (const std::size_t child : m_nodes[parent].children)
    {
        if (m_nodes[child].keyword == keyword && m_nodes[child].isOptional == isOptional)
        {
            return child;
        }
    }
    m_nodes.push_back({std::string(keyword), isOptional});
    m_nodes[parent].children.push_back(m_nodes.size() - 1);
    return m_nodes.size() - 1;
}

/// The nodes that can come next; optional ones may be left out.
CHeaderCompletion::Nodes CHeaderCompletion::Reachable(const Nodes& parents) const
{
    Nodes reachable;
    for (const std::size_t parent : parents)
    {
        for (const std::size_t child : m_nodes[parent].children)
        {
            reachable.push_back(child);
            if (m_nodes[child].isOptional)
            {
                const Nodes behind = Reachable({child});
                reachable.insert(reachable.end(), behind.begin(), behind.end());
            }
        }
    }
    return reachable;
}

CHeaderCompletion::Nodes CHeaderCompletion::Step(const Nodes& parents, std::string_view keyword) const
{
    Nodes next = Reachable(parents);
    std::erase_if(next, [&](std::size_t node) { return !IsKeyword(m_nodes[node].keyword, keyword); });
    return next;
}

/// Goes to the level that a complete command leaves behind.
void CHeaderCompletion::FollowCommand(std::string_view command, Nodes& level) const
{
    command = WithoutLeadingBlanks(command);
    command = command.substr(0, command.find_first_of(" \t?"));
    if (command.empty() || command.starts_with('*'))
    {
        return;
    }
    if (command.starts_with(':'))
    {
        level = {kRoot};
        command.remove_prefix(1);
    }
    for (std::size_t colon = 0; (colon = command.find(':')) != std::string_view::npos;)
    {
        level = Step(level, command.substr(0, colon));
        command.remove_prefix(colon + 1);
    }
}

/// Goes on behind a complete keyword: with what certainly follows, else with the choices.
void CHeaderCompletion::GoOn(const Nodes& nodes, Completion& completion) const
{
    bool isSetting = false;
    bool isQuery = false;
    Nodes complete;
    for (const std::size_t node : nodes)
    {
        if (IsKeyword(m_nodes[node].keyword, completion.text))
        {
            isSetting = isSetting || m_nodes[node].isSetting;
            isQuery = isQuery || m_nodes[node].isQuery;
            complete.push_back(node);
        }
    }
    const Nodes behind = Reachable(complete);
    if (behind.empty())
    {
        completion.text += isQuery && !isSetting ? "?" : "";
    }
    else if (!isSetting && !isQuery)
    {
        completion.text += ':';
    }
    else
    {
        for (const std::size_t node : behind)
        {
            completion.choices.push_back(':' + m_nodes[node].keyword);
        }
        Order(completion.choices);
    }
}

Completion CHeaderCompletion::Complete(std::string_view line) const
{
    std::vector<std::string_view> commands = SplitCommands(line);
    const std::string_view header = WithoutLeadingBlanks(commands.back());
    if (header.find_first_of(" \t?\"'") != std::string_view::npos)
    {
        return {};
    }
    Nodes level{kRoot};
    for (const std::string_view command : commands)
    {
        FollowCommand(command, level);
    }
    Nodes nodes = Reachable(level);
    const auto isCommon = [this](std::size_t node) { return m_nodes[node].keyword.starts_with('*'); };
    std::erase_if(nodes, isCommon);
    if (header.find(':') == std::string_view::npos)
    {
        // Common commands can be used at every level.
        const Nodes& all = m_nodes[kRoot].children;
        std::copy_if(all.begin(), all.end(), std::back_inserter(nodes), isCommon);
    }
    return CompleteWord(header.substr(header.rfind(':') + 1), nodes);
}

Completion CHeaderCompletion::CompleteWord(std::string_view word, const Nodes& nodes) const
{
    Completion result{word.size(), {}, {}};
    const bool isCapitals = word.empty() || HasCapitals(word);
    for (const std::size_t node : nodes)
    {
        const std::string& keyword = m_nodes[node].keyword;
        if (IsKeyword(keyword, word))
        {
            result.text = word;
        }
        if (Capitals(keyword).starts_with(Capitals(word)))
        {
            result.choices.push_back(isCapitals ? keyword : SmallLetters(keyword));
        }
    }
    Order(result.choices);
    if (result.text.empty() && !result.choices.empty())
    {
        result.text = CommonBeginning(result.choices);
    }
    if (result.choices.size() <= 1 && !result.text.empty())
    {
        result.choices.clear();
        GoOn(nodes, result);
    }
    return result;
}

} // namespace ZoVelkor::Tools
