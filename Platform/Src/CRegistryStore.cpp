#include "CRegistryStore.h"

#include "CRegistryWatcher.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace
{
constexpr std::size_t kIdleConnections = 8;
constexpr std::int64_t kTrimInterval = 256;
// Settings may be secrets: the registry is its user's own unless he opens it to others himself.
constexpr mode_t kOwnFolder = 0700;
constexpr mode_t kOwnFile = 0600;

/// What becomes of the database's result codes.
struct FaultRow
{
    int code;
    DWORD error;
    bool isPassing; ///< the connection stays good
};
constexpr FaultRow kFaultRows[] = {
    {SQLITE_BUSY, ERROR_BUSY, true},
    {SQLITE_LOCKED, ERROR_BUSY, true},
    {SQLITE_PROTOCOL, ERROR_BUSY, true},
    {SQLITE_READONLY, ERROR_ACCESS_DENIED, false},
    {SQLITE_PERM, ERROR_ACCESS_DENIED, false},
    {SQLITE_AUTH, ERROR_ACCESS_DENIED, false},
    {SQLITE_FULL, ERROR_DISK_FULL, true},
    {SQLITE_CORRUPT, ERROR_BADDB, false},
    {SQLITE_NOTADB, ERROR_BADDB, false},
    {SQLITE_SCHEMA, ERROR_BADDB, false},
    {SQLITE_ERROR, ERROR_BADDB, false},
    {SQLITE_IOERR, ERROR_REGISTRY_IO_FAILED, true},
    {SQLITE_CANTOPEN, ERROR_CANTOPEN, false},
    {SQLITE_NOMEM, ERROR_NOT_ENOUGH_MEMORY, true},
    {SQLITE_TOOBIG, ERROR_INVALID_PARAMETER, true},
    {SQLITE_OK, ERROR_REGISTRY_IO_FAILED, false}, // every other code
};

const FaultRow& FindFaultRow(int code) noexcept
{
    const FaultRow* row = &kFaultRows[0];
    while (row->code != code && row->code != SQLITE_OK)
    {
        ++row;
    }
    return *row;
}

/// Keeps other processes out while a new database is made. The lock of a killed process is gone with it.
class CPreparationLock
{
public:
    explicit CPreparationLock(int descriptor) noexcept : m_descriptor(descriptor)
    {
        while (m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR)
        {}
    }
    CPreparationLock(const CPreparationLock&) = delete;
    CPreparationLock& operator=(const CPreparationLock&) = delete;
    ~CPreparationLock()
    {
        if (m_descriptor >= 0)
        {
            ::flock(m_descriptor, LOCK_UN);
        }
    }

private:
    int m_descriptor;
};

/// The same file whatever becomes of the current folder; all names of a file have the same bell.
std::string Resolved(const std::string& file)
{
    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(std::filesystem::absolute(file, error), error);
    return file.empty() || error ? file : path.string();
}

void MakeFolder(const std::filesystem::path& folder)
{
    if (!folder.empty() && ::access(folder.c_str(), F_OK) != 0)
    {
        MakeFolder(folder.parent_path());
        ::mkdir(folder.c_str(), kOwnFolder);
    }
}
} // namespace

CRegistryStore::CRegistryStore(const std::string& file) : m_file(Resolved(file))
{}

CRegistryStore::~CRegistryStore() = default;

std::int64_t
CRegistryStore::NoteChange(CRegistryConnection& connection, std::int64_t key, RegistryChange change)
{
    connection.Run(RegistrySql::InsertChange, key, static_cast<std::int64_t>(change));
    const std::int64_t sequence = connection.LastRow();
    // Now and then only: every trimming writes pages of its own.
    if (sequence % kTrimInterval == 0)
    {
        connection.Run(RegistrySql::TrimChanges, sequence - kKeptChanges);
    }
    return sequence;
}

CRegistryWatcher& CRegistryStore::Watcher()
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    if (m_watcher == nullptr)
    {
        m_watcher = std::make_unique<CRegistryWatcher>(*this);
    }
    return *m_watcher;
}

