// Processes that change one registry while some of them are killed at random moments.
//
//   registry_crash ROUNDS [SEED]    the test; exit code 0 when nothing was lost
//   registry_crash writer FILE N    one of its processes: changes its own key for ever
//   registry_crash try FILE         reads and writes as a user without rights; prints both results
//
// A writer reports on a pipe what has been committed: that must be there after its death, whole, and at most
// the change under way may be there too. Each round lets a random number of reports come before it kills.

#include "CTemporaryRegistry.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <random>
#include <spawn.h>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{
constexpr std::uint32_t kWriters = 4;
constexpr int kPatienceMs = 60'000;
constexpr const wchar_t* kBlob = L"blob";

/// What one writer has surely committed: the number of its blob and of its newest key.
struct Report
{
    std::uint32_t writer;
    std::uint32_t blob;
    std::uint32_t key;
};

void Check(bool condition, const std::string& what)
{
    if (!condition)
    {
        throw std::runtime_error(what);
    }
}

/// Some words, all of them the number: a mixture of two would show.
std::vector<std::uint32_t> BlobOf(std::uint32_t number)
{
    return std::vector<std::uint32_t>(1 + number * 7919 % 2500, number);
}

/// The number of the blob that is stored; 0 when there is none.
std::uint32_t StoredBlob(HKEY key)
{
    std::vector<std::uint32_t> words(4096);
    auto size = static_cast<DWORD>(words.size() * 4);
    const LONG error =
        RegQueryValueEx(key, kBlob, nullptr, nullptr, reinterpret_cast<BYTE*>(words.data()), &size);
    Check(error == 0 || error == LONG{ERROR_FILE_NOT_FOUND}, "reading gives " + std::to_string(error));
    words.resize(error == 0 ? size / 4 : 1);
    Check(error != 0 || words == BlobOf(words[0]), "a value is half written");
    return words[0];
}

CUniqueKey MakeWriterKey(std::uint32_t writer)
{
    HKEY key = 0;
    const std::wstring path = L"Writers\\" + std::to_wstring(writer);
    Check(RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key) == 0, "no key");
    return CUniqueKey(key);
}

std::wstring StepPath(std::uint32_t number)
{
    return L"steps\\" + std::to_wstring(number) + L"\\a\\b";
}

[[noreturn]] void WriteForEver(std::uint32_t writer)
{
    const CUniqueKey key = MakeWriterKey(writer);
    Report report{writer, StoredBlob(key.Get()), 0};
    const auto send = [&] {
        Check(::write(STDOUT_FILENO, &report, sizeof report) == sizeof report, "nobody hears the report");
    };
    for (;;)
    {
        const auto blob = BlobOf(++report.blob);
        const auto* data = reinterpret_cast<const BYTE*>(blob.data());
        const LONG written =
            RegSetValueEx(key.Get(), kBlob, 0, REG_BINARY, data, static_cast<DWORD>(blob.size() * 4));
        Check(written == 0, "writing gives " + std::to_string(written));
        send();
        HKEY made = 0;
        Check(RegCreateKey(key.Get(), StepPath(report.blob).c_str(), &made) == 0, "a key is not made");
        RegCloseKey(made);
        report.key = report.blob;
        send();
        RegDeleteTree(key.Get(), (L"steps\\" + std::to_wstring(report.key - 1)).c_str());
    }
}

/// The writers, and what they have reported.
class CWriters
{
public:
    explicit CWriters(std::string file) : m_file(std::move(file))
    {
        Check(::pipe2(m_pipe.data(), O_CLOEXEC) == 0, "no pipe");
        ::fcntl(m_pipe[0], F_SETFL, O_NONBLOCK);
        for (std::uint32_t i = 0; i < kWriters; ++i)
        {
            Begin(i);
        }
    }

