#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

// Win32 error numbers; they are this platform's own and have nothing to do with errno.
inline constexpr DWORD ERROR_SUCCESS = 0;             ///< no error
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;      ///< no such key or value
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4; ///< the process has no descriptor left
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;  ///< the file may not be used, or a key has others below it
inline constexpr DWORD ERROR_INVALID_HANDLE = 6; ///< the handle names nothing, or another kind of object
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;  ///< memory is short; nothing was changed
inline constexpr DWORD ERROR_INVALID_DATA = 13;      ///< a value has another type or size than the wanted one
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;     ///< this platform does not have it
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87; ///< an argument is null or out of range
inline constexpr DWORD ERROR_DISK_FULL = 112;        ///< no room for the database
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122; ///< the caller's buffer is too small for the text
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;        ///< the text cannot be a path of keys
inline constexpr DWORD ERROR_BUSY = 170;                ///< another process has kept the database locked
inline constexpr DWORD ERROR_MORE_DATA = 234; ///< the caller's buffer is too small; the needed size is told
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;       ///< the index is behind the last one
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;      ///< unknown flags
inline constexpr DWORD ERROR_BADDB = 1009;              ///< the database is damaged, or none
inline constexpr DWORD ERROR_CANTOPEN = 1011;           ///< the database cannot be opened
inline constexpr DWORD ERROR_REGISTRY_IO_FAILED = 1016; ///< the system refused to read or write the database
inline constexpr DWORD ERROR_KEY_DELETED = 1018;        ///< the key is gone since it was opened
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113; ///< bytes or values that are no characters
inline constexpr DWORD ERROR_PRIVILEGE_NOT_HELD = 1314; ///< the process may not do it, such as set the clock

/// Gives the error number that the last failed platform call of this thread left; 0 in a fresh thread.
///
/// A call that succeeds leaves the number alone unless its comment says otherwise.
ZO_EXPORT DWORD GetLastError() noexcept;

/// Sets the error number of this thread.
ZO_EXPORT void SetLastError(DWORD error) noexcept;
