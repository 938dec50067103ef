#include "Bstr.h"

#include "CodePage1252.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <string_view>

namespace
{
using LengthPrefix = std::uint32_t;

static_assert(sizeof(wchar_t) == 4 && sizeof(LengthPrefix) == alignof(wchar_t));

/// Gives zeroed characters behind their length; one terminator more than the last, perhaps partial,
/// character.
BSTR AllocateZeroed(std::size_t byteLength) noexcept
{
    if (byteLength > std::numeric_limits<LengthPrefix>::max())
    {
        return nullptr;
    }
    const std::size_t characters = byteLength / sizeof(wchar_t) + 2;
    void* block = std::calloc(1, sizeof(LengthPrefix) + characters * sizeof(wchar_t));
    if (block == nullptr)
    {
        return nullptr;
    }
    const auto prefix = static_cast<LengthPrefix>(byteLength);
    std::memcpy(block, &prefix, sizeof prefix);
    return static_cast<wchar_t*>(block) + 1;
}

BSTR AllocateCopy(const void* source, std::size_t byteLength) noexcept
{
    BSTR result = AllocateZeroed(byteLength);
    if (result != nullptr && source != nullptr && byteLength != 0)
    {
        std::memcpy(result, source, byteLength);
    }
    return result;
}
} // namespace

BSTR SysAllocString(const wchar_t* text) noexcept
{
    return text == nullptr ? nullptr : AllocateCopy(text, std::wcslen(text) * sizeof(wchar_t));
}

BSTR SysAllocStringLen(const wchar_t* text, UINT length) noexcept
{
    return AllocateCopy(text, std::size_t{length} * sizeof(wchar_t));
}

BSTR SysAllocStringByteLen(const char* bytes, UINT byteLength) noexcept
{
    return AllocateCopy(bytes, byteLength);
}

BOOL SysReAllocString(BSTR* target, const wchar_t* text) noexcept
{
    if (target == nullptr)
    {
        return FALSE;
    }
    BSTR copy = SysAllocString(text);
    if (copy == nullptr && text != nullptr)
    {
        return FALSE;
    }
    SysFreeString(*target);
    *target = copy;
    return TRUE;
}

BOOL SysReAllocStringLen(BSTR* target, const wchar_t* text, UINT length) noexcept
{
    BSTR copy = target == nullptr ? nullptr : SysAllocStringLen(text, length);
    if (copy == nullptr)
    {
        return FALSE;
    }
    SysFreeString(*target);
    *target = copy;
    return TRUE;
}

void SysFreeString(BSTR text) noexcept
{
    if (text != nullptr)
    {
        std::free(text - 1);
    }
}

UINT SysStringLen(const wchar_t* text) noexcept
{
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(wchar_t));
}

UINT SysStringByteLen(const wchar_t* text) noexcept
{
    LengthPrefix prefix = 0;
    if (text != nullptr)
    {
        std::memcpy(&prefix, text - 1, sizeof prefix);
    }
    return prefix;
}

BSTR A2WBSTR(const char* text, int length) noexcept
{
    if (text == nullptr || length < -1)
    {
        return nullptr;
    }
    const std::string_view source(text, length == -1 ? std::strlen(text) : static_cast<std::size_t>(length));
    BSTR result = AllocateZeroed(source.size() * sizeof(wchar_t));
    if (result != nullptr)
    {
        wchar_t* next = result;
        for (const char byte : source)
        {
            *next++ = CharacterOf1252(byte);
        }
    }
    return result;
}
