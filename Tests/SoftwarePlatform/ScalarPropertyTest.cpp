#include "CBScalarPropertyAccess.h"
#include "CComObject.h"
#include "CComVariant.h"
#include "CErrorRecorder.h"
#include "VirtualSlots.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>

namespace ZoVelkor
{
namespace
{

using CProperty = CBScalarPropertyAccess::CAnyProperty;
using CAccess = CComObject<CBScalarPropertyAccess, IZOScalarPropertyAccess>;
constexpr std::uint64_t kOnes = ~std::uint64_t{0};
const std::string kNotSupported = " not supported on Interface IZOScalarPropertyAccess";

/// Type, value, what then stands in a variable that was all ones, result of Set, and what is unsupported.
const std::tuple<int, CComVariant, std::uint64_t, HRESULT, const char*> kStored[] = {
    // clang-format off
    {VT_EMPTY, 1, kOnes, S_OK, ""}, {VT_NULL, L"text", kOnes, S_OK, ""},
    {VT_I4, L"42", 0xFFFFFFFF0000002A, S_OK, ""}, {VT_I4, L"forty-two", 0xFFFFFFFF00000000, DISP_E_TYPEMISMATCH, ""},
    {VT_I1, -2, 0xFFFFFFFFFFFFFFFE, S_OK, ""}, {VT_UI1, 200, 0xFFFFFFFFFFFFFFC8, S_OK, ""},
    {VT_UI1, 256, 0xFFFFFFFFFFFFFF00, DISP_E_OVERFLOW, ""}, {VT_I2, -32768, 0xFFFFFFFFFFFF8000, S_OK, ""},
    {VT_UI2, 258.0, 0xFFFFFFFFFFFF0102, S_OK, ""}, {VT_BOOL, 0, 0xFFFFFFFFFFFF0000, S_OK, ""},
    {VT_UI4, 2147483648U, 0xFFFFFFFF80000000, S_OK, ""}, {VT_INT, -2.5, 0xFFFFFFFFFFFFFFFE, S_OK, ""},
    {VT_UINT, 7, 0xFFFFFFFF00000007, S_OK, ""}, {VT_R4, L"1.5", 0xFFFFFFFF3FC00000, S_OK, ""},
    {VT_R8, L"1.5", 0x3FF8000000000000, S_OK, ""}, {VT_R8, CComVariant(), 0, S_OK, ""},
    {VT_I2 | VT_BYREF, 3, 0xFFFFFFFFFFFF0003, S_OK, ""},
    {VT_CY, 1, kOnes, DISP_E_BADVARTYPE, "Vartype VT_CY"}, {VT_DATE, 1, kOnes, DISP_E_BADVARTYPE, "Vartype VT_DATE"},
    {VT_I8, 1, kOnes, DISP_E_BADVARTYPE, "Vartype VT_I8"}, {VT_VECTOR, 1, kOnes, DISP_E_BADVARTYPE, "Vartype VT_VECTOR"},
    {VT_DISPATCH, 1, kOnes, DISP_E_BADVARTYPE, "Unknown property type"},
    {VT_ARRAY | VT_R8, 1, kOnes, DISP_E_BADVARTYPE, "Unknown property type"}};
// clang-format on

TEST(ScalarPropertySlots, AreInOrder)
{
    using I = IZOScalarPropertyAccess;
    using P = CProperty;
    EXPECT_EQ(
        VirtualSlots(&I::GetPropertyDispId, &I::GetPropertyName, &I::GetScalarValue, &I::SetScalarValue),
        (std::vector<std::size_t>{3, 4, 5, 6}));
    EXPECT_EQ(VirtualSlots(&P::GetDisp, &P::GetName, &P::Get, &P::Set, &P::GetType),
              (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

/// A component with properties, and the reports of one test.
struct ScalarProperty : testing::Test
{
    CProperty& Add(int type, long dispId, const char* name, void* variable)
    {
        m_property = CProperty(static_cast<VARTYPE>(type), dispId, name, variable);
        m_access->AddPropertyReference(m_property);
        return m_property;
    }
    CErrorRecorder m_recorder;
    CProperty m_property{VT_EMPTY, 0, "", nullptr};
    CComPtr<CAccess> m_access = CAccess::Create();
};

TEST_F(ScalarProperty, ValueIsConvertedAndStoredInTheWidthOfTheType)
{
    for (const auto& [type, value, bits, result, unsupported] : kStored)
    {
        std::uint64_t variable = kOnes;
        m_access->ClearPropertyReferences();
        EXPECT_EQ(Add(type, 1, "p", &variable).Set(value), result) << type;
        EXPECT_EQ(variable, result == S_OK ? bits : kOnes) << type;
        EXPECT_EQ(m_access->SetScalarValue(1, value), S_OK);
        EXPECT_EQ(variable, bits) << type;
        const auto entries = m_recorder.Take();
        EXPECT_EQ(entries.empty(), *unsupported == 0) << type;
        for (const auto& [report, thrown] : entries)
        {
            EXPECT_EQ(report.condition + ("|" + report.message),
                      "stop on error|" + (unsupported + kNotSupported));
            EXPECT_EQ(report.result, ZO_E_SHELL);
        }
    }
}

TEST_F(ScalarProperty, TextVariableOwnsItsString)
{
    BSTR variable = SysAllocString(L"former");
    const CProperty& property = Add(VT_BSTR, 1, "p", &variable);
    CComVariant value(L"text");
    EXPECT_EQ(m_access->SetScalarValue(1, value), S_OK);
    EXPECT_TRUE(variable == CComBSTR(L"text") && variable != value.bstrVal);
    EXPECT_EQ(m_access->SetScalarValue(1, CComVariant(2.5)), S_OK);
    EXPECT_EQ(property.Get(value), S_OK);
    EXPECT_TRUE(value == CComVariant(L"2.5"));
    EXPECT_EQ(m_access->SetScalarValue(1, CComVariant(1L, VT_ERROR)), S_OK) << "not convertible";
    EXPECT_EQ(variable, nullptr);
}

TEST_F(ScalarProperty, FirstOfSeveralIsFoundByIdentifierAndByName)
{
    int spans[] = {0, 0};
    Add(VT_I4, 0xFFFFFFF9, "Span", &spans[0]); // -7 in 32 bits
    Add(VT_I4, -7, "Span", &spans[1]);
    Add(VT_I4, 8, "span", nullptr);
    const auto copy = CAccess::Create(*m_access);
    m_access->ClearPropertyReferences();
    EXPECT_EQ(m_access->SetScalarValue(-7, CComVariant(1)), S_FALSE);
    EXPECT_EQ(copy->SetScalarValue(-7, CComVariant(1)), S_OK);
    EXPECT_EQ(copy->SetScalarValue(0xFFFFFFF9, CComVariant(spans[0] + 1)), S_OK);
    EXPECT_TRUE(spans[0] == 2 && spans[1] == 0);

    wchar_t names[][5] = {L"sPAN", L"Spa"};
    long dispIds[] = {0, 0};
    EXPECT_EQ(copy->GetPropertyDispId(names[0], &dispIds[0]), S_OK);
    EXPECT_EQ(copy->GetPropertyDispId(names[1], &dispIds[1]), S_FALSE);
    EXPECT_TRUE(dispIds[0] == -7 && dispIds[1] == -1);
    CComBSTR found;
    EXPECT_TRUE(copy->GetPropertyName(8, &found) == S_OK && found == L"span");
    EXPECT_EQ(copy->GetPropertyName(8, nullptr), S_OK);
    wchar_t* unknown = names[0];
    EXPECT_TRUE(copy->GetPropertyName(9, &unknown) == S_FALSE && unknown == nullptr);
    EXPECT_EQ(copy->GetScalarValue(9, nullptr), S_FALSE);
    EXPECT_TRUE(m_recorder.Take().empty());
    EXPECT_EQ(copy->SetScalarValue(8, CComVariant(1)), E_POINTER);
    EXPECT_EQ(copy->GetPropertyDispId(names[0], nullptr), E_POINTER);
    EXPECT_EQ(copy->GetPropertyDispId(nullptr, &dispIds[0]), E_POINTER);
    EXPECT_EQ(copy->GetScalarValue(8, nullptr), S_FALSE);
    const std::string message = "DoGetScalarValue not implemented for property with dispatch ID = 8";
    EXPECT_EQ(m_recorder.Take().at(3).report.message, message);
}

} // namespace
} // namespace ZoVelkor
