#include "Registry.h"

#include "CHandleTable.h"
#include "CMutexLocker.h"
#include "CRegistryKey.h"
#include "Event.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <utility>

namespace
{
constexpr std::size_t kRoots = 7;
constexpr HKEY kFirstRoot = HKEY_CLASSES_ROOT;

/// The database file in use, with its roots. The keys keep their file alive.
struct Registry
{
    std::shared_ptr<CRegistryStore> store;
    std::array<std::shared_ptr<CRegistryKey>, kRoots> roots;
};

std::string FileOfEnvironment()
{
    const char* file = std::getenv("ZO_REGISTRY");
    if (file != nullptr && *file != '\0')
    {
        return file;
    }
    constexpr const char* kPlace = "/zosoftwareplatform/registry.db";
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/')
    {
        return std::string(state) + kPlace;
    }
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? std::string(home) + "/.local/state" + kPlace : std::string();
}

std::shared_ptr<const Registry> MakeRegistry(std::string file)
{
    auto registry = std::make_shared<Registry>();
    registry->store = std::make_shared<CRegistryStore>(std::move(file));
    for (std::size_t i = 0; i < kRoots; ++i)
    {
        // The database numbers the roots from 1 on.
        registry->roots[i] =
            std::make_shared<CRegistryKey>(registry->store, static_cast<std::int64_t>(i + 1), std::size_t{0});
    }
    return registry;
}

/// The registry of the process; it is never destroyed, because threads may outlive static objects.
class CCurrentRegistry
{
public:
    static CCurrentRegistry& Instance()
    {
        static CCurrentRegistry& current = *new CCurrentRegistry;
        return current;
    }

    std::shared_ptr<const Registry> Get()
    {
        const ZoVelkor::CMutexLocker lock(m_lock);
        if (m_registry == nullptr)
        {
            m_registry = MakeRegistry(FileOfEnvironment());
        }
        return m_registry;
    }

