#include "CScriptedController.h"

#include <fstream>
#include <sys/resource.h>

namespace
{

using namespace ZoVelkor;

/// A transport with a gigabyte to say, and one that swallows whatever comes.
struct CBulkController : CScriptedController
{
    HRESULT DoRead(bool, bool, long count) override
    {
        left -= std::min(left, count);
        return DoAcknowledgeRead(left == 0, false, count);
    }
    HRESULT DoFetchData(unsigned char*, long*) override { return S_OK; }
    HRESULT DoWrite(unsigned char*, long, bool) override { return DoAcknowledgeWrite(); }
    HRESULT CheckProtocolError() override { return S_OK; }
    long left = 3419 * 314159L;
};

using ControllerBulk = CControllerTest;

TEST_F(ControllerBulk, GigabytesNeedNoMemory)
{
    CBulkController c;
    const long size = c.left;
    const auto peakKilobytes = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    const long before = peakKilobytes();
    EXPECT_EQ(c.ReadToFile(CComBSTR("/dev/null"), -1, &length, &end), S_OK) << c.LastError();
    EXPECT_EQ(length, size);
    const std::string path = directory + "/file";
    std::ofstream{path};
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size));
    EXPECT_EQ(c.WriteFromFile(file, 0, VARIANT_TRUE, &length), S_OK);
    EXPECT_EQ(length, size);
    EXPECT_LT(peakKilobytes() - before, 8192);
}

} // namespace
