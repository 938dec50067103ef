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
        return DoAcknowledgeRead((left -= count) == 0, false, count);
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
    rusage before{}, after{};
    ::getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(c.ReadToFile(CComBSTR("/dev/null"), -1, &length, &end), S_OK) << c.LastError();
    EXPECT_EQ(length, size);
    std::ofstream{path};
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size));
    EXPECT_EQ(c.WriteFromFile(file, 0, VARIANT_TRUE, &length), S_OK);
    EXPECT_EQ(length, size);
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 8192) << "kilobytes";
}

} // namespace
