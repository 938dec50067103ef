#include "CBScalarPropertyAccess.h"

#include "Bstr.h"
#include "CComBSTR.h"
#include "CComVariant.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <new>
#include <string>
#include <utility>

namespace ZoVelkor
{

namespace
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScalarPropertyAccess");

constexpr long kUnknownDispId = -1;

struct StoredType
{
    VARTYPE type;
    std::size_t size; ///< bytes
};

constexpr StoredType kStoredTypes[] = {{VT_EMPTY, 0},
                                       {VT_NULL, 0},
                                       {VT_I1, 1},
                                       {VT_UI1, 1},
                                       {VT_I2, 2},
                                       {VT_BOOL, 2},
                                       {VT_UI2, 2},
                                       {VT_I4, 4},
                                       {VT_R4, 4},
                                       {VT_UI4, 4},
                                       {VT_INT, 4},
                                       {VT_UINT, 4},
                                       {VT_R8, 8},
                                       {VT_BSTR, sizeof(BSTR)}};

struct NamedType
{
    VARTYPE type;
    const char* name;
};

constexpr NamedType kUnsupportedTypes[] = {{VT_CY, "VT_CY"},
                                           {VT_DATE, "VT_DATE"},
                                           {VT_ERROR, "VT_ERROR"},
                                           {VT_VARIANT, "VT_VARIANT"},
                                           {VT_I8, "VT_I8"},
                                           {VT_UI8, "VT_UI8"},
                                           {VT_VOID, "VT_VOID"},
                                           {VT_HRESULT, "VT_HRESULT"},
                                           {VT_PTR, "VT_PTR"},
                                           {VT_SAFEARRAY, "VT_SAFEARRAY"},
                                           {VT_CARRAY, "VT_CARRAY"},
                                           {VT_USERDEFINED, "VT_USERDEFINED"},
                                           {VT_LPSTR, "VT_LPSTR"},
                                           {VT_LPWSTR, "VT_LPWSTR"},
                                           {VT_RECORD, "VT_RECORD"},
                                           {VT_INT_PTR, "VT_INT_PTR"},
                                           {VT_UINT_PTR, "VT_UINT_PTR"},
                                           {VT_FILETIME, "VT_FILETIME"},
                                           {VT_BLOB, "VT_BLOB"},
                                           {VT_STREAM, "VT_STREAM"},
                                           {VT_STORAGE, "VT_STORAGE"},
                                           {VT_STREAMED_OBJECT, "VT_STREAMED_OBJECT"},
                                           {VT_STORED_OBJECT, "VT_STORED_OBJECT"},
                                           {VT_BLOB_OBJECT, "VT_BLOB_OBJECT"},
                                           {VT_CF, "VT_CF"},
                                           {VT_CLSID, "VT_CLSID"},
                                           {VT_VERSIONED_STREAM, "VT_VERSIONED_STREAM"},
                                           {VT_VECTOR, "VT_VECTOR"}};

template <class TRow, std::size_t count>
const TRow* RowOf(const TRow (&rows)[count], VARTYPE type) noexcept
{
    const auto* const found =
        std::find_if(std::begin(rows), std::end(rows), [type](const TRow& row) { return row.type == type; });
    return found == std::end(rows) ? nullptr : found;
}

std::string UnsupportedTypeMessage(VARTYPE type)
{
    const NamedType* const row = RowOf(kUnsupportedTypes, type);
    const std::string subject =
        row == nullptr ? "Unknown property type" : std::string("Vartype ") + row->name;
    return subject + " not supported on Interface IZOScalarPropertyAccess";
}

/// Reports an error that lets the caller go on.
void ReportStopOnError(const CObjectDataReference& object, const std::string& message)
{
    RepairError(ZO_ERROR(&object, "stop on error", message, ZO_E_SHELL));
}

CComBSTR UpperCase(CComBSTR name)
{
    if (FAILED(name.ToUpper()))
    {
        throw std::bad_alloc();
    }
    return name;
}

} // namespace

CBScalarPropertyAccess::CAnyProperty::CAnyProperty(VARTYPE type,
                                                   long dispId,
                                                   CAtlStringA name,
                                                   void* variable)
    : m_value{},
      m_dispId(static_cast<LONG>(dispId)),
      m_name(std::move(name))
{
    m_value.vt = static_cast<VARTYPE>(type | VT_BYREF);
    m_value.byref = variable;
}

CBScalarPropertyAccess::CAnyProperty::~CAnyProperty() = default;

long CBScalarPropertyAccess::CAnyProperty::GetDisp() const
{
    return m_dispId;
}

const CAtlStringA& CBScalarPropertyAccess::CAnyProperty::GetName() const
{
    return m_name;
}

VARTYPE CBScalarPropertyAccess::CAnyProperty::GetType() const
{
    return static_cast<VARTYPE>(m_value.vt & ~VT_BYREF);
}

