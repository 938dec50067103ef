#pragma once

#include "CUniqueHandle.h"
#include "Handle.h"
#include "LastError.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

// The registry of the instrument: a tree of keys whose values configure the components.
//
// All processes of a user share it. It lies in the database file $ZO_REGISTRY, else
// $XDG_STATE_HOME/zosoftwareplatform/registry.db, where ~/.local/state stands for an unset or relative
// XDG_STATE_HOME. The file and its folder are made at the first use, for their user alone.
//
// Every change is one transaction: it is done as a whole or not at all, whatever becomes of the process, and
// other processes see it as soon as the call returns. What the system has not yet written out when the power
// fails is lost; RegFlushKey waits until nothing can be lost any more.
//
// Names are compared without regard to case (as CharUpper does) and kept as written when the key or value was
// made. A name holds any character but 0; names of keys hold no backslash, which separates keys in a path. A
// backslash at the end of a path counts for nothing; at its beginning, or doubled, it makes the path bad.
//
// Threads: any function from any thread.
//
// Results: Win32 error numbers, returned and not left as the last error. Each may give, beside its own,
//   ERROR_INVALID_HANDLE     the key is not open, or the handle is that of something else
//   ERROR_KEY_DELETED        the key has been deleted since it was opened
//   ERROR_INVALID_PARAMETER  an out-pointer that is needed is null, a reserved argument is given, a limit is
//                            passed
//   ERROR_BAD_PATHNAME, ERROR_NO_UNICODE_TRANSLATION  a name cannot be one
//   ERROR_BUSY               another process has kept the database locked for kRegistryBusyTimeoutMs
//   ERROR_ACCESS_DENIED      the database or its folder may not be read, or not be written
//   ERROR_DISK_FULL, ERROR_REGISTRY_IO_FAILED, ERROR_CANTOPEN, ERROR_NOT_ENOUGH_MEMORY
//   ERROR_BADDB              the file is damaged, or no registry
// Those from ERROR_BUSY on are also told in one line on stderr, and again when the trouble has changed. A
// failed call leaves its out-parameters alone, unless its comment says otherwise.
//
// A process that forks may not use the registry in the child before it executes another program.

/// Names a key: one of the predefined roots or an open key. 0 names nothing.
using HKEY = HANDLE;

// The roots are always open, and closing them does nothing. Their upper 32 bits may be zeros or ones. They
// are seven separate trees; what lies in which is custom.
inline constexpr HKEY HKEY_CLASSES_ROOT = 0x80000000;     ///< classes and their servers
inline constexpr HKEY HKEY_CURRENT_USER = 0x80000001;     ///< settings of one user
inline constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;    ///< settings of the instrument
inline constexpr HKEY HKEY_USERS = 0x80000003;            ///< settings of all users
inline constexpr HKEY HKEY_PERFORMANCE_DATA = 0x80000004; ///< figures of the running system
inline constexpr HKEY HKEY_CURRENT_CONFIG = 0x80000005;   ///< the present configuration
inline constexpr HKEY HKEY_DYN_DATA = 0x80000006;         ///< what does not outlast a start

// Types of values. The registry stores what it is given: neither the length nor a terminator is checked.
inline constexpr DWORD REG_NONE = 0;      ///< bytes without a type
inline constexpr DWORD REG_SZ = 1;        ///< text of wchar_t with its terminator
inline constexpr DWORD REG_EXPAND_SZ = 2; ///< text with names of environment variables, see Environment.h
inline constexpr DWORD REG_BINARY = 3;    ///< bytes
inline constexpr DWORD REG_DWORD = 4;     ///< 32 bits, in the byte order of the machine
inline constexpr DWORD REG_MULTI_SZ = 7;  ///< texts with their terminators and a further one
inline constexpr DWORD REG_QWORD = 11;    ///< 64 bits

/// Longest name of a key in characters, without terminator; longer ones give ERROR_INVALID_PARAMETER.
inline constexpr DWORD kRegistryMaximumKeyName = 255;
/// Longest name of a value in characters; as above.
inline constexpr DWORD kRegistryMaximumValueName = 16383;
/// Largest value in bytes; as above.
inline constexpr DWORD kRegistryMaximumValueSize = 16U << 20U;
/// Deepest key, counted from its root; as above.
inline constexpr DWORD kRegistryMaximumDepth = 512;
/// How long a call waits for the locks of other processes.
inline constexpr int kRegistryBusyTimeoutMs = 2000;

/// Opens a key.
///
/// @param subKey       path below key; null or empty opens key once more
/// @param[out] result  the handle, closed with RegCloseKey; 0 on failure
/// @return ERROR_FILE_NOT_FOUND when there is no such key; ERROR_TOO_MANY_OPEN_FILES
ZO_EXPORT LONG RegOpenKey(HKEY key, const wchar_t* subKey, HKEY* result) noexcept;

/// Opens a key and makes it and the keys above it first where they are missing. Otherwise as RegOpenKey.
ZO_EXPORT LONG RegCreateKey(HKEY key, const wchar_t* subKey, HKEY* result) noexcept;

/// Closes a key. Its pending notification requests end: their events are set.
ZO_EXPORT LONG RegCloseKey(HKEY key) noexcept;

/// Owner of an open key.
using CUniqueKey = CUniqueHandle<&RegCloseKey, HKEY, HKEY{0}>;

/// Deletes a key with its values.
///
/// @param subKey  path below key; empty means key itself, null is wrong
/// @return ERROR_FILE_NOT_FOUND; ERROR_ACCESS_DENIED when it has keys below it or is a root
ZO_EXPORT LONG RegDeleteKey(HKEY key, const wchar_t* subKey) noexcept;

