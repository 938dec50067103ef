#pragma once

#include "Registry.h"
#include "ZoExport.h"

/// Owner of one open key; results are those of the registry function that does the work (see Registry.h).
///
/// A key that is not held gives ERROR_INVALID_HANDLE. A name of null or the empty one is the unnamed value.
/// Reading a value of another type gives ERROR_INVALID_DATA. What an operation was to fetch is left alone
/// when it fails, unless said otherwise. Values above kRegistryMaximumValueSize give
/// ERROR_INVALID_PARAMETER.
///
/// Threads: one instance belongs to one thread at a time.
class ZO_EXPORT CRegKey
{
public:
    CRegKey() noexcept = default;
    /// Takes over an open key, which is closed with the object.
    explicit CRegKey(HKEY key) noexcept : m_key(key) {}

    /// The key, borrowed; 0 when none is held.
    operator HKEY() const noexcept { return m_key.Get(); }

    /// Opens a key in place of the one held, which is kept when that fails.
    LONG Open(HKEY parent, const wchar_t* name) noexcept;
    /// The same, and makes the key where it is missing.
    LONG Create(HKEY parent, const wchar_t* name) noexcept;
    /// Closes the key, if one is held.
    ///
    /// @return ERROR_SUCCESS, also without a key; else as RegCloseKey, and the key is not held any more
    ///         either
    LONG Close() noexcept;
    /// Takes over an open key; the one held before is closed.
    void Attach(HKEY key) noexcept { m_key.Reset(key); }
    /// Hands the key to the caller, who closes it; 0 when none was held.
    [[nodiscard]] HKEY Detach() noexcept { return m_key.Detach(); }

    /// Deletes a key with everything below it; null or an empty name is ERROR_INVALID_PARAMETER.
    LONG RecurseDeleteKey(const wchar_t* name) noexcept;
    /// Deletes a value of any type; ERROR_FILE_NOT_FOUND when there is none of this name.
    LONG DeleteValue(const wchar_t* name) noexcept;

    /// Writes a text up to its terminator, and that.
    ///
    /// @param value  null gives ERROR_INVALID_PARAMETER
    /// @param type   REG_SZ or REG_EXPAND_SZ; stored as given
    LONG SetStringValue(const wchar_t* name, const wchar_t* value, DWORD type = REG_SZ) noexcept;
    /// Writes a number of 32 bits.
    LONG SetDWORDValue(const wchar_t* name, DWORD value) noexcept;
    /// Writes a number of 64 bits.
    LONG SetQWORDValue(const wchar_t* name, ULONGLONG value) noexcept;

    /// Reads a text, which is always terminated; a REG_EXPAND_SZ is not expanded.
    ///
    /// @param[in,out] length  characters that value can hold, then those of the text; both with terminator
    /// @return ERROR_MORE_DATA when value is too small (the needed length is stored)
    LONG QueryStringValue(const wchar_t* name, wchar_t* value, ULONG* length) noexcept;
    /// Reads a number of 32 bits; one of another size or type gives ERROR_INVALID_DATA.
    LONG QueryDWORDValue(const wchar_t* name, DWORD& value) noexcept;
    /// Reads a number of 64 bits; otherwise as QueryDWORDValue.
    LONG QueryQWORDValue(const wchar_t* name, ULONGLONG& value) noexcept;

private:
    CUniqueKey m_key;
};
