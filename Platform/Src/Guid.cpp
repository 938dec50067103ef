#include "Guid.h"

#include "TaskMemory.h"

#include <array>
#include <cstring>
#include <optional>
#include <sys/random.h>

namespace
{
/// The bytes in the order in which the text shows them.
using GuidBytes = std::array<std::uint8_t, 16>;

constexpr std::size_t kTextLength = 38;

GuidBytes ToBytes(const GUID& guid) noexcept
{
    GuidBytes bytes{};
    for (unsigned i = 0; i < 4; ++i)
    {
        bytes[i] = static_cast<std::uint8_t>(guid.Data1 >> (24U - 8U * i));
    }
    bytes[4] = static_cast<std::uint8_t>(guid.Data2 >> 8U);
    bytes[5] = static_cast<std::uint8_t>(guid.Data2);
    bytes[6] = static_cast<std::uint8_t>(guid.Data3 >> 8U);
    bytes[7] = static_cast<std::uint8_t>(guid.Data3);
    std::memcpy(&bytes[8], guid.Data4, sizeof guid.Data4);
    return bytes;
}

GUID FromBytes(const GuidBytes& bytes) noexcept
{
    GUID guid{};
    for (unsigned i = 0; i < 4; ++i)
    {
        guid.Data1 = (guid.Data1 << 8U) | bytes[i];
    }
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    std::memcpy(guid.Data4, &bytes[8], sizeof guid.Data4);
    return guid;
}

constexpr bool IsDashBefore(std::size_t byteIndex) noexcept
{
    return byteIndex == 4 || byteIndex == 6 || byteIndex == 8 || byteIndex == 10;
}

std::optional<unsigned> HexValue(wchar_t digit) noexcept
{
    if (digit >= L'0' && digit <= L'9')
    {
        return static_cast<unsigned>(digit - L'0');
    }
    const wchar_t small = digit | 0x20;
    if (small >= L'a' && small <= L'f')
    {
        return static_cast<unsigned>(small - L'a') + 10U;
    }
    return std::nullopt;
}

/// Stops at the first character that does not fit, so that it never reads behind the terminator.
std::optional<GuidBytes> ParseBraced(const wchar_t* text) noexcept
{
    GuidBytes bytes{};
    if (*text++ != L'{')
    {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        if (IsDashBefore(i) && *text++ != L'-')
        {
            return std::nullopt;
        }
        for (int digit = 0; digit < 2; ++digit)
        {
            const auto value = HexValue(*text++);
            if (!value)
            {
                return std::nullopt;
            }
            bytes[i] = static_cast<std::uint8_t>(bytes[i] << 4 | static_cast<int>(*value));
        }
    }
    return text[0] == L'}' && text[1] == L'\0' ? std::optional(bytes) : std::nullopt;
}
} // namespace

HRESULT CoCreateGuid(GUID* guid) noexcept
{
    if (guid == nullptr)
    {
        return E_POINTER;
    }
    *guid = GUID_NULL;
    GuidBytes bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0)
    {
        return E_FAIL;
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    *guid = FromBytes(bytes);
    return S_OK;
}

HRESULT StringFromCLSID(const CLSID& clsid, wchar_t** text) noexcept
{
    if (text == nullptr)
    {
        return E_POINTER;
    }
    *text = static_cast<wchar_t*>(CoTaskMemAlloc((kTextLength + 1) * sizeof(wchar_t)));
    if (*text == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    constexpr const wchar_t* kDigits = L"0123456789ABCDEF";
    const GuidBytes bytes = ToBytes(clsid);
    wchar_t* next = *text;
    *next++ = L'{';
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        if (IsDashBefore(i))
        {
            *next++ = L'-';
        }
        *next++ = kDigits[bytes[i] >> 4];
        *next++ = kDigits[bytes[i] & 0x0F];
    }
    *next++ = L'}';
    *next = L'\0';
    return S_OK;
}

HRESULT CLSIDFromString(const wchar_t* text, CLSID* clsid) noexcept
{
    if (clsid == nullptr)
    {
        return E_POINTER;
    }
    *clsid = GUID_NULL;
    if (text == nullptr)
    {
        return S_OK;
    }
    const auto bytes = ParseBraced(text);
    if (!bytes)
    {
        return CO_E_CLASSSTRING;
    }
    *clsid = FromBytes(*bytes);
    return S_OK;
}