HRESULT CBScalarPropertyAccess::CAnyProperty::Get(VARIANT& value) const
{
    return VariantCopyInd(&value, &m_value);
}

HRESULT CBScalarPropertyAccess::CAnyProperty::Set(VARIANT value)
{
    return Assign(value, tagConversion::MustSucceed);
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the property's value
HRESULT CBScalarPropertyAccess::CAnyProperty::Assign(const VARIANT& value, tagConversion conversion)
{
    const StoredType* const stored = RowOf(kStoredTypes, GetType());
    if (stored == nullptr)
    {
        return DISP_E_BADVARTYPE;
    }
    if (stored->size == 0)
    {
        return S_OK;
    }
    if (m_value.byref == nullptr)
    {
        return E_POINTER;
    }
    CComVariant converted;
    const HRESULT result = VariantChangeType(&converted, &value, 0, stored->type);
    if (FAILED(result) && conversion == tagConversion::MustSucceed)
    {
        return result;
    }
    if (stored->type == VT_BSTR)
    {
        SysFreeString(std::exchange(*m_value.pbstrVal, converted.bstrVal));
        converted.vt = VT_EMPTY; // the string belongs to the variable now
        return S_OK;
    }
    std::memcpy(m_value.byref, &converted.llVal, stored->size);
    return S_OK;
}

HRESULT CBScalarPropertyAccess::GetPropertyDispId(wchar_t* name, long* dispId)
{
    return GuardedEntry([=, this] { return DoGetPropertyDispId(name, dispId); });
}

HRESULT CBScalarPropertyAccess::GetPropertyName(long dispId, wchar_t** name)
{
    return GuardedEntry([=, this] { return DoGetPropertyName(dispId, name); });
}

HRESULT CBScalarPropertyAccess::GetScalarValue(long dispId, VARIANT* value)
{
    return GuardedEntry([=, this] { return DoGetScalarValue(dispId, value); });
}

HRESULT CBScalarPropertyAccess::SetScalarValue(long dispId, VARIANT value)
{
    return GuardedEntry([&, this] { return DoSetScalarValue(dispId, value); });
}

void CBScalarPropertyAccess::AddPropertyReference(CAnyProperty property)
{
    m_properties.push_back(std::move(property));
}

void CBScalarPropertyAccess::ClearPropertyReferences()
{
    m_properties.clear();
}

HRESULT CBScalarPropertyAccess::DoGetPropertyDispId(wchar_t* name, long* dispId)
{
    if (dispId == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "dispId"));
    }
    *dispId = kUnknownDispId;
    if (name == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "name"));
    }
    const CComBSTR wanted = UpperCase(name);
    const auto found = std::find_if(m_properties.begin(), m_properties.end(), [&](const CAnyProperty& each) {
        return UpperCase(each.GetName().c_str()) == wanted;
    });
    if (found == m_properties.end())
    {
        return S_FALSE;
    }
    *dispId = found->GetDisp();
    return S_OK;
}

HRESULT CBScalarPropertyAccess::DoGetPropertyName(long dispId, wchar_t** name)
{
    if (name != nullptr)
    {
        *name = nullptr;
    }
    const CAnyProperty* const property = Find(dispId);
    if (property == nullptr || name == nullptr)
    {
        return property == nullptr ? S_FALSE : S_OK;
    }
    *name = A2WBSTR(property->GetName().c_str());
    return *name == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT CBScalarPropertyAccess::DoGetScalarValue(long dispId, VARIANT* /*value*/)
{
    if (const CAnyProperty* const property = Find(dispId); property != nullptr)
    {
        ReportStopOnError(*this,
                          "DoGetScalarValue not implemented for property with dispatch ID = " +
                              std::to_string(property->GetDisp()));
    }
    return S_FALSE;
}

HRESULT CBScalarPropertyAccess::DoSetScalarValue(long dispId, VARIANT value)
{
    CAnyProperty* const property = Find(dispId);
    if (property == nullptr)
    {
        return S_FALSE;
    }
    // Deliberate: a script is not stopped half-way. What cannot be converted stores zeros, and an unsupported
    // type is reported, but S_OK.
    const HRESULT result = property->Assign(value, CAnyProperty::tagConversion::MayFail);
    if (result == E_POINTER)
    {
        return RepairError(ZO_NULL_POINTER(this, "variable"));
    }
    if (FAILED(result))
    {
        ReportStopOnError(*this, UnsupportedTypeMessage(property->GetType()));
    }
    return S_OK;
}

CBScalarPropertyAccess::CAnyProperty* CBScalarPropertyAccess::Find(long dispId)
{
    const auto wanted = static_cast<LONG>(dispId);
    const auto found = std::find_if(m_properties.begin(), m_properties.end(), [=](const CAnyProperty& each) {
        return each.GetDisp() == wanted;
    });
    return found == m_properties.end() ? nullptr : &*found;
}

} // namespace ZoVelkor
