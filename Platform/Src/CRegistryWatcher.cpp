#include "CRegistryWatcher.h"

#include "CMutexLocker.h"
#include "CRegistryKey.h"
#include "CRegistryStore.h"
#include "Event.h"
#include "Registry.h"
#include "ThreadBasics.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <system_error>

namespace
{
std::int64_t QueryInteger(CRegistryConnection& connection, RegistrySql sql)
{
    CRegistryStatement statement = connection.Use(sql);
    return statement.Step() ? statement.Integer(0) : 0;
}

CUniqueDescriptor Checked(int descriptor, const char* what)
{
    if (descriptor < 0)
    {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return CUniqueDescriptor(descriptor);
}

void SetAll(std::vector<WatchRequest>& requests) noexcept
{
    for (const WatchRequest& request : requests)
    {
        SetEvent(request.event);
    }
    requests.clear();
}
} // namespace

/// The changes since some moment, and how they concern a key. Belongs to one read transaction.
class CRegistryWatcher::CChanges
{
public:
    CChanges(CRegistryConnection& connection, std::int64_t since)
        : m_connection(connection),
          m_last(QueryInteger(connection, RegistrySql::LastChange)),
          m_areComplete(QueryInteger(connection, RegistrySql::FirstChange) <= since + 1)
    {
        CRegistryStatement statement = connection.Use(RegistrySql::ChangesSince);
        statement.Bind(since);
        while (statement.Step())
        {
            m_changes.push_back({statement.Integer(0), static_cast<DWORD>(statement.Integer(1))});
        }
    }

    [[nodiscard]] std::int64_t Last() const noexcept { return m_last; }

    [[nodiscard]] bool Concern(std::int64_t key, const WatchRequest& request)
    {
        if (!m_areComplete)
        {
            return true;
        }
        return std::ranges::any_of(m_changes, [&](const Change& change) {
            if (change.kind == static_cast<DWORD>(RegistryChange::Delete) && ParentOf(key) < 0)
            {
                return true;
            }
            return (change.kind & request.filter) != 0 &&
                   (change.key == key || (request.watchSubtree && IsBelow(change.key, key)));
        });
    }

private:
    /// Of a key that is gone nobody knows where it was: it counts as below every key.
    bool IsBelow(std::int64_t key, std::int64_t ancestor)
    {
        // In a damaged tree a key may be below itself.
        for (DWORD depth = 0; depth <= kRegistryMaximumDepth && key > 0 && key != ancestor; ++depth)
        {
            key = ParentOf(key);
        }
        return key != 0;
    }

    /// @return 0 for a root, -1 for a key that is gone
    std::int64_t ParentOf(std::int64_t key)
    {
        const auto [position, isNew] = m_parents.try_emplace(key, -1);
        if (isNew)
        {
            CRegistryStatement statement = m_connection.Use(RegistrySql::KeyParent);
            position->second = statement.Bind(key).Step() ? statement.Integer(0) : -1;
        }
        return position->second;
    }

    CRegistryConnection& m_connection;
    std::int64_t m_last;
    bool m_areComplete;
    std::vector<Change> m_changes;
    std::unordered_map<std::int64_t, std::int64_t> m_parents;
};

CRegistryWatcher::CRegistryWatcher(CRegistryStore& store)
    : m_store(store),
      m_inotify(Checked(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK), "inotify_init1")),
      m_stop(Checked(::eventfd(0, EFD_CLOEXEC), "eventfd"))
{
    // Closing counts too: a process that dies between its change and the touch closes the file.
    if (::inotify_add_watch(m_inotify.Get(), store.BellFile().c_str(), IN_MODIFY | IN_CLOSE_WRITE) < 0)
    {
        throw std::system_error(errno, std::generic_category(), "inotify_add_watch");
    }
    m_thread = std::jthread([this] { Loop(); });
}

CRegistryWatcher::~CRegistryWatcher()
{
    ::eventfd_write(m_stop.Get(), 1);
    m_thread.join();
}

DWORD CRegistryWatcher::Arm(const CRegistryKey* handle, std::int64_t key, const WatchRequest& request)
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    // Whoever closes the key marks it before he takes the lock to end its requests.
    if (handle->IsClosed())
    {
        return ERROR_INVALID_HANDLE;
    }
    return m_store.Read([&](CRegistryConnection& connection) -> DWORD {
        m_lock.AssertHeld();
        {
            CRegistryStatement exists = connection.Use(RegistrySql::KeyExists);
            if (!exists.Bind(key).Step())
            {
                return ERROR_KEY_DELETED;
            }
        }
        const auto found = m_watches.find(handle);
        Watch watch = found != m_watches.end()
                          ? found->second
                          : Watch{key, QueryInteger(connection, RegistrySql::LastChange), {}};
        watch.pending.push_back(request);
        ExamineLocked(connection, watch);
        m_watches.insert_or_assign(handle, std::move(watch));
        return ERROR_SUCCESS;
    });
}

void CRegistryWatcher::Forget(const CRegistryKey* handle) noexcept
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    if (const auto found = m_watches.find(handle); found != m_watches.end())
    {
        SetAll(found->second.pending);
        m_watches.erase(found);
    }
}

void CRegistryWatcher::Loop()
{
    SetThreadName("RegistryWatcher");
    pollfd polls[] = {
        {m_inotify.Get(), POLLIN, 0},
        {m_stop.Get(), POLLIN, 0},
    };
    alignas(inotify_event) std::array<char, 4096> events{};
    for (;;)
    {
        const int ready = ::poll(std::data(polls), std::size(polls), -1);
        if (ready > 0 && polls[1].revents != 0)
        {
            return;
        }
        // Which events have come does not matter, only that some have: the database says what has changed.
        if (ready > 0 && ::read(m_inotify.Get(), events.data(), events.size()) > 0)
        {
            ExamineAll();
        }
    }
}

void CRegistryWatcher::ExamineAll() noexcept
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    if (ReadChangesLocked() == ERROR_SUCCESS)
    {
        return;
    }
    // Nobody knows what has changed: the waiters look themselves, and meet the trouble.
    for (auto& [handle, watch] : m_watches)
    {
        SetAll(watch.pending);
    }
}

DWORD CRegistryWatcher::ReadChangesLocked() noexcept
try
{
    return m_store.Read([this](CRegistryConnection& connection) -> DWORD {
        m_lock.AssertHeld();
        for (auto& [handle, watch] : m_watches)
        {
            if (!watch.pending.empty())
            {
                ExamineLocked(connection, watch);
            }
        }
        return ERROR_SUCCESS;
    });
}
catch (const std::bad_alloc&)
{
    return ERROR_NOT_ENOUGH_MEMORY;
}

void CRegistryWatcher::ExamineLocked(CRegistryConnection& connection, Watch& watch)
{
    CRegistryTransaction oneMoment(connection, RegistrySql::BeginRead);
    CChanges changes(connection, watch.seen);
    std::erase_if(watch.pending, [&](const WatchRequest& request) {
        const bool concerns = changes.Concern(watch.key, request);
        if (concerns)
        {
            SetEvent(request.event);
        }
        return concerns;
    });
    watch.seen = changes.Last();
}
