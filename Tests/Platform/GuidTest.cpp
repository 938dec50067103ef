#include "Guid.h"

#include "CComBSTR.h"
#include "TaskMemory.h"

#include <gtest/gtest.h>

#include <set>

namespace
{
constexpr GUID kSample{0x0123ABCD, 0x4567, 0x89AB, {0xCD, 0xEF, 0x00, 0x11, 0x22, 0x33, 0x44, 0xFF}};
constexpr const wchar_t* kSampleText = L"{0123ABCD-4567-89AB-CDEF-0011223344FF}";

TEST(Guid, HasOneText)
{
    wchar_t* text = nullptr;
    ASSERT_EQ(StringFromCLSID(kSample, &text), S_OK);
    EXPECT_STREQ(text, kSampleText);
    CoTaskMemFree(text);
}

TEST(Guid, IsReadFromItsText)
{
    GUID guid{};
    EXPECT_EQ(CLSIDFromString(kSampleText, &guid), S_OK);
    EXPECT_EQ(guid, kSample);
    EXPECT_EQ(CLSIDFromString(L"{0123abcd-4567-89ab-cdef-0011223344ff}", &guid), S_OK);
    EXPECT_EQ(guid, kSample);
    EXPECT_EQ(CLSIDFromString(nullptr, &guid), S_OK);
    EXPECT_EQ(guid, GUID_NULL);
}

TEST(Guid, RefusesEveryDamagedText)
{
    const std::wstring good = kSampleText;
    GUID guid = kSample;
    for (std::size_t i = 0; i < good.size(); ++i)
    {
        EXPECT_EQ(CLSIDFromString(good.substr(0, i).c_str(), &guid), CO_E_CLASSSTRING) << "cut at " << i;
        std::wstring changed = good;
        changed[i] = L'g';
        EXPECT_EQ(CLSIDFromString(changed.c_str(), &guid), CO_E_CLASSSTRING) << "changed at " << i;
        EXPECT_EQ(guid, GUID_NULL);
    }
    EXPECT_EQ(CLSIDFromString((good + L" ").c_str(), &guid), CO_E_CLASSSTRING);
}

TEST(Guid, IsNewAndRandomVersionFour)
{
    std::set<GUID> seen;
    int bits[2] = {};
    for (int i = 0; i < 1000; ++i)
    {
        GUID guid{};
        ASSERT_EQ(CoCreateGuid(&guid), S_OK);
        EXPECT_EQ(guid.Data3 >> 12, 4);
        EXPECT_EQ(guid.Data4[0] >> 6, 2);
        EXPECT_TRUE(seen.insert(guid).second);
        bits[0] |= guid.Data3;
        bits[1] |= guid.Data4[0];
    }
    EXPECT_EQ(bits[0], 0x4FFF) << "all others are at random";
    EXPECT_EQ(bits[1], 0xBF);
}
} // namespace