CRegistryWatcher* CRegistryStore::ExistingWatcher() noexcept
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    return m_watcher.get();
}

std::unique_ptr<CRegistryConnection> CRegistryStore::TakeConnection()
{
    {
        const ZoVelkor::CMutexLocker lock(m_lock);
        if (!m_idle.empty())
        {
            auto connection = std::move(m_idle.back());
            m_idle.pop_back();
            return connection;
        }
    }
    return Open();
}

std::unique_ptr<CRegistryConnection> CRegistryStore::Open()
{
    if (m_file.empty())
    {
        throw CSqliteError(SQLITE_CANTOPEN, "neither ZO_REGISTRY nor HOME says where the registry is");
    }
    const ZoVelkor::CMutexLocker lock(m_openLock);
    MakeFile();
    OpenBell();
    // Goes into the mark of a moment: that of a file which another one has replaced must not fit the new
    // one.
    ++m_openings;
    auto connection = std::make_unique<CRegistryConnection>(m_file);
    if (!m_isPrepared)
    {
        const CPreparationLock preparation(Bell());
        connection->Prepare();
        m_isPrepared = true;
    }
    connection->OpenLog();
    return connection;
}

std::optional<RegistryMoment> CRegistryStore::Moment(const CRegistryConnection& connection) const noexcept
{
    const auto mark = connection.CommitMark();
    return mark ? std::optional(RegistryMoment{m_openings, *mark}) : std::nullopt;
}

void CRegistryStore::MakeFile() const
{
    // What fails here fails once more when the database is opened, which tells of it.
    MakeFolder(std::filesystem::path(m_file).parent_path());
    // Not opened: closing it would end the locks that SQLite holds for other connections of this process.
    ::mknod(m_file.c_str(), S_IFREG | kOwnFile, 0);
}

void CRegistryStore::OpenBell()
{
    if (Bell() >= 0)
    {
        return;
    }
    CUniqueDescriptor bell(::open(BellFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnFile));
    const ZoVelkor::CMutexLocker lock(m_lock);
    m_bell = std::move(bell);
}

void CRegistryStore::RingBell() noexcept
{
    // When a process dies before this write, the closing of its descriptor rings for it.
    static_cast<void>(::pwrite(Bell(), "\n", 1, 0));
}

int CRegistryStore::Bell() noexcept
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    return m_bell.Get();
}

void CRegistryStore::GiveBack(std::unique_ptr<CRegistryConnection> connection, Work work)
{
    const ZoVelkor::CMutexLocker lock(m_lock);
    m_faults[work].toldCode = SQLITE_OK;
    KeepLocked(std::move(connection));
}

void CRegistryStore::KeepLocked(std::unique_ptr<CRegistryConnection> connection)
{
    if (m_idle.size() < kIdleConnections && !connection->IsInTransaction())
    {
        m_idle.push_back(std::move(connection));
    }
}

DWORD CRegistryStore::Tell(const CSqliteError& error,
                           std::unique_ptr<CRegistryConnection> connection,
                           Work work)
{
    const FaultRow& row = FindFaultRow(error.Code());
    if (!row.isPassing)
    {
        // The file may be repaired or replaced meanwhile: begin anew.
        connection.reset();
        const ZoVelkor::CMutexLocker lock(m_openLock);
        m_isPrepared = false;
    }
    const ZoVelkor::CMutexLocker lock(m_lock);
    Fault& fault = m_faults[work];
    if (fault.toldCode != error.Code())
    {
        fault.toldCode = error.Code();
        static_cast<void>(std::fprintf(stderr,
                                       "[Registry] %s: %s failed: %s (error %u)\n",
                                       m_file.c_str(),
                                       fault.operation,
                                       error.what(),
                                       row.error));
    }
    if (!row.isPassing)
    {
        m_idle.clear();
    }
    else if (connection != nullptr)
    {
        KeepLocked(std::move(connection));
    }
    return row.error;
}