    void Set(std::shared_ptr<const Registry> registry)
    {
        const ZoVelkor::CMutexLocker lock(m_lock);
        m_registry.swap(registry);
    }

private:
    ZoVelkor::CMutex m_lock;
    std::shared_ptr<const Registry> m_registry ZO_GUARDED_BY(m_lock); // null until it is needed
};

/// Gives a root the form with 32 zeros in front; other handles stay.
constexpr HKEY WithoutExtension(HKEY key) noexcept
{
    constexpr HKEY kOnes = 0xFFFFFFFF80000000;
    return (key & kOnes) == kOnes ? key & 0xFFFFFFFF : key;
}

constexpr bool IsRoot(HKEY key) noexcept
{
    return key >= kFirstRoot && key < kFirstRoot + kRoots;
}

/// Runs a body that gives an error number; what it throws becomes one.
template <class TBody>
LONG Guarded(const TBody& body) noexcept
{
    const auto run = [&body]() -> DWORD {
        try
        {
            return body();
        }
        catch (const std::bad_alloc&)
        {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
        catch (const std::system_error& error)
        {
            const int number = error.code().value();
            return number == EMFILE || number == ENFILE ? ERROR_TOO_MANY_OPEN_FILES : ERROR_CANTOPEN;
        }
    };
    return static_cast<LONG>(run());
}

/// Runs the work of a function on an open key or a root.
template <class TBody>
LONG WithKey(HKEY key, const TBody& body) noexcept
{
    return Guarded([&]() -> DWORD {
        const HKEY handle = WithoutExtension(key);
        const std::shared_ptr<CRegistryKey> open =
            IsRoot(handle) ? CCurrentRegistry::Instance().Get()->roots[handle - kFirstRoot]
                           : CRegistryKeyTable::Instance().Find(handle);
        return open == nullptr ? ERROR_INVALID_HANDLE : body(*open);
    });
}

using KeyFinder = DWORD (CRegistryKey::*)(const wchar_t*, std::shared_ptr<CRegistryKey>&) const;

LONG OpenWith(KeyFinder find, HKEY key, const wchar_t* subKey, HKEY* result) noexcept
{
    if (result == nullptr)
    {
        return ERROR_INVALID_PARAMETER;
    }
    *result = 0;
    return WithKey(key, [&](const CRegistryKey& parent) -> DWORD {
        std::shared_ptr<CRegistryKey> found;
        if (const DWORD error = (parent.*find)(subKey, found); error != ERROR_SUCCESS)
        {
            return error;
        }
        *result = CRegistryKeyTable::Instance().Insert(std::move(found));
        return *result == 0 ? ERROR_TOO_MANY_OPEN_FILES : ERROR_SUCCESS;
    });
}

template <class TTarget>
void StoreIfWanted(TTarget* target, TTarget value) noexcept
{
    if (target != nullptr)
    {
        *target = value;
    }
}
} // namespace

LONG RegOpenKey(HKEY key, const wchar_t* subKey, HKEY* result) noexcept
{
    return OpenWith(&CRegistryKey::Open, key, subKey, result);
}

LONG RegCreateKey(HKEY key, const wchar_t* subKey, HKEY* result) noexcept
{
    return OpenWith(&CRegistryKey::Create, key, subKey, result);
}

LONG RegCloseKey(HKEY key) noexcept
{
    return Guarded([key]() -> DWORD {
        if (IsRoot(WithoutExtension(key)))
        {
            return ERROR_SUCCESS;
        }
        const std::shared_ptr<CRegistryKey> closed = CRegistryKeyTable::Instance().Remove(key);
        if (closed == nullptr)
        {
            return ERROR_INVALID_HANDLE;
        }
        // Whoever waits holds the key too, so that its destructor would come too late.
        closed->Close();
        return ERROR_SUCCESS;
    });
}

LONG RegDeleteKey(HKEY key, const wchar_t* subKey) noexcept
{
    return WithKey(key, [subKey](const CRegistryKey& open) {
        return subKey == nullptr ? ERROR_INVALID_PARAMETER : open.Delete(subKey);
    });
}

LONG RegDeleteTree(HKEY key, const wchar_t* subKey) noexcept
{
    return WithKey(key, [subKey](const CRegistryKey& open) { return open.DeleteTree(subKey); });
}

LONG RegQueryValueEx(
    HKEY key, const wchar_t* name, const DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) noexcept
{
    return WithKey(key, [&](const CRegistryKey& open) {
        const bool isWrong = reserved != nullptr || (data != nullptr && size == nullptr);
        return isWrong ? ERROR_INVALID_PARAMETER : open.ReadValue(name, {type, data, size});
    });
}

LONG RegSetValueEx(
    HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) noexcept
{
    return WithKey(key, [&](const CRegistryKey& open) {
        const bool isWrong =
            reserved != 0 || (data == nullptr && size != 0) || size > kRegistryMaximumValueSize;
        return isWrong ? ERROR_INVALID_PARAMETER
                       : open.WriteValue(name, type, std::as_bytes(std::span(data, size)));
    });
}

LONG RegDeleteValue(HKEY key, const wchar_t* name) noexcept
{
    return WithKey(key, [name](const CRegistryKey& open) { return open.DeleteValue(name); });
}

LONG RegQueryInfoKey(HKEY key,
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
                     void* lastWriteTime) noexcept
{
    return WithKey(key, [&](CRegistryKey& open) -> DWORD {
        if (reserved != nullptr || (className != nullptr && (classLength == nullptr || *classLength == 0)))
        {
            return ERROR_INVALID_PARAMETER;
        }
        if (lastWriteTime != nullptr)
        {
            return ERROR_NOT_SUPPORTED;
        }
        RegistryKeyInfo info;
        if (const DWORD error = open.QueryInfo(info); error != ERROR_SUCCESS)
        {
            return error;
        }
        StoreIfWanted(className, L'\0');
        StoreIfWanted(classLength, DWORD{0});
        StoreIfWanted(subKeys, info.subKeys);
        StoreIfWanted(maxSubKeyLength, info.maxSubKeyLength);
        StoreIfWanted(maxClassLength, DWORD{0});
        StoreIfWanted(values, info.values);
        StoreIfWanted(maxValueNameLength, info.maxValueNameLength);
        StoreIfWanted(maxValueSize, info.maxValueSize);
        StoreIfWanted(securityDescriptorSize, DWORD{0});
        return ERROR_SUCCESS;
    });
}

LONG RegEnumValue(HKEY key,
                  DWORD index,
                  wchar_t* name,
                  DWORD* nameLength,
                  const DWORD* reserved,
                  DWORD* type,
                  BYTE* data,
                  DWORD* size) noexcept
{
    return WithKey(key, [&](CRegistryKey& open) -> DWORD {
        if (reserved != nullptr || name == nullptr || nameLength == nullptr ||
            (data != nullptr && size == nullptr))
        {
            return ERROR_INVALID_PARAMETER;
        }
        NameTarget target{name, *nameLength, *nameLength};
        const DWORD error = open.EnumValue(index, target, {type, data, size});
        *nameLength = target.length;
        return error;
    });
}

LONG RegEnumKey(HKEY key, DWORD index, wchar_t* name, DWORD nameLength) noexcept
{
    return WithKey(key, [&](CRegistryKey& open) -> DWORD {
        NameTarget target{name, nameLength, 0};
        return name == nullptr ? ERROR_INVALID_PARAMETER : open.EnumKey(index, target);
    });
}

LONG RegFlushKey(HKEY key) noexcept
{
    return WithKey(key, [](const CRegistryKey& open) { return open.Flush(); });
}

LONG RegNotifyChangeKeyValue(
    HKEY key, BOOL watchSubtree, DWORD filter, HANDLE event, BOOL asynchronous) noexcept
{
    return WithKey(key, [&](const CRegistryKey& open) -> DWORD {
        constexpr DWORD kAll = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_ATTRIBUTES |
                               REG_NOTIFY_CHANGE_LAST_SET | REG_NOTIFY_CHANGE_SECURITY;
        if (filter == 0 || (filter & ~kAll) != 0)
        {
            return ERROR_INVALID_PARAMETER;
        }
        if (asynchronous != FALSE || event != 0)
        {
            const DWORD former = GetLastError();
            const bool isEvent = GetEventDescriptor(event) >= 0;
            SetLastError(former);
            if (!isEvent)
            {
                return ERROR_INVALID_HANDLE;
            }
        }
        const CUniqueEvent own(event == 0 ? CreateEvent(TRUE, FALSE) : 0);
        const HANDLE told = event == 0 ? own.Get() : event;
        if (told == 0)
        {
            return GetLastError();
        }
        const DWORD error = open.Notify(watchSubtree != FALSE, filter, told);
        if (error == ERROR_SUCCESS && asynchronous == FALSE)
        {
            WaitForSingleObject(told, INFINITE);
        }
        return error;
    });
}

LONG SetRegistryFile(const char* file) noexcept
{
    return Guarded([file]() -> DWORD {
        CCurrentRegistry::Instance().Set(file == nullptr ? nullptr : MakeRegistry(file));
        return ERROR_SUCCESS;
    });
}
