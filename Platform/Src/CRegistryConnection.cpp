#include "CRegistryConnection.h"

#include "Registry.h"

#include <new>

namespace
{
/// Marks the file as a registry, "ZoRg".
constexpr std::int64_t kApplicationId = 0x5A6F5267;
constexpr std::int64_t kSchemaVersion = 1;

// Keys 1 to 7 are the roots. A change is numbered, and the change that makes a key gives it its number: none
// comes back, so that an open handle of a deleted key never means another one.
constexpr const char* kSchema = R"sql(
CREATE TABLE keys (
    id     INTEGER PRIMARY KEY,
    parent INTEGER NOT NULL,
    folded TEXT NOT NULL,
    name   TEXT NOT NULL,
    UNIQUE (parent, folded));
CREATE TABLE "values" (
    key    INTEGER NOT NULL,
    folded TEXT NOT NULL,
    name   TEXT NOT NULL,
    type   INTEGER NOT NULL,
    data   BLOB NOT NULL,
    PRIMARY KEY (key, folded)) WITHOUT ROWID;
CREATE TABLE changes (
    sequence INTEGER PRIMARY KEY,
    key      INTEGER NOT NULL,
    kind     INTEGER NOT NULL);
INSERT INTO changes VALUES (100, 0, 0);
INSERT INTO keys VALUES
    (1, 0, 'HKEY_CLASSES_ROOT', 'HKEY_CLASSES_ROOT'),
    (2, 0, 'HKEY_CURRENT_USER', 'HKEY_CURRENT_USER'),
    (3, 0, 'HKEY_LOCAL_MACHINE', 'HKEY_LOCAL_MACHINE'),
    (4, 0, 'HKEY_USERS', 'HKEY_USERS'),
    (5, 0, 'HKEY_PERFORMANCE_DATA', 'HKEY_PERFORMANCE_DATA'),
    (6, 0, 'HKEY_CURRENT_CONFIG', 'HKEY_CURRENT_CONFIG'),
    (7, 0, 'HKEY_DYN_DATA', 'HKEY_DYN_DATA');
PRAGMA application_id = 0x5A6F5267;
PRAGMA user_version = 1;
)sql";

#define ZO_TREE_BELOW                                                                                        \
    "WITH RECURSIVE tree(id) AS (VALUES (?1) UNION "                                                         \
    "SELECT keys.id FROM keys JOIN tree ON keys.parent = tree.id) "
#define ZO_VALUE_COLUMNS "SELECT folded, name, type, data FROM \"values\" WHERE key = ?1 "
#define ZO_KEY_COLUMNS "SELECT folded, name, 0, NULL FROM keys WHERE parent = ?1 "

/// In the order of RegistrySql.
constexpr const char* kStatements[] = {
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SELECT id FROM keys WHERE parent = ?1 AND folded = ?2",
    "SELECT 1 FROM keys WHERE id = ?1",
    "SELECT parent FROM keys WHERE id = ?1",
    "INSERT INTO keys (id, parent, folded, name) VALUES (?1, ?2, ?3, ?4)",
    ZO_TREE_BELOW "DELETE FROM \"values\" WHERE key IN tree",
    ZO_TREE_BELOW "DELETE FROM keys WHERE id IN tree AND id <> ?2",
    "SELECT 1 FROM keys WHERE parent = ?1 LIMIT 1",
    "SELECT type, data FROM \"values\" WHERE key = ?1 AND folded = ?2",
    "INSERT INTO \"values\" (key, folded, name, type, data) SELECT ?1, ?2, ?3, ?4, ?5 "
    "WHERE EXISTS (SELECT 1 FROM keys WHERE id = ?1) "
    "ON CONFLICT (key, folded) DO UPDATE SET type = excluded.type, data = excluded.data",
    "DELETE FROM \"values\" WHERE key = ?1 AND folded = ?2",
    "SELECT max(sequence) FROM changes",
    "SELECT min(sequence) FROM changes",
    "INSERT INTO changes (key, kind) VALUES (?1, ?2)",
    "DELETE FROM changes WHERE sequence < ?1",
    "SELECT key, kind FROM changes WHERE sequence > ?1 ORDER BY sequence",
    "SELECT EXISTS (SELECT 1 FROM keys WHERE id = ?1), "
    "k.n, k.name, v.n, v.name, v.data "
    "FROM (SELECT count(*) n, max(length(name)) name FROM keys WHERE parent = ?1) k, "
    "(SELECT count(*) n, max(length(name)) name, max(length(data)) data FROM \"values\" WHERE key = ?1) v",
    ZO_VALUE_COLUMNS "AND folded > ?2 ORDER BY folded",
    ZO_VALUE_COLUMNS "ORDER BY folded LIMIT 1 OFFSET ?2",
    ZO_KEY_COLUMNS "AND folded > ?2 ORDER BY folded",
    ZO_KEY_COLUMNS "ORDER BY folded LIMIT 1 OFFSET ?2",
    "PRAGMA wal_checkpoint(FULL)",
};
static_assert(std::size(kStatements) == static_cast<std::size_t>(RegistrySql::Count));
} // namespace

