#include "CCrc16Handling.h"
#include "CLxiErrorStorage.h"
#include "CVersion.h"
#include "ManyThreads.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <utility>
#include <vector>

namespace ZoVelkor
{
namespace
{

using CBytes = std::vector<unsigned char>;

/// The definition of the checksum: the polynomial, bit by bit.
std::uint16_t BitwiseCrc(const CBytes& data)
{
    unsigned int crc = 0xFFFF;
    for (const unsigned char byte : data)
    {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0x8408U : 0U);
        }
    }
    return static_cast<std::uint16_t>(~crc);
}

std::uint16_t Crc(const CBytes& data)
{
    return CCrc16Handling::Calculate(data.data(), static_cast<unsigned int>(data.size()));
}

// First in this program to use the table, so that the threads meet while it is built.
TEST(Crc16, FirstUseFromManyThreadsAtOnce)
{
    RunOnManyThreads([] { EXPECT_EQ(Crc({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0x906E); });
}

TEST(Crc16, IsTheRemainderOfThePolynomial)
{
    EXPECT_EQ(CCrc16Handling::Calculate(nullptr, 0), 0) << "not 0xFFFF, as the formula would give";
    EXPECT_EQ(Crc({0}), 0xF078);
    std::mt19937 random(1);
    for (std::size_t size = 1; size < 300; ++size)
    {
        CBytes data(size);
        for (unsigned char& byte : data)
        {
            byte = static_cast<unsigned char>(random());
        }
        EXPECT_EQ(Crc(data), BitwiseCrc(data)) << size;
    }
}

/// A module with version information of its own.
struct CNumberedVersion : CVersion
{
    explicit CNumberedVersion(const tagFixedFileInfo* pInfo) : CVersion(pInfo) {}
};

std::array<WORD, 8> Numbers(const CVersion& version)
{
    return {version.getMajorVersion(),
            version.getMinorVersion(),
            version.getBuild(),
            version.getSubBuild(),
            version.getProductMajorVersion(),
            version.getProductMinorVersion(),
            version.getProductBuild(),
            version.getProductSubBuild()};
}

TEST(Version, EveryTextIsLinuxAndNumbersNeedFixedInformation)
{
    const CVersion current = CVersion::getCurrent();
    for (const std::string& text :
         {current.getProductName(), current.getFileVersion(), current.getQueryValue("?")})
    {
        EXPECT_EQ(text, "linux");
    }
    EXPECT_EQ(Numbers(current), (std::array<WORD, 8>{}));
    const tagFixedFileInfo info{0, 0, 0xFFFE0002, 0x00030004, 0x00050006, 0x00078000, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Numbers(CNumberedVersion(&info)), (std::array<WORD, 8>{0xFFFE, 2, 3, 4, 5, 6, 7, 0x8000}));
}

std::pair<int, CComBSTR> Fetch(CLxiErrorStorage& storage)
{
    std::pair<int, CComBSTR> result{-1, L"former text"};
    auto code = static_cast<EnumLxiErrors>(-1);
    storage.GetLastError(code, result.second);
    result.first = static_cast<int>(code);
    return result;
}

TEST(LxiErrorStorage, ErrorIsFetchedOnceWithItsText)
{
    const std::pair<int, CComBSTR> kErrors[] = {
        {0,    L"No error"                                                    },
        {5000, L"Error during connection a capability"                        },
        {5099, L"Unknown error"                                               },
        {5111, L"Arming source not found"                                     },
        {5124, L"Capability not found"                                        },
        {5140, L"Trigger source could not be added, because it already exists"},
        {5161, L"Trigger source could not be deactivated"                     },
        {-1,   L"Unknown error"                                               }
    };
    CLxiErrorStorage storage;
    for (const auto& error : kErrors)
    {
        storage.SetError(static_cast<EnumLxiErrors>(error.first));
        EXPECT_EQ(storage.GetErrorString(), error.second);
        EXPECT_EQ(Fetch(storage), error);
        EXPECT_EQ(Fetch(storage), kErrors[0]);
    }
}

TEST(LxiErrorStorage, CopyHoldsTheSameErrorOnItsOwn)
{
    CLxiErrorStorage storage;
    storage.SetError(EnumLxiErrors::EventNotFound);
    CLxiErrorStorage copy(storage);
    EXPECT_EQ(Fetch(copy).first, 5131);
    EXPECT_EQ(Fetch(storage).first, 5131);
}

TEST(LxiErrorStorage, CodeAndTextBelongTogetherWhateverHappensMeanwhile)
{
    CLxiErrorStorage storage;
    RunOnManyThreads([&storage] {
        for (int n = 0; n < 500; ++n)
        {
            storage.SetError(n % 2 == 0 ? EnumLxiErrors::AlarmNotFound : EnumLxiErrors::EventNotFound);
            const auto [code, text] = Fetch(storage);
            EXPECT_TRUE(text == (code == 0      ? L"No error"
                                 : code == 5101 ? L"Alarm not found"
                                                : L"Event not found"));
        }
    });
}

} // namespace
} // namespace ZoVelkor
