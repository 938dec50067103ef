#pragma once

#include "Registry.h"
#include "ZoExport.h"

/// Owner of one open key; results are those of the registry function that does the work.
///
/// Reading a value of another type gives ERROR_INVALID_DATA. Threads: one instance belongs to one thread at a
/// time.
class ZO_EXPORT CRegKey
{
public:
    CRegKey() noexcept = default;
    explicit CRegKey(HKEY key) noexcept : m_key(key) {}

    operator HKEY() const noexcept { return m_key.Get(); }

    /// Opens a key in place of the one held, which is kept when that fails.
    LONG Open(HKEY parent, const wchar_t* name) noexcept;
    /// The same, and makes the key where it is missing.
    LONG Create(HKEY parent, const wchar_t* name) noexcept;
    /// Closes the key, if one is held.
    LONG Close() noexcept;
    /// Takes over an open key; the one held before is closed.
    void Attach(HKEY key) noexcept { m_key.Reset(key); }
    /// Hands the key to the caller.
    [[nodiscard]] HKEY Detach() noexcept { return m_key.Detach(); }

    /// Deletes a key that has none below it.
    LONG DeleteSubKey(const wchar_t* name) noexcept;
    /// Deletes a key with everything below it; null or an empty name is ERROR_INVALID_PARAMETER.
    LONG RecurseDeleteKey(const wchar_t* name) noexcept;
    LONG DeleteValue(const wchar_t* name) noexcept;

    LONG SetStringValue(const wchar_t* name, const wchar_t* value, DWORD type = REG_SZ) noexcept;
    LONG SetDWORDValue(const wchar_t* name, DWORD value) noexcept;
    LONG SetQWORDValue(const wchar_t* name, ULONGLONG value) noexcept;

    /// Reads a text, which is always terminated; a REG_EXPAND_SZ is not expanded.
    ///
    /// @param[in,out] length  characters that value can hold, then those of the text; both with terminator
    /// @return ERROR_MORE_DATA when value is too small (the needed length is stored)
    LONG QueryStringValue(const wchar_t* name, wchar_t* value, ULONG* length) noexcept;
    LONG QueryDWORDValue(const wchar_t* name, DWORD& value) noexcept;
    LONG QueryQWORDValue(const wchar_t* name, ULONGLONG& value) noexcept;

private:
    CUniqueKey m_key;
};
