#pragma once

#include "CEvent.h"
#include "CMutex.h"
#include "Handle.h"
#include "PlatformTypes.h"

#include <cstdint>
#include <map>
#include <thread>
#include <unordered_map>
#include <vector>

class CRegistryConnection;
class CRegistryKey;
class CRegistryStore;

/// What one call of RegNotifyChangeKeyValue asks for.
struct WatchRequest
{
    DWORD filter;
    HANDLE event;
    bool watchSubtree;
};

/// Sets events at changes of keys, whichever process makes them: a thread sleeps until the bell file is
/// touched, reads the new changes and compares them with the requests. Any operation from any thread.
class CRegistryWatcher
{
public:
    /// @throws std::system_error when the system gives no descriptor or no thread
    explicit CRegistryWatcher(CRegistryStore& store);
    CRegistryWatcher(const CRegistryWatcher&) = delete;
    CRegistryWatcher& operator=(const CRegistryWatcher&) = delete;
    ~CRegistryWatcher();

    /// @param handle  identifies the open key in later calls
    /// @return an error number
    DWORD Arm(const CRegistryKey* handle, std::int64_t key, const WatchRequest& request);

    /// Sets the events of a handle that is being closed.
    void Forget(const CRegistryKey* handle) noexcept;

private:
    /// A handle that has been watched at least once.
    struct Watch
    {
        std::int64_t key = 0;
        std::int64_t seen = 0; ///< the changes up to this one have been looked at
        std::vector<WatchRequest> pending;
    };
    struct Change
    {
        std::int64_t key;
        DWORD kind;
    };
    class CChanges;

    void Loop();
    void ExamineAll() noexcept;
    DWORD ReadChangesLocked() noexcept ZO_REQUIRES(m_lock);
    void ExamineLocked(CRegistryConnection& connection, Watch& watch) ZO_REQUIRES(m_lock);

    CRegistryStore& m_store;
    CUniqueDescriptor m_inotify;
    CUniqueDescriptor m_stop;

    ZoVelkor::CMutex m_lock; // the store's locks are taken behind it
    std::map<const CRegistryKey*, Watch> m_watches ZO_GUARDED_BY(m_lock);

    std::jthread m_thread;
};
