// Processes that change one registry while some of them are killed at random moments, until the time is over.
//
//   registry_crash SECONDS [SEED]   the test; exit code 0 when nothing was lost
//   registry_crash writer FILE N    one of its processes: changes its own key for ever
//   registry_crash set FILE TEXT    writes one value
//   registry_crash try FILE         reads and writes as a user without rights; prints both results
//
// A writer notes in shared memory what has been committed: that must be there after its death, whole, and at
// most the change under way may be there too.

#include "CTemporaryRegistry.h"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <spawn.h>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
constexpr std::size_t kWriters = 4;
constexpr const wchar_t* kBlob = L"blob";

/// What one writer has surely committed: the number of its blob and of its newest key.
struct tagCommitted
{
    std::atomic<std::uint32_t> blob;
    std::atomic<std::uint32_t> key;
};
using Board = std::array<tagCommitted, kWriters>;

Board& MapBoard(const std::string& file)
{
    const int descriptor = ::open((file + "-board").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (::ftruncate(descriptor, sizeof(Board)) != 0)
    {
        throw std::runtime_error("no board");
    }
    void* memory = ::mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ::close(descriptor);
    return *static_cast<Board*>(memory);
}

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

CUniqueKey MakeWriterKey(std::size_t writer)
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

[[noreturn]] void WriteForEver(const std::string& file, std::size_t writer)
{
    tagCommitted& committed = MapBoard(file)[writer];
    const CUniqueKey key = MakeWriterKey(writer);
    for (std::uint32_t number = std::max(StoredBlob(key.Get()), committed.key.load()) + 1;; ++number)
    {
        const auto blob = BlobOf(number);
        const auto* data = reinterpret_cast<const BYTE*>(blob.data());
        const LONG written =
            RegSetValueEx(key.Get(), kBlob, 0, REG_BINARY, data, static_cast<DWORD>(blob.size() * 4));
        Check(written == 0, "writing gives " + std::to_string(written));
        committed.blob = number;
        HKEY made = 0;
        Check(RegCreateKey(key.Get(), StepPath(number).c_str(), &made) == 0, "a key is not made");
        RegCloseKey(made);
        committed.key = number;
        RegDeleteTree(key.Get(), (L"steps\\" + std::to_wstring(number - 1)).c_str());
    }
}

pid_t Start(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "registry_crash");
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
    {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    Check(::posix_spawn(&process, "/proc/self/exe", nullptr, nullptr, pointers.data(), environ) == 0,
          "no process");
    return process;
}

void Kill(pid_t process)
{
    ::kill(process, SIGKILL);
    int status = 0;
    ::waitpid(process, &status, 0);
    Check(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "a writer ended by itself");
}

/// Compares what is stored with what a dead writer had committed.
void CheckWriter(const Board& board, std::size_t writer)
{
    const CUniqueKey key = MakeWriterKey(writer);
    const std::uint32_t committed = board[writer].blob;
    const std::uint32_t stored = StoredBlob(key.Get());
    Check(stored == committed || stored == committed + 1,
          "committed " + std::to_string(committed) + ", found " + std::to_string(stored));
    const std::uint32_t step = board[writer].key;
    HKEY opened = 0;
    Check(step == 0 || RegOpenKey(key.Get(), StepPath(step).c_str(), &opened) == 0, "a key is lost");
    RegCloseKey(opened);
}

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

void Run(std::chrono::seconds duration, unsigned seed)
{
    const CTemporaryRegistry registry;
    ::setenv("ZO_REGISTRY", registry.File().c_str(), 1);
    const Board& board = MapBoard(registry.File());
    std::mt19937 random(seed);
    std::array<pid_t, kWriters> writers{};
    const auto begin = [&](std::size_t writer) {
        writers[writer] = Start({"writer", registry.File(), std::to_string(writer)});
    };
    for (std::size_t i = 0; i < kWriters; ++i)
    {
        begin(i);
    }
    int kills = 0;
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end)
    {
        // The rest between two kills is at random; nothing depends on its length.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 60'000));
        // Now and then all at once, this process too: then the next one finds a log that nobody has open.
        const bool isEveryone = random() % 8 == 0;
        const std::size_t first = isEveryone ? 0 : random() % kWriters;
        const std::size_t last = isEveryone ? kWriters : first + 1;
        for (std::size_t i = first; i < last; ++i, ++kills)
        {
            Kill(writers[i]);
        }
        if (isEveryone)
        {
            registry.Use();
        }
        for (std::size_t i = first; i < last; ++i)
        {
            CheckWriter(board, i);
            begin(i);
        }
    }
    std::uint64_t changes = 0;
    for (std::size_t i = 0; i < kWriters; ++i)
    {
        Kill(writers[i]);
        CheckWriter(board, i);
        changes += 3ULL * board[i].blob;
    }
    SetRegistryFile(nullptr);
    CheckIntegrity(registry.File());
    Check(changes > 0, "no writer came to writing");
    std::printf("%d kills, %llu changes, nothing lost\n", kills, static_cast<unsigned long long>(changes));
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
        WriteForEver(arguments.at(1), std::stoul(arguments.at(2)));
    }
    if (mode == "try")
    {
        return TryWithoutRights(arguments.at(1));
    }
    if (mode == "set")
    {
        SetRegistryFile(arguments.at(1).c_str());
        const auto* data = reinterpret_cast<const BYTE*>(arguments.at(2).data());
        return RegSetValueEx(
            HKEY_LOCAL_MACHINE, L"v", 0, REG_BINARY, data, static_cast<DWORD>(arguments.at(2).size()));
    }
    const unsigned seed =
        arguments.size() > 1 ? static_cast<unsigned>(std::stoul(arguments[1])) : std::random_device()();
    std::printf("seed %u\n", seed);
    Run(std::chrono::seconds(std::stoul(mode)), seed);
    return 0;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
