// The registry beside plain SQLite doing the same: a prepared statement on one table in log mode, for one
// thread and one process, with no change to be told to anybody.
//
//   Read       one value of 16 bytes by name
//   Write      the same value, one transaction each
//   Enumerate  10,000 values by number, names and data; plain: one statement over all rows. Time per value
//   Open       a key 8 levels deep opened and closed; plain: eight look-ups in one transaction

#include "CRatioReporter.h"
#include "CTemporaryRegistry.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sqlite3.h>
#include <string>

namespace
{

constexpr int kValues = 10'000;
constexpr int kDepth = 8;
constexpr std::array<BYTE, 16> kData{1, 2, 3, 4};

/// A registry with a key that holds many values and a deep one.
class CFilledRegistry
{
public:
    CFilledRegistry()
    {
        HKEY key = 0;
        RegCreateKey(HKEY_LOCAL_MACHINE, L"Values", &key);
        m_key = CUniqueKey(key);
        for (int i = 0; i < kValues; ++i)
        {
            const std::wstring name = L"Value" + std::to_wstring(kValues + i);
            RegSetValueEx(key, name.c_str(), 0, REG_BINARY, kData.data(), kData.size());
        }
        RegCreateKey(HKEY_LOCAL_MACHINE, kDeepPath, &key);
        RegCloseKey(key);
    }

    static constexpr const wchar_t* kDeepPath = L"One\\Two\\Three\\Four\\Five\\Six\\Seven\\Eight";
    static constexpr const wchar_t* kName = L"Value15000";

    [[nodiscard]] HKEY Key() const { return m_key.Get(); }

    static const CFilledRegistry& Instance()
    {
        static const CFilledRegistry filled;
        return filled;
    }

private:
    CTemporaryRegistry m_registry;
    CUniqueKey m_key;
};

/// The same content in a database without anything around it.
class CPlainDatabase
{
public:
    CPlainDatabase()
    {
        sqlite3* database = nullptr;
        sqlite3_open((MakeFolder() + "/plain.db").c_str(), &database);
        m_database.reset(database);
        Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
            "CREATE TABLE v (key INTEGER, name TEXT, type INTEGER, data BLOB, PRIMARY KEY (key, name)) "
            "WITHOUT ROWID;"
            "CREATE TABLE k (id INTEGER PRIMARY KEY, parent INTEGER, name TEXT, UNIQUE (parent, name));"
            "WITH RECURSIVE n(i) AS (VALUES (10000) UNION ALL SELECT i + 1 FROM n WHERE i < 19999) "
            "INSERT INTO v SELECT 1, 'VALUE' || i, 3, zeroblob(16) FROM n;"
            "INSERT INTO k VALUES (1, 0, 'ONE'), (2, 1, 'TWO'), (3, 2, 'THREE'), (4, 3, 'FOUR'),"
            "(5, 4, 'FIVE'), (6, 5, 'SIX'), (7, 6, 'SEVEN'), (8, 7, 'EIGHT')");
    }
    ~CPlainDatabase() { std::filesystem::remove_all(m_folder); }

    static CPlainDatabase& Instance()
    {
        static CPlainDatabase plain;
        return plain;
    }

    void Run(const char* sql) { sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr); }

    using Statement = std::unique_ptr<sqlite3_stmt, decltype([](sqlite3_stmt* s) { sqlite3_finalize(s); })>;

    Statement Compile(const char* sql)
    {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_database.get(), sql, -1, &statement, nullptr);
        return Statement(statement);
    }

private:
    std::string MakeFolder()
    {
        m_folder = (std::filesystem::temp_directory_path() / "zo-plain-XXXXXX").string();
        return ::mkdtemp(m_folder.data());
    }

    std::string m_folder;
    std::unique_ptr<sqlite3, decltype([](sqlite3* d) { sqlite3_close_v2(d); })> m_database;
};

void Read(benchmark::State& state)
{
    const HKEY key = CFilledRegistry::Instance().Key();
    std::array<BYTE, 16> data{};
    for (auto _ : state)
    {
        DWORD type = 0;
        DWORD size = data.size();
        if (RegQueryValueEx(key, CFilledRegistry::kName, nullptr, &type, data.data(), &size) != 0)
        {
            state.SkipWithError("not read");
        }
        benchmark::DoNotOptimize(data);
    }
}
BENCHMARK(Read);

void ReadPlain(benchmark::State& state)
{
    const auto statement =
        CPlainDatabase::Instance().Compile("SELECT type, data FROM v WHERE key = ?1 AND name = ?2");
    std::array<std::byte, 16> data{};
    for (auto _ : state)
    {
        sqlite3_bind_int64(statement.get(), 1, 1);
        sqlite3_bind_text(statement.get(), 2, "VALUE15000", -1, nullptr);
        if (sqlite3_step(statement.get()) != SQLITE_ROW)
        {
            state.SkipWithError("not read");
            break;
        }
        benchmark::DoNotOptimize(sqlite3_column_int(statement.get(), 0));
        std::memcpy(data.data(), sqlite3_column_blob(statement.get(), 1), data.size());
        sqlite3_reset(statement.get());
        benchmark::DoNotOptimize(data);
    }
}
BENCHMARK(ReadPlain);

