#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <sqlite3.h>
#include <string>
#include <string_view>

/// The statements of the registry, prepared when first used and kept with their connection.
enum class RegistrySql : std::size_t
{
    BeginRead,
    BeginWrite,
    Commit,
    Rollback,
    FindKey,
    KeyExists,
    KeyParent,
    InsertKey,
    DeleteTreeValues,
    DeleteTreeKeys,
    HasSubKeys,
    ReadValue,
    WriteValue,
    DeleteValue,
    LastChange,
    FirstChange,
    InsertChange,
    TrimChanges,
    ChangesSince,
    KeyInfo,
    ValuesAfter,
    ValueAt,
    KeysAfter,
    KeyAt,
    Checkpoint,
    Count
};

/// Failure of the database, with its own code and text.
class CSqliteError : public std::exception
{
public:
    CSqliteError(int code, std::string text) noexcept : m_code(code), m_text(std::move(text)) {}

    /// Primary result code, without the extension.
    [[nodiscard]] int Code() const noexcept { return m_code & 0xFF; }
    [[nodiscard]] const char* what() const noexcept override { return m_text.c_str(); }

private:
    int m_code;
    std::string m_text;
};

/// One run of a prepared statement. What is bound is borrowed until the end of the run.
class CRegistryStatement
{
public:
    explicit CRegistryStatement(sqlite3_stmt* statement) noexcept : m_statement(statement) {}
    CRegistryStatement(const CRegistryStatement&) = delete;
    CRegistryStatement& operator=(const CRegistryStatement&) = delete;
    ~CRegistryStatement();

    /// Binds the next parameter.
    CRegistryStatement& Bind(std::int64_t value);
    CRegistryStatement& Bind(std::string_view text);
    CRegistryStatement& Bind(std::span<const std::byte> bytes);

    /// @return whether there is a row
    /// @throws CSqliteError
    bool Step();

    // Columns of the row, valid until the next step.
    [[nodiscard]] std::int64_t Integer(int column) const noexcept;
    [[nodiscard]] std::string_view Text(int column) const noexcept;
    [[nodiscard]] std::span<const std::byte> Bytes(int column) const noexcept;

private:
    void Check(int result) const;

    sqlite3_stmt* m_statement;
    int m_bound = 0;
};

/// State of a database: every commit of every process changes it, and it does not come back while a
/// connection of this process stays open.
using RegistryCommitMark = std::array<std::uint32_t, 12>;

/// Connection to the registry's database. Belongs to one thread at a time.
class CRegistryConnection
{
public:
    /// Opens the file, and makes it when it is missing.
    ///
    /// @throws CSqliteError
    explicit CRegistryConnection(const std::string& file);

    /// Makes an empty database a registry and refuses what is none. Once for each process; no other process
    /// may do it at the same time.
    ///
    /// @throws CSqliteError
    void Prepare();

    /// @throws CSqliteError
    CRegistryStatement Use(RegistrySql sql);

    /// Runs a statement that gives no rows.
    ///
    /// @throws CSqliteError
    template <class... TValues>
    void Run(RegistrySql sql, const TValues&... values)
    {
        CRegistryStatement statement = Use(sql);
        (statement.Bind(values), ...);
        statement.Step();
    }

    /// Opens the log of a prepared database: without that there is no CommitMark.
    ///
    /// @throws CSqliteError
    void OpenLog();

    /// Looks at the index of the log, which all processes have in their memory: costs no system call.
    ///
    /// @return nothing while a commit is under way, and when the database has no log
    [[nodiscard]] std::optional<RegistryCommitMark> CommitMark() const noexcept;

    /// Rows that the last statement changed.
    [[nodiscard]] int ChangedRows() const noexcept { return sqlite3_changes(m_database.get()); }
    [[nodiscard]] std::int64_t LastRow() const noexcept
    {
        return sqlite3_last_insert_rowid(m_database.get());
    }
    [[nodiscard]] bool IsInTransaction() const noexcept
    {
        return sqlite3_get_autocommit(m_database.get()) == 0;
    }

private:
    struct Close
    {
        void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
    };
    struct Finalize
    {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    using StatementPointer = std::unique_ptr<sqlite3_stmt, Finalize>;

    void Execute(const char* sql);
    std::int64_t QueryInteger(const char* sql);
    StatementPointer Compile(const char* sql);
    [[noreturn]] void ThrowLast() const;

    std::unique_ptr<sqlite3, Close> m_database;
    bool m_hasLog = false;
    StatementPointer m_statements[static_cast<std::size_t>(RegistrySql::Count)];
};

/// A transaction that is rolled back unless it is committed.
class CRegistryTransaction
{
public:
    /// @param begin  BeginRead or BeginWrite
    CRegistryTransaction(CRegistryConnection& connection, RegistrySql begin);
    CRegistryTransaction(const CRegistryTransaction&) = delete;
    CRegistryTransaction& operator=(const CRegistryTransaction&) = delete;
    ~CRegistryTransaction();

    void Commit() { m_connection.Run(RegistrySql::Commit); }

private:
    CRegistryConnection& m_connection;
};
