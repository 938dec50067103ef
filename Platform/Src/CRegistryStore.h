#pragma once

#include "CEvent.h"
#include "CRegistryConnection.h"
#include "LastError.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class CRegistryWatcher;

/// Kinds of changes; the values are the bits of the notification filter.
enum class RegistryChange : std::int64_t
{
    Name = 1,   ///< a key was made below the key
    Value = 4,  ///< a value was written or deleted
    Delete = 17 ///< a key below the key was deleted: Name, and open keys may be gone
};

/// A moment of a store: what was read at two equal ones is the same.
struct RegistryMoment
{
    std::uint32_t openings;
    RegistryCommitMark mark;

    bool operator==(const RegistryMoment&) const = default;
};

/// One database file: its connections, its transactions and the telling of its failures. Any operation from
/// any thread.
class CRegistryStore
{
public:
    /// @param file  empty: there is no place for a file, every operation fails
    explicit CRegistryStore(const std::string& file);
    CRegistryStore(const CRegistryStore&) = delete;
    CRegistryStore& operator=(const CRegistryStore&) = delete;
    ~CRegistryStore();

    /// Runs a body that reads.
    ///
    /// @param body  gets a connection, gives an error number; a CSqliteError that it throws is told and
    ///              becomes one
    template <class TBody>
    DWORD Read(const TBody& body)
    {
        return Run(m_readFault, body);
    }

    /// Runs a body that changes something, in a transaction that is committed when the body succeeds.
    template <class TBody>
    DWORD Write(const TBody& body)
    {
        // Threads of this process queue here, because SQLite would let them sleep.
        const std::lock_guard lock(m_writeLock);
        const DWORD error = Run(m_writeFault, [&body](CRegistryConnection& connection) {
            CRegistryTransaction transaction(connection, RegistrySql::BeginWrite);
            const DWORD result = body(connection);
            if (result == ERROR_SUCCESS)
            {
                transaction.Commit();
            }
            return result;
        });
        if (error == ERROR_SUCCESS)
        {
            RingBell();
        }
        return error;
    }

    /// Numbers a change; called by the body of a Write.
    static std::int64_t NoteChange(CRegistryConnection& connection, std::int64_t key, RegistryChange change);

    /// Now, for a body that reads; nothing when it cannot be told.
    [[nodiscard]] std::optional<RegistryMoment> Moment(const CRegistryConnection& connection) const noexcept;

    /// The oldest change that is surely kept.
    static constexpr std::int64_t kKeptChanges = 4096;

    /// The file that is touched after each change, for whoever waits for changes.
    [[nodiscard]] std::string BellFile() const { return m_file + "-bell"; }

    /// @throws std::system_error, std::bad_alloc
    CRegistryWatcher& Watcher();
    /// The watcher if there is one, else null.
    CRegistryWatcher* ExistingWatcher() noexcept;

private:
    /// The failure that was told last, so that the same one is not told again and again.
    struct Fault
    {
        const char* operation = "";
        int toldCode = 0;
    };

    template <class TBody>
    DWORD Run(Fault& fault, const TBody& body)
    {
        std::unique_ptr<CRegistryConnection> connection;
        try
        {
            connection = TakeConnection();
            const DWORD error = body(*connection);
            GiveBack(std::move(connection), fault);
            return error;
        }
        catch (const CSqliteError& error)
        {
            return Tell(error, std::move(connection), fault);
        }
    }

    std::unique_ptr<CRegistryConnection> TakeConnection();
    std::unique_ptr<CRegistryConnection> Open();
    void MakeFile() const;
    void OpenBell();
    void RingBell() noexcept;
    /// Stays open once it is; -1 before.
    int Bell() noexcept;
    void GiveBack(std::unique_ptr<CRegistryConnection> connection, Fault& fault);
    void KeepLocked(std::unique_ptr<CRegistryConnection> connection);
    DWORD Tell(const CSqliteError& error, std::unique_ptr<CRegistryConnection> connection, Fault& fault);

    const std::string m_file;
    std::atomic<std::uint32_t> m_openings{0};
    std::mutex m_writeLock;
    std::mutex m_openLock; // taken before m_lock
    // Guarded by m_openLock.
    bool m_isPrepared = false;

    std::mutex m_lock;
    // Guarded by m_lock.
    CUniqueDescriptor m_bell;
    std::vector<std::unique_ptr<CRegistryConnection>> m_idle;
    Fault m_readFault{"reading"};
    Fault m_writeFault{"writing"};
    std::unique_ptr<CRegistryWatcher> m_watcher;
};
