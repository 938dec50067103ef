#include "CBScalarPropertyAccess.h"
#include "CComObject.h"
#include "CComVariant.h"
#include "CErrorRecorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace ZoVelkor
{
namespace
{

using CProperty = CBScalarPropertyAccess::CAnyProperty;
using CAccess = CComObject<CBScalarPropertyAccess, IZOScalarPropertyAccess>;

struct tagStoreCase
{
    const char* name;
    VARTYPE type;
    CComVariant value;
    std::uint64_t bits; ///< what stands in the variable, which was all ones
    bool isRefused;     ///< by Set
};

const tagStoreCase kStoreCases[] = {
    // clang-format off
    {"nothing", VT_EMPTY, 1, 0xFFFFFFFFFFFFFFFF, false},
    {"null", VT_NULL, L"text", 0xFFFFFFFFFFFFFFFF, false},
    {"text to VT_I4", VT_I4, L"42", 0xFFFFFFFF0000002A, false},
    {"no number to VT_I4", VT_I4, L"forty-two", 0xFFFFFFFF00000000, true},
    {"VT_I1", VT_I1, -2, 0xFFFFFFFFFFFFFFFE, false},
    {"VT_UI1", VT_UI1, 200, 0xFFFFFFFFFFFFFFC8, false},
    {"too large for VT_UI1", VT_UI1, 256, 0xFFFFFFFFFFFFFF00, true},
    {"VT_I2", VT_I2, -32768, 0xFFFFFFFFFFFF8000, false},
    {"VT_UI2", VT_UI2, 65535.0, 0xFFFFFFFFFFFFFFFF, false},
    {"VT_BOOL", VT_BOOL, 0, 0xFFFFFFFFFFFF0000, false},
    {"VT_UI4", VT_UI4, 2147483648U, 0xFFFFFFFF80000000, false},
    {"VT_INT", VT_INT, -2.5, 0xFFFFFFFFFFFFFFFE, false},
    {"VT_UINT", VT_UINT, 7, 0xFFFFFFFF00000007, false},
    {"VT_R4", VT_R4, L"1.5", 0xFFFFFFFF3FC00000, false},
    {"VT_R8", VT_R8, L"1.5", 0x3FF8000000000000, false},
    {"empty to VT_R8", VT_R8, CComVariant(), 0, false},
    {"type given as reference", VT_I2 | VT_BYREF, 3, 0xFFFFFFFFFFFF0003, false}};
// clang-format on

TEST(ScalarProperty, ValueIsConvertedAndStoredInTheWidthOfTheType)
{
    for (const tagStoreCase& row : kStoreCases)
    {
        CErrorRecorder recorder;
        std::uint64_t variable = ~std::uint64_t{0};
        CProperty property(row.type, 1, "p", &variable);
        EXPECT_EQ(FAILED(property.Set(row.value)), row.isRefused) << row.name;
        EXPECT_EQ(variable, row.isRefused ? ~std::uint64_t{0} : row.bits) << row.name;

        const auto spAccess = CAccess::Create();
        spAccess->AddPropertyReference(property);
        EXPECT_EQ(spAccess->SetScalarValue(1, row.value), S_OK) << row.name;
        EXPECT_EQ(variable, row.bits) << row.name;
        EXPECT_TRUE(recorder.Take().empty()) << row.name;
    }
}

TEST(ScalarProperty, TextVariableOwnsItsString)
{
    BSTR variable = SysAllocString(L"former");
    const auto spAccess = CAccess::Create();
    spAccess->AddPropertyReference(CProperty(VT_BSTR, 1, "p", &variable));
    const CComVariant value(L"text");
    EXPECT_EQ(spAccess->SetScalarValue(1, value), S_OK);
    EXPECT_STREQ(variable, L"text");
    EXPECT_NE(variable, value.bstrVal);
    EXPECT_EQ(spAccess->SetScalarValue(1, CComVariant(2.5)), S_OK);
    CComVariant present;
    EXPECT_EQ(CProperty(VT_BSTR, 1, "p", &variable).Get(present), S_OK);
    EXPECT_TRUE(present == CComVariant(L"2.5"));
    CComVariant null;
    null.vt = VT_NULL;
    EXPECT_EQ(spAccess->SetScalarValue(1, null), S_OK) << "not convertible";
    EXPECT_EQ(variable, nullptr);
}

TEST(ScalarProperty, UnsupportedTypesAreReportedWhenTheyAreWritten)
{
    const std::pair<int, const char*> kTypes[] = {
        {VT_CY, "Vartype VT_CY"},
        {VT_DATE, "Vartype VT_DATE"},
        {VT_I8, "Vartype VT_I8"},
        {VT_VERSIONED_STREAM, "Vartype VT_VERSIONED_STREAM"},
        {VT_VECTOR, "Vartype VT_VECTOR"},
        {VT_DISPATCH, "Unknown property type"},
        {VT_DECIMAL, "Unknown property type"},
        {VT_ARRAY | VT_R8, "Unknown property type"}};
    for (const auto& [type, subject] : kTypes)
    {
        CErrorRecorder recorder;
        double variable = 1;
        const auto spAccess = CAccess::Create();
        spAccess->AddPropertyReference(CProperty(static_cast<VARTYPE>(type), 1, "p", &variable));
        EXPECT_EQ(spAccess->SetScalarValue(1, CComVariant(2)), S_OK);
        EXPECT_EQ(variable, 1);
        const auto entries = recorder.Take();
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_STREQ(entries[0].report.condition, "stop on error");
        EXPECT_EQ(entries[0].report.message,
                  std::string(subject) + " not supported on Interface IZOScalarPropertyAccess");
        EXPECT_EQ(entries[0].report.result, MakeResult(0x80001007));
    }
}

TEST(ScalarProperty, FirstOfSeveralIsFoundByIdentifierAndByName)
{
    CErrorRecorder recorder;
    int first = 0;
    int second = 0;
    const auto spSource = CAccess::Create();
    spSource->AddPropertyReference(CProperty(VT_I4, -7, "Span", &first));
    spSource->AddPropertyReference(CProperty(VT_I4, -7, "Span", &second));
    spSource->AddPropertyReference(CProperty(VT_I4, 8, "span", nullptr));
    const auto spAccess = CAccess::Create(*spSource);
    spSource->ClearPropertyReferences();
    EXPECT_EQ(spSource->SetScalarValue(-7, CComVariant(1)), S_FALSE);
    EXPECT_EQ(spAccess->SetScalarValue(-7, CComVariant(2)), S_OK);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second, 0);

    wchar_t name[] = L"sPAN";
    wchar_t unknown[] = L"Spa";
    long dispId = 0;
    EXPECT_EQ(spAccess->GetPropertyDispId(name, &dispId), S_OK);
    EXPECT_EQ(dispId, -7);
    EXPECT_EQ(spAccess->GetPropertyDispId(unknown, &dispId), S_FALSE);
    EXPECT_EQ(dispId, -1);
    CComBSTR found;
    EXPECT_EQ(spAccess->GetPropertyName(8, &found), S_OK);
    EXPECT_EQ(found, L"span");
    EXPECT_EQ(spAccess->GetPropertyName(8, nullptr), S_OK);
    EXPECT_EQ(spAccess->GetPropertyName(0x100000008, &found), S_FALSE) << "more than 32 bits";
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(spAccess->GetScalarValue(9, nullptr), S_FALSE);
    EXPECT_TRUE(recorder.Take().empty());
}

TEST(ScalarProperty, ReadingAndNullPointersAreReported)
{
    CErrorRecorder recorder;
    const auto spAccess = CAccess::Create();
    spAccess->AddPropertyReference(CProperty(VT_I4, 42, "p", nullptr));
    CComVariant value(1);
    wchar_t name[] = L"p";
    long dispId = 0;
    EXPECT_EQ(spAccess->GetScalarValue(42, &value), S_FALSE);
    EXPECT_EQ(recorder.Take().at(0).report.message,
              "DoGetScalarValue not implemented for property with dispatch ID = 42");
    EXPECT_EQ(spAccess->SetScalarValue(42, value), E_POINTER);
    EXPECT_EQ(spAccess->GetPropertyDispId(name, nullptr), E_POINTER);
    EXPECT_EQ(spAccess->GetPropertyDispId(nullptr, &dispId), E_POINTER);
    EXPECT_EQ(recorder.Take().size(), 3U);
}

} // namespace
} // namespace ZoVelkor
