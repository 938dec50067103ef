#include "CComVariant.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace
{
/// Copies into an empty variant; what cannot be copied becomes an error value.
void CopyOrThrow(VARIANT& target, const VARIANT& source)
{
    const HRESULT result = VariantCopy(&target, &source);
    if (result == E_OUTOFMEMORY)
    {
        throw std::bad_alloc();
    }
    if (FAILED(result))
    {
        target.vt = VT_ERROR;
        target.scode = result;
    }
}

bool HaveEqualElements(const SAFEARRAY* left, const SAFEARRAY* right) noexcept
{
    if (left == nullptr || right == nullptr)
    {
        return left == right;
    }
    const SAFEARRAYBOUND& leftBound = left->rgsabound[0];
    const SAFEARRAYBOUND& rightBound = right->rgsabound[0];
    return leftBound.cElements == rightBound.cElements && leftBound.lLbound == rightBound.lLbound &&
           std::memcmp(left->pvData, right->pvData, std::size_t{leftBound.cElements} * left->cbElements) == 0;
}
} // namespace

CComVariant::CComVariant(const wchar_t* text) : CComVariant(CComBSTR(text))
{}

CComVariant::CComVariant(const char* text) : CComVariant(CComBSTR(text))
{}

CComVariant::CComVariant(const CComBSTR& text) : CComVariant(CComBSTR(text))
{}

CComVariant::CComVariant(CComBSTR&& text) noexcept : VARIANT{}
{
    vt = VT_BSTR;
    bstrVal = text.Detach();
}

CComVariant::CComVariant(IUnknown* object) noexcept : VARIANT{}
{
    vt = VT_UNKNOWN;
    punkVal = object;
    if (object != nullptr)
    {
        object->AddRef();
    }
}

CComVariant::CComVariant(const SAFEARRAY* array) : VARIANT{}
{
    if (array == nullptr)
    {
        return;
    }
    if (FAILED(SafeArrayCopy(array, &parray)))
    {
        throw std::bad_alloc();
    }
    vt = static_cast<VARTYPE>(VT_ARRAY | array->elementType);
}

CComVariant::CComVariant(const VARIANT& other) : VARIANT{}
{
    CopyOrThrow(*this, other);
}

CComVariant::CComVariant(const CComVariant& other) : VARIANT{}
{
    CopyOrThrow(*this, other);
}

CComVariant& CComVariant::operator=(const CComVariant& other)
{
    if (this != &other)
    {
        *this = CComVariant(other);
    }
    return *this;
}

HRESULT CComVariant::Clear() noexcept
{
    return VariantClear(this);
}

HRESULT CComVariant::Copy(const VARIANT* source) noexcept
{
    return VariantCopy(this, source);
}

HRESULT CComVariant::Attach(VARIANT* source) noexcept
{
    if (source == nullptr)
    {
        return E_POINTER;
    }
    if (source == this)
    {
        return S_OK;
    }
    const HRESULT result = VariantClear(this);
    if (SUCCEEDED(result))
    {
        MoveFrom(*source);
    }
    return result;
}

HRESULT CComVariant::Detach(VARIANT* target) noexcept
{
    if (target == nullptr)
    {
        return E_POINTER;
    }
    if (target == this)
    {
        return S_OK;
    }
    const HRESULT result = VariantClear(target);
    if (SUCCEEDED(result))
    {
        *target = *this;
        static_cast<VARIANT&>(*this) = VARIANT{};
    }
    return result;
}

HRESULT CComVariant::ChangeType(VARTYPE type, const VARIANT* source) noexcept
{
    return VariantChangeType(this, source == nullptr ? this : source, 0, type);
}

bool operator==(const CComVariant& left, const CComVariant& right) noexcept
{
    if (left.vt != right.vt)
    {
        return false;
    }
    if (left.vt == VT_EMPTY || left.vt == VT_NULL)
    {
        return true;
    }
    if ((left.vt & VT_BYREF) != 0 || left.vt == VT_UNKNOWN || left.vt == VT_DISPATCH)
    {
        return left.byref == right.byref;
    }
    if ((left.vt & VT_ARRAY) != 0)
    {
        return HaveEqualElements(left.parray, right.parray);
    }
    return VarCmp(&left, &right) == VARCMP_EQ;
}
