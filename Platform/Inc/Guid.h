#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

#include <compare>

/// 128-bit identifier of an interface, a class or an object. Ordered field by field.
struct GUID
{
    std::uint32_t Data1;   ///< first group of digits of the text
    std::uint16_t Data2;   ///< second group
    std::uint16_t Data3;   ///< third group
    std::uint8_t Data4[8]; ///< fourth and fifth group, in the order of the text

    friend constexpr bool operator==(const GUID&, const GUID&) noexcept = default;
    friend constexpr auto
    operator<=>(const GUID&, const GUID&) noexcept = default; // NOLINT(modernize-use-nullptr): not a pointer
};
static_assert(sizeof(GUID) == 16);

/// Identifier of an interface.
using IID = GUID;
/// Identifier of a class or an object.
using CLSID = GUID;

/// The identifier of nothing: all bits 0.
inline constexpr GUID GUID_NULL{};

/// Makes a new random identifier (RFC 4122, version 4).
///
/// @return S_OK; E_POINTER when guid is null; E_FAIL when the system gives no random bytes (guid is then
///         GUID_NULL)
ZO_EXPORT HRESULT CoCreateGuid(GUID* guid) noexcept;

/// Writes an identifier as "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" with upper-case digits.
///
/// @param[out] text  task memory, freed by the caller with CoTaskMemFree; null on failure
/// @return S_OK; E_POINTER when text is null; E_OUTOFMEMORY
ZO_EXPORT HRESULT StringFromCLSID(const CLSID& clsid, wchar_t** text) noexcept;

/// Reads an identifier from its braced text; digits in either case.
///
/// @param text        null gives GUID_NULL and S_OK
/// @param[out] clsid  GUID_NULL on failure
/// @return S_OK; CO_E_CLASSSTRING when the text is anything else; E_POINTER when clsid is null
ZO_EXPORT HRESULT CLSIDFromString(const wchar_t* text, CLSID* clsid) noexcept;
