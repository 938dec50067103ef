#include "CComVariant.h"
#include "CountedComponent.h"

#include <gtest/gtest.h>

#include <limits>

namespace
{
using namespace std::string_literals;

struct Source
{
    const char* name;
    CComVariant value;
    VARTYPE type;
    LONGLONG bits;
};

const CComVariant kError(5L, VT_ERROR);
constexpr short kShort = -1;
constexpr const wchar_t* kNoText = nullptr;

const Source kSources[] = {
    {"Default", {}, VT_EMPTY, 0},
    {"Bool", true, VT_BOOL, 0xFFFF},
    {"Char", '\xFF', VT_I1, 0xFF},
    {"Short", kShort, VT_I2, 0xFFFF},
    {"Int", -1, VT_I4, 0xFFFFFFFF},
    {"Long", -1L, VT_I4, 0xFFFFFFFF},
    {"LongBeyond32Bits", 2147483648L, VT_I8, 2147483648},
    {"Error", kError, VT_ERROR, 5},
    {"UnsignedLongBeyond32Bits", 4294967296UL, VT_UI8, 4294967296},
    {"Double", 1.0, VT_R8, 0x3FF0000000000000},
    {"NullText", kNoText, VT_BSTR, 0},
};

TEST(ComVariant, TakesItsTypeFromItsSource)
{
    for (const Source& row : kSources)
    {
        EXPECT_EQ(row.value.vt, row.type) << row.name;
        EXPECT_EQ(row.value.llVal, row.bits) << row.name;
    }
}

TEST(ComVariant, OwnsItsText)
{
    CComVariant value(CComBSTR(3, L"a\0b"));
    CComVariant copy = value;
    EXPECT_NE(copy.bstrVal, value.bstrVal);
    EXPECT_TRUE(copy == value);
    EXPECT_EQ(SysStringLen(copy.bstrVal), 3U);
    const CComVariant moved = std::move(copy);
    EXPECT_EQ(copy.vt, VT_EMPTY);
    EXPECT_TRUE(moved == value);
    const CComVariant& self = value;
    value = self;
    value = std::move(value);
    EXPECT_TRUE(moved == value);
    value = "\x80";
    EXPECT_STREQ(value.bstrVal, L"\u20AC");
}

TEST(ComVariant, OwnsInterfacesAndArrays)
{
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 2);
    {
        const CComPtr<IFirst> object = CCounted::Create(1);
        const CComVariant held(object.Get());
        CComVariant copy = held;
        EXPECT_EQ(ReferencesOf(object), 3U);
        EXPECT_TRUE(copy == held);
        const CComVariant vector(array);
        EXPECT_EQ(vector.vt, VT_ARRAY | VT_I4);
        copy = vector;
        EXPECT_EQ(ReferencesOf(object), 2U);
        EXPECT_TRUE(copy == vector);
        static_cast<LONG*>(copy.parray->pvData)[1] = 7;
        EXPECT_FALSE(copy == vector);
    }
    SafeArrayDestroy(array);
    EXPECT_EQ(CCountedBase::s_living, 0);
}

TEST(ComVariant, AttachesAndDetaches)
{
    VARIANT raw{};
    raw.vt = VT_BSTR;
    raw.bstrVal = SysAllocString(L"x");
    CComVariant value(L"former");
    EXPECT_EQ(value.Attach(&raw), S_OK);
    EXPECT_EQ(raw.vt, VT_EMPTY);
    EXPECT_STREQ(value.bstrVal, L"x");
    EXPECT_EQ(value.Detach(&raw), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_STREQ(raw.bstrVal, L"x");
    EXPECT_EQ(VariantClear(&raw), S_OK);
    raw.vt = VT_DECIMAL;
    EXPECT_EQ(CComVariant(raw).vt, VT_ERROR);
    EXPECT_EQ(CComVariant(raw).scode, DISP_E_BADVARTYPE) << "remembers why it could not copy";
}

struct Comparison
{
    const char* name;
    CComVariant left;
    CComVariant right;
    bool equal;
    VARCMP order;
};

const CComBSTR kZeroInside(3, L"a\0b");
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto kLargest = std::numeric_limits<unsigned long long>::max();

const Comparison kComparisons[] = {
    {"Same", 1, 1, true, VARCMP_EQ},
    {"SignMatters", -1LL, kLargest, false, VARCMP_LT},
    {"Exact64", 9007199254740993LL, 9007199254740992LL, false, VARCMP_GT},
    {"Empty", {}, {}, true, VARCMP_EQ},
    {"Texts", L"a", L"b", false, VARCMP_LT},
    {"ZeroInside", kZeroInside, L"a", false, VARCMP_GT},
    {"NullText", kNoText, L"", true, VARCMP_EQ},
    {"TextAndNumber", L"1", 1, false, VARCMP_NULL},
    {"NotANumber", kNotANumber, kNotANumber, false, VARCMP_NULL},
    {"Errors", kError, kError, true, VARCMP_EQ},
};

TEST(ComVariant, ComparesValues)
{
    for (const Comparison& row : kComparisons)
    {
        EXPECT_EQ(row.left == row.right, row.equal) << row.name;
        EXPECT_EQ(VarCmp(&row.left, &row.right), row.order) << row.name;
        EXPECT_EQ(row.left < row.right, row.order == VARCMP_LT) << row.name;
        EXPECT_EQ(row.left > row.right, row.order == VARCMP_GT) << row.name;
    }
    CComVariant null;
    null.vt = VT_NULL;
    EXPECT_EQ(VarCmp(&null, &null), VARCMP_NULL);
    EXPECT_EQ(VarCmp(nullptr, &null), VARCMP_NULL);
}
} // namespace
