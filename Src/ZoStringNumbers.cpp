#include "Qt3String.h"
#include "ZoString.h"
#include "ZoStringQt.h"

#include <QString>

#include <cstdint>
#include <limits>
#include <type_traits>

namespace ZoVelkor
{

namespace
{

/// The value as the adapter takes it: 64 bits, signedness kept.
template <class T>
constexpr auto Widened(T value)
{
    if constexpr (std::is_signed_v<T>)
    {
        return static_cast<std::int64_t>(value);
    }
    else
    {
        return static_cast<std::uint64_t>(value);
    }
}

void StoreOk(bool* ok, bool value)
{
    if (ok != nullptr)
    {
        *ok = value;
    }
}

/// The integer of a text within the range of TRange; 0 when there is none.
template <class TRange>
TRange ToInteger(const CZoString& text, bool* ok, int base)
{
    using TLimits = std::numeric_limits<TRange>;
    const auto number = [&] {
        if constexpr (std::is_signed_v<TRange>)
        {
            return Qt3String::ToSigned(ToQString(text), base, TLimits::min(), TLimits::max());
        }
        else
        {
            return Qt3String::ToUnsigned(ToQString(text), base, TLimits::max());
        }
    }();
    StoreOk(ok, number.has_value());
    return static_cast<TRange>(number.value_or(0));
}

} // namespace

CZoString CZoString::Arg(long value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(unsigned long value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(long long value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(unsigned long long value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(int value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(unsigned int value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(short value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(unsigned short value, int fieldWidth, int base) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), Widened(value), fieldWidth, base));
}

CZoString CZoString::Arg(double value, int fieldWidth, char format, int precision) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), value, fieldWidth, format, precision));
}

CZoString CZoString::Arg(char value, int fieldWidth) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), QString(QLatin1Char(value)), fieldWidth));
}

CZoString CZoString::Arg(const CZoString& value, int fieldWidth) const
{
    return ToZoString(Qt3String::Arg(ToQString(*this), ToQString(value), fieldWidth));
}

CZoString CZoString::Arg(const CZoString& a1, const CZoString& a2) const
{
    const QString values[] = {ToQString(a1), ToQString(a2)};
    return ToZoString(Qt3String::ArgMulti(ToQString(*this), values));
}

CZoString CZoString::Arg(const CZoString& a1, const CZoString& a2, const CZoString& a3) const
{
    const QString values[] = {ToQString(a1), ToQString(a2), ToQString(a3)};
    return ToZoString(Qt3String::ArgMulti(ToQString(*this), values));
}

CZoString
CZoString::Arg(const CZoString& a1, const CZoString& a2, const CZoString& a3, const CZoString& a4) const
{
    const QString values[] = {ToQString(a1), ToQString(a2), ToQString(a3), ToQString(a4)};
    return ToZoString(Qt3String::ArgMulti(ToQString(*this), values));
}

CZoString CZoString::Number(long value, int base)
{
    return ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString CZoString::Number(unsigned long value, int base)
{
    return ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString CZoString::Number(long long value, int base)
{
    return ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString CZoString::Number(unsigned long long value, int base)
{
    return ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString CZoString::Number(int value, int base)
{
    return ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString CZoString::Number(unsigned int value, int base)
{
    return ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString CZoString::Number(double value, char format, int precision)
{
    return ToZoString(Qt3String::Number(value, format, precision));
}

CZoString& CZoString::SetNum(double value, char format, int precision)
{
    return *this = Number(value, format, precision);
}

CZoString& CZoString::SetNum(float value, char format, int precision)
{
    return *this = Number(static_cast<double>(value), format, precision);
}

CZoString& CZoString::SetNum(long long value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(unsigned long long value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(int value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(unsigned int value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(short value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(unsigned short value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(long value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

CZoString& CZoString::SetNum(unsigned long value, int base)
{
    return *this = ToZoString(Qt3String::Number(Widened(value), base));
}

double CZoString::ToDouble(bool* ok) const
{
    return Qt3String::ToDouble(ToQString(*this), ok);
}

float CZoString::ToFloat(bool* ok) const
{
    return Qt3String::ToFloat(ToQString(*this), ok);
}

int CZoString::ToInt(bool* ok, int base) const
{
    return ToInteger<int>(*this, ok, base);
}

unsigned int CZoString::ToUInt(bool* ok, int base) const
{
    return ToInteger<unsigned int>(*this, ok, base);
}

long CZoString::ToLong(bool* ok, int base) const
{
    return ToInteger<std::int32_t>(*this, ok, base);
}

unsigned long CZoString::ToULong(bool* ok, int base) const
{
    return ToInteger<std::uint32_t>(*this, ok, base);
}

long long CZoString::ToLongLong(bool* ok, int base) const
{
    return ToInteger<long long>(*this, ok, base);
}

unsigned long long CZoString::ToULongLong(bool* ok, int base) const
{
    return ToInteger<unsigned long long>(*this, ok, base);
}

short CZoString::ToShort(bool* ok, int base) const
{
    return ToInteger<short>(*this, ok, base);
}

unsigned short CZoString::ToUShort(bool* ok, int base) const
{
    return ToInteger<unsigned short>(*this, ok, base);
}

} // namespace ZoVelkor
