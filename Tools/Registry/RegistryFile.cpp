#include "RegistryFile.h"

#include "Common/CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::string_view kFirstLine = "zo registry 1";
constexpr std::wstring_view kLastLine = L"end";

void AppendKey(const RegistryPath& path, const RegistryKey& key, std::string& text)
{
    text += fmt::format("\n[{}]\n", PathText(path));
    for (const RegistryValue& value : key.values)
    {
        const ValueText parts = DescribeValue(value);
        text += parts.head + '\n';
        for (const std::string& item : parts.items)
        {
            text += "  " + item + '\n';
        }
    }
    for (const RegistryKey& below : key.keys)
    {
        AppendKey(path.Below(below.name), below, text);
    }
}

/// What follows an expected word; faults say what was expected.
std::wstring_view Behind(std::wstring_view text, std::wstring_view word)
{
    if (!text.starts_with(word))
    {
        throw CTextFault(fmt::format("{} is expected", QuotedText(word)));
    }
    return text.substr(word.size());
}

DWORD ParseTypeNumber(std::wstring_view text)
{
    const std::string digits = Utf8Text(text);
    const char* const end = digits.data() + digits.size();
    DWORD type = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, type);
    if (stop != end || error != std::errc{})
    {
        throw CTextFault(fmt::format("{} is no number of a type", QuotedText(text)));
    }
    return type;
}

/// Takes the lines of a file one by one.
class CFileReader
{
public:
    void TakeLine(std::string_view bytes)
    {
        ++m_line;
        if (m_line == 1)
        {
            CheckFirstLine(bytes);
            return;
        }
        const std::wstring text = WideText(bytes);
        if (text.empty() || text.front() == L'#')
        {
            return;
        }
        if (m_isComplete)
        {
            throw CTextFault("something follows the end");
        }
        TakeContent(text);
    }

    void CheckEnd() const
    {
        if (!m_isComplete)
        {
            throw CTextFault("the file is cut off: its last line is not \"end\"");
        }
    }

    std::size_t Line() const noexcept { return m_line; }
    std::vector<FileKey> TakeKeys() noexcept { return std::move(m_keys); }

private:
    static void CheckFirstLine(std::string_view bytes)
    {
        if (bytes != kFirstLine)
        {
            throw CTextFault(
                fmt::format("no export of a registry: the first line is not \"{}\"", kFirstLine));
        }
    }

    void TakeContent(std::wstring_view text)
    {
        if (text.front() == L' ')
        {
            TakeItem(text.substr(std::min(text.find_first_not_of(L' '), text.size())));
            return;
        }
        m_form = ValueForm::Number;
        if (text.front() == L'[')
        {
            TakeKey(text.substr(1));
        }
        else if (text.front() == L'"')
        {
            TakeValue(text);
        }
        else if (text == kLastLine)
        {
            m_isComplete = true;
        }
        else
        {
            throw CTextFault("neither a [key], nor a \"value\", nor the end");
        }
    }

    void TakeKey(std::wstring_view text)
    {
        if (!text.ends_with(L']'))
        {
            throw CTextFault("the bracket behind the key is missing");
        }
        text.remove_suffix(1);
        const RegistryPath path = ParseRegistryPath(text);
        CheckIsNew(m_keyLines, Folded(WideText(PathText(path))));
        m_valueLines.clear();
        m_keys.push_back({path, m_line, {}});
    }

    void TakeValue(std::wstring_view text)
    {
        if (m_keys.empty())
        {
            throw CTextFault("a value stands before the first key");
        }
        RegistryValue value;
        value.name = TakeQuotedText(text);
        CheckValueName(value.name);
        CheckIsNew(m_valueLines, Folded(value.name));
        TakeTypeAndData(Behind(text, L" = "), value);
        CheckSize(value);
        m_keys.back().values.push_back({std::move(value), m_line});
    }

