#include "RegistryText.h"

#include "CodePage.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <iterator>

namespace ZoVelkor::Tools
{

namespace
{

struct Root
{
    const wchar_t* name;
    const wchar_t* shortName;
    HKEY key;
};

constexpr Root kRoots[] = {
    {L"HKEY_CLASSES_ROOT", L"HKCR", HKEY_CLASSES_ROOT},
    {L"HKEY_CURRENT_USER", L"HKCU", HKEY_CURRENT_USER},
    {L"HKEY_LOCAL_MACHINE", L"HKLM", HKEY_LOCAL_MACHINE},
    {L"HKEY_USERS", L"HKU", HKEY_USERS},
    {L"HKEY_PERFORMANCE_DATA", L"HKPD", HKEY_PERFORMANCE_DATA},
    {L"HKEY_CURRENT_CONFIG", L"HKCC", HKEY_CURRENT_CONFIG},
    {L"HKEY_DYN_DATA", L"HKDD", HKEY_DYN_DATA},
};

struct Range
{
    char32_t first;
    char32_t last;
};

constexpr Range kNoCharacters[] = {
    {0xD800, 0xDFFF},
    {0x110000, 0xFFFFFFFF},
};

/// Control characters, zero-width ones and those that turn the direction of writing.
constexpr Range kHidden[] = {
    {0x00, 0x1F},
    {0x7F, 0x9F},
    {0x200B, 0x200F},
    {0x2028, 0x202E},
    {0x2066, 0x2069},
    {0xFEFF, 0xFEFF},
};

template <std::size_t size>
bool IsIn(const Range (&ranges)[size], wchar_t character) noexcept
{
    const auto code = static_cast<char32_t>(character);
    return std::ranges::any_of(
        ranges, [code](const Range& range) { return code >= range.first && code <= range.last; });
}

struct Escape
{
    wchar_t letter;
    wchar_t character;
};

constexpr Escape kEscapes[] = {
    {L'\\', L'\\'},
    {L'"', L'"'},
    {L'n', L'\n'},
    {L'r', L'\r'},
    {L't', L'\t'},
};

constexpr std::wstring_view kNumberEscape = L"\\u{";

std::wstring NumberEscape(wchar_t character)
{
    return fmt::format(L"\\u{{{:X}}}", static_cast<std::uint32_t>(character));
}

/// Takes the digits and the brace behind \u{.
wchar_t TakeNumber(std::wstring_view& rest)
{
    constexpr std::size_t kMostDigits = 8;
    std::uint32_t code = 0;
    const std::size_t length = std::min(rest.find(L'}'), rest.size());
    const std::string digits = Utf8Text(rest.substr(0, length));
    const bool isNumber = length < rest.size() && length > 0 && length <= kMostDigits &&
                          digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!isNumber)
    {
        throw CTextFault("\\u is not followed by 1 to 8 hexadecimal digits in braces");
    }
    code = static_cast<std::uint32_t>(std::stoul(digits, nullptr, 16));
    rest.remove_prefix(length + 1);
    return static_cast<wchar_t>(code);
}

/// Takes what follows a backslash inside quotes.
wchar_t TakeEscape(std::wstring_view& rest)
{
    const wchar_t letter = rest.empty() ? L'\0' : rest.front();
    const auto* row = std::ranges::find(kEscapes, letter, &Escape::letter);
    if (row != std::end(kEscapes))
    {
        rest.remove_prefix(1);
        return row->character;
    }
    if (!rest.starts_with(kNumberEscape.substr(1)))
    {
        throw CTextFault("a backslash in quotes is followed by none of \\ \" n r t u");
    }
    rest.remove_prefix(kNumberEscape.size() - 1);
    return TakeNumber(rest);
}

const Root& FindRoot(std::wstring_view name)
{
    const std::wstring folded = Folded(name);
    const auto* row = std::ranges::find_if(
        kRoots, [&](const Root& root) { return folded == root.name || folded == root.shortName; });
    if (row != std::end(kRoots))
    {
        return *row;
    }
    std::wstring known;
    for (const Root& root : kRoots)
    {
        known += fmt::format(L"{}{} ({})", known.empty() ? L"" : L", ", root.name, root.shortName);
    }
    throw CTextFault(fmt::format("{} is no root key; these are {}", QuotedText(name), Utf8Text(known)));
}

/// The names of the keys behind the root, one by one.
class CPathSplitter
{
public:
    CPathSplitter(std::wstring_view rest, std::wstring_view separators)
        : m_rest(rest),
          m_separators(separators)
    {}

    bool IsAtEnd() const noexcept { return m_rest.empty(); }

    std::wstring TakeName()
    {
        std::wstring name;
        while (!m_rest.empty())
        {
            const bool isNumber = m_rest.starts_with(kNumberEscape);
            wchar_t character = m_rest.front();
            m_rest.remove_prefix(isNumber ? kNumberEscape.size() : 1);
            if (!isNumber && m_separators.find(character) != std::wstring_view::npos)
            {
                break;
            }
            character = isNumber ? TakeNumber(m_rest) : character;
            if (character == L'\\' || character == L'\0' || !IsText({&character, 1}))
            {
                throw CTextFault("the name of a key holds no backslash, no NUL and characters only");
            }
            name += character;
        }
        return name;
    }

private:
    std::wstring_view m_rest;
    std::wstring_view m_separators;
};

} // namespace

