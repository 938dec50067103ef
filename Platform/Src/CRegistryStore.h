#pragma once

#include "CEvent.h"
#include "CMutexLocker.h"
#include "CRegistryConnection.h"
#include "LastError.h"

#include <array>
#include <atomic>
#include <memory>
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
        return Run(kReading, body);
    }

    /// Runs a body that changes something, in a transaction that is committed when the body succeeds.
    template <class TBody>
    DWORD Write(const TBody& body)
    {
        // Threads of this process queue here, because SQLite would let them sleep.
        const ZoVelkor::CMutexLocker lock(m_writeLock);
        const DWORD error = Run(kWriting, [&body](CRegistryConnection& connection) {
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
    /// Numbers the faults.
    enum Work : std::size_t
    {
        kReading,
        kWriting,
        kWorkCount
    };
    /// The failure that was told last, so that the same one is not told again and again.
    struct Fault
    {
        const char* operation = "";
        int toldCode = 0;
    };

    template <class TBody>
    DWORD Run(Work work, const TBody& body)
    {
        std::unique_ptr<CRegistryConnection> connection;
        try
        {
            connection = TakeConnection();
            const DWORD error = body(*connection);
            GiveBack(std::move(connection), work);
            return error;
        }
        catch (const CSqliteError& error)
        {
            return Tell(error, std::move(connection), work);
        }
    }

    std::unique_ptr<CRegistryConnection> TakeConnection();
    std::unique_ptr<CRegistryConnection> Open();
    void MakeFile() const;
    void OpenBell();
    void RingBell() noexcept;
    /// Stays open once it is; -1 before.
    int Bell() noexcept;
    void GiveBack(std::unique_ptr<CRegistryConnection> connection, Work work);
    void KeepLocked(std::unique_ptr<CRegistryConnection> connection) ZO_REQUIRES(m_lock);
    DWORD Tell(const CSqliteError& error, std::unique_ptr<CRegistryConnection> connection, Work work);

    const std::string m_file;
    std::atomic<std::uint32_t> m_openings{0};
    ZoVelkor::CMutex m_writeLock ZO_ACQUIRED_BEFORE(m_openLock);
    ZoVelkor::CMutex m_openLock ZO_ACQUIRED_BEFORE(m_lock);
    bool m_isPrepared ZO_GUARDED_BY(m_openLock) = false;

    ZoVelkor::CMutex m_lock;
    CUniqueDescriptor m_bell ZO_GUARDED_BY(m_lock);
    std::vector<std::unique_ptr<CRegistryConnection>> m_idle ZO_GUARDED_BY(m_lock);
    std::array<Fault, kWorkCount> m_faults ZO_GUARDED_BY(m_lock){Fault{"reading"}, Fault{"writing"}};
    std::unique_ptr<CRegistryWatcher> m_watcher ZO_GUARDED_BY(m_lock);
};