/// Deletes a key with everything below it, in one step.
///
/// @param subKey  path below key; null or empty deletes what key holds and leaves key itself
/// @return ERROR_FILE_NOT_FOUND
ZO_EXPORT LONG RegDeleteTree(HKEY key, const wchar_t* subKey) noexcept;

/// Reads a value.
///
/// @param name          null or empty: the unnamed value
/// @param reserved      null
/// @param[out] type     may be null
/// @param[out] data     receives the bytes; null only asks for type and size
/// @param[in,out] size  size of data in bytes, then that of the value; may be null without data
/// @return ERROR_FILE_NOT_FOUND; ERROR_MORE_DATA when data is too small (type and the needed size are stored)
ZO_EXPORT LONG RegQueryValueEx(
    HKEY key, const wchar_t* name, const DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) noexcept;

/// Writes a value, of whatever type it was before.
///
/// @param name      null or empty: the unnamed value
/// @param reserved  0
/// @param type      any; the known ones are above
/// @param data      null only with size 0
ZO_EXPORT LONG RegSetValueEx(
    HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) noexcept;

/// Deletes a value.
///
/// @param name  null or empty: the unnamed value
/// @return ERROR_FILE_NOT_FOUND when there is none of this name
ZO_EXPORT LONG RegDeleteValue(HKEY key, const wchar_t* name) noexcept;

/// Counts what a key holds. Every out-parameter may be null; lengths are in characters without terminator.
///
/// Keys have neither class nor security descriptor here, and the time of the last change is not kept.
/// @param[out] className                becomes empty
/// @param[in,out] classLength           0; at least 1 on entry when className is given
/// @param reserved                      null
/// @param[out] maxClassLength           0
/// @param[out] maxValueSize             in bytes
/// @param[out] securityDescriptorSize   0
/// @param lastWriteTime                 null, else ERROR_NOT_SUPPORTED
ZO_EXPORT LONG RegQueryInfoKey(HKEY key,
                               wchar_t* className,
                               DWORD* classLength,
                               const DWORD* reserved,
                               DWORD* subKeys,
                               DWORD* maxSubKeyLength,
                               DWORD* maxClassLength,
                               DWORD* values,
                               DWORD* maxValueNameLength,
                               DWORD* maxValueSize,
                               DWORD* securityDescriptorSize,
                               void* lastWriteTime) noexcept;

/// Gives the value with a number, counted from 0 in the order of the names.
///
/// Ascending numbers on one handle cost the same each, however many values there are. A change in between may
/// shift the numbers.
/// @param[out] name            the name with its terminator
/// @param[in,out] nameLength   characters that name can hold, then the length without terminator
/// @param reserved             null
/// @param[out] type            may be null
/// @param[out] data            null: not wanted
/// @param[in,out] size         as in RegQueryValueEx
/// @return ERROR_NO_MORE_ITEMS; ERROR_MORE_DATA when name is too small (nothing is stored) or data is too
///         small (type, name and the needed size are stored)
ZO_EXPORT LONG RegEnumValue(HKEY key,
                            DWORD index,
                            wchar_t* name,
                            DWORD* nameLength,
                            const DWORD* reserved,
                            DWORD* type,
                            BYTE* data,
                            DWORD* size) noexcept;

/// Gives the name of the key with a number directly below a key; order and cost as for RegEnumValue.
///
/// @param nameLength  characters that name can hold, the terminator included
/// @return ERROR_NO_MORE_ITEMS; ERROR_MORE_DATA when name is too small
ZO_EXPORT LONG RegEnumKey(HKEY key, DWORD index, wchar_t* name, DWORD nameLength) noexcept;

/// Waits until the changes made so far have reached the disk, so that no power failure can undo them.
ZO_EXPORT LONG RegFlushKey(HKEY key) noexcept;

// What RegNotifyChangeKeyValue looks for.
inline constexpr DWORD REG_NOTIFY_CHANGE_NAME = 1;       ///< a key below was made or deleted
inline constexpr DWORD REG_NOTIFY_CHANGE_ATTRIBUTES = 2; ///< allowed; keys have none
inline constexpr DWORD REG_NOTIFY_CHANGE_LAST_SET = 4;   ///< a value was written or deleted
inline constexpr DWORD REG_NOTIFY_CHANGE_SECURITY = 8;   ///< allowed; keys have none

/// Tells of the next change at a key, by whichever process.
///
/// One request tells of one change. What has changed between that and the next request on the same handle is
/// not missed: the next request tells of it at once. The first request looks from now on. An event may be set
/// without cause, for example when there were very many changes; it is never left unset with one. The
/// deletion of the key itself is told of whatever the filter.
/// @param watchSubtree  nonzero: the keys below count as well
/// @param filter        one or more of the four above
/// @param event         set at the change; stays the caller's. 0 only when asynchronous is 0
/// @param asynchronous  0: return after the change, or when another thread closes the key
/// @return ERROR_INVALID_HANDLE also for a handle that is no event; ERROR_TOO_MANY_OPEN_FILES
ZO_EXPORT LONG
RegNotifyChangeKeyValue(HKEY key, BOOL watchSubtree, DWORD filter, HANDLE event, BOOL asynchronous) noexcept;

/// Chooses the database file of this process in place of the one that the environment names.
///
/// Keys that are open stay with the former file. For tools that work on another instrument's registry, and
/// for tests, each of which has its own.
/// @param file  UTF-8; need not exist; null brings back the file that the environment names
/// @return ERROR_SUCCESS; ERROR_NOT_ENOUGH_MEMORY
ZO_EXPORT LONG SetRegistryFile(const char* file) noexcept;