std::wstring WideText(std::string_view utf8)
{
    std::wstring text(utf8.size(), L'\0');
    if (utf8.empty())
    {
        return text;
    }
    const int size = static_cast<int>(utf8.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, text.data(), size);
    if (length == 0)
    {
        throw CTextFault("the text is not UTF-8");
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string Utf8Text(std::wstring_view text)
{
    constexpr std::size_t kLongestSequence = 4;
    std::string utf8(text.size() * kLongestSequence, '\0');
    const int length = text.empty() ? 0
                                    : WideCharToMultiByte(CP_UTF8,
                                                          0,
                                                          text.data(),
                                                          static_cast<int>(text.size()),
                                                          utf8.data(),
                                                          static_cast<int>(utf8.size()),
                                                          nullptr,
                                                          nullptr);
    utf8.resize(static_cast<std::size_t>(length));
    return utf8;
}

bool IsText(std::wstring_view text) noexcept
{
    return std::ranges::none_of(text, [](wchar_t character) { return IsIn(kNoCharacters, character); });
}

bool IsHidden(wchar_t character) noexcept
{
    return IsIn(kHidden, character) || IsIn(kNoCharacters, character);
}

std::string QuotedText(std::wstring_view text)
{
    std::wstring quoted(1, L'"');
    for (const wchar_t character : text)
    {
        const auto* row = std::ranges::find(kEscapes, character, &Escape::character);
        if (row != std::end(kEscapes))
        {
            quoted += {L'\\', row->letter};
        }
        else if (IsHidden(character))
        {
            quoted += NumberEscape(character);
        }
        else
        {
            quoted += character;
        }
    }
    return Utf8Text(quoted + L'"');
}

std::wstring TakeQuotedText(std::wstring_view& line)
{
    if (!line.starts_with(L'"'))
    {
        throw CTextFault("a text in quotes is expected");
    }
    line.remove_prefix(1);
    std::wstring text;
    while (!line.empty())
    {
        const wchar_t character = line.front();
        line.remove_prefix(1);
        if (character == L'"')
        {
            return text;
        }
        text += character == L'\\' ? TakeEscape(line) : character;
    }
    throw CTextFault("the closing quote is missing");
}

void CheckValueName(std::wstring_view name)
{
    if (name.size() > kRegistryMaximumValueName)
    {
        throw CTextFault(
            fmt::format("the name of a value has at most {} characters", kRegistryMaximumValueName));
    }
    if (name.find(L'\0') != std::wstring_view::npos || !IsText(name))
    {
        throw CTextFault("the name of a value holds no NUL and characters only");
    }
}

std::wstring Folded(std::wstring_view name)
{
    std::wstring folded(name);
    CharUpper(folded.data());
    return folded;
}

RegistryPath RegistryPath::Below(const std::wstring& name) const
{
    return {root, keys.empty() ? name : keys + L'\\' + name};
}

std::vector<RegistryPath> AllRoots()
{
    std::vector<RegistryPath> roots;
    for (const Root& root : kRoots)
    {
        roots.push_back({root.key, {}});
    }
    return roots;
}

RegistryPath ParseRegistryPath(std::wstring_view text)
{
    const std::size_t rootLength = std::min(text.find_first_of(L"\\/"), text.size());
    RegistryPath path{FindRoot(text.substr(0, rootLength)).key, {}};
    const std::wstring_view rest = text.substr(std::min(rootLength + 1, text.size()));
    CPathSplitter names(rest, text.substr(rootLength).starts_with(L'/') ? L"\\/" : L"\\");
    std::size_t depth = 0;
    while (!names.IsAtEnd())
    {
        const std::wstring name = names.TakeName();
        if (name.empty() || name.size() > kRegistryMaximumKeyName || ++depth > kRegistryMaximumDepth)
        {
            throw CTextFault(fmt::format("the name of a key has 1 to {} characters, and at most {} keys are "
                                         "below each other",
                                         kRegistryMaximumKeyName,
                                         kRegistryMaximumDepth));
        }
        path = path.Below(name);
    }
    return path;
}

std::string KeyNameText(std::wstring_view name)
{
    // Behind a separator, u{ would look like an escape.
    std::wstring text;
    for (const wchar_t character : name)
    {
        const bool isBrace = text.empty() && name.starts_with(kNumberEscape.substr(1));
        text += isBrace || IsHidden(character) ? NumberEscape(character) : std::wstring(1, character);
    }
    return Utf8Text(text);
}

std::string PathText(const RegistryPath& path)
{
    const auto* root = std::ranges::find(kRoots, path.root, &Root::key);
    std::string text = root == std::end(kRoots) ? "?" : Utf8Text(root->name);
    for (std::wstring_view rest = path.keys; !rest.empty();)
    {
        const std::size_t length = std::min(rest.find(L'\\'), rest.size());
        text += '\\' + KeyNameText(rest.substr(0, length));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return text;
}

} // namespace ZoVelkor::Tools