    void Begin(std::uint32_t writer)
    {
        std::string arguments[] = {"registry_crash", "writer", m_file, std::to_string(writer)};
        char* const pointers[] = {
            arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data(), nullptr};
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, m_pipe[1], STDOUT_FILENO);
        Check(::posix_spawn(&m_processes[writer], "/proc/self/exe", &actions, nullptr, pointers, environ) ==
                  0,
              "no process");
        ::posix_spawn_file_actions_destroy(&actions);
    }

    void Kill(std::uint32_t writer)
    {
        ::kill(m_processes[writer], SIGKILL);
        int status = 0;
        ::waitpid(m_processes[writer], &status, 0);
        Check(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "a writer ended by itself");
    }

    /// Waits for so many reports, and takes all that are there.
    void Hear(std::size_t count)
    {
        std::array<Report, 64> reports{};
        for (;;)
        {
            const ssize_t size = ::read(m_pipe[0], reports.data(), sizeof reports);
            const std::size_t heard = size < 0 ? 0 : static_cast<std::size_t>(size) / sizeof reports[0];
            std::for_each_n(reports.begin(), heard, [this](const auto& r) { m_reports[r.writer] = r; });
            if (heard == 0 && count == 0)
            {
                return;
            }
            count -= std::min(count, heard);
            pollfd waiting{m_pipe[0], POLLIN, 0};
            Check(count == 0 || ::poll(&waiting, 1, kPatienceMs) == 1, "no writer reports");
        }
    }

    /// Compares what is stored with what a dead writer had committed; the next one goes on from there.
    void Examine(std::uint32_t writer)
    {
        const CUniqueKey key = MakeWriterKey(writer);
        const auto [number, committed, step] = m_reports[writer];
        const std::uint32_t stored = StoredBlob(key.Get());
        m_reports[writer].blob = stored;
        Check(stored == committed || stored == committed + 1,
              "committed " + std::to_string(committed) + ", found " + std::to_string(stored));
        HKEY opened = 0;
        Check(step == 0 || RegOpenKey(key.Get(), StepPath(step).c_str(), &opened) == 0, "a key is lost");
        RegCloseKey(opened);
    }

private:
    std::string m_file;
    std::array<int, 2> m_pipe{};
    std::array<pid_t, kWriters> m_processes{};
    std::array<Report, kWriters> m_reports{};
};

void CheckIntegrity(const std::string& file)
{
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    sqlite3_open(file.c_str(), &database);
    sqlite3_prepare_v2(database, "PRAGMA integrity_check", -1, &statement, nullptr);
    Check(sqlite3_step(statement) == SQLITE_ROW, "the file cannot be read");
    const std::string answer(static_cast<const char*>(sqlite3_column_blob(statement, 0)));
    sqlite3_finalize(statement);
    sqlite3_close(database);
    Check(answer == "ok", "the file is damaged: " + answer);
}

void Run(unsigned long rounds, unsigned seed)
{
    const CTemporaryRegistry registry;
    CWriters writers(registry.File());
    std::mt19937 random(seed);
    for (unsigned long round = 1; round <= rounds; ++round)
    {
        writers.Hear(random() % 200);
        // Now and then all at once, this process too: then the next one finds a log that nobody has open.
        const bool isEveryone = round == rounds || random() % 8 == 0;
        const std::uint32_t first = isEveryone ? 0 : random() % kWriters;
        const std::uint32_t last = isEveryone ? kWriters : first + 1;
        for (std::uint32_t i = first; i < last; ++i)
        {
            writers.Kill(i);
        }
        if (isEveryone)
        {
            registry.Use();
        }
        writers.Hear(0);
        for (std::uint32_t i = first; i < last; ++i)
        {
            writers.Examine(i);
            if (round < rounds)
            {
                writers.Begin(i);
            }
        }
    }
    SetRegistryFile(nullptr);
    CheckIntegrity(registry.File());
}

int TryWithoutRights(const std::string& file)
{
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0 && ::setresuid(kNobody, kNobody, kNobody) != 0)
    {
        return 1;
    }
    SetRegistryFile(file.c_str());
    const LONG reading = RegQueryValueEx(HKEY_LOCAL_MACHINE, L"v", nullptr, nullptr, nullptr, nullptr);
    const LONG writing = RegSetValueEx(HKEY_LOCAL_MACHINE, L"v", 0, REG_SZ, nullptr, 0);
    std::printf("%d %d\n", reading, writing);
    return 0;
}
} // namespace

int main(int argc, char** argv)
try
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const std::string mode = arguments.at(0);
    if (mode == "writer")
    {
        SetRegistryFile(arguments.at(1).c_str());
        WriteForEver(static_cast<std::uint32_t>(std::stoul(arguments.at(2))));
    }
    if (mode == "try")
    {
        return TryWithoutRights(arguments.at(1));
    }
    const unsigned seed =
        arguments.size() > 1 ? static_cast<unsigned>(std::stoul(arguments[1])) : std::random_device()();
    std::printf("seed %u\n", seed);
    Run(std::stoul(mode), seed);
    return 0;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
