#pragma once

#include <cstddef>
#include <cstdint>

// Widths are those of the interfaces, whatever the machine: LONG has 32 bits where the language's long has
// 64.
using BYTE = std::uint8_t;       ///< 8 bits
using WORD = std::uint16_t;      ///< 16 bits
using DWORD = std::uint32_t;     ///< 32 bits: flags, counts, error numbers
using UINT = std::uint32_t;      ///< 32 bits: lengths
using ULONG = std::uint32_t;     ///< 32 bits: reference counts, array extents
using LONG = std::int32_t;       ///< 32 bits with sign
using LONGLONG = std::int64_t;   ///< 64 bits with sign
using ULONGLONG = std::uint64_t; ///< 64 bits
using BOOL = int;                ///< FALSE, or anything else for true; never compared with TRUE

/// Result of every interface operation: negative values are failures.
using HRESULT = std::int32_t;

/// Truth value that crosses interfaces: VARIANT_TRUE or VARIANT_FALSE, any other value counts as true.
using VARIANT_BOOL = short;

inline constexpr BOOL FALSE = 0;                 ///< what a failed call of the platform returns
inline constexpr BOOL TRUE = 1;                  ///< what a successful one returns
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1; ///< all bits set
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0; ///< no bit set

/// Converts a truth value to the form that crosses interfaces: VARIANT_TRUE or VARIANT_FALSE, never 1.
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
/// Done.
inline constexpr HRESULT S_OK = 0;
/// A success that says no: nothing there, nothing to do; each operation says which.
inline constexpr HRESULT S_FALSE = 1;
/// This implementation does not have the operation.
inline constexpr HRESULT E_NOTIMPL = MakeResult(0x80000001);
/// Memory is short.
inline constexpr HRESULT E_OUTOFMEMORY = MakeResult(0x80000002);
/// An argument has a value that is not allowed.
inline constexpr HRESULT E_INVALIDARG = MakeResult(0x80000003);
/// The object, or the root, does not have the interface.
inline constexpr HRESULT E_NOINTERFACE = MakeResult(0x80000004);
/// A pointer that must not be null is null.
inline constexpr HRESULT E_POINTER = MakeResult(0x80000005);
/// A handle that is none.
inline constexpr HRESULT E_HANDLE = MakeResult(0x80000006);
/// The work was cancelled: device clear, end of the connection, Abort.
inline constexpr HRESULT E_ABORT = MakeResult(0x80000007);
/// Failed for a reason without a code of its own.
inline constexpr HRESULT E_FAIL = MakeResult(0x80000008);
/// The present state forbids it, such as a local lockout.
inline constexpr HRESULT E_ACCESSDENIED = MakeResult(0x80000009);
/// Not yet: the time-out has passed, or the work is still under way.
inline constexpr HRESULT E_PENDING = MakeResult(0x8000000A);
/// Not possible in the present state of the object.
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

/// True for S_OK, S_FALSE and every other code that is not negative.
[[nodiscard]] constexpr bool SUCCEEDED(HRESULT result) noexcept
{
    return result >= 0;
}

/// True for the negative codes.
[[nodiscard]] constexpr bool FAILED(HRESULT result) noexcept
{
    return result < 0;
}

/// Gives the result code of a Win32 error number; ERROR_SUCCESS becomes S_OK.
///
/// The number's lower 16 bits stand in the lower half of 0x80070000; higher bits are dropped.
[[nodiscard]] constexpr HRESULT HRESULT_FROM_WIN32(DWORD error) noexcept
{
    return error == 0 ? S_OK : MakeResult((error & 0xFFFFU) | 0x80070000U);
}