void Write(benchmark::State& state)
{
    const HKEY key = CFilledRegistry::Instance().Key();
    auto data = kData;
    for (auto _ : state)
    {
        ++data[0];
        if (RegSetValueEx(key, CFilledRegistry::kName, 0, REG_BINARY, data.data(), data.size()) != 0)
        {
            state.SkipWithError("not written");
        }
    }
}
BENCHMARK(Write)->UseRealTime();

void WritePlain(benchmark::State& state)
{
    const auto statement = CPlainDatabase::Instance().Compile(
        "INSERT INTO v VALUES (?1, ?2, 3, ?3) "
        "ON CONFLICT DO UPDATE SET type = excluded.type, data = excluded.data");
    auto data = kData;
    for (auto _ : state)
    {
        ++data[0];
        sqlite3_bind_int64(statement.get(), 1, 1);
        sqlite3_bind_text(statement.get(), 2, "VALUE15000", -1, nullptr);
        sqlite3_bind_blob(statement.get(), 3, data.data(), data.size(), nullptr);
        if (sqlite3_step(statement.get()) != SQLITE_DONE)
        {
            state.SkipWithError("not written");
        }
        sqlite3_reset(statement.get());
    }
}
BENCHMARK(WritePlain)->UseRealTime();

void Enumerate(benchmark::State& state)
{
    const HKEY key = CFilledRegistry::Instance().Key();
    while (state.KeepRunningBatch(kValues))
    {
        std::array<wchar_t, 32> name{};
        std::array<BYTE, 16> data{};
        DWORD index = 0;
        for (;; ++index)
        {
            DWORD length = name.size();
            DWORD size = data.size();
            if (RegEnumValue(key, index, name.data(), &length, nullptr, nullptr, data.data(), &size) != 0)
            {
                break;
            }
        }
        if (index != kValues)
        {
            state.SkipWithError("not all values");
            break;
        }
    }
}
BENCHMARK(Enumerate);

void EnumeratePlain(benchmark::State& state)
{
    const auto statement = CPlainDatabase::Instance().Compile("SELECT name, type, data FROM v WHERE key = 1");
    while (state.KeepRunningBatch(kValues))
    {
        std::string name;
        std::array<std::byte, 16> data{};
        while (sqlite3_step(statement.get()) == SQLITE_ROW)
        {
            const auto* text = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
            name.assign(text, static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0)));
            std::memcpy(data.data(), sqlite3_column_blob(statement.get(), 2), data.size());
            benchmark::DoNotOptimize(name);
            benchmark::DoNotOptimize(data);
        }
        sqlite3_reset(statement.get());
    }
}
BENCHMARK(EnumeratePlain);

void Open(benchmark::State& state)
{
    CFilledRegistry::Instance();
    for (auto _ : state)
    {
        HKEY key = 0;
        if (RegOpenKey(HKEY_LOCAL_MACHINE, CFilledRegistry::kDeepPath, &key) != 0)
        {
            state.SkipWithError("not opened");
        }
        RegCloseKey(key);
    }
}
BENCHMARK(Open);

void OpenPlain(benchmark::State& state)
{
    constexpr const char* kPath[kDepth] = {"ONE", "TWO", "THREE", "FOUR", "FIVE", "SIX", "SEVEN", "EIGHT"};
    CPlainDatabase& plain = CPlainDatabase::Instance();
    const auto begin = plain.Compile("BEGIN");
    const auto commit = plain.Compile("COMMIT");
    const auto find = plain.Compile("SELECT id FROM k WHERE parent = ?1 AND name = ?2");
    for (auto _ : state)
    {
        sqlite3_step(begin.get());
        sqlite3_reset(begin.get());
        std::int64_t id = 0;
        for (const char* name : kPath)
        {
            sqlite3_bind_int64(find.get(), 1, id);
            sqlite3_bind_text(find.get(), 2, name, -1, nullptr);
            sqlite3_step(find.get());
            id = sqlite3_column_int64(find.get(), 0);
            sqlite3_reset(find.get());
        }
        sqlite3_step(commit.get());
        sqlite3_reset(commit.get());
        if (id != kDepth)
        {
            state.SkipWithError("not found");
        }
    }
}
BENCHMARK(OpenPlain);

} // namespace

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(argc,
                                               argv,
                                               {
                                                   {"Read", "ReadPlain", "read of a value / plain"},
                                                   {"Write", "WritePlain", "write of a value / plain"},
                                                   {"Enumerate", "EnumeratePlain", "value of 10,000 / plain"},
                                                   {"Open", "OpenPlain", "key 8 levels deep / plain"},
                                               });
}
