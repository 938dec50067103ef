#include "CScriptedController.h"
#include "ZoExport.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <new>
#include <sys/syscall.h>

// clang-format off
static bool g_refusesBuffer = false;
static bool g_refusesSync = false;

// Faults that a test switches on at the boundary to the system.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return size == 314159 && g_refusesBuffer ? nullptr : ::operator new[](size);
}
extern "C" ZO_EXPORT int fsync(int descriptor)
{
    errno = EIO;
    return g_refusesSync ? -1 : static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace
{

using namespace ZoVelkor;
using C = CScriptedController;

constexpr long kChunk = 314159;
constexpr char kTransmitting[] = "Error transmitting data.";

/// Bytes whose place can be told.
std::string Content(long size)
{
    std::string content(static_cast<std::size_t>(size), 0);
    std::ranges::generate(content, [i = 0U]() mutable { return static_cast<char>(++i * 2654435761U >> 24U); });
    return content;
}

struct ControllerTransfer : CControllerTest
{
    void MakeFile(long size) const { std::ofstream(path, std::ios::binary) << Content(size); }
    std::string FileContent() const
    {
        std::filesystem::permissions(path, std::filesystem::perms::all);
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(ControllerTransfer, FilesAreReceivedInChunks)
{
    struct Case { long size; bool ends; long count; const char* outcome; }; // bytes got, END, requests
    for (const Case& row : std::initializer_list<Case>{
             {5, true, 0, "0 0 check "}, {1, true, -1, "1 -1 Read 1 1 314159 check check "},
             {kChunk - 1, true, -1, "314158 -1 Read 1 1 314159 check check "}, {kChunk, true, -1, "314159 -1 Read 1 1 314159 check check "},
             {kChunk + 1, true, -5, "314160 -1 Read 1 1 314159 check Read 1 1 314159 check check "},
             {10, false, 4, "4 0 Read 1 1 4 check check "}, {4, true, 4, "4 -1 Read 1 1 4 check check "},
             {kChunk, false, kChunk - 1, "314158 0 Read 1 1 314158 check check "}, {kChunk + 9, false, kChunk, "314159 0 Read 1 1 314159 check check "},
             {kChunk + 9, true, kChunk + 1, "314160 0 Read 1 1 314159 check Read 1 1 1 check check "},
             {kChunk + 9, true, kChunk + 20, "314168 -1 Read 1 1 314159 check Read 1 1 20 check check "}})
    {
        C c;
        c.incoming = Content(row.size);
        c.endsIncoming = row.ends;
        EXPECT_EQ(c.ReadToFile(file, row.count, &length, &end), S_OK);
        EXPECT_EQ(C::Line(length, end) + c.log, row.outcome);
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_write);
        EXPECT_TRUE(FileContent() == Content(length)) << row.outcome;
        std::filesystem::remove(path);
    }
}

TEST_F(ControllerTransfer, FilesAreSentInChunks)
{
    struct Case { long size; long count; short end; const char* outcome; }; // bytes sent, requests with length and END
    for (const Case& row : std::initializer_list<Case>{
             {0, 0, VARIANT_TRUE, "0 check "}, {kChunk - 1, 0, VARIANT_TRUE, "314158 Write  314158 1 check check "},
             {kChunk, -1, VARIANT_TRUE, "314159 Write  314159 1 check check "}, {kChunk, 0, VARIANT_FALSE, "314159 Write  314159 0 check check "},
             {kChunk, 0, 1, "314159 Write  314159 0 check check "},
             {kChunk + 1, 0, VARIANT_TRUE, "314160 Write  314159 0 check Write  1 1 check check "},
             {2 * kChunk + 5, kChunk + 200, VARIANT_TRUE, "314359 Write  314159 0 check Write  200 1 check check "},
             {200, 300, VARIANT_TRUE, "200 Write  200 1 check check "}})
    {
        C c;
        MakeFile(row.size);
        EXPECT_EQ(c.WriteFromFile(file, row.count, row.end, &length), S_OK);
        EXPECT_EQ(C::Line(length) + c.log, row.outcome);
        EXPECT_TRUE(c.outgoing == Content(length)) << row.outcome;
    }
}

TEST_F(ControllerTransfer, FailuresLeaveTextAndNoDescriptor)
{
    const std::string missing = directory + "/missing/f";
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const std::string pipePath = "/dev/fd/" + std::to_string(pipe[0]);
    const auto refuseBuffer = [](C&) { g_refusesBuffer = true; };
    const auto refuseSync = [](C&) { g_refusesSync = true; };
    const auto sayNothing = [](C& c) { c.incoming.clear(); };
    const auto shrink = [this](C& c) { c.onRequest = [this] { std::filesystem::resize_file(path, kChunk + 1); }; };
    struct Case { bool receives; unsigned second; std::string path; std::string text; long moved = 0; HRESULT result = S_FALSE;
        std::function<void(C&)> prepare = [](C&) {}; };
    for (const Case& row : std::initializer_list<Case>{
             {true, kDone, "", "Missing filename.", 0, E_INVALIDARG}, {true, kDone, missing, "Error open file " + missing},
             {true, kDone, "/dev/full", "Error writing binary data to file."}, {true, kDone, path, kTransmitting, 0, S_FALSE, sayNothing},
             {true, kError, path, kTransmitting, kChunk}, {true, 0, path, kTransmitting, kChunk}, {true, kAborted | kFromThread, path, kTransmitting, kChunk},
             {true, kRefused, path, kTransmitting, kChunk, kRefusal}, {true, kThrow, path, kTransmitting, kChunk},
             {true, kDone, path, "Out of memory", 0, E_OUTOFMEMORY, refuseBuffer}, {true, kDone, path, "Error closing file.", kChunk + 9, S_FALSE, refuseSync},
             {false, kDone, "", "Missing filename.", 0, E_INVALIDARG}, {false, kDone, missing, "Error open file " + missing},
             {false, kDone, pipePath, "Error get file length."}, {false, kDone, path, "Error reading binary data from file.", kChunk, S_FALSE, shrink},
             {false, kError, path, kTransmitting, kChunk}, {false, 0, path, kTransmitting, kChunk}, {false, kThrow, path, kTransmitting, kChunk},
             {false, kRefused, path, kTransmitting, kChunk, kRefusal}, {false, kDone, path, "Out of memory", 0, E_OUTOFMEMORY, refuseBuffer}})
    {
        MakeFile(kChunk + 9);
        C c({kDone, row.second});
        c.incoming = Content(kChunk + 9);
        row.prepare(c);
        const CComBSTR name(row.path.c_str());
        HRESULT result = kRefusal; // stays when the refusal is raised
        const std::ptrdiff_t before = OpenDescriptors();
        const bool raises = !Raised([&] {
            result = row.receives ? c.ReadToFile(name, -1, &length, &end) : c.WriteFromFile(name, 0, VARIANT_TRUE, &length);
        }).empty();
        EXPECT_EQ(OpenDescriptors(), before) << row.text;
        g_refusesBuffer = g_refusesSync = false;
        EXPECT_EQ(C::Line(result, length, c.LastError()), C::Line(row.result, row.moved, row.text)) << row.receives << ' ' << row.second;
        EXPECT_EQ(raises, row.result == kRefusal);
        EXPECT_TRUE(raises || c.isQuiet || c.log.ends_with("check ")) << c.log;
    }
    errno = EIO;
    C().ReadToFile(CComBSTR(missing.c_str()), -1, &length, &end);
    EXPECT_EQ(errno, 0);
    for (const int descriptor : pipe) { ::close(descriptor); }
}

/// An override of Read that claims more than it was asked for.
struct CLyingController : C
{
    HRESULT Read(long count, unsigned char*, long* got, short*) override { return *got = count + claimed, S_OK; }
    long claimed = 1;
};

TEST_F(ControllerTransfer, ReadIsCalledThroughItsSlot)
{
    CLyingController c;
    EXPECT_EQ(c.ReadToFile(file, 10, &length, &end), S_FALSE);
    EXPECT_EQ(c.LastError(), kTransmitting);
    c.claimed = 0;
    EXPECT_EQ(c.ReadToFile(file, 10, &length, &end), S_OK);
    EXPECT_EQ(end, VARIANT_TRUE) << "what an override leaves alone counts as END";
}

} // namespace
// clang-format on
