#include "ResponseNumber.h"

#include "CComVariant.h"

#include <algorithm>
#include <cmath>

namespace ZoVelkor::RemoteKernel
{

namespace
{

ResponseNumber Signed(std::int64_t value) noexcept
{
    return {ResponseNumber::Kind::Signed, value, 0, 0};
}

ResponseNumber Unsigned(std::uint64_t value) noexcept
{
    return {ResponseNumber::Kind::Unsigned, 0, value, 0};
}

HRESULT ReadByConversion(const VARIANT& value, ResponseNumber& number) noexcept
{
    CComVariant converted;
    const HRESULT result = converted.ChangeType(VT_R8, &value);
    number = {ResponseNumber::Kind::Double, 0, 0, converted.dblVal};
    return result;
}

} // namespace

double ResponseNumber::AsDouble() const noexcept
{
    switch (kind)
    {
    case Kind::Signed:
        return static_cast<double>(signedValue);
    case Kind::Unsigned:
        return static_cast<double>(number);
    default:
        return real;
    }
}

std::int64_t ResponseNumber::AsInteger(std::int64_t low, std::int64_t high) const noexcept
{
    if (kind == Kind::Signed)
    {
        return std::clamp(signedValue, low, high);
    }
    if (kind == Kind::Unsigned)
    {
        return number > static_cast<std::uint64_t>(high) ? high : static_cast<std::int64_t>(number);
    }
    if (std::isnan(real))
    {
        return 0;
    }
    const double rounded = std::nearbyint(real);
    // As a double, high can be rounded up to a value beyond the range.
    if (rounded >= static_cast<double>(high))
    {
        return high;
    }
    return rounded <= static_cast<double>(low) ? low : static_cast<std::int64_t>(rounded);
}

HRESULT ReadResponseNumber(const VARIANT& value, ResponseNumber& number) noexcept
{
    using Kind = ResponseNumber::Kind;
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
        number = {Kind::Float, 0, 0, static_cast<double>(value.fltVal)};
        return S_OK;
    case VT_R8:
        number = {Kind::Double, 0, 0, value.dblVal};
        return S_OK;
    default:
        return ReadByConversion(value, number);
    }
}

} // namespace ZoVelkor::RemoteKernel
