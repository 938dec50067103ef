#include "CCrc16Handling.h"
#include "CLxiErrorStorage.h"
#include "CVersion.h"
#include "ManyThreads.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace ZoVelkor
{
namespace
{

using CBytes = std::basic_string<unsigned char>;

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

using Error = std::pair<int, CComBSTR>;

Error Fetch(CLxiErrorStorage& storage)
{
    EnumLxiErrors code{};
    CComBSTR text(L"former text");
    storage.GetLastError(code, text);
    return {static_cast<int>(code), text};
}

const Error kErrors[] = {
    // clang-format off
    {0, L"No error"}, {5000, L"Error during connection a capability"}, {5099, L"Unknown error"},
    {5111, L"Arming source not found"}, {5124, L"Capability not found"}, {5131, L"Event not found"},
    {5140, L"Trigger source could not be added, because it already exists"},
    {5161, L"Trigger source could not be deactivated"}, {-1, L"Unknown error"}};
// clang-format on

// Comes first, so that the threads meet while the table of the checksum is built.
TEST(Foundation, SafeFromManyThreadsAtOnce)
{
    CLxiErrorStorage storage;
    RunOnManyThreads([&storage] {
        EXPECT_EQ(Crc({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0x906E);
        storage.SetError(EnumLxiErrors::EventNotFound);
        const Error error = Fetch(storage);
        EXPECT_TRUE(error == kErrors[0] || error == kErrors[5]) << "code and text belong together";
    });
}

TEST(Crc16, IsTheRemainderOfThePolynomial)
{
    EXPECT_EQ(CCrc16Handling::Calculate(nullptr, 0), 0);
    EXPECT_EQ(Crc({0}), 0xF078);
    std::mt19937 random(1);
    for (CBytes data; data.size() < 300;)
    {
        data += static_cast<unsigned char>(random());
        EXPECT_EQ(Crc(data), BitwiseCrc(data)) << data.size();
    }
}

/// A module with version information of its own.
struct CNumberedVersion : CVersion
{
    explicit CNumberedVersion(const tagFixedFileInfo* info) : CVersion(info) {}
};

std::array<WORD, 8> Numbers(const CVersion& v)
{
    // clang-format off
    return {v.getMajorVersion(), v.getMinorVersion(), v.getBuild(), v.getSubBuild(),
            v.getProductMajorVersion(), v.getProductMinorVersion(), v.getProductBuild(), v.getProductSubBuild()};
    // clang-format on
}

TEST(Version, EveryTextIsLinuxAndNumbersNeedFixedInformation)
{
    const CVersion current = CVersion::getCurrent();
    EXPECT_EQ(current.getProductName() + current.getQueryValue("?"), "linuxlinux");
    EXPECT_EQ(Numbers(current), (std::array<WORD, 8>{}));
    const tagFixedFileInfo info{0, 0, 0xFFFE0002, 0x00030004, 0x00050006, 0x00078000, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Numbers(CNumberedVersion(&info)), (std::array<WORD, 8>{0xFFFE, 2, 3, 4, 5, 6, 7, 0x8000}));
}

TEST(LxiErrorStorage, ErrorIsFetchedOnceWithItsText)
{
    CLxiErrorStorage storage;
    for (const Error& error : kErrors)
    {
        EXPECT_EQ(Fetch(storage), kErrors[0]);
        storage.SetError(static_cast<EnumLxiErrors>(error.first));
        CLxiErrorStorage copy(storage);
        EXPECT_EQ(storage.GetErrorString(), error.second);
        EXPECT_EQ(Fetch(storage), error);
        EXPECT_EQ(Fetch(copy), error) << "a copy holds the error on its own";
    }
}

} // namespace
} // namespace ZoVelkor
