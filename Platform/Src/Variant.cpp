#include "Variant.h"

#include "VariantTypes.h"

#include <compare>
#include <cstring>
#include <limits>
#include <string_view>

static_assert(std::numeric_limits<long double>::digits >= 64, "conversions go through long double");

namespace
{
bool CanBeHeld(VARTYPE type) noexcept
{
    const auto base = static_cast<VARTYPE>(type & ~(VT_ARRAY | VT_BYREF));
    const VariantKind kind = VariantType(base).kind;
    if ((type & VT_ARRAY) != 0)
    {
        return IsPlainScalar(base);
    }
    if ((type & VT_BYREF) != 0)
    {
        return kind != VariantKind::Invalid && kind != VariantKind::Nothing;
    }
    return kind != VariantKind::Invalid && kind != VariantKind::Variant;
}

/// Gives target an independent copy of source; target is overwritten without being freed.
HRESULT CopyValue(const VARIANT& source, VARIANT& target) noexcept
{
    VARIANT copy = source;
    HRESULT result = S_OK;
    if ((source.vt & VT_BYREF) != 0)
    {
        target = source;
        return S_OK;
    }
    if ((source.vt & VT_ARRAY) != 0)
    {
        result = SafeArrayCopy(source.parray, &copy.parray);
    }
    else if (source.vt == VT_BSTR && source.bstrVal != nullptr)
    {
        copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<const char*>(source.bstrVal),
                                             SysStringByteLen(source.bstrVal));
        result = copy.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
    }
    else if (VariantType(source.vt).kind == VariantKind::Interface && source.punkVal != nullptr)
    {
        source.punkVal->AddRef();
    }
    if (SUCCEEDED(result))
    {
        target = copy;
    }
    return result;
}

HRESULT CopyAndReplace(VARIANT* target, const VARIANT& source) noexcept
{
    VARIANT copy{};
    const HRESULT result = CopyValue(source, copy);
    return FAILED(result) ? result : ReplaceValue(target, copy);
}

VARCMP FromOrdering(std::partial_ordering ordering) noexcept
{
    if (ordering == std::partial_ordering::unordered)
    {
        return VARCMP_NULL;
    }
    return std::is_lt(ordering) ? VARCMP_LT : std::is_gt(ordering) ? VARCMP_GT : VARCMP_EQ;
}

std::wstring_view TextOf(const VARIANT& value) noexcept
{
    return {value.bstrVal, SysStringLen(value.bstrVal)};
}

bool IsNumeric(const VARIANT& value) noexcept
{
    return value.vt == VT_EMPTY || (value.vt != VT_ERROR && IsPlainScalar(value.vt));
}
} // namespace

HRESULT ReplaceValue(VARIANT* target, VARIANT& fresh) noexcept
{
    const HRESULT result = VariantClear(target);
    if (FAILED(result))
    {
        VariantClear(&fresh);
        return result;
    }
    *target = fresh;
    return S_OK;
}

HRESULT Dereference(const VARIANT& source, VARIANT& value) noexcept
{
    if (!CanBeHeld(source.vt))
    {
        return DISP_E_BADVARTYPE;
    }
    if ((source.vt & VT_BYREF) == 0)
    {
        value = source;
        return S_OK;
    }
    if (source.byref == nullptr)
    {
        return E_POINTER;
    }
    const auto type = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if (type == VT_VARIANT)
    {
        // One level only: a variant that refers to a variant that refers to itself would never end.
        const VARIANT& inner = *source.pvarVal;
        return inner.vt == (VT_BYREF | VT_VARIANT) ? DISP_E_BADVARTYPE : Dereference(inner, value);
    }
    value = VARIANT{};
    value.vt = type;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): an array is held by its pointer
    const std::size_t size = (type & VT_ARRAY) != 0 ? sizeof(source.parray) : VariantType(type).size;
    std::memcpy(&value.llVal, source.byref, size);
    return S_OK;
}

long double LoadNumber(const VARIANT& value) noexcept
{
    switch (value.vt)
    {
    case VT_I1:
        return value.cVal;
    case VT_UI1:
        return value.bVal;
    case VT_I2:
        return value.iVal;
    case VT_UI2:
        return value.uiVal;
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
        return value.lVal;
    case VT_UI4:
    case VT_UINT:
        return value.ulVal;
    case VT_I8:
        return value.llVal;
    case VT_UI8:
        return value.ullVal;
    case VT_R4:
        return value.fltVal;
    case VT_R8:
    case VT_DATE:
        return value.dblVal;
    case VT_CY:
        return static_cast<long double>(value.cyVal.int64) / 10000;
    case VT_BOOL:
        return value.boolVal == VARIANT_FALSE ? 0 : -1;
    default:
        return 0;
    }
}

void VariantInit(VARIANT* variant) noexcept
{
    if (variant != nullptr)
    {
        *variant = VARIANT{};
    }
}

HRESULT VariantClear(VARIANT* variant) noexcept
{
    if (variant == nullptr)
    {
        return E_POINTER;
    }
    if (!CanBeHeld(variant->vt))
    {
        return DISP_E_BADVARTYPE;
    }
    if ((variant->vt & VT_BYREF) != 0)
    {
        *variant = VARIANT{};
        return S_OK;
    }
    if ((variant->vt & VT_ARRAY) != 0)
    {
        if (const HRESULT result = SafeArrayDestroy(variant->parray); FAILED(result))
        {
            return result;
        }
        *variant = VARIANT{};
        return S_OK;
    }
    // Emptied first: the last release of an object may come back to this variant.
    const VARIANT former = *variant;
    *variant = VARIANT{};
    if (former.vt == VT_BSTR)
    {
        SysFreeString(former.bstrVal);
    }
    else if (VariantType(former.vt).kind == VariantKind::Interface && former.punkVal != nullptr)
    {
        former.punkVal->Release();
    }
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) noexcept
{
    if (target == nullptr || source == nullptr)
    {
        return E_POINTER;
    }
    if (!CanBeHeld(source->vt))
    {
        return DISP_E_BADVARTYPE;
    }
    return target == source ? S_OK : CopyAndReplace(target, *source);
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source) noexcept
{
    if (target == nullptr || source == nullptr)
    {
        return E_POINTER;
    }
    VARIANT value{};
    const HRESULT result = Dereference(*source, value);
    return FAILED(result) ? result : CopyAndReplace(target, value);
}

VARCMP VarCmp(const VARIANT* left, const VARIANT* right) noexcept
{
    VARIANT first{};
    VARIANT second{};
    if (left == nullptr || right == nullptr || FAILED(Dereference(*left, first)) ||
        FAILED(Dereference(*right, second)))
    {
        return VARCMP_NULL;
    }
    if (first.vt == VT_BSTR && second.vt == VT_BSTR)
    {
        return FromOrdering(TextOf(first) <=> TextOf(second));
    }
    const bool bothErrors = first.vt == VT_ERROR && second.vt == VT_ERROR;
    if (bothErrors || (IsNumeric(first) && IsNumeric(second)))
    {
        return FromOrdering(LoadNumber(first) <=> LoadNumber(second));
    }
    return VARCMP_NULL;
}
