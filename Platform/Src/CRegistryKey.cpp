#include "CRegistryKey.h"

#include "CMutexLocker.h"
#include "CRegistryWatcher.h"
#include "Registry.h"

#include <cstring>
#include <cwchar>
#include <utility>
#include <vector>

namespace
{
using Names = std::span<const RegistryName>;

/// A place in the tree: the deepest key of a path that exists, and the names that are left.
struct Found
{
    std::int64_t id;
    Names rest;
};

bool Exists(CRegistryConnection& connection, std::int64_t id)
{
    CRegistryStatement statement = connection.Use(RegistrySql::KeyExists);
    return statement.Bind(id).Step();
}

Found FollowPath(CRegistryConnection& connection, std::int64_t id, Names path)
{
    Found found{id, path};
    for (; !found.rest.empty(); found.rest = found.rest.subspan(1))
    {
        CRegistryStatement statement = connection.Use(RegistrySql::FindKey);
        if (!statement.Bind(found.id).Bind(std::string_view(found.rest.front().folded)).Step())
        {
            break;
        }
        found.id = statement.Integer(0);
    }
    return found;
}

/// Makes the keys of a path below a key.
std::int64_t MakePath(CRegistryConnection& connection, std::int64_t id, Names path)
{
    for (const RegistryName& name : path)
    {
        const std::int64_t made = CRegistryStore::NoteChange(connection, id, RegistryChange::Name);
        connection.Run(
            RegistrySql::InsertKey, made, id, std::string_view(name.folded), std::string_view(name.written));
        id = made;
    }
    return id;
}

/// Bytes of names and data that an open key reads ahead; a larger value stands alone and is not kept.
constexpr std::size_t kPageSize = 8192;

DWORD ToDword(std::int64_t value) noexcept
{
    return static_cast<DWORD>(value);
}
} // namespace

DWORD ValueTarget::Store(DWORD storedType, std::span<const std::byte> bytes) const noexcept
{
    const auto stored = static_cast<DWORD>(bytes.size());
    if (type != nullptr)
    {
        *type = storedType;
    }
    if (size == nullptr)
    {
        return ERROR_SUCCESS;
    }
    const DWORD capacity = std::exchange(*size, stored);
    if (data == nullptr || stored == 0)
    {
        return ERROR_SUCCESS;
    }
    if (capacity < stored)
    {
        return ERROR_MORE_DATA;
    }
    std::memcpy(data, bytes.data(), stored);
    return ERROR_SUCCESS;
}

DWORD NameTarget::Store(std::string_view utf8)
{
    const std::wstring text = FromUtf8(utf8);
    if (text.size() >= capacity)
    {
        return ERROR_MORE_DATA;
    }
    std::wmemcpy(name, text.c_str(), text.size() + 1);
    length = static_cast<DWORD>(text.size());
    return ERROR_SUCCESS;
}

CRegistryKey::CRegistryKey(std::shared_ptr<CRegistryStore> store, std::int64_t id, std::size_t depth) noexcept
    : m_store(std::move(store)),
      m_id(id),
      m_depth(depth)
{}

CRegistryKey::~CRegistryKey()
{
    Close();
}

