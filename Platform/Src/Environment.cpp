#include "Environment.h"

#include "LastError.h"
#include "RegistryNames.h"

#include <cstdlib>
#include <cwchar>
#include <limits>
#include <new>
#include <string>
#include <string_view>

namespace
{
/// Appends the value of a variable; false when there is none.
bool AppendVariable(std::wstring_view name, std::wstring& text)
{
    std::string bytes;
    if (name.empty() || ToUtf8(name, bytes) != ERROR_SUCCESS)
    {
        return false;
    }
    const char* value = std::getenv(bytes.c_str());
    if (value == nullptr)
    {
        return false;
    }
    text += FromUtf8(value);
    return true;
}

std::wstring Expand(std::wstring_view source)
{
    std::wstring text;
    while (!source.empty())
    {
        const auto length = source.front() == L'%' ? source.find(L'%', 1) : std::wstring_view::npos;
        if (length != std::wstring_view::npos && AppendVariable(source.substr(1, length - 1), text))
        {
            source.remove_prefix(length + 1);
            continue;
        }
        const auto plain = std::min(source.find(L'%', 1), source.size());
        text += source.substr(0, plain);
        source.remove_prefix(plain);
    }
    return text;
}

DWORD Fail(DWORD error) noexcept
{
    SetLastError(error);
    return 0;
}
} // namespace

DWORD ExpandEnvironmentStringsW(const wchar_t* text, wchar_t* buffer, DWORD bufferLength) noexcept
try
{
    if (text == nullptr || (buffer == nullptr && bufferLength != 0))
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::wstring expanded = Expand(text);
    if (expanded.size() >= std::numeric_limits<DWORD>::max())
    {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const auto needed = static_cast<DWORD>(expanded.size() + 1);
    if (needed <= bufferLength)
    {
        std::wmemcpy(buffer, expanded.c_str(), needed);
    }
    return needed;
}
catch (const std::exception&)
{
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}
