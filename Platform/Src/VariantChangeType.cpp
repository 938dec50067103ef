#include "Variant.h"
#include "VariantText.h"
#include "VariantTypes.h"

#include <limits>
#include <new>

namespace
{
HRESULT ToText(const VARIANT& source, WORD flags, VARIANT& fresh) noexcept
{
    BSTR text = source.vt == VT_EMPTY ? SysAllocStringLen(nullptr, 0)
                                      : FormatScalar(source, (flags & VARIANT_ALPHABOOL) != 0);
    if (text == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    fresh.vt = VT_BSTR;
    fresh.bstrVal = text;
    return S_OK;
}

HRESULT ConvertNumber(const VARIANT& source, VARTYPE type, VARIANT& fresh) noexcept
{
    const bool setsAllBits = source.vt == VT_BOOL && source.boolVal != VARIANT_FALSE &&
                             VariantType(type).kind == VariantKind::Unsigned;
    if (setsAllBits)
    {
        const unsigned unusedBits = 64U - 8U * VariantType(type).size;
        return StoreNumber(std::numeric_limits<ULONGLONG>::max() >> unusedBits, type, fresh);
    }
    return StoreNumber(LoadNumber(source), type, fresh);
}

/// Converts between different types; source is no reference.
HRESULT Convert(const VARIANT& source, WORD flags, VARTYPE type, VARIANT& fresh)
{
    const auto takesPart = [](VARTYPE candidate) {
        return candidate == VT_EMPTY || candidate == VT_BSTR ||
               (candidate != VT_ERROR && IsPlainScalar(candidate));
    };
    if (!takesPart(source.vt) || !takesPart(type) || type == VT_EMPTY)
    {
        return DISP_E_TYPEMISMATCH;
    }
    if (type == VT_BSTR)
    {
        return ToText(source, flags, fresh);
    }
    return source.vt == VT_BSTR ? ParseScalar(source.bstrVal, type, fresh)
                                : ConvertNumber(source, type, fresh);
}

/// Types that can be asked for; references never are.
bool IsWantedType(VARTYPE type) noexcept
{
    const auto base = static_cast<VARTYPE>(type & ~VT_ARRAY);
    const VariantKind kind = VariantType(base).kind;
    return (type & VT_ARRAY) != 0 ? IsPlainScalar(base)
                                  : kind != VariantKind::Invalid && kind != VariantKind::Variant;
}
} // namespace

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, WORD flags, VARTYPE type) noexcept
try
{
    if (target == nullptr || source == nullptr)
    {
        return E_POINTER;
    }
    if (!IsWantedType(static_cast<VARTYPE>(type & ~VT_BYREF)))
    {
        return DISP_E_BADVARTYPE;
    }
    VARIANT value{};
    if (const HRESULT result = Dereference(*source, value); FAILED(result))
    {
        return result;
    }
    if ((type & VT_BYREF) != 0)
    {
        return DISP_E_TYPEMISMATCH;
    }
    if (value.vt == type)
    {
        return target == source && source->vt == type ? S_OK : VariantCopy(target, &value);
    }
    VARIANT fresh{};
    const HRESULT result = Convert(value, flags, type, fresh);
    return FAILED(result) ? result : ReplaceValue(target, fresh);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
