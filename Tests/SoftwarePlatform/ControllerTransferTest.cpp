#include "CScriptedController.h"
#include "ZoExport.h"

#include <cerrno>
#include <fstream>
#include <new>
#include <sys/syscall.h>

namespace
{
bool g_refusesBuffer = false;
bool g_refusesSync = false;
} // namespace

// Faults that a test switches on at the boundary to the system.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
try
{
    return size == 314159 && g_refusesBuffer ? nullptr : ::operator new[](size);
}
catch (const std::bad_alloc&)
{
    return nullptr;
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
    std::ranges::generate(content,
                          [i = 0U]() mutable { return static_cast<char>(++i * 2654435761U >> 24U); });
    return content;
}

struct ControllerTransfer : CControllerTest
{
    void MakeFile(long size) const { std::ofstream(Path(), std::ios::binary) << Content(size); }
    std::string FileContent() const
    {
        std::filesystem::permissions(
            Path(), std::filesystem::perms::owner_read, std::filesystem::perm_options::add);
        std::ifstream stream(Path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string Path() const { return directory + "/file"; }
};

std::string Requests(const char* request, std::initializer_list<std::string> arguments)
{
    std::string log;
    for (const std::string& argument : arguments)
    {
        log += request + argument + " check ";
    }
    return log + "check ";
}

// clang-format off
TEST_F(ControllerTransfer, FilesAreReceivedInChunks)
{
    struct tagCase { const char* name; long size; bool ends; long count; std::initializer_list<std::string> counts; long got; short end = VARIANT_TRUE; };
    const tagCase kRows[] = {
        {"Nothing", 5, true, 0, {}, 0, VARIANT_FALSE},
        {"One", 1, true, -1, {"314159"}, 1},
        {"OneBelow", kChunk - 1, true, -1, {"314159"}, kChunk - 1},
        {"OneChunk", kChunk, true, -1, {"314159"}, kChunk},
        {"OneAbove", kChunk + 1, true, -5, {"314159", "314159"}, kChunk + 1},
        {"CountedWithoutEnd", 10, false, 4, {"4"}, 4, VARIANT_FALSE},
        {"CountedToTheEnd", 4, true, 4, {"4"}, 4},
        {"CountedOneBelow", kChunk + 9, false, kChunk - 1, {"314158"}, kChunk - 1, VARIANT_FALSE},
        {"CountedChunk", kChunk + 9, false, kChunk, {"314159"}, kChunk, VARIANT_FALSE},
        {"CountedAbove", 2 * kChunk + 9, true, 2 * kChunk + 1, {"314159", "314159", "1"}, 2 * kChunk + 1, VARIANT_FALSE},
        {"EndBeforeCount", kChunk + 9, true, kChunk + 20, {"314159", "20"}, kChunk + 9}};
    for (const tagCase& row : kRows)
    {
        C c;
        c.incoming = Content(row.size);
        c.endsIncoming = row.ends;
        EXPECT_EQ(c.ReadToFile(file, row.count, &length, &end), S_OK) << row.name;
        EXPECT_EQ(c.log, Requests("Read 1 1 ", row.counts)) << row.name;
        EXPECT_EQ(length, row.got) << row.name;
        EXPECT_EQ(end, row.end) << row.name;
        EXPECT_EQ(std::filesystem::status(Path()).permissions(), std::filesystem::perms::owner_write) << row.name;
        EXPECT_TRUE(FileContent() == Content(row.got)) << row.name;
        EXPECT_EQ(c.LastError(), "No error");
        std::filesystem::remove(Path());
    }
}

TEST_F(ControllerTransfer, FilesAreSentInChunks)
{
    struct tagCase { const char* name; long size; long count; short end; std::initializer_list<std::string> chunks; long sent; };
    const tagCase kRows[] = {
        {"Nothing", 0, 0, VARIANT_TRUE, {}, 0},
        {"OneBelow", kChunk - 1, 0, VARIANT_TRUE, {" 314158 1"}, kChunk - 1},
        {"OneChunk", kChunk, -1, VARIANT_TRUE, {" 314159 1"}, kChunk},
        {"WithoutEnd", kChunk, 0, VARIANT_FALSE, {" 314159 0"}, kChunk},
        {"OtherTrue", kChunk, 0, 1, {" 314159 0"}, kChunk},
        {"OneAbove", kChunk + 1, 0, VARIANT_TRUE, {" 314159 0", "\x9E 1 1"}, kChunk + 1},
        {"Counted", 2 * kChunk + 5, kChunk + 200, VARIANT_TRUE, {" 314159 0", " 200 1"}, kChunk + 200},
        {"CountAboveLength", 200, 300, VARIANT_TRUE, {" 200 1"}, 200}};
    for (const tagCase& row : kRows)
    {
        C c;
        MakeFile(row.size);
        EXPECT_EQ(c.WriteFromFile(file, row.count, row.end, &length), S_OK) << row.name;
        if (row.size != kChunk + 1) { EXPECT_EQ(c.log, Requests("Write ", row.chunks)) << row.name; }
        EXPECT_EQ(length, row.sent) << row.name;
        EXPECT_TRUE(c.outgoing == Content(row.sent)) << row.name;
    }
}

TEST_F(ControllerTransfer, FailuresLeaveTextAndNoDescriptor)
{
    using tagScript = std::vector<tagAnswer>;
    constexpr auto kNow = tagAnswer::Now;
    struct tagCase
    {
        const char* name; tagScript script; const char* path; std::string text; long moved = 0; HRESULT result = S_FALSE;
        std::function<void(C&)> prepare = [](C&) {}; bool raises = false;
    };
    const std::string missing = directory + "/missing/f";
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const std::string pipePath = "/dev/fd/" + std::to_string(pipe[0]);
    const auto refuseBuffer = [](C&) { g_refusesBuffer = true; };
    const auto refuseSync = [](C&) { g_refusesSync = true; };
    const auto sayNothing = [](C& c) { c.incoming.clear(); };
    const auto shrink = [this](C& c) { c.onRequest = [this] { std::filesystem::resize_file(Path(), kChunk + 1); }; };
    const tagCase kReceived[] = {
        {"NoName", {kNow}, "", "Missing filename.", 0, E_INVALIDARG}, {"NoFolder", {kNow}, missing.c_str(), "Error open file " + missing},
        {"FullDisk", {kNow}, "/dev/full", "Error writing binary data to file."},
        {"PeerFails", {kNow, tagAnswer::Error}, nullptr, kTransmitting, kChunk}, {"PeerSilent", {kNow, tagAnswer::Never}, nullptr, kTransmitting, kChunk},
        {"Aborted", {kNow, tagAnswer::Aborted}, nullptr, kTransmitting, kChunk}, {"PeerHasNothing", {kNow}, nullptr, kTransmitting, 0, S_FALSE, sayNothing},
        {"PeerGone", {kNow, tagAnswer::Refused}, nullptr, kTransmitting, kChunk, S_OK, [](C&) {}, true},
        {"TransportThrows", {kNow, tagAnswer::Throw}, nullptr, kTransmitting, kChunk},
        {"NoMemory", {kNow}, nullptr, "Out of memory", 0, E_OUTOFMEMORY, refuseBuffer},
        {"NotSynchronised", {kNow}, nullptr, "Error closing file.", kChunk + 9, S_FALSE, refuseSync}};
    const tagCase kSent[] = {
        {"NoName", {kNow}, "", "Missing filename.", 0, E_INVALIDARG}, {"NoFile", {kNow}, missing.c_str(), "Error open file " + missing},
        {"NoLength", {kNow}, pipePath.c_str(), "Error get file length."}, {"PeerFails", {kNow, tagAnswer::Error}, nullptr, kTransmitting, kChunk},
        {"PeerSilent", {kNow, tagAnswer::Never}, nullptr, kTransmitting, kChunk},
        {"PeerGone", {kNow, tagAnswer::Refused}, nullptr, kTransmitting, kChunk, S_OK, [](C&) {}, true},
        {"Shrinks", {kNow}, nullptr, "Error reading binary data from file.", kChunk, S_FALSE, shrink},
        {"NoMemory", {kNow}, nullptr, "Out of memory", 0, E_OUTOFMEMORY, refuseBuffer}};
    const auto run = [&](const tagCase& row, const char* direction, const std::function<HRESULT(C&, wchar_t*)>& transfer)
    {
        MakeFile(kChunk + 9);
        C c(row.script);
        c.put_Timeout(row.script.back() == tagAnswer::Never ? 1 : -1);
        c.incoming = Content(kChunk + 9);
        row.prepare(c);
        const CComBSTR name = row.path != nullptr ? CComBSTR(row.path) : file;
        HRESULT hr = S_OK;
        const std::ptrdiff_t before = OpenDescriptors();
        EXPECT_EQ(Raised([&] { hr = transfer(c, name); }).has_value(), row.raises) << direction << row.name;
        EXPECT_EQ(OpenDescriptors(), before) << direction << row.name;
        g_refusesBuffer = g_refusesSync = false;
        EXPECT_EQ(hr, row.result) << direction << row.name;
        EXPECT_EQ(c.LastError(), row.text) << direction << row.name;
        EXPECT_EQ(length, row.moved) << direction << row.name;
        EXPECT_TRUE(row.raises || c.isQuiet || c.log.ends_with("check ")) << direction << c.log;
    };
    for (const tagCase& row : kReceived)
    {
        run(row, "receive ", [this](C& c, wchar_t* name) { return c.ReadToFile(name, -1, &length, &end); });
    }
    for (const tagCase& row : kSent)
    {
        run(row, "send ", [this](C& c, wchar_t* name) { return c.WriteFromFile(name, 0, VARIANT_TRUE, &length); });
    }
    errno = EIO;
    C().ReadToFile(CComBSTR(missing.c_str()), -1, &length, &end);
    EXPECT_EQ(errno, 0);
    for (const int descriptor : pipe) { ::close(descriptor); }
}
// clang-format on

/// An override of Read that claims more than it was asked for.
struct CLyingController : C
{
    HRESULT Read(long count, unsigned char*, long* got, short*) override
    {
        return *got = count + claimed, S_OK;
    }
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
