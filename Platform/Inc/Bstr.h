#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// Wide string that crosses interfaces: a 32-bit byte count stands in front of the characters, a terminator
/// behind them; characters of value 0 may occur inside. wchar_t is 32 bits wide.
///
/// A null BSTR stands for the empty string wherever only the text matters. Ownership: whoever receives one
/// from an out-parameter or an allocation frees it with SysFreeString. All allocations give null when memory
/// is short or the text would exceed 2^32 - 1 bytes.
using BSTR = wchar_t*;

/// Copies a text up to its terminator; null for null.
ZO_EXPORT BSTR SysAllocString(const wchar_t* text) noexcept;

/// Copies length characters, zeros included, and terminates them; a null text gives that many zeros.
ZO_EXPORT BSTR SysAllocStringLen(const wchar_t* text, UINT length) noexcept;

/// Copies byteLength raw bytes, not converted, and terminates them; a null source gives that many zero
/// bytes.
///
/// The byte length need not be a multiple of the character size: SysStringLen then counts the whole
/// characters and SysStringByteLen all bytes. This is how a block travels in a BSTR.
ZO_EXPORT BSTR SysAllocStringByteLen(const char* bytes, UINT byteLength) noexcept;

/// Replaces the text of a BSTR; text may lie inside the old one.
///
/// @param target  holds a BSTR or null; on success the new one, and the old one is freed
/// @param text    up to its terminator; null stores null
/// @return TRUE; FALSE when target is null or memory is short (the old text then stays)
ZO_EXPORT BOOL SysReAllocString(BSTR* target, const wchar_t* text) noexcept;

/// As SysReAllocString with an explicit length; a null text gives zeros.
ZO_EXPORT BOOL SysReAllocStringLen(BSTR* target, const wchar_t* text, UINT length) noexcept;

/// Frees a BSTR; null is allowed. The string must come from one of the allocations above and is freed once.
ZO_EXPORT void SysFreeString(BSTR text) noexcept;

/// Length in whole characters, zeros inside included; 0 for null.
///
/// Read from the byte count in front of the text, so the pointer must be a BSTR and no other text.
[[nodiscard]] ZO_EXPORT UINT SysStringLen(const wchar_t* text) noexcept;

/// Length in bytes, terminator not counted; 0 for null. The rest as SysStringLen.
[[nodiscard]] ZO_EXPORT UINT SysStringByteLen(const wchar_t* text) noexcept;

/// Widens a text of code page 0.
///
/// @param length  number of bytes, zeros included; -1 takes the text up to its terminator
/// @return a new BSTR, empty for an empty text; null for null, for a length below -1 and when memory is short
ZO_EXPORT BSTR A2WBSTR(const char* text, int length = -1) noexcept;
