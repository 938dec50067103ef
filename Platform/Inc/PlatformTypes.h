#pragma once

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = int;

/// Result of every interface operation: negative values are failures.
using HRESULT = std::int32_t;

/// Truth value that crosses interfaces: VARIANT_TRUE or VARIANT_FALSE, any other value counts as true.
using VARIANT_BOOL = short;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// Converts a truth value to the form that crosses interfaces.
constexpr VARIANT_BOOL ToVariantBool(bool value) noexcept
{
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

/// Builds a result code from its bit pattern, as result codes are usually written.
constexpr HRESULT MakeResult(std::uint32_t pattern) noexcept
{
    return static_cast<HRESULT>(pattern);
}

// This platform numbers the general codes differently from the familiar desktop system.
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = MakeResult(0x80000001);
inline constexpr HRESULT E_OUTOFMEMORY = MakeResult(0x80000002);
inline constexpr HRESULT E_INVALIDARG = MakeResult(0x80000003);
inline constexpr HRESULT E_NOINTERFACE = MakeResult(0x80000004);
inline constexpr HRESULT E_POINTER = MakeResult(0x80000005);
inline constexpr HRESULT E_HANDLE = MakeResult(0x80000006);
inline constexpr HRESULT E_ABORT = MakeResult(0x80000007);
inline constexpr HRESULT E_FAIL = MakeResult(0x80000008);
inline constexpr HRESULT E_ACCESSDENIED = MakeResult(0x80000009);
inline constexpr HRESULT E_PENDING = MakeResult(0x8000000A);
inline constexpr HRESULT E_UNEXPECTED = MakeResult(0x8000FFFF);

/// A value has a type that cannot be converted to the wanted one, or a text is not a number.
inline constexpr HRESULT DISP_E_TYPEMISMATCH = MakeResult(0x80020005);
/// A VARTYPE is unknown or cannot be held by a VARIANT.
inline constexpr HRESULT DISP_E_BADVARTYPE = MakeResult(0x80020008);
/// A value is outside the range of the wanted type.
inline constexpr HRESULT DISP_E_OVERFLOW = MakeResult(0x8002000A);
/// An index or a dimension is outside an array.
inline constexpr HRESULT DISP_E_BADINDEX = MakeResult(0x8002000B);
/// An array is accessed by someone and cannot be destroyed.
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = MakeResult(0x8002000D);
/// A text is not a GUID.
inline constexpr HRESULT CO_E_CLASSSTRING = MakeResult(0x800401F3);

[[nodiscard]] constexpr bool SUCCEEDED(HRESULT result) noexcept
{
    return result >= 0;
}

[[nodiscard]] constexpr bool FAILED(HRESULT result) noexcept
{
    return result < 0;
}

/// Gives the result code of a Win32 error number; ERROR_SUCCESS becomes S_OK.
[[nodiscard]] constexpr HRESULT HRESULT_FROM_WIN32(DWORD error) noexcept
{
    return error == 0 ? S_OK : MakeResult((error & 0xFFFFU) | 0x80070000U);
}