CRegistryStatement::~CRegistryStatement()
{
    // A statement that is not reset keeps its read transaction open, and a binding would go on pointing at
    // text of the caller.
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

CRegistryStatement& CRegistryStatement::Bind(std::int64_t value)
{
    Check(sqlite3_bind_int64(m_statement, ++m_bound, value));
    return *this;
}

CRegistryStatement& CRegistryStatement::Bind(std::string_view text)
{
    // A null address would bind a null instead of an empty text.
    const char* data = text.empty() ? "" : text.data();
    Check(sqlite3_bind_text64(m_statement, ++m_bound, data, text.size(), nullptr, SQLITE_UTF8));
    return *this;
}

CRegistryStatement& CRegistryStatement::Bind(std::span<const std::byte> bytes)
{
    const void* data = bytes.empty() ? static_cast<const void*>("") : bytes.data();
    Check(sqlite3_bind_blob64(m_statement, ++m_bound, data, bytes.size(), nullptr));
    return *this;
}

bool CRegistryStatement::Step()
{
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
    {
        Check(result);
    }
    return result == SQLITE_ROW;
}

std::int64_t CRegistryStatement::Integer(int column) const noexcept
{
    return sqlite3_column_int64(m_statement, column);
}

std::string_view CRegistryStatement::Text(int column) const noexcept
{
    const auto bytes = Bytes(column);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::span<const std::byte> CRegistryStatement::Bytes(int column) const noexcept
{
    const auto* data = static_cast<const std::byte*>(sqlite3_column_blob(m_statement, column));
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column))};
}

void CRegistryStatement::Check(int result) const
{
    if (result != SQLITE_OK)
    {
        throw CSqliteError(result, sqlite3_errmsg(sqlite3_db_handle(m_statement)));
    }
}

CRegistryConnection::CRegistryConnection(const std::string& file)
{
    sqlite3* database = nullptr;
    // Without SQLite's own lock: a connection is taken out of the store and used by one thread at a time.
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int result = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK)
    {
        throw CSqliteError(result, database == nullptr ? "no memory" : sqlite3_errmsg(database));
    }
    sqlite3_busy_timeout(database, kRegistryBusyTimeoutMs);
    // The limit is for a whole row, which holds names beside the value.
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, static_cast<int>(2 * kRegistryMaximumValueSize));
    // In the log mode NORMAL saves the file from power failures too; only FULL would also save the last
    // writes.
    Execute("PRAGMA synchronous = NORMAL; PRAGMA cell_size_check = ON; PRAGMA trusted_schema = OFF");
}

void CRegistryConnection::Prepare()
{
    const std::int64_t application = QueryInteger("PRAGMA application_id");
    const bool isEmpty = application == 0 && QueryInteger("SELECT count(*) FROM sqlite_schema") == 0;
    if (!isEmpty && application != kApplicationId)
    {
        throw CSqliteError(SQLITE_NOTADB, "the file is a database of another program");
    }
    if (isEmpty)
    {
        // Before the transaction: inside of one the mode cannot be changed.
        Execute("PRAGMA journal_mode = WAL");
        CRegistryTransaction transaction(*this, RegistrySql::BeginWrite);
        Execute(kSchema);
        transaction.Commit();
    }
    else if (QueryInteger("PRAGMA user_version") != kSchemaVersion)
    {
        throw CSqliteError(SQLITE_NOTADB, "the registry was made by another version of this software");
    }
}

CRegistryStatement CRegistryConnection::Use(RegistrySql sql)
{
    const auto index = static_cast<std::size_t>(sql);
    StatementPointer& statement = m_statements[index];
    if (statement == nullptr)
    {
        statement = Compile(kStatements[index]);
    }
    return CRegistryStatement(statement.get());
}

void CRegistryConnection::OpenLog()
{
    const StatementPointer prepared = Compile("PRAGMA journal_mode");
    CRegistryStatement statement(prepared.get());
    m_hasLog = statement.Step() && statement.Text(0) == "wal";
}

std::optional<RegistryCommitMark> CRegistryConnection::CommitMark() const noexcept
{
    // The index begins with two copies of its header, which is written anew at each commit, with a counter
    // and a checksum: one is the mark. See "WAL-Index Format" of SQLite's documentation.
    constexpr std::uint32_t kFormat = 3007000;
    constexpr int kRegionSize = 32768;
    sqlite3_file* file = nullptr;
    volatile void* region = nullptr;
    if (m_hasLog &&
        sqlite3_file_control(
            m_database.get(), "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file)) == SQLITE_OK)
    {
        file->pMethods->xShmMap(file, 0, kRegionSize, 0, &region);
    }
    if (region == nullptr)
    {
        return std::nullopt;
    }
    // Read without a lock: copies that differ are just being written.
    std::array<RegistryCommitMark, 2> copies{};
    const auto* word = static_cast<const volatile std::uint32_t*>(region);
    for (RegistryCommitMark& copy : copies)
    {
        for (std::uint32_t& target : copy)
        {
            target = *word++;
        }
    }
    return copies[0] == copies[1] && copies[0][0] == kFormat ? std::optional(copies[0]) : std::nullopt;
}

void CRegistryConnection::Execute(const char* sql)
{
    if (sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    {
        ThrowLast();
    }
}

std::int64_t CRegistryConnection::QueryInteger(const char* sql)
{
    const StatementPointer prepared = Compile(sql);
    CRegistryStatement statement(prepared.get());
    return statement.Step() ? statement.Integer(0) : 0;
}

CRegistryConnection::StatementPointer CRegistryConnection::Compile(const char* sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(m_database.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK)
    {
        ThrowLast();
    }
    return StatementPointer(statement);
}

void CRegistryConnection::ThrowLast() const
{
    throw CSqliteError(sqlite3_extended_errcode(m_database.get()), sqlite3_errmsg(m_database.get()));
}

CRegistryTransaction::CRegistryTransaction(CRegistryConnection& connection, RegistrySql begin)
    : m_connection(connection)
{
    m_connection.Run(begin);
}

CRegistryTransaction::~CRegistryTransaction()
{
    // Some failures have already rolled it back.
    if (m_connection.IsInTransaction())
    {
        try
        {
            m_connection.Run(RegistrySql::Rollback);
        }
        catch (const CSqliteError&)
        {
            return; // the connection is given up after the failure that led here
        }
    }
}