    void TakeTypeAndData(std::wstring_view text, RegistryValue& value)
    {
        const std::size_t length = std::min(text.find(L' '), text.size());
        const std::string word = Utf8Text(text.substr(0, length));
        std::wstring_view rest = text.substr(length);
        if (word == "type")
        {
            value.type = ParseTypeNumber(Behind(rest, L" "));
            m_form = ValueForm::Bytes;
            return;
        }
        const ValueType* const type = FindValueType(word);
        if (type == nullptr)
        {
            throw CTextFault(fmt::format("{} is none of the types {}, type NUMBER",
                                         QuotedText(text.substr(0, length)),
                                         ValueTypeNames()));
        }
        value.type = type->type;
        m_form = type->form;
        if (m_form == ValueForm::Number)
        {
            value.data = NumberData(Behind(rest, L" "), *type);
            return;
        }
        if (m_form == ValueForm::Text)
        {
            rest = Behind(rest, L" ");
            value.data = TextData(TakeQuotedText(rest));
        }
        else if (m_form == ValueForm::List)
        {
            value.data = EmptyListData();
        }
        CheckNothingIsLeft(rest);
    }

    void TakeItem(std::wstring_view text)
    {
        const bool hasItems = m_form == ValueForm::List || m_form == ValueForm::Bytes;
        if (!hasItems || m_keys.empty() || m_keys.back().values.empty())
        {
            throw CTextFault("an indented line follows a list or bytes only");
        }
        RegistryValue& value = m_keys.back().values.back().value;
        if (m_form == ValueForm::Bytes)
        {
            AppendBytes(value.data, text);
        }
        else
        {
            AppendToList(value.data, TakeQuotedText(text));
            CheckNothingIsLeft(text);
        }
        CheckSize(value);
    }

    static void CheckNothingIsLeft(std::wstring_view rest)
    {
        if (!rest.empty())
        {
            throw CTextFault(fmt::format("{} is too much", QuotedText(rest)));
        }
    }

    static void CheckSize(const RegistryValue& value)
    {
        if (value.data.size() > kRegistryMaximumValueSize)
        {
            throw CTextFault(fmt::format("the value has more than {} bytes", kRegistryMaximumValueSize));
        }
    }

    void CheckIsNew(std::map<std::wstring, std::size_t>& lines, std::wstring name) const
    {
        const auto [place, isNew] = lines.try_emplace(std::move(name), m_line);
        if (!isNew)
        {
            throw CTextFault(fmt::format("the same stands in line {} already", place->second));
        }
    }

    std::size_t m_line = 0;
    bool m_isComplete = false;
    ValueForm m_form = ValueForm::Number; ///< of the value that indented lines continue; number: none
    std::vector<FileKey> m_keys;
    std::map<std::wstring, std::size_t> m_keyLines;
    std::map<std::wstring, std::size_t> m_valueLines; ///< of the last key
};

} // namespace

std::string FormatRegistryFile(std::span<const RegistryTree> trees)
{
    std::string text(kFirstLine);
    text += '\n';
    for (const RegistryTree& tree : trees)
    {
        AppendKey(tree.path, tree.top, text);
    }
    return text + '\n' + Utf8Text(kLastLine) + '\n';
}

std::vector<FileKey> ParseRegistryFile(std::string_view bytes, const std::string& name)
{
    CFileReader reader;
    try
    {
        while (!bytes.empty())
        {
            const std::size_t length = std::min(bytes.find('\n'), bytes.size());
            std::string_view line = bytes.substr(0, length);
            // Version control may have given it the line ends of another system.
            line.remove_suffix(line.ends_with('\r') ? 1 : 0);
            reader.TakeLine(line);
            bytes.remove_prefix(std::min(length + 1, bytes.size()));
        }
        reader.CheckEnd();
    }
    catch (const CTextFault& fault)
    {
        const std::size_t line = std::max(reader.Line(), std::size_t{1});
        throw CToolError(ExitCode::Failed, fmt::format("{}:{}: {}", name, line, fault.what()));
    }
    return reader.TakeKeys();
}

} // namespace ZoVelkor::Tools