DWORD CRegistryKey::Open(const wchar_t* subKey, std::shared_ptr<CRegistryKey>& result) const
{
    std::vector<RegistryName> path;
    if (const DWORD error = SplitKeyPath(subKey, path); error != ERROR_SUCCESS)
    {
        return error;
    }
    return m_store->Read([&](CRegistryConnection& connection) -> DWORD {
        std::optional<CRegistryTransaction> oneMoment;
        if (path.size() > 1)
        {
            oneMoment.emplace(connection, RegistrySql::BeginRead);
        }
        const Found found = FollowPath(connection, m_id, path);
        if (!found.rest.empty() || path.empty())
        {
            const DWORD error =
                ErrorOfMissing(connection, path.empty() ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
            if (error != ERROR_SUCCESS)
            {
                return error;
            }
        }
        result = std::make_shared<CRegistryKey>(m_store, found.id, m_depth + path.size());
        return ERROR_SUCCESS;
    });
}

DWORD CRegistryKey::Create(const wchar_t* subKey, std::shared_ptr<CRegistryKey>& result) const
{
    // Mostly the key is there. Then nothing is written, and no other process has to wait.
    const DWORD opened = Open(subKey, result);
    std::vector<RegistryName> path;
    if (opened != ERROR_FILE_NOT_FOUND || SplitKeyPath(subKey, path) != ERROR_SUCCESS)
    {
        return opened;
    }
    if (m_depth + path.size() > kRegistryMaximumDepth)
    {
        return ERROR_INVALID_PARAMETER;
    }
    std::int64_t id = 0;
    const DWORD error = m_store->Write([&](CRegistryConnection& connection) -> DWORD {
        const Found found = FollowPath(connection, m_id, path);
        if (!Exists(connection, found.id))
        {
            return ERROR_KEY_DELETED;
        }
        id = MakePath(connection, found.id, found.rest);
        return ERROR_SUCCESS;
    });
    if (error == ERROR_SUCCESS)
    {
        result = std::make_shared<CRegistryKey>(m_store, id, m_depth + path.size());
    }
    return error;
}

DWORD CRegistryKey::Delete(const wchar_t* subKey) const
{
    return Remove(subKey, false);
}

DWORD CRegistryKey::DeleteTree(const wchar_t* subKey) const
{
    return Remove(subKey, true);
}

DWORD CRegistryKey::Remove(const wchar_t* subKey, bool withTree) const
{
    std::vector<RegistryName> path;
    if (const DWORD error = SplitKeyPath(subKey, path); error != ERROR_SUCCESS)
    {
        return error;
    }
    return m_store->Write([&](CRegistryConnection& connection) -> DWORD {
        const Found found = FollowPath(connection, m_id, path);
        if (!found.rest.empty() || !Exists(connection, found.id))
        {
            return ErrorOfMissing(connection, ERROR_FILE_NOT_FOUND);
        }
        CRegistryStatement parentOf = connection.Use(RegistrySql::KeyParent);
        parentOf.Bind(found.id).Step();
        const std::int64_t parent = parentOf.Integer(0);
        const bool contentOnly = withTree && path.empty();
        CRegistryStatement below = connection.Use(RegistrySql::HasSubKeys);
        if (!withTree && (parent == 0 || below.Bind(found.id).Step()))
        {
            return ERROR_ACCESS_DENIED;
        }
        connection.Run(RegistrySql::DeleteTreeValues, found.id);
        connection.Run(RegistrySql::DeleteTreeKeys, found.id, contentOnly ? found.id : std::int64_t{0});
        CRegistryStore::NoteChange(connection, contentOnly ? found.id : parent, RegistryChange::Delete);
        if (contentOnly)
        {
            CRegistryStore::NoteChange(connection, found.id, RegistryChange::Value);
        }
        return ERROR_SUCCESS;
    });
}

DWORD CRegistryKey::ReadValue(const wchar_t* name, const ValueTarget& target) const
{
    RegistryName valueName;
    if (const DWORD error = ToValueName(name, valueName); error != ERROR_SUCCESS)
    {
        return error;
    }
    return m_store->Read([&](CRegistryConnection& connection) -> DWORD {
        CRegistryStatement statement = connection.Use(RegistrySql::ReadValue);
        if (!statement.Bind(m_id).Bind(std::string_view(valueName.folded)).Step())
        {
            return ErrorOfMissing(connection, ERROR_FILE_NOT_FOUND);
        }
        return target.Store(ToDword(statement.Integer(0)), statement.Bytes(1));
    });
}

DWORD CRegistryKey::WriteValue(const wchar_t* name, DWORD type, std::span<const std::byte> bytes) const
{
    RegistryName valueName;
    if (const DWORD error = ToValueName(name, valueName); error != ERROR_SUCCESS)
    {
        return error;
    }
    return m_store->Write([&](CRegistryConnection& connection) -> DWORD {
        connection.Run(RegistrySql::WriteValue,
                       m_id,
                       std::string_view(valueName.folded),
                       std::string_view(valueName.written),
                       std::int64_t{type},
                       bytes);
        if (connection.ChangedRows() == 0)
        {
            return ERROR_KEY_DELETED;
        }
        CRegistryStore::NoteChange(connection, m_id, RegistryChange::Value);
        return ERROR_SUCCESS;
    });
}

DWORD CRegistryKey::DeleteValue(const wchar_t* name) const
{
    RegistryName valueName;
    if (const DWORD error = ToValueName(name, valueName); error != ERROR_SUCCESS)
    {
        return error;
    }
    return m_store->Write([&](CRegistryConnection& connection) -> DWORD {
        connection.Run(RegistrySql::DeleteValue, m_id, std::string_view(valueName.folded));
        if (connection.ChangedRows() == 0)
        {
            return ErrorOfMissing(connection, ERROR_FILE_NOT_FOUND);
        }
        CRegistryStore::NoteChange(connection, m_id, RegistryChange::Value);
        return ERROR_SUCCESS;
    });
}

DWORD CRegistryKey::QueryInfo(RegistryKeyInfo& info)
{
    return m_store->Read([&](CRegistryConnection& connection) -> DWORD {
        const auto moment = m_store->Moment(connection);
        const ZoVelkor::CMutexLocker lock(m_lock);
        if (!moment || moment != m_infoMoment)
        {
            CRegistryStatement statement = connection.Use(RegistrySql::KeyInfo);
            if (!statement.Bind(m_id).Step() || statement.Integer(0) == 0)
            {
                return ERROR_KEY_DELETED;
            }
            m_info = {ToDword(statement.Integer(1)),
                      ToDword(statement.Integer(2)),
                      ToDword(statement.Integer(3)),
                      ToDword(statement.Integer(4)),
                      ToDword(statement.Integer(5))};
            // Figures that were read while another process wrote may be of either moment: answered, but not
            // kept.
            m_infoMoment = m_store->Moment(connection) == moment ? moment : std::nullopt;
        }
        info = m_info;
        return ERROR_SUCCESS;
    });
}

DWORD CRegistryKey::EnumValue(DWORD index, NameTarget& name, const ValueTarget& target)
{
    constexpr Enumeration kEnumeration{kValues, RegistrySql::ValuesAfter, RegistrySql::ValueAt};
    return Enumerate(kEnumeration, index, name, target);
}

DWORD CRegistryKey::EnumKey(DWORD index, NameTarget& name)
{
    constexpr Enumeration kEnumeration{kKeys, RegistrySql::KeysAfter, RegistrySql::KeyAt};
    return Enumerate(kEnumeration, index, name, {});
}

DWORD CRegistryKey::Enumerate(const Enumeration& enumeration,
                              DWORD index,
                              NameTarget& name,
                              const ValueTarget& target)
{
    return m_store->Read([&](CRegistryConnection& connection) -> DWORD {
        const ZoVelkor::CMutexLocker lock(m_lock);
        Page& page = m_pages[enumeration.enumerated];
        const auto moment = m_store->Moment(connection);
        const bool isSame = moment && moment == page.moment;
        // An index in front of the page wraps and so lies beyond its end as well.
        const std::size_t offset = index - page.first;
        if (!isSame || offset >= page.entries.size())
        {
            // Going on behind the last name costs the same wherever it is; counting to an index does not.
            // It is only right while nothing has changed, which is known afterwards.
            const bool isNext = isSame && offset == page.entries.size();
            ReadAheadLocked(connection, enumeration, page, index, isNext);
            const bool isStillSame = m_store->Moment(connection) == moment;
            if (isNext && !isStillSame)
            {
                ReadAheadLocked(connection, enumeration, page, index, false);
            }
            page.moment = isStillSame ? moment : std::nullopt;
        }
        if (page.entries.empty())
        {
            page = {};
            return ErrorOfMissing(connection, ERROR_NO_MORE_ITEMS);
        }
        const Entry& entry = page.entries[index - page.first];
        const char* bytes = page.bytes.data() + entry.begin;
        DWORD error = name.Store({bytes, entry.nameSize});
        if (error == ERROR_SUCCESS)
        {
            error =
                target.Store(entry.type, std::as_bytes(std::span(bytes + entry.nameSize, entry.dataSize)));
        }
        // A single large value: memory of this size is not left with the key.
        if (page.bytes.size() > kPageSize)
        {
            page = {};
        }
        return error;
    });
}

void CRegistryKey::ReadAheadLocked(CRegistryConnection& connection,
                                   const Enumeration& enumeration,
                                   Page& page,
                                   DWORD index,
                                   bool isNext) const
{
    CRegistryStatement statement = connection.Use(isNext ? enumeration.after : enumeration.at);
    statement.Bind(m_id);
    isNext ? statement.Bind(std::string_view(page.lastFolded)) : statement.Bind(std::int64_t{index});
    page.moment.reset();
    page.first = index;
    page.entries.clear();
    page.bytes.clear();
    while (statement.Step())
    {
        const std::string_view name = statement.Text(1);
        const std::span<const std::byte> data = statement.Bytes(3);
        const std::size_t size = page.bytes.size();
        if (!page.entries.empty() && size + name.size() + data.size() > kPageSize)
        {
            return;
        }
        page.lastFolded = statement.Text(0);
        page.entries.push_back({size, name.size(), data.size(), ToDword(statement.Integer(2))});
        page.bytes += name;
        page.bytes.append(reinterpret_cast<const char*>(data.data()), data.size());
    }
}

DWORD CRegistryKey::ErrorOfMissing(CRegistryConnection& connection, DWORD error) const
{
    return Exists(connection, m_id) ? error : ERROR_KEY_DELETED;
}

DWORD CRegistryKey::Flush() const
{
    return m_store->Read([](CRegistryConnection& connection) -> DWORD {
        CRegistryStatement statement = connection.Use(RegistrySql::Checkpoint);
        return statement.Step() && statement.Integer(0) != 0 ? ERROR_BUSY : ERROR_SUCCESS;
    });
}

DWORD CRegistryKey::Notify(bool watchSubtree, DWORD filter, HANDLE event) const
{
    // The watcher needs the files, which the first use makes.
    const DWORD error = m_store->Read([](CRegistryConnection& /*connection*/) { return ERROR_SUCCESS; });
    return error != ERROR_SUCCESS ? error : m_store->Watcher().Arm(this, m_id, {filter, event, watchSubtree});
}

void CRegistryKey::Close() noexcept
{
    // Before the watcher is asked: whoever arms a request now sees the mark, or is found by Forget.
    m_isClosed = true;
    if (CRegistryWatcher* watcher = m_store->ExistingWatcher(); watcher != nullptr)
    {
        watcher->Forget(this);
    }
}
