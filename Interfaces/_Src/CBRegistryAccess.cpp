#include "CBRegistryAccess.h"

#include "CComBSTR.h"
#include "CCritSection.h"
#include "CCritSectionLocker.h"
#include "CRegKey.h"
#include "CUniqueHandle.h"
#include "Environment.h"
#include "Registry.h"
#include "TaskMemory.h"

#include <array>
#include <cwchar>
#include <limits>
#include <optional>
#include <string>

namespace ZoVelkor
{

namespace
{

constexpr HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
constexpr HRESULT kInvalidParameter = HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER);
constexpr std::size_t kExpandBufferSize = 8192;
constexpr DWORD kExpandedLength = 2048;
constexpr DWORD kKeyNameLength = 255;
constexpr DWORD kCharacterSize = sizeof(wchar_t);

using CUniqueTaskText = CUniqueHandle<&CoTaskMemFree, void*, nullptr>;

HRESULT ToResult(LONG error)
{
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

HKEY ToKey(long key)
{
    return static_cast<HKEY>(key);
}

/// The 32 bits that a long carries; nothing for one that needs more.
std::optional<DWORD> ToDword(long value)
{
    const bool fits = value >= std::numeric_limits<LONG>::min() && value <= std::numeric_limits<DWORD>::max();
    return fits ? std::optional(static_cast<DWORD>(value)) : std::nullopt;
}

/// A size in bytes, none for a null pointer; nothing when it is negative or needs more than 32 bits.
std::optional<DWORD> ToSize(const long* size)
{
    const long value = size == nullptr ? 0 : *size;
    return value < 0 ? std::nullopt : ToDword(value);
}

template <class TValue>
void StoreIfWanted(long* target, TValue value)
{
    if (target != nullptr)
    {
        *target = static_cast<long>(value);
    }
}

bool IsText(DWORD type, DWORD size)
{
    return (type == REG_SZ || type == REG_EXPAND_SZ) && size != 0 && size % kCharacterSize == 0;
}

HRESULT StoreText(const wchar_t* text, DWORD length, wchar_t** value)
{
    *value = SysAllocStringLen(text, length);
    return *value == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT WriteText(long key, const wchar_t* name, DWORD type, const wchar_t* value)
{
    if (value == nullptr)
    {
        return E_POINTER;
    }
    const std::size_t size = (std::wcslen(value) + 1) * kCharacterSize;
    if (size > kRegistryMaximumValueSize)
    {
        return kInvalidParameter;
    }
    const auto* data = reinterpret_cast<const BYTE*>(value);
    return ToResult(RegSetValueEx(ToKey(key), name, 0, type, data, static_cast<DWORD>(size)));
}

HRESULT StoreExpanded(const wchar_t* text, wchar_t** value)
{
    std::array<wchar_t, kExpandedLength> expanded{};
    const DWORD length = ExpandEnvironmentStringsW(text, expanded.data(), kExpandedLength);
    if (length == 0)
    {
        // Deliberate: a failure that names no error counts as success, without a text.
        return HRESULT_FROM_WIN32(GetLastError());
    }
    return length > kExpandedLength ? HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER)
                                    : StoreText(expanded.data(), length - 1, value);
}

/// Holds a critical section to the end of a scope, if there is one.
class COptionalLocker
{
public:
    explicit COptionalLocker(CCritSection* section)
    {
        if (section != nullptr)
        {
            m_locker.emplace(*section);
        }
    }

private:
    std::optional<CCritSectionLocker> m_locker;
};

using KeyFinder = LONG (*)(HKEY, const wchar_t*, HKEY*) noexcept;

HRESULT FindKey(KeyFinder find, long key, const wchar_t* subKey, long* result)
{
    HKEY found = 0;
    const LONG error = find(ToKey(key), subKey, result == nullptr ? nullptr : &found);
    StoreIfWanted(result, found);
    return ToResult(error);
}

} // namespace

HRESULT CBRegistryAccess::GetBasicKeys(long* classesRoot,
                                       long* localMachine,
                                       long* currentUser,
                                       long* currentConfig,
                                       long* users,
                                       long* performanceData,
                                       long* dynData)
{
    StoreIfWanted(classesRoot, HKEY_CLASSES_ROOT);
    StoreIfWanted(localMachine, HKEY_LOCAL_MACHINE);
    StoreIfWanted(currentUser, HKEY_CURRENT_USER);
    StoreIfWanted(currentConfig, HKEY_CURRENT_CONFIG);
    StoreIfWanted(users, HKEY_USERS);
    StoreIfWanted(performanceData, HKEY_PERFORMANCE_DATA);
    StoreIfWanted(dynData, HKEY_DYN_DATA);
    return S_OK;
}

HRESULT CBRegistryAccess::ReadString(long key, wchar_t* name, wchar_t** value)
{
    *value = nullptr;
    DWORD type = 0;
    DWORD size = 0;
    LONG error = RegQueryValueEx(ToKey(key), name, nullptr, &type, nullptr, &size);
    if (error != ERROR_SUCCESS)
    {
        return ToResult(error);
    }
    if (!IsText(type, size))
    {
        return kInvalidData;
    }
    const DWORD length = size / kCharacterSize - 1;
    CComBSTR text;
    text.Attach(SysAllocStringLen(nullptr, length));
    if (!text)
    {
        return E_OUTOFMEMORY;
    }
    error = RegQueryValueEx(
        ToKey(key), name, nullptr, &type, reinterpret_cast<BYTE*>(static_cast<wchar_t*>(text)), &size);
    if (error != ERROR_SUCCESS)
    {
        return ToResult(error);
    }
    // Another process may have written a shorter value between the two reads.
    if (!IsText(type, size))
    {
        return kInvalidData;
    }
    const DWORD lengthRead = size / kCharacterSize - 1;
    // Deliberate: the last stored character counts as the terminator, so that a text stored without one loses
    // it.
    static_cast<wchar_t*>(text)[lengthRead] = L'\0';
    if (lengthRead != length)
    {
        return StoreText(text, lengthRead, value);
    }
    *value = text.Detach();
    return S_OK;
}

HRESULT CBRegistryAccess::ReadExpandedString(long key, wchar_t* name, wchar_t** value)
{
    *value = nullptr;
    std::array<wchar_t, kExpandBufferSize / kCharacterSize> text{};
    DWORD type = 0;
    DWORD size = kExpandBufferSize;
    const LONG error =
        RegQueryValueEx(ToKey(key), name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
    if (error != ERROR_SUCCESS)
    {
        return ToResult(error);
    }
    if (!IsText(type, size) || text[size / kCharacterSize - 1] != L'\0')
    {
        return kInvalidData;
    }
    return type == REG_EXPAND_SZ ? StoreExpanded(text.data(), value)
                                 : StoreText(text.data(), size / kCharacterSize - 1, value);
}

HRESULT CBRegistryAccess::WriteString(long key, wchar_t* name, wchar_t* value)
{
    return WriteText(key, name, REG_SZ, value);
}

HRESULT CBRegistryAccess::WriteExpandedString(long key, wchar_t* name, wchar_t* value)
{
    return WriteText(key, name, REG_EXPAND_SZ, value);
}

HRESULT CBRegistryAccess::ReadLong(long key, wchar_t* name, long* value)
{
    LONG read = 0;
    DWORD type = 0;
    DWORD size = sizeof read;
    const LONG error =
        RegQueryValueEx(ToKey(key), name, nullptr, &type, reinterpret_cast<BYTE*>(&read), &size);
    // Deliberate: callers fall back to a default for a missing value just as for a wrong one, and a DWORD
    // that is stored with fewer bytes is taken.
    if (error != ERROR_SUCCESS || type != REG_DWORD)
    {
        return kInvalidData;
    }
    *value = read;
    return S_OK;
}

HRESULT CBRegistryAccess::WriteLong(long key, wchar_t* name, long value)
{
    const std::optional<DWORD> number = ToDword(value);
    if (!number)
    {
        return kInvalidParameter;
    }
    const auto* data = reinterpret_cast<const BYTE*>(&*number);
    return ToResult(RegSetValueEx(ToKey(key), name, 0, REG_DWORD, data, sizeof *number));
}

HRESULT CBRegistryAccess::ReadGuid(long key, wchar_t* name, GUID* value)
{
    CComBSTR text;
    const HRESULT result = ReadString(key, name, &text);
    return result == S_OK ? CLSIDFromString(text, value) : result;
}

HRESULT CBRegistryAccess::WriteGuid(long key, wchar_t* name, const GUID* value)
{
    wchar_t* text = nullptr;
    const HRESULT result = StringFromCLSID(*value, &text);
    const CUniqueTaskText owner(text);
    return result == S_OK ? WriteString(key, name, text) : result;
}

HRESULT
CBRegistryAccess::RegQueryValue(long key, wchar_t* name, long* type, long* size, unsigned char* data)
{
    const std::optional<DWORD> capacity = ToSize(size);
    if (!capacity)
    {
        return kInvalidParameter;
    }
    DWORD storedType = 0;
    DWORD storedSize = *capacity;
    const LONG error = RegQueryValueEx(
        ToKey(key), name, nullptr, &storedType, data, size == nullptr ? nullptr : &storedSize);
    if (error == ERROR_SUCCESS || error == ERROR_MORE_DATA)
    {
        StoreIfWanted(type, storedType);
        StoreIfWanted(size, storedSize);
    }
    return ToResult(error);
}

HRESULT CBRegistryAccess::RegSetValue(long key, wchar_t* name, long type, long size, unsigned char* data)
{
    const std::optional<DWORD> storedType = ToDword(type);
    const std::optional<DWORD> storedSize = ToSize(&size);
    return storedType && storedSize
               ? ToResult(RegSetValueEx(ToKey(key), name, 0, *storedType, data, *storedSize))
               : kInvalidParameter;
}

HRESULT CBRegistryAccess::RegQueryInfoKey(long key,
                                          long* subKeys,
                                          long* maxSubKeyLength,
                                          long* values,
                                          long* maxValueNameLength,
                                          long* maxValueLength)
{
    long* const targets[] = {subKeys, maxSubKeyLength, values, maxValueNameLength, maxValueLength};
    std::array<DWORD, std::size(targets)> found{};
    const LONG error = ::RegQueryInfoKey(ToKey(key),
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         found.data(),
                                         &found[1],
                                         nullptr,
                                         &found[2],
                                         &found[3],
                                         &found[4],
                                         nullptr,
                                         nullptr);
    for (std::size_t i = 0; error == ERROR_SUCCESS && i < found.size(); ++i)
    {
        StoreIfWanted(targets[i], found[i]);
    }
    return ToResult(error);
}

HRESULT CBRegistryAccess::RegEnumValue(
    long key, long index, long* type, long* size, unsigned char* data, wchar_t** name)
{
    if (name != nullptr)
    {
        *name = nullptr;
    }
    const std::optional<DWORD> capacity = ToSize(size);
    const std::optional<DWORD> number = ToDword(index);
    if (!capacity || !number)
    {
        return kInvalidParameter;
    }
    // A name longer than that may come in between; it gives 0x800700EA like a buffer that is too small.
    long longestName = 0;
    const HRESULT result =
        CBRegistryAccess::RegQueryInfoKey(key, nullptr, nullptr, nullptr, &longestName, nullptr);
    if (result != S_OK)
    {
        return result;
    }
    auto nameLength = static_cast<DWORD>(longestName + 1);
    std::wstring text(nameLength, L'\0');
    DWORD storedType = 0;
    DWORD storedSize = *capacity;
    const LONG error = ::RegEnumValue(ToKey(key),
                                      *number,
                                      text.data(),
                                      &nameLength,
                                      nullptr,
                                      &storedType,
                                      size == nullptr ? nullptr : data,
                                      size == nullptr ? nullptr : &storedSize);
    if (error == ERROR_SUCCESS || error == ERROR_MORE_DATA)
    {
        StoreIfWanted(type, storedType);
        StoreIfWanted(size, storedSize);
    }
    const bool isNameWanted = error == ERROR_SUCCESS && name != nullptr;
    return isNameWanted ? StoreText(text.data(), nameLength, name) : ToResult(error);
}

HRESULT CBRegistryAccess::RegEnumKey(long key, long index, wchar_t** name)
{
    *name = nullptr;
    const std::optional<DWORD> number = ToDword(index);
    if (!number)
    {
        return kInvalidParameter;
    }
    // Deliberate: room for 254 characters and the terminator, although a name may have 255.
    std::array<wchar_t, kKeyNameLength> text{};
    const LONG error = ::RegEnumKey(ToKey(key), *number, text.data(), kKeyNameLength);
    return error == ERROR_SUCCESS ? StoreText(text.data(), static_cast<DWORD>(std::wcslen(text.data())), name)
                                  : ToResult(error);
}

HRESULT CBRegistryAccess::RegCreateKey(long key, wchar_t* subKey, long* result)
{
    return FindKey(&::RegCreateKey, key, subKey, result);
}

HRESULT CBRegistryAccess::RegOpenKey(long key, wchar_t* subKey, long* result)
{
    return FindKey(&::RegOpenKey, key, subKey, result);
}

HRESULT CBRegistryAccess::RegCloseKey(long key)
{
    return key == 0 ? S_FALSE : ToResult(::RegCloseKey(ToKey(key)));
}

HRESULT CBRegistryAccess::RegDeleteKey(long key, wchar_t* subKey)
{
    return ToResult(::RegDeleteKey(ToKey(key), subKey));
}

HRESULT CBRegistryAccess::RegRecursiveDeleteKey(long key, wchar_t* subKey)
{
    CRegKey borrowed;
    // The handle stays the caller's, so it is taken out again whatever happens.
    borrowed.Attach(ToKey(key));
    const LONG error = borrowed.RecurseDeleteKey(subKey);
    static_cast<void>(borrowed.Detach());
    return ToResult(error);
}

HRESULT CBRegistryAccess::SaveRegKeyToFile(long /*key*/, wchar_t* /*file*/)
{
    return E_NOTIMPL;
}

HRESULT CBRegistryAccess::RegisterNotificationRegKey(IZONotificationSink* sink,
                                                     long key,
                                                     wchar_t* subKey,
                                                     long secondKey,
                                                     wchar_t* valueName,
                                                     short flag,
                                                     unsigned long filter)
{
    const COptionalLocker locker(m_lock);
    return DoRegisterNotificationRegKey(sink, key, subKey, secondKey, valueName, flag, filter);
}

HRESULT CBRegistryAccess::UnregisterNotificationRegKey(IZONotificationSink* sink)
{
    const COptionalLocker locker(m_lock);
    return DoUnregisterNotificationRegKey(sink);
}

// Deliberate: components that ask for notifications also run where nobody sends any.
HRESULT CBRegistryAccess::DoRegisterNotificationRegKey(IZONotificationSink* /*sink*/,
                                                       long /*key*/,
                                                       wchar_t* /*subKey*/,
                                                       long /*secondKey*/,
                                                       wchar_t* /*valueName*/,
                                                       short /*flag*/,
                                                       unsigned long /*filter*/)
{
    return S_OK;
}

HRESULT CBRegistryAccess::DoUnregisterNotificationRegKey(IZONotificationSink* /*sink*/)
{
    return S_OK;
}

} // namespace ZoVelkor
