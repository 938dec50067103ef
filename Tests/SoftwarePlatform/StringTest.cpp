#include "CErrorRecorder.h"
#include "CodePage.h"
#include "ZoString.h"
#include "ZoStringQt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>

namespace
{

using namespace ZoVelkor;

/// Cyrillic be, which code page 0 cannot hold, between two letters that it holds.
constexpr wchar_t kForeign[] = L"a\u0431c";
constexpr wchar_t kWithZero[] = L"ab\0cd";

CZoString WithZero()
{
    CZoString text;
    text.Append(kWithZero, 5);
    return text;
}

std::wstring Whole(const CZoString& text)
{
    return {text, text.Length()};
}

TEST(StringStorage, NullAndEmptyAreDifferentStates)
{
    CZoString text;
    EXPECT_TRUE(text.IsNull());
    text = "";
    EXPECT_FALSE(text.IsNull());
    EXPECT_EQ(text.Length(), 0U);
    text.Clear();
    EXPECT_TRUE(text.IsNull());
    EXPECT_TRUE(CZoString(static_cast<const char*>(nullptr)).IsNull());
    EXPECT_TRUE(CZoString(static_cast<const wchar_t*>(nullptr)).IsNull());
    EXPECT_TRUE(CZoString(CComBSTR()).IsNull());
    EXPECT_FALSE(CZoString('\0').IsNull());
    EXPECT_FALSE(CZoString(std::string()).IsNull());
    EXPECT_EQ(CZoString('\0').Length(), 0U);
    EXPECT_TRUE(CZoString().Upper().IsNull());
    EXPECT_TRUE(CZoString().ToCComBSTR().IsNull());
    EXPECT_EQ(CZoString().CopyBSTR(), nullptr);
    EXPECT_EQ(CZoString().ToStdString(), "");
}

TEST(StringStorage, EachSourceTypeGivesItsText)
{
    CZoString text("a");
    EXPECT_EQ(Whole(text), L"a");
    EXPECT_EQ(Whole(text = std::string("b\0c", 3)), L"b");
    EXPECT_EQ(Whole(text = 'c'), L"c");
    EXPECT_EQ(Whole(text = L"d"), L"d");
    EXPECT_EQ(Whole(text = CComBSTR(5, kWithZero)), std::wstring(kWithZero, 5));
    EXPECT_EQ(Whole(text = "\x80"), L"\u20AC");
}

TEST(StringStorage, CopiesAreSeparateAndKeepZeros)
{
    const CZoString source = WithZero();
    CZoString copy(source);
    EXPECT_NE(static_cast<wchar_t*>(copy), static_cast<wchar_t*>(source));
    EXPECT_EQ(Whole(copy), std::wstring(kWithZero, 5));
    CZoString assigned("old");
    assigned = source;
    EXPECT_EQ(assigned.Length(), 5U);
    const wchar_t* before = assigned;
    assigned = *std::addressof(assigned);
    EXPECT_EQ(static_cast<wchar_t*>(assigned), before);
    const CZoString moved(std::move(copy));
    EXPECT_TRUE(
        copy.IsNull()); // NOLINT(bugprone-use-after-move): the state left behind is part of the contract
    EXPECT_EQ(moved.Length(), 5U);
    EXPECT_EQ(source.ToCComBSTR().Length(), 5U);
}

TEST(StringStorage, BstrsPassInAndOut)
{
    CZoString text;
    *&text = SysAllocString(L"out");
    EXPECT_EQ(Whole(text), L"out");
    wchar_t* detached = text.DetachBSTR();
    EXPECT_TRUE(text.IsNull());
    text.AttachBSTR(detached);
    EXPECT_EQ(static_cast<wchar_t*>(text), detached);
    EXPECT_EQ(text.AssignBSTR(text), S_OK);
    EXPECT_EQ(Whole(text), L"out");
    CComBSTR same;
    same.Attach(text);
    text = same;
    EXPECT_EQ(static_cast<wchar_t*>(text), same.Detach());
    EXPECT_EQ(text.AssignBSTR(nullptr), S_OK);
    EXPECT_TRUE(text.IsNull());
}

TEST(StringStorageDeathTest, UnsupportedAndUnsafeCallsFailTheirAssertion)
{
    CZoString text("a");
    EXPECT_DEATH(text.AttachBSTR(nullptr), "m_str == __null");
    EXPECT_DEATH(text.WriteToStream(nullptr), "false");
    EXPECT_DEATH(text.ReadFromStream(nullptr), "false");
    EXPECT_DEATH(text.CopyToVariant(nullptr), "false");
    EXPECT_DEATH(text.BSTRToArray(nullptr), "false");
    EXPECT_DEATH(text.ArrayToBSTR(nullptr), "false");
}

TEST(StringAppend, JoinsEveryTypeInBothOrders)
{
    const CZoString a("a");
    const std::string narrow("b");
    wchar_t wide[] = L"b";
    char bytes[] = "b";
    for (const CZoString& sum :
         {a + CZoString("b"), a + CComBSTR(L"b"), a + L"b", a + wide, a + "b", a + bytes, a + narrow})
    {
        EXPECT_EQ(Whole(sum), L"ab");
    }
    for (const CZoString& sum :
         {CComBSTR(L"b") + a, L"b" + a, wide + a, "b" + a, bytes + a, narrow + a, 'b' + a})
    {
        EXPECT_EQ(Whole(sum), L"ba");
    }
}

TEST(StringAppend, KeepsZerosAndTakesItself)
{
    CZoString text = WithZero();
    EXPECT_EQ(text.Append(text), S_OK);
    EXPECT_EQ(Whole(text), std::wstring(L"ab\0cdab\0cd", 10));
    EXPECT_EQ(text.AppendBSTR(text), S_OK);
    EXPECT_EQ(text.Length(), 20U);
    EXPECT_EQ(text.Append(kWithZero), S_OK);
    EXPECT_EQ(text.Length(), 22U);
    EXPECT_EQ(text.Append(L"xyz", 2), S_OK);
    EXPECT_EQ(text.Length(), 24U);
    EXPECT_EQ(text.Append(L"xyz", -1), S_OK);
    EXPECT_EQ(text.Length(), 24U);
}

TEST(StringAppend, NullAppendsNothing)
{
    CZoString text("a");
    EXPECT_EQ(text.Append(CZoString()), S_OK);
    EXPECT_EQ(text.Append(static_cast<const char*>(nullptr)), S_OK);
    EXPECT_EQ(text.Append(static_cast<const wchar_t*>(nullptr)), S_OK);
    EXPECT_EQ(Whole(text), L"a");
    CZoString null;
    EXPECT_EQ(null.AppendBSTR(nullptr), S_OK);
    EXPECT_FALSE(null.IsNull());
}

TEST(StringAppend, CharacterAppendsARunButPrependsItself)
{
    CZoString text("x");
    EXPECT_EQ(text.Append('A'), S_OK);
    EXPECT_EQ(text.Length(), 66U);
    EXPECT_EQ(text.Append(L'A'), S_OK);
    EXPECT_EQ(text.Length(), 131U);
    text += '\xE9';
    EXPECT_EQ(text.Length(), 131U + 0xE9U);
    EXPECT_EQ((CZoString("x") + 'A').Length(), 66U);
    EXPECT_EQ(text[0], L'x');
    CZoString other("x");
    EXPECT_EQ(Whole(other.Prepend('A')), L"Ax");
}

TEST(StringAppend, FailureLeavesTheStringAlone)
{
    CZoString text("kept");
    EXPECT_EQ(text.Append(static_cast<wchar_t>(-1)), E_OUTOFMEMORY);
    EXPECT_EQ(Whole(text), L"kept");
}

TEST(StringAppend, BytesAreNotConverted)
{
    CZoString block;
    EXPECT_EQ(block.AppendBytes("\x01\x00\xFF", 3), S_OK);
    EXPECT_EQ(block.AppendBytes("\x02\x03", 2), S_OK);
    ASSERT_EQ(SysStringByteLen(block), 5U);
    EXPECT_EQ(std::memcmp(block, "\x01\x00\xFF\x02\x03", 5), 0);
    EXPECT_EQ(block.AppendBytes("x", -1), S_OK);
    EXPECT_EQ(SysStringByteLen(block), 5U);
    // The text operations read whole characters beyond the last byte: they must find a terminator there.
    EXPECT_GE(block.ToStdString().size(), 1U);
}

TEST(StringPrepend, PutsEveryTypeInFront)
{
    CZoString text("x");
    text.Prepend("1")
        .Prepend(L"2")
        .Prepend(CZoString("3"))
        .Prepend(CComBSTR(L"4"))
        .PrependBSTR(CComBSTR(L"5"));
    EXPECT_EQ(Whole(text), L"54321x");
}

struct CompareCase
{
    const char* name;
    const char* left;
    const char* right;
    bool equal;
    bool less;
    bool greater;
};

// A null on the left is both less and greater than a text.
constexpr CompareCase kCompareCases[] = {
    {"Smaller", "a", "b", false, true, false},
    {"Larger", "b", "a", false, false, true},
    {"Same", "a", "a", true, false, false},
    {"NullAndText", nullptr, "a", false, true, true},
    {"NullAndEmpty", nullptr, "", false, true, true},
    {"TextAndNull", "a", nullptr, false, false, false},
    {"Nulls", nullptr, nullptr, true, false, false},
    {"PrefixFirst", "a", "aa", false, true, false},
};

template <class TLeft, class TRight>
void ExpectComparison(const CompareCase& row, const TLeft& left, const TRight& right)
{
    EXPECT_EQ(left == right, row.equal);
    EXPECT_EQ(left != right, !row.equal);
    EXPECT_EQ(left < right, row.less);
    EXPECT_EQ(left > right, row.greater);
    EXPECT_EQ(left <= right, !row.greater);
    EXPECT_EQ(left >= right, !row.less);
}

TEST(StringCompare, OperatorsFollowTheTableForEveryTypeInBothOrders)
{
    for (const CompareCase& row : kCompareCases)
    {
        SCOPED_TRACE(row.name);
        const CZoString left(row.left);
        const CZoString right(row.right);
        ExpectComparison(row, left, right);
        ExpectComparison(row, left, row.right);
        ExpectComparison(row, row.left, right);
        ExpectComparison(row, left, CComBSTR(row.right));
        ExpectComparison(row, CComBSTR(row.left), right);
        ExpectComparison(row, left, static_cast<const wchar_t*>(right));
        ExpectComparison(row, static_cast<wchar_t*>(left), right);
        if (row.right != nullptr && std::strlen(row.right) == 1)
        {
            ExpectComparison(row, left, std::string(row.right));
            ExpectComparison(row, left, *row.right);
        }
        if (row.left != nullptr)
        {
            ExpectComparison(row, std::string(row.left), right);
            ExpectComparison(row, *row.left, right);
        }
    }
    EXPECT_TRUE(CZoString("a") == "a");
    EXPECT_TRUE(L"a" == CZoString("a"));
    EXPECT_TRUE(CZoString() == nullptr);
    EXPECT_TRUE(WithZero() == CZoString("ab")) << "comparison ends at the first zero";
}

TEST(StringConversion, CharactersOutsideTheCodePageAreLostInTextOperationsOnly)
{
    const CZoString text(kForeign);
    CZoString stored(text);
    stored += kForeign;
    EXPECT_EQ(Whole(stored), L"a\u0431ca\u0431c");
    EXPECT_TRUE(stored == L"a\u0431ca\u0431c");
    EXPECT_EQ(text.ToStdString(), "a?c");
    EXPECT_EQ(Whole(text.Mid(0)), L"a?c");
    EXPECT_EQ(Whole(CZoString(text).Insert(0, "x")), L"xa?c");
    EXPECT_EQ(Whole(CZoString(text).Replace("z", "y")), L"a?c");
    EXPECT_EQ(Whole(CZoString(L"\u20AC1").Left(1)), L"\u20AC") << "the code page's own characters survive";
}

TEST(StringConversion, NarrowBufferHoldsEveryLength)
{
    for (const unsigned length : {0U, 1U, 62U, 63U, 64U, 1000U})
    {
        const std::string text(length, 'x');
        EXPECT_EQ(CZoString(text).ToStdString(), text);
        EXPECT_EQ(ToQString(CZoString(text)).size(), static_cast<qsizetype>(length));
    }
}

TEST(StringConversion, SprintfCutsAt999Characters)
{
    CZoString text("old");
    EXPECT_EQ(Whole(text.sprintf("%s=%d", "x", 5)), L"x=5");
    EXPECT_EQ(text.sprintf("%1500d", 1).Length(), 999U);
    EXPECT_EQ(text.sprintf("%999d", 7).Length(), 999U);
    EXPECT_EQ(text[998], L'7');
}

TEST(StringConversion, CaseChangesEndTheTextAtItsZero)
{
    CZoString text = WithZero();
    EXPECT_EQ(Whole(text.Upper()), L"AB");
    EXPECT_EQ(text.Length(), 5U);
    EXPECT_EQ(Whole(text.ConvertToUpper()), L"AB");
    EXPECT_EQ(Whole(text.ConvertToLower()), L"ab");
    EXPECT_EQ(Whole(CZoString(L"\u00E9\u0431").Upper()), L"\u00C9\u0411");
}

TEST(StringConversion, LiteralsAreFoundWithTheirCaseOnly)
{
    const CZoString text("aXbX");
    EXPECT_EQ(text.Find("x", 0), -1);
    EXPECT_EQ(text.Find(CZoString("x"), 0, false), 1);
    EXPECT_EQ(text.FindRev("x"), -1);
    EXPECT_EQ(text.FindRev(CZoString("x"), -1, false), 3);
    EXPECT_EQ(text.Contains("x", false), 2);
}

TEST(StringConversion, DefaultsAreThoseOfQt3)
{
    const CZoString text("a,b,c");
    EXPECT_EQ(text.Find('b'), 2);
    EXPECT_EQ(text.FindRev(','), 3);
    EXPECT_EQ(text.FindRevByRegExp("[a-z]"), 4);
    EXPECT_EQ(Whole(text.Mid(2)), L"b,c");
    EXPECT_EQ(Whole(text.Section(',', 1)), L"b,c");
    EXPECT_EQ(Whole(CZoString("x").RightJustify(3)), L"  x");
    EXPECT_EQ(Whole(CZoString::Number(0.1234567891)), L"0.123457");
    EXPECT_EQ(Whole(CZoString("%1").Arg(0.1234567891)), L"0.123457");
    EXPECT_EQ(Whole(CZoString("abc").Fill('-')), L"---");
    EXPECT_EQ(CZoString("0x10").ToInt(), 0);
    EXPECT_EQ(CZoString("0x10").ToInt(nullptr, 0), 16);
}

TEST(StringConversion, LongsHave32Bits)
{
    bool ok = true;
    EXPECT_EQ(CZoString("2147483648").ToLong(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(CZoString("-2147483648").ToLong(&ok), -2147483648L);
    EXPECT_TRUE(ok);
    EXPECT_EQ(CZoString("4294967295").ToULong(&ok), 4294967295UL);
    EXPECT_TRUE(ok);
    EXPECT_EQ(CZoString("4294967296").ToULong(&ok), 0UL);
    EXPECT_FALSE(ok);
}

TEST(StringConversion, WrongBasesCountAsTen)
{
    EXPECT_EQ(Whole(CZoString::Number(-12, 1)), L"-12");
    EXPECT_EQ(Whole(CZoString("%L1").Arg(1234, 0, 37)), L"1,234");
    EXPECT_EQ(CZoString("19").ToInt(nullptr, 37), 19);
    EXPECT_EQ(Whole(CZoString::Number(1.5, 'q', -2)), L"1.500000");
}

TEST(StringConversion, HugeWidthsAndIndexesAreSafe)
{
    EXPECT_EQ(Whole(CZoString("a").LeftJustify(0xFFFFFFFFU)), L"a");
    EXPECT_EQ(Whole(CZoString("a").Insert(0xFFFFFFFFU, "b")), L"ab");
    EXPECT_EQ(Whole(CZoString("abc").Replace(1, 0xFFFFFFFFU, "x")), L"ax");
    EXPECT_EQ(CZoString("abc").FindByRegExp("b{2,1}[]{3,1}]"), -1);
    EXPECT_EQ(CZoString("b]").FindByRegExp("b{2,1}[]{3,1}]"), 0);
    EXPECT_EQ(CZoString("xa").FindByRegExp("xa{2,}"), -1);
    EXPECT_EQ(CZoString("xaaa").FindByRegExp("xa{2,}$"), 0);
    EXPECT_EQ(CZoString("xa").FindByRegExp("xa{2,1"), -1) << "is no repetition, and no pattern";
}

TEST(StringQt, NullEmptyAndTextSurviveBothWays)
{
    EXPECT_TRUE(ToQString(CZoString()).isNull());
    EXPECT_FALSE(ToQString(CZoString("")).isNull());
    EXPECT_TRUE(ToZoString(QString()).IsNull());
    EXPECT_FALSE(ToZoString(QStringLiteral("")).IsNull());
    EXPECT_EQ(ToQString(CZoString("\x80\xE9")), QStringLiteral("\u0080\u00E9"));
    EXPECT_EQ(Whole(ToZoString(QStringLiteral("\u0080\u00E9\u0431"))), L"\u20AC\u00E9?");
    QString wide;
    CZoString text;
    ZOZoString2QString(wide, CZoString("abc"));
    ZOQString2ZoString(text, wide);
    EXPECT_EQ(Whole(text), L"abc");
}

TEST(StringQt, ListsKeepTheirOrder)
{
    const CArrayAccessor<CZoString> source{CZoString("b"), CZoString(), CZoString("")};
    QStringList wide;
    ZOStringListConv(wide, source);
    ASSERT_EQ(wide.size(), 3);
    EXPECT_TRUE(wide[1].isNull());
    EXPECT_EQ(wide, ToQStringList(source));
    CArrayAccessor<CZoString> back{CZoString("old")};
    ZOStringListConv(back, wide);
    EXPECT_TRUE(back == source);
    EXPECT_TRUE(ToZoStringList(wide) == source);
}

TEST(StringLists, BstrArraysAreCopiedBothWays)
{
    const CArrayAccessor<CZoString> source{WithZero(), CZoString(), CZoString("unused")};
    wchar_t* array[2] = {};
    ZOStringListConv(array, source, 2);
    EXPECT_EQ(SysStringLen(array[0]), 5U);
    EXPECT_EQ(array[1], nullptr);
    CArrayAccessor<CZoString> dest{CZoString("old"), CZoString("old"), CZoString("old")};
    ZOStringListConv(dest, array, 2);
    SysFreeString(array[0]);
    ASSERT_EQ(dest.GetSize(), 2U);
    EXPECT_EQ(dest[0].Length(), 5U);
    EXPECT_TRUE(dest[1].IsNull());
}

std::string
RaisedCondition(CErrorRecorder& recorder, wchar_t** array, const CArrayAccessor<CZoString>& list, long count)
{
    EXPECT_THROW(ZOStringListConv(array, list, count), CShellError);
    const auto entries = recorder.Take();
    EXPECT_EQ(entries.size(), 1U);
    EXPECT_STREQ(entries.at(0).report.sourceUnit, "Src/ZoString");
    EXPECT_EQ(entries.at(0).report.result, array == nullptr ? E_POINTER : ZO_E_SHELL);
    return entries.at(0).report.condition;
}

TEST(StringLists, FailedChecksWriteNothing)
{
    CErrorRecorder recorder;
    const CArrayAccessor<CZoString> source{CZoString("a")};
    wchar_t untouched[] = L"x";
    wchar_t* array[2] = {untouched, untouched};
    constexpr char kTooFew[] = "zoSourceList.GetSize() >= static_cast<unsigned long>( iElementCount )";
    EXPECT_EQ(RaisedCondition(recorder, nullptr, source, 1), "pbsDest != NULL");
    EXPECT_EQ(RaisedCondition(recorder, array, source, 2), kTooFew);
    EXPECT_EQ(RaisedCondition(recorder, array, source, -1), kTooFew);
    EXPECT_EQ(array[0], untouched);
    CArrayAccessor<CZoString> dest{CZoString("kept")};
    EXPECT_THROW(ZOStringListConv(dest, nullptr, 1), CShellError);
    EXPECT_THROW(ZOStringListConv(dest, array, -1), CShellError);
    EXPECT_EQ(dest.GetSize(), 1U);
}

} // namespace
