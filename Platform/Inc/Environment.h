#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// Replaces each %NAME% in a text by the value of the environment variable NAME.
///
/// The case of the name counts, and the value is taken as UTF-8. What names no variable stays as it is; its
/// second percent sign may begin the next name.
/// @param buffer        may be null with bufferLength 0, to ask for the length
/// @param bufferLength  characters that buffer can hold, the terminator included
/// @return characters of the whole result, the terminator included; the buffer is left alone when they are
///         more than bufferLength. 0 on failure, with the last error ERROR_INVALID_PARAMETER (null text, null
///         buffer with a length, a result beyond 32 bits) or ERROR_NOT_ENOUGH_MEMORY
ZO_EXPORT DWORD ExpandEnvironmentStringsW(const wchar_t* text, wchar_t* buffer, DWORD bufferLength) noexcept;
