#pragma once

#include "CMutex.h"
#include "CRegistryStore.h"
#include "Handle.h"
#include "RegistryNames.h"

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What a key holds; lengths in characters, sizes in bytes.
struct RegistryKeyInfo
{
    DWORD subKeys = 0;
    DWORD maxSubKeyLength = 0;
    DWORD values = 0;
    DWORD maxValueNameLength = 0;
    DWORD maxValueSize = 0;
};

/// Where the caller wants a value; null pointers as in Registry.h.
struct ValueTarget
{
    DWORD* type;
    BYTE* data;
    DWORD* size;

    /// @return ERROR_SUCCESS or ERROR_MORE_DATA
    DWORD Store(DWORD storedType, std::span<const std::byte> bytes) const noexcept;
};

/// Where the caller wants the name of what it enumerates.
struct NameTarget
{
    wchar_t* name;
    DWORD capacity; ///< characters, terminator included
    DWORD length;   ///< set by Store, without terminator

    /// @return ERROR_SUCCESS or ERROR_MORE_DATA
    DWORD Store(std::string_view utf8);
};

/// An open key: the work of the registry functions, results as theirs. Any operation from any thread.
class CRegistryKey
{
public:
    /// @param id     number of the key in the database
    /// @param depth  0 for a root
    CRegistryKey(std::shared_ptr<CRegistryStore> store, std::int64_t id, std::size_t depth) noexcept;
    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;
    ~CRegistryKey();

    /// @param[out] result  null on failure
    DWORD Open(const wchar_t* subKey, std::shared_ptr<CRegistryKey>& result) const;
    DWORD Create(const wchar_t* subKey, std::shared_ptr<CRegistryKey>& result) const;
    DWORD Delete(const wchar_t* subKey) const;
    DWORD DeleteTree(const wchar_t* subKey) const;

    DWORD ReadValue(const wchar_t* name, const ValueTarget& target) const;
    DWORD WriteValue(const wchar_t* name, DWORD type, std::span<const std::byte> bytes) const;
    DWORD DeleteValue(const wchar_t* name) const;

    DWORD QueryInfo(RegistryKeyInfo& info);
    DWORD EnumValue(DWORD index, NameTarget& name, const ValueTarget& target);
    DWORD EnumKey(DWORD index, NameTarget& name);

    DWORD Flush() const;
    DWORD Notify(bool watchSubtree, DWORD filter, HANDLE event) const;
    /// Ends the use of the key's handle: sets the events of pending requests and refuses new ones.
    void Close() noexcept;
    [[nodiscard]] bool IsClosed() const noexcept { return m_isClosed; }

private:
    /// One entry of a page.
    struct Entry
    {
        std::size_t begin; ///< of the name in the page's bytes; the data follow
        std::size_t nameSize;
        std::size_t dataSize;
        DWORD type;
    };
    /// Entries that an enumeration has read ahead, good while nothing has changed since.
    struct Page
    {
        std::optional<RegistryMoment> moment; ///< nothing: good for one call only
        DWORD first = 0;                      ///< number of the first entry
        std::vector<Entry> entries;
        std::string bytes;
        std::string lastFolded; ///< of the last entry
    };
    /// What is enumerated; numbers the pages.
    enum Enumerated : std::size_t
    {
        kValues,
        kKeys,
        kEnumeratedCount
    };
    /// The statements of one enumeration, and its page.
    struct Enumeration
    {
        Enumerated enumerated;
        RegistrySql after; ///< a name
        RegistrySql at;    ///< a number
    };

    DWORD
    Enumerate(const Enumeration& enumeration, DWORD index, NameTarget& name, const ValueTarget& target);
    /// @param isNext  the number is that behind the page
    void ReadAheadLocked(CRegistryConnection& connection,
                         const Enumeration& enumeration,
                         Page& page,
                         DWORD index,
                         bool isNext) const ZO_REQUIRES(m_lock);
    DWORD ErrorOfMissing(CRegistryConnection& connection, DWORD error) const;
    DWORD Remove(const wchar_t* subKey, bool withTree) const;

    const std::shared_ptr<CRegistryStore> m_store;
    const std::int64_t m_id;
    const std::size_t m_depth;

    std::atomic<bool> m_isClosed{false};

    ZoVelkor::CMutex m_lock; // no other lock is taken while it is held
    std::array<Page, kEnumeratedCount> m_pages ZO_GUARDED_BY(m_lock);
    std::optional<RegistryMoment> m_infoMoment ZO_GUARDED_BY(m_lock);
    RegistryKeyInfo m_info ZO_GUARDED_BY(m_lock);
};
