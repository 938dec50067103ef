#include "CTemporaryRegistry.h"
#include "Event.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{
DWORD Write(BYTE number)
{
    return static_cast<DWORD>(RegSetValueEx(HKEY_LOCAL_MACHINE, L"v", 0, REG_BINARY, &number, 1));
}

/// The error number and the value, 0 without one.
std::pair<DWORD, int> Read()
{
    BYTE number = 0;
    DWORD size = 1;
    const LONG error = RegQueryValueEx(HKEY_LOCAL_MACHINE, L"v", nullptr, nullptr, &number, &size);
    return {static_cast<DWORD>(error), number};
}

using Database = std::unique_ptr<sqlite3, decltype([](sqlite3* d) { sqlite3_close(d); })>;

Database Execute(const std::string& file, const char* sql)
{
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    return Database(database);
}

std::size_t CountLines(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

class RegistryFaults : public testing::Test
{
protected:
    RegistryFaults() { EXPECT_EQ(Write(1), ERROR_SUCCESS); }

    /// Runs a body and gives what it said on stderr.
    static std::string Said(const std::function<void()>& body)
    {
        testing::internal::CaptureStderr();
        body();
        return testing::internal::GetCapturedStderr();
    }

    CTemporaryRegistry m_registry;
};

TEST_F(RegistryFaults, OfTheFileAreResultsAndOneLineEach)
{
    const std::string file = m_registry.File();
    const auto replace = [&](const std::string& content, std::streamoff offset = -1) {
        std::fstream stream(file,
                            offset < 0 ? std::ios::out | std::ios::trunc : std::ios::in | std::ios::out);
        stream.seekp(std::max<std::streamoff>(offset, 0));
        stream << content;
    };
    const std::tuple<const char*, std::function<void()>, DWORD> cases[] = {
        // clang-format off
        {"no database", [&] { replace(std::string(20'000, '?')); }, ERROR_BADDB},
        {"beginning lost", [&] { replace(std::string(50, '\0'), 0); }, ERROR_BADDB},
        {"content lost", [&] { replace(std::string(40'000, '?'), 4096); }, ERROR_BADDB},
        {"cut off", [&] { std::filesystem::resize_file(file, 5000); }, ERROR_BADDB},
        {"of another program", [&] { std::filesystem::remove(file); Execute(file, "CREATE TABLE t (c)"); }, ERROR_BADDB},
        {"of a later version", [&] { Execute(file, "PRAGMA user_version = 2"); }, ERROR_BADDB},
        {"a folder", [&] { std::filesystem::remove(file); std::filesystem::create_directory(file); }, ERROR_CANTOPEN}};
    // clang-format on
    for (const auto& [name, spoil, expected] : cases)
    {
        SetRegistryFile(nullptr);
        std::filesystem::remove_all(file);
        m_registry.Use();
        ASSERT_EQ(Write(1), ERROR_SUCCESS) << name;
        SetRegistryFile(nullptr);
        spoil();
        m_registry.Use();
        DWORD results[3] = {};
        const std::string said = Said([&] {
            results[0] = Read().first;
            results[1] = Read().first;
        });
        EXPECT_EQ(said.find("[Registry] " + file + ": reading failed: "), 0U) << said;
        EXPECT_EQ(CountLines(said), 1U) << said;
        Said([&] { results[2] = Write(2); });
        EXPECT_EQ(std::count(results, results + 3, expected), 3) << name;
    }
}

TEST_F(RegistryFaults, ALockedRegistryIsReadAndRefusesToBeWritten)
{
    const Database other = Execute(m_registry.File(), "BEGIN IMMEDIATE");
    const auto begin = std::chrono::steady_clock::now();
    const std::string said = Said([] { EXPECT_EQ(Write(2), ERROR_BUSY); });
    EXPECT_GE(std::chrono::steady_clock::now() - begin,
              std::chrono::milliseconds(kRegistryBusyTimeoutMs * 9 / 10));
    EXPECT_EQ(CountLines(said), 1U) << said;
    EXPECT_EQ(Read(), std::pair(ERROR_SUCCESS, 1));
    sqlite3_exec(other.get(), "COMMIT", nullptr, nullptr, nullptr);
    EXPECT_EQ(Write(2), ERROR_SUCCESS);
}

int diskError = 0;
ssize_t RefusingWrite(int descriptor, const void* data, std::size_t size, off_t offset)
{
    errno = diskError;
    return diskError != 0 ? -1 : ::pwrite(descriptor, data, size, offset);
}

TEST_F(RegistryFaults, OfTheDiskLeaveTheFormerValue)
{
    sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
    for (const char* call : {"pwrite", "pwrite64"})
    {
        system->xSetSystemCall(system, call, reinterpret_cast<sqlite3_syscall_ptr>(&RefusingWrite));
    }
    const std::pair<int, DWORD> cases[] = {{ENOSPC, ERROR_DISK_FULL}, {EIO, ERROR_REGISTRY_IO_FAILED}};
    for (const auto& [error, expected] : cases)
    {
        EXPECT_EQ(Write(1), ERROR_SUCCESS);
        diskError = error;
        const std::string said = Said([expected = expected] {
            EXPECT_EQ(Write(2), expected);
            EXPECT_EQ(Write(3), expected);
            EXPECT_EQ(Read(), std::pair(ERROR_SUCCESS, 1));
        });
        diskError = 0;
        EXPECT_EQ(CountLines(said), 1U) << said;
        EXPECT_EQ(Write(4), ERROR_SUCCESS);
        EXPECT_EQ(Read(), std::pair(ERROR_SUCCESS, 4));
        EXPECT_EQ(CountLines(Said([] {
                      diskError = ENOSPC;
                      Write(5);
                      diskError = 0;
                  })),
                  1U)
            << "told anew";
    }
    system->xSetSystemCall(system, nullptr, nullptr);
}

TEST_F(RegistryFaults, WithoutRightsItIsReadButNotWritten)
{
    const std::string folder = std::filesystem::path(m_registry.File()).parent_path().string();
    const std::pair<mode_t, std::string> cases[] = {
        {0777, "0 0\n"},
        {0444, "0 " + std::to_string(ERROR_ACCESS_DENIED) + "\n"},
        {0000, std::to_string(ERROR_CANTOPEN) + " " + std::to_string(ERROR_CANTOPEN) + "\n"},
    };
    ::chmod(folder.c_str(), 0777);
    for (const auto& [mode, expected] : cases)
    {
        for (const char* part : {"", "-wal", "-shm", "-bell"})
        {
            ::chmod((m_registry.File() + part).c_str(), mode);
        }
        std::array<char, 64> answer{};
        const std::string command =
            "timeout 30 " ZO_REGISTRY_CRASH " try " + m_registry.File() + " 2>/dev/null";
        std::FILE* pipe = ::popen(command.c_str(), "r");
        EXPECT_NE(std::fgets(answer.data(), answer.size(), pipe), nullptr);
        ::pclose(pipe);
        EXPECT_EQ(answer.data(), expected) << std::oct << mode;
    }
}

TEST_F(RegistryFaults, AKeyBelowItselfHoldsNothingUp)
{
    HKEY key = 0;
    EXPECT_EQ(RegCreateKey(HKEY_USERS, L"loop", &key), 0);
    const CUniqueKey loop(key);
    const CUniqueEvent event(CreateEvent(TRUE, FALSE));
    EXPECT_EQ(RegNotifyChangeKeyValue(HKEY_USERS, TRUE, REG_NOTIFY_CHANGE_LAST_SET, event.Get(), TRUE), 0);
    Execute(m_registry.File(), "UPDATE keys SET parent = id WHERE folded = 'LOOP'");
    EXPECT_EQ(RegSetValueEx(key, nullptr, 0, REG_SZ, nullptr, 0), 0);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 30'000), WAIT_OBJECT_0) << "where it was nobody knows";
    EXPECT_EQ(RegDeleteTree(key, nullptr), 0);
}

TEST_F(RegistryFaults, ThePlaceComesFromTheEnvironmentAndIsItsUsersOwn)
{
    const CUniqueEvent event(CreateEvent(TRUE, FALSE));
    const std::string folder = std::filesystem::path(m_registry.File()).parent_path().string();
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {folder + "/a.db", folder + "/s", folder + "/h", "/a.db"},
        {"", folder + "/s", folder + "/h", "/s/zosoftwareplatform/registry.db"},
        {"", "relative", folder + "/h", "/h/.local/state/zosoftwareplatform/registry.db"},
        {folder + "/link.db", "", "", "/a.db"},
        {"", "", "", ""}};
    std::filesystem::create_symlink("a.db", folder + "/link.db");
    for (const auto& [file, state, home, expected] : cases)
    {
        ::setenv("ZO_REGISTRY", file.c_str(), 1);
        ::setenv("XDG_STATE_HOME", state.c_str(), 1);
        ::setenv("HOME", home.c_str(), 1);
        SetRegistryFile(nullptr);
        DWORD result = 0;
        Said([&] {
            result = static_cast<DWORD>(RegNotifyChangeKeyValue(HKEY_USERS, FALSE, 1, event.Get(), TRUE));
        });
        EXPECT_EQ(result, expected.empty() ? ERROR_CANTOPEN : ERROR_SUCCESS) << "as the first use too";
        const auto mode = std::filesystem::status(folder + expected).permissions();
        EXPECT_EQ(static_cast<unsigned>(mode), expected.empty() ? 0700U : 0600U) << expected;
    }
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(folder + "/h/.local").permissions()), 0700U);
    EXPECT_FALSE(std::filesystem::exists(folder + "/link.db-bell")) << "all names have one bell";
}
} // namespace
