#include "Variant.h"

#include "CountedComponent.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{
VARIANT Make(VARTYPE type)
{
    VARIANT value{};
    value.vt = type;
    return value;
}

TEST(Variant, CopiesTextWithItsByteLength)
{
    VARIANT source = Make(VT_BSTR);
    source.bstrVal = SysAllocStringByteLen("a\0\0\0\0\0\0\0b", 9);
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_NE(copy.bstrVal, source.bstrVal);
    EXPECT_EQ(SysStringByteLen(copy.bstrVal), 9U);
    EXPECT_EQ(VariantCopy(&copy, &copy), S_OK);
    EXPECT_EQ(VariantClear(&source), S_OK);
    EXPECT_EQ(source.vt, VT_EMPTY);
    EXPECT_EQ(copy.bstrVal[0], L'a');
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_EMPTY);
}

TEST(Variant, CountsInterfaces)
{
    VARIANT source = Make(VT_UNKNOWN);
    source.punkVal = CComPtr<IFirst>(CCounted::Create(1)).Detach();
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(ReferencesOf(source.punkVal), 2U);
    EXPECT_EQ(VariantClear(&source), S_OK);
    EXPECT_EQ(ReferencesOf(copy.punkVal), 1U);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(CCountedBase::s_living, 0);
}

TEST(Variant, OwnsNothingByReference)
{
    BSTR text = SysAllocString(L"x");
    VARIANT reference = Make(VT_BSTR | VT_BYREF);
    reference.pbstrVal = &text;
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &reference), S_OK);
    EXPECT_EQ(copy.pbstrVal, &text);
    EXPECT_EQ(VariantCopyInd(&copy, &reference), S_OK);
    EXPECT_EQ(copy.vt, VT_BSTR);
    EXPECT_STREQ(copy.bstrVal, L"x");
    VARIANT outer = Make(VT_VARIANT | VT_BYREF);
    outer.pvarVal = &reference;
    EXPECT_EQ(VariantCopyInd(&copy, &outer), S_OK);
    EXPECT_STREQ(copy.bstrVal, L"x");
    EXPECT_EQ(VariantChangeType(&copy, &outer, 0, VT_R8), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&reference), S_OK);
    SysFreeString(text);
}

TEST(Variant, RefusesTypesThatItCannotHold)
{
    for (const unsigned type : {14U, 15U, 24U, 36U, 0xFFFU, 12U, 0x4000U, 0x4001U, 0x2008U, 0x1003U, 0x8003U})
    {
        VARIANT wrong = Make(static_cast<VARTYPE>(type));
        VARIANT target = Make(VT_I4);
        target.lVal = 5;
        EXPECT_EQ(VariantClear(&wrong), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(VariantCopy(&target, &wrong), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(VariantChangeType(&target, &wrong, 0, VT_I4), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(target.lVal, 5);
    }
    EXPECT_EQ(VariantClear(nullptr), E_POINTER);
    VARIANT self = Make(VT_VARIANT | VT_BYREF);
    self.pvarVal = &self;
    VARIANT target{};
    EXPECT_EQ(VariantCopyInd(&target, &self), DISP_E_BADVARTYPE);
    self.pvarVal = nullptr;
    EXPECT_EQ(VariantCopyInd(&target, &self), E_POINTER);
}

TEST(Variant, CannotBeClearedWhileItsArrayIsInUse)
{
    VARIANT value = Make(VT_ARRAY | VT_I4);
    value.parray = SafeArrayCreateVector(VT_I4, 0, 2);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(value.parray, &data), S_OK);
    VARIANT other = Make(VT_R8);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(VariantCopy(&value, &other), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(VariantChangeType(&value, &other, 0, VT_BSTR), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(value.vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(SafeArrayUnaccessData(value.parray), S_OK);
    EXPECT_EQ(VariantCopy(&other, &value), S_OK);
    EXPECT_NE(other.parray, value.parray);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(VariantClear(&other), S_OK);
}

TEST(SafeArray, HoldsAVectorOfScalars)
{
    SAFEARRAY* array = SafeArrayCreateVector(VT_R8, -1, 3);
    ASSERT_NE(array, nullptr);
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 1, &bound), S_OK);
    EXPECT_EQ(bound, -1);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &bound), S_OK);
    EXPECT_EQ(bound, 1);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetElemsize(array), 8U);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    static_cast<double*>(data)[2] = 1.5;
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(static_cast<double*>(copy->pvData)[2], 1.5);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK) << "the copy is not locked";
}

TEST(SafeArray, RefusesOtherTypesAndBounds)
{
    constexpr LONG kLargest = std::numeric_limits<LONG>::max();
    constexpr LONG kSmallest = std::numeric_limits<LONG>::min();
    EXPECT_EQ(SafeArrayCreateVector(VT_BSTR, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, kLargest, 2), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, kSmallest, 0), nullptr);
    EXPECT_EQ(SafeArrayDestroy(SafeArrayCreateVector(VT_UI1, kLargest, 1)), S_OK);
    SAFEARRAY* empty = SafeArrayCreateVector(VT_UI1, 0, 0);
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetUBound(empty, 1, &bound), S_OK);
    EXPECT_EQ(bound, -1);
    EXPECT_EQ(SafeArrayDestroy(empty), S_OK);
}
} // namespace
