#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// Code page 0: Windows-1252. Every byte has a character and comes back from it; the five bytes that the code
/// page leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) stand for the control characters of the same value.
inline constexpr UINT CP_ACP = 0;
/// Code page 0 under its own number.
inline constexpr UINT CP_WINDOWS_1252 = 1252;
/// UTF-8 (RFC 3629): no surrogates, no overlong forms, nothing above U+10FFFF.
inline constexpr UINT CP_UTF8 = 65001;

/// MultiByteToWideChar fails on bytes that are not UTF-8 instead of replacing them.
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x00000008;
/// Accepted by MultiByteToWideChar without effect: characters are always composed.
inline constexpr DWORD MB_PRECOMPOSED = 0x00000001;
/// WideCharToMultiByte fails on values that are not characters instead of replacing them (CP_UTF8 only).
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x00000080;

/// Widens a text. One wchar_t holds any character, so UTF-8 never gives surrogates.
///
/// Bytes that are not UTF-8 become U+FFFD, one for each rejected sequence.
/// @param length        bytes of text; -1 takes it up to and including the terminator
/// @param bufferLength  characters that buffer can hold; 0 asks for the needed number and leaves buffer alone
/// @return characters written or needed; 0 on failure, with the last error ERROR_INVALID_PARAMETER (unknown
///         code page, null text, length 0 or below -1, negative bufferLength, null buffer, result too long),
///         ERROR_INVALID_FLAGS, ERROR_INSUFFICIENT_BUFFER (the buffer then holds what fitted) or
///         ERROR_NO_UNICODE_TRANSLATION
ZO_EXPORT int MultiByteToWideChar(
    UINT codePage, DWORD flags, const char* text, int length, wchar_t* buffer, int bufferLength) noexcept;

/// Narrows a text.
///
/// @param defaultCharacter  stands for what code page 0 cannot hold: its first byte, '?' when null; must be
///                          null for CP_UTF8, where values that are not characters become U+FFFD
/// @param[out] usedDefault  TRUE when the default character was used, else FALSE; may be null, and must be
///                          null for CP_UTF8
/// @return bytes written or needed, lengths and failures as for MultiByteToWideChar
ZO_EXPORT int WideCharToMultiByte(UINT codePage,
                                  DWORD flags,
                                  const wchar_t* text,
                                  int length,
                                  char* buffer,
                                  int bufferLength,
                                  const char* defaultCharacter,
                                  BOOL* usedDefault) noexcept;

/// Converts a terminated text to capitals in place, one character to one, independent of the locale.
///
/// Covers Latin (with its extensions A), Greek and Cyrillic letters. Characters without a capital of their
/// own stay: sharp s, and the micro sign, which code page 0 could not hold as a Greek capital.
/// @return text; null for null
ZO_EXPORT wchar_t* CharUpper(wchar_t* text) noexcept;

/// Converts a terminated text to small letters in place; the counterpart of CharUpper.
ZO_EXPORT wchar_t* CharLower(wchar_t* text) noexcept;
