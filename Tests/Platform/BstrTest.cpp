#include "Bstr.h"

#include "CComBSTR.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <string>

namespace
{
using namespace std::string_literals;

std::wstring TextOf(const CComBSTR& text)
{
    return std::wstring(text.View());
}

CComBSTR Own(BSTR text)
{
    CComBSTR owner;
    owner.Attach(text);
    return owner;
}

TEST(Bstr, CarriesItsByteLengthInFrontAndATerminatorBehind)
{
    const CComBSTR text = Own(SysAllocStringLen(L"a\0b", 3));
    std::uint32_t prefix = 0;
    std::memcpy(&prefix, text - 1, sizeof prefix);
    EXPECT_EQ(prefix, 12U);
    EXPECT_EQ(SysStringLen(text), 3U);
    EXPECT_EQ(text[3], L'\0');
    EXPECT_EQ(TextOf(text), L"a\0b"s);
    EXPECT_EQ(TextOf(Own(SysAllocStringLen(nullptr, 3))), L"\0\0\0"s);
}

TEST(Bstr, KeepsNullApartFromEmpty)
{
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(A2WBSTR(nullptr), nullptr);
    EXPECT_FALSE(Own(SysAllocString(L"")).IsNull());
    EXPECT_FALSE(Own(A2WBSTR("")).IsNull());
    EXPECT_FALSE(Own(A2WBSTR("abc", 0)).IsNull());
    EXPECT_EQ(SysStringLen(nullptr), 0U);
}

TEST(Bstr, HoldsByteLengthsBetweenCharacters)
{
    const CComBSTR bytes = Own(SysAllocStringByteLen("\x01\x02\x03\x04\x05", 5));
    EXPECT_EQ(bytes.ByteLength(), 5U);
    EXPECT_EQ(bytes.Length(), 1U);
    EXPECT_EQ(CComBSTR(bytes).ByteLength(), 5U);
}

TEST(Bstr, RefusesMoreBytesThanThePrefixCanTell)
{
    EXPECT_EQ(SysAllocStringLen(nullptr, std::numeric_limits<UINT>::max() / sizeof(wchar_t) + 1), nullptr);
    EXPECT_EQ(A2WBSTR("x", -2), nullptr);
}

TEST(Bstr, ReallocatesFromItsOwnText)
{
    BSTR text = SysAllocString(L"abcdef");
    EXPECT_EQ(SysReAllocStringLen(&text, text + 2, 3), TRUE);
    EXPECT_STREQ(text, L"cde");
    EXPECT_EQ(SysReAllocString(&text, text + 1), TRUE);
    EXPECT_STREQ(text, L"de");
    EXPECT_EQ(SysReAllocString(&text, nullptr), TRUE);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(SysReAllocStringLen(nullptr, L"x", 1), FALSE);
}

TEST(ComBstr, ConstructsFromEverySource)
{
    EXPECT_TRUE(CComBSTR(static_cast<const char*>(nullptr)).IsNull());
    EXPECT_TRUE(CComBSTR(static_cast<const wchar_t*>(nullptr)).IsNull());
    EXPECT_EQ(TextOf(CComBSTR("\x80z")), L"\u20ACz");
    EXPECT_EQ(TextOf(CComBSTR(3)), L"\0\0\0"s);
    EXPECT_FALSE(CComBSTR(-1).IsNull());
    EXPECT_EQ(TextOf(CComBSTR(3, L"a\0bc")), L"a\0b"s);
    EXPECT_EQ(TextOf(CComBSTR(2, "a\0b")), L"a\0"s);
    EXPECT_EQ(TextOf(CComBSTR(GUID{1, 2, 3, {4}})), L"{00000001-0002-0003-0400-000000000000}");
}

TEST(ComBstr, CopiesAndMovesWithZerosInside)
{
    CComBSTR text(3, L"a\0b");
    CComBSTR copy(text);
    EXPECT_EQ(copy, text);
    EXPECT_NE(static_cast<BSTR>(copy), static_cast<BSTR>(text));
    const CComBSTR moved(std::move(copy));
    EXPECT_TRUE(copy.IsNull());
    EXPECT_EQ(moved, text);
    CComBSTR& self = text;
    text = self;
    text = std::move(self);
    EXPECT_EQ(TextOf(text), L"a\0b"s);
    text = L"wide";
    text = text + 1;
    EXPECT_EQ(TextOf(text), L"ide") << "the source may lie in the target";
}

TEST(ComBstr, PassesOwnershipThroughPointers)
{
    CComBSTR text("old");
    EXPECT_EQ(CComBSTR("new").CopyTo(&text), S_OK) << "taking the address frees the old text";
    EXPECT_EQ(text, L"new");
    EXPECT_EQ(text.CopyTo(nullptr), E_POINTER);
    BSTR raw = text;
    text.Attach(raw);
    EXPECT_EQ(text.Detach(), raw);
    EXPECT_TRUE(text.IsNull());
    SysFreeString(raw);
    EXPECT_EQ(text.Copy(), nullptr);
}

struct AppendCase
{
    const char* name;
    std::function<HRESULT(CComBSTR&)> append;
    std::wstring expected;
};

TEST(ComBstr, Appends)
{
    const AppendCase cases[] = {
        {"Object", [](CComBSTR& s) { return s.Append(CComBSTR(2, L"\0x")); }, L"ab\0x"s},
        {"Itself", [](CComBSTR& s) { return s.Append(s); }, L"abab"},
        {"WidePart", [](CComBSTR& s) { return s.Append(L"cde", 2); }, L"abcd"},
        {"Narrow", [](CComBSTR& s) { return s.Append("c\x80"); }, L"abc\u20AC"},
        {"Character", [](CComBSTR& s) { return s.Append('\x80'); }, L"ab\u20AC"},
        {"Bytes", [](CComBSTR& s) { return s.AppendBytes("c\0\0\0", 4); }, L"abc"},
    };
    for (const AppendCase& row : cases)
    {
        CComBSTR text(L"ab");
        EXPECT_EQ(row.append(text), S_OK) << row.name;
        EXPECT_EQ(TextOf(text), row.expected) << row.name;
    }
    CComBSTR null;
    EXPECT_EQ(null.Append(nullptr, 1), E_INVALIDARG);
    EXPECT_EQ(null.Append(L"x", -1), E_INVALIDARG);
    EXPECT_EQ(null.AppendBytes("x", -1), E_INVALIDARG);
    EXPECT_EQ(null.Append(static_cast<const wchar_t*>(nullptr)), S_OK);
    EXPECT_TRUE(null.IsNull());
    EXPECT_EQ(null.Append(L""), S_OK);
    EXPECT_FALSE(null.IsNull());
    null += "x";
    null += L"y";
    null += CComBSTR("z");
    EXPECT_EQ(TextOf(null), L"xyz");
}

TEST(ComBstr, ComparesWholeTexts)
{
    const CComBSTR zeroInside(3, L"a\0b");
    EXPECT_NE(zeroInside, CComBSTR("a"));
    EXPECT_NE(zeroInside, L"a");
    EXPECT_LT(zeroInside, CComBSTR(3, L"a\0c"));
    EXPECT_GT(zeroInside, L"a");
    EXPECT_EQ(CComBSTR("abc"), L"abc");
    EXPECT_EQ(CComBSTR("abc"), "abc");
    const CComBSTR other("abc");
    EXPECT_TRUE(CComBSTR("abc") == static_cast<BSTR>(other)) << "compares texts, not addresses";
    EXPECT_EQ(CComBSTR(), CComBSTR("")) << "null is the empty text";
    EXPECT_TRUE(CComBSTR() == nullptr);
    EXPECT_FALSE(CComBSTR("") == nullptr);
}

TEST(ComBstrDeathTest, FailsTheAssertionOfUnsupportedOperations)
{
    CComBSTR text("x");
    EXPECT_DEATH(text.WriteToStream(nullptr), "Assertion `false' failed");
    EXPECT_DEATH(text.ReadFromStream(nullptr), "Assertion `false' failed");
    EXPECT_DEATH(text.CopyToVariant(nullptr), "Assertion `false' failed");
    EXPECT_DEATH(text.BSTRToArray(nullptr), "Assertion `false' failed");
    EXPECT_DEATH(text.ArrayToBSTR(nullptr), "Assertion `false' failed");
}
} // namespace
