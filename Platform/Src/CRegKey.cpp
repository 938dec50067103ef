#include "CRegKey.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <utility>

namespace
{
/// Reads a value that has exactly the size and the type of a number.
template <class TNumber>
LONG QueryNumber(HKEY key, const wchar_t* name, DWORD wantedType, TNumber& value) noexcept
{
    TNumber read = 0;
    DWORD type = 0;
    DWORD size = sizeof read;
    const LONG error = RegQueryValueEx(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&read), &size);
    const bool isThere = error == ERROR_SUCCESS || error == ERROR_MORE_DATA;
    if (isThere && (type != wantedType || size != sizeof read))
    {
        return ERROR_INVALID_DATA;
    }
    if (error == ERROR_SUCCESS)
    {
        value = read;
    }
    return error;
}

LONG SetBytes(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t size) noexcept
{
    if (size > kRegistryMaximumValueSize)
    {
        return ERROR_INVALID_PARAMETER;
    }
    return RegSetValueEx(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
}
} // namespace

LONG CRegKey::Open(HKEY parent, const wchar_t* name) noexcept
{
    HKEY key = 0;
    const LONG error = RegOpenKey(parent, name, &key);
    if (error == ERROR_SUCCESS)
    {
        Attach(key);
    }
    return error;
}

LONG CRegKey::Create(HKEY parent, const wchar_t* name) noexcept
{
    HKEY key = 0;
    const LONG error = RegCreateKey(parent, name, &key);
    if (error == ERROR_SUCCESS)
    {
        Attach(key);
    }
    return error;
}

LONG CRegKey::Close() noexcept
{
    const HKEY key = m_key.Detach();
    return key == 0 ? static_cast<LONG>(ERROR_SUCCESS) : RegCloseKey(key);
}

LONG CRegKey::RecurseDeleteKey(const wchar_t* name) noexcept
{
    const bool isNamed = name != nullptr && *name != L'\0';
    return isNamed ? RegDeleteTree(m_key.Get(), name) : static_cast<LONG>(ERROR_INVALID_PARAMETER);
}

LONG CRegKey::DeleteValue(const wchar_t* name) noexcept
{
    return RegDeleteValue(m_key.Get(), name);
}

LONG CRegKey::SetStringValue(const wchar_t* name, const wchar_t* value, DWORD type) noexcept
{
    return value == nullptr
               ? static_cast<LONG>(ERROR_INVALID_PARAMETER)
               : SetBytes(m_key.Get(), name, type, value, (std::wcslen(value) + 1) * sizeof(wchar_t));
}

LONG CRegKey::SetDWORDValue(const wchar_t* name, DWORD value) noexcept
{
    return SetBytes(m_key.Get(), name, REG_DWORD, &value, sizeof value);
}

LONG CRegKey::SetQWORDValue(const wchar_t* name, ULONGLONG value) noexcept
{
    return SetBytes(m_key.Get(), name, REG_QWORD, &value, sizeof value);
}

LONG CRegKey::QueryDWORDValue(const wchar_t* name, DWORD& value) noexcept
{
    return QueryNumber(m_key.Get(), name, REG_DWORD, value);
}

LONG CRegKey::QueryQWORDValue(const wchar_t* name, ULONGLONG& value) noexcept
{
    return QueryNumber(m_key.Get(), name, REG_QWORD, value);
}

LONG CRegKey::QueryStringValue(const wchar_t* name, wchar_t* value, ULONG* length) noexcept
{
    if (length == nullptr)
    {
        return ERROR_INVALID_PARAMETER;
    }
    const auto capacity =
        static_cast<DWORD>(std::min<std::size_t>(*length * sizeof(wchar_t), kRegistryMaximumValueSize));
    DWORD type = 0;
    DWORD size = capacity;
    const LONG error =
        RegQueryValueEx(m_key.Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(value), &size);
    if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA)
    {
        return error;
    }
    if ((type != REG_SZ && type != REG_EXPAND_SZ) || size % sizeof(wchar_t) != 0)
    {
        return ERROR_INVALID_DATA;
    }
    const auto stored = static_cast<DWORD>(size / sizeof(wchar_t));
    *length = stored;
    if (error != ERROR_SUCCESS || value == nullptr || (stored != 0 && value[stored - 1] == L'\0'))
    {
        return error;
    }
    *length = stored + 1;
    if (size == capacity)
    {
        return ERROR_MORE_DATA;
    }
    value[stored] = L'\0';
    return ERROR_SUCCESS;
}
