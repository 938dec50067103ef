#include "RegistryNames.h"

#include "CodePage.h"
#include "LastError.h"
#include "Registry.h"

#include <algorithm>
#include <cstddef>

namespace
{
constexpr wchar_t kSeparator = L'\\';

/// Names are short and mostly plain: those need no conversion.
bool AssignPlain(std::wstring_view text, RegistryName& name)
{
    constexpr wchar_t kLastPlain = 0x7F;
    if (std::ranges::any_of(text, [](wchar_t c) { return c < 0 || c > kLastPlain; }))
    {
        return false;
    }
    const auto toCapital = [](wchar_t c) { return static_cast<char>(c >= L'a' && c <= L'z' ? c - 32 : c); };
    name.written.resize(text.size());
    std::ranges::transform(text, name.written.begin(), [](wchar_t c) { return static_cast<char>(c); });
    name.folded.resize(text.size());
    std::ranges::transform(text, name.folded.begin(), toCapital);
    return true;
}

DWORD ToName(std::wstring_view text, DWORD limit, RegistryName& name)
{
    if (text.size() > limit)
    {
        return ERROR_INVALID_PARAMETER;
    }
    if (AssignPlain(text, name))
    {
        return ERROR_SUCCESS;
    }
    std::wstring capitals(text);
    CharUpper(capitals.data());
    const DWORD error = ToUtf8(text, name.written);
    return error == ERROR_SUCCESS ? ToUtf8(capitals, name.folded) : error;
}
} // namespace

DWORD ToUtf8(std::wstring_view text, std::string& bytes)
{
    constexpr std::size_t kLongestSequence = 4;
    bytes.resize(text.size() * kLongestSequence);
    if (text.empty())
    {
        return ERROR_SUCCESS;
    }
    const int length = WideCharToMultiByte(CP_UTF8,
                                           WC_ERR_INVALID_CHARS,
                                           text.data(),
                                           static_cast<int>(text.size()),
                                           bytes.data(),
                                           static_cast<int>(bytes.size()),
                                           nullptr,
                                           nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    return length == 0 ? ERROR_NO_UNICODE_TRANSLATION : ERROR_SUCCESS;
}

std::wstring FromUtf8(std::string_view bytes)
{
    std::wstring text(bytes.size(), L'\0');
    if (!bytes.empty())
    {
        const int length = MultiByteToWideChar(CP_UTF8,
                                               0,
                                               bytes.data(),
                                               static_cast<int>(bytes.size()),
                                               text.data(),
                                               static_cast<int>(text.size()));
        text.resize(static_cast<std::size_t>(length));
    }
    return text;
}

DWORD ToValueName(const wchar_t* text, RegistryName& name)
{
    return ToName(text == nullptr ? std::wstring_view() : text, kRegistryMaximumValueName, name);
}

DWORD SplitKeyPath(const wchar_t* path, std::vector<RegistryName>& names)
{
    std::wstring_view rest = path == nullptr ? std::wstring_view() : path;
    while (!rest.empty())
    {
        const auto length = std::min(rest.find(kSeparator), rest.size());
        if (length == 0)
        {
            return ERROR_BAD_PATHNAME;
        }
        const DWORD error = ToName(rest.substr(0, length), kRegistryMaximumKeyName, names.emplace_back());
        if (error != ERROR_SUCCESS)
        {
            return error;
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return names.size() > kRegistryMaximumDepth ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}
