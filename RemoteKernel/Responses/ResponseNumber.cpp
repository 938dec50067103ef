#include "ResponseNumber.h"

#include "CComVariant.h"

#include <algorithm>
#include <cmath>

namespace ZoVelkor::RemoteKernel
{

namespace
{

tagResponseNumber Signed(std::int64_t value) noexcept
{
    return {tagResponseNumber::tagKind::Signed, value, 0, 0};
}

tagResponseNumber Unsigned(std::uint64_t value) noexcept
{
    return {tagResponseNumber::tagKind::Unsigned, 0, value, 0};
}

HRESULT ReadByConversion(const VARIANT& value, tagResponseNumber& number) noexcept
{
    CComVariant converted;
    const HRESULT result = converted.ChangeType(VT_R8, &value);
    number = {tagResponseNumber::tagKind::Double, 0, 0, converted.dblVal};
    return result;
}

} // namespace

double tagResponseNumber::AsDouble() const noexcept
{
    switch (eKind)
    {
    case tagKind::Signed:
        return static_cast<double>(iSigned);
    case tagKind::Unsigned:
        return static_cast<double>(iUnsigned);
    default:
        return dReal;
    }
}

std::int64_t tagResponseNumber::AsInteger(std::int64_t low, std::int64_t high) const noexcept
{
    if (eKind == tagKind::Signed)
    {
        return std::clamp(iSigned, low, high);
    }
    if (eKind == tagKind::Unsigned)
    {
        return iUnsigned > static_cast<std::uint64_t>(high) ? high : static_cast<std::int64_t>(iUnsigned);
    }
    if (std::isnan(dReal))
    {
        return 0;
    }
    const double rounded = std::nearbyint(dReal);
    // As a double, high can be rounded up to a value beyond the range.
    if (rounded >= static_cast<double>(high))
    {
        return high;
    }
    return rounded <= static_cast<double>(low) ? low : static_cast<std::int64_t>(rounded);
}

HRESULT ReadResponseNumber(const VARIANT& value, tagResponseNumber& number) noexcept
{
    using tagKind = tagResponseNumber::tagKind;
    switch (value.vt)
    {
    case VT_I1:
        number = Signed(value.cVal);
        return S_OK;
    case VT_I2:
        number = Signed(value.iVal);
        return S_OK;
    case VT_I4:
    case VT_INT:
        number = Signed(value.lVal);
        return S_OK;
    case VT_I8:
        number = Signed(value.llVal);
        return S_OK;
    case VT_UI1:
        number = Unsigned(value.bVal);
        return S_OK;
    case VT_UI2:
        number = Unsigned(value.uiVal);
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        number = Unsigned(value.ulVal);
        return S_OK;
    case VT_UI8:
        number = Unsigned(value.ullVal);
        return S_OK;
    case VT_BOOL:
        number = Signed(value.boolVal != VARIANT_FALSE ? 1 : 0);
        return S_OK;
    case VT_R4:
        number = {tagKind::Float, 0, 0, static_cast<double>(value.fltVal)};
        return S_OK;
    case VT_R8:
        number = {tagKind::Double, 0, 0, value.dblVal};
        return S_OK;
    default:
        return ReadByConversion(value, number);
    }
}

} // namespace ZoVelkor::RemoteKernel
