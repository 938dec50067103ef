#include "VariantText.h"

#include "VariantTypes.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

namespace
{
constexpr std::size_t kNumberTextSize = 64;

constexpr DATE kLowestDate = -657434;  // 1 January 100
constexpr DATE kHighestDate = 2958466; // 1 January 10000, excluded
constexpr int kSecondsPerDay = 86400;
constexpr std::chrono::sys_days kDateEpoch = std::chrono::year(1899) / 12 / 30;

template <class TReal>
char* FormatReal(char* first, char* last, TReal value) noexcept
{
    if (!std::isfinite(value))
    {
        const std::string_view text = std::isnan(value) ? "NAN" : value < 0 ? "-INF" : "INF";
        return std::copy(text.begin(), text.end(), first);
    }
    constexpr int kFirstExponentialPower = 15;
    constexpr int kLastExponentialPower = -5;
    char* end = std::to_chars(first, last, value, std::chars_format::scientific).ptr;
    char* exponent = std::find(first, end, 'e');
    *exponent = 'E';
    int power = 0;
    std::from_chars(exponent + (exponent[1] == '+' ? 2 : 1), end, power);
    if (power > kLastExponentialPower && power < kFirstExponentialPower)
    {
        end = std::to_chars(first, last, value, std::chars_format::fixed).ptr;
    }
    return end;
}

char* FormatCurrency(char* first, char* last, LONGLONG value) noexcept
{
    constexpr ULONGLONG kUnit = 10000;
    ULONGLONG magnitude = static_cast<ULONGLONG>(value);
    if (value < 0)
    {
        *first++ = '-';
        magnitude = 0 - magnitude;
    }
    char* end = std::to_chars(first, last, magnitude / kUnit).ptr;
    if (const ULONGLONG fraction = magnitude % kUnit; fraction != 0)
    {
        // The leading 1 keeps the zeros behind the point until it is replaced by it.
        char* point = end;
        end = std::to_chars(point, last, kUnit + fraction).ptr;
        *point = '.';
        while (end[-1] == '0')
        {
            --end;
        }
    }
    return end;
}

char* PutDecimal(char* first, int value, int digits) noexcept
{
    for (int i = digits - 1; i >= 0; --i, value /= 10)
    {
        first[i] = static_cast<char>('0' + value % 10);
    }
    return first + digits;
}

bool IsWithinDates(double date) noexcept
{
    return date > kLowestDate - 1 && date < kHighestDate;
}

/// The date must be within the calendar.
char* FormatDate(char* first, DATE date) noexcept
{
    const double wholeDays = std::trunc(date);
    const std::chrono::year_month_day calendar(kDateEpoch + std::chrono::days(static_cast<int>(wholeDays)));
    // The last half second of a day is not rounded into the next, which the calendar might not have.
    const auto time = static_cast<int>(
        std::min(std::lround(std::fabs(date - wholeDays) * kSecondsPerDay), kSecondsPerDay - 1L));
    char* next = PutDecimal(first, static_cast<int>(calendar.year()), 4);
    *next++ = '-';
    next = PutDecimal(next, static_cast<int>(static_cast<unsigned>(calendar.month())), 2);
    *next++ = '-';
    next = PutDecimal(next, static_cast<int>(static_cast<unsigned>(calendar.day())), 2);
    *next++ = ' ';
    next = PutDecimal(next, time / 3600, 2);
    *next++ = ':';
    next = PutDecimal(next, time / 60 % 60, 2);
    *next++ = ':';
    return PutDecimal(next, time % 60, 2);
}

bool IsBlank(wchar_t character) noexcept
{
    return character == L' ' || character == L'\t' || character == L'\r' || character == L'\n';
}

/// Takes the blanks away and narrows what a scalar can consist of; empty for anything else.
std::string TrimAndNarrow(std::wstring_view text)
{
    while (!text.empty() && IsBlank(text.front()))
    {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back()))
    {
        text.remove_suffix(1);
    }
    std::string result;
    result.reserve(text.size());
    for (const wchar_t character : text)
    {
        if (character <= 0 || character > 0x7E)
        {
            return {};
        }
        const bool isSmall = character >= L'a' && character <= L'z';
        result.push_back(static_cast<char>(isSmall ? character - 0x20 : character));
    }
    return result;
}

/// Tells of a number outside the range of its type whether it is too small rather than too large.
bool IsUnderflow(std::string_view text) noexcept
{
    const std::size_t exponentAt = std::min(text.find('E'), text.size());
    const std::string_view mantissa = text.substr(0, exponentAt);
    const std::size_t leading = mantissa.find_first_of("123456789");
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const long power = static_cast<long>(point) - static_cast<long>(leading);
    std::string_view exponentText = text.substr(exponentAt);
    exponentText.remove_prefix(std::min(exponentText.size(), exponentText.starts_with("E+") ? 2UL : 1UL));
    long exponent = 0;
    const auto parsed =
        std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent);
    if (parsed.ec == std::errc::result_out_of_range)
    {
        return exponentText.front() == '-';
    }
    return exponent < -power;
}

/// Reads one decimal number that fills the text.
template <class TReal>
HRESULT ParseReal(std::string_view text, TReal& value) noexcept
{
    // from_chars takes no plus sign, but would take a minus behind one that was cut off.
    if (text.starts_with('+'))
    {
        text.remove_prefix(1);
        if (text.starts_with('-'))
        {
            return DISP_E_TYPEMISMATCH;
        }
    }
    // from_chars would also read infinity and not-a-number, which belong to some types only.
    if (text.empty() || text.find_first_not_of("0123456789.+-E") != std::string_view::npos)
    {
        return DISP_E_TYPEMISMATCH;
    }
    const char* end = text.data() + text.size();
    TReal parsed = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, parsed);
    if (stop != end || error == std::errc::invalid_argument)
    {
        return DISP_E_TYPEMISMATCH;
    }
    // The same code for too large and too small, of which only the first is a fault.
    if (error == std::errc::result_out_of_range)
    {
        if (!IsUnderflow(text))
        {
            return DISP_E_OVERFLOW;
        }
        parsed = text.starts_with('-') ? -TReal{0} : TReal{0};
    }
    value = parsed;
    return S_OK;
}

template <class TReal>
HRESULT ParseRealOrSpecial(std::string_view text, TReal& value) noexcept
{
    constexpr TReal kInfinity = std::numeric_limits<TReal>::infinity();
    if (text == "NAN")
    {
        value = std::numeric_limits<TReal>::quiet_NaN();
        return S_OK;
    }
    if (text == "INF" || text == "-INF")
    {
        value = text == "INF" ? kInfinity : -kInfinity;
        return S_OK;
    }
    return ParseReal(text, value);
}

HRESULT ParseCurrency(std::string text, VARIANT& value)
{
    // Scaling the text instead of the number keeps the last digits of large amounts.
    const bool hasExponent = text.find('E') != std::string::npos;
    if (!hasExponent && !text.empty())
    {
        text += "E4";
    }
    long double number = 0;
    if (const HRESULT result = ParseReal(text, number); FAILED(result))
    {
        return result;
    }
    VARIANT scaled{};
    const HRESULT result = StoreNumber(hasExponent ? number * 10000 : number, VT_I8, scaled);
    if (SUCCEEDED(result))
    {
        value.vt = VT_CY;
        value.cyVal.int64 = scaled.llVal;
    }
    return result;
}

bool HasPattern(std::string_view text, std::string_view pattern) noexcept
{
    return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), [](char actual, char wanted) {
        return wanted == '0' ? actual >= '0' && actual <= '9' : actual == wanted;
    });
}

HRESULT ParseDate(std::string_view text, DATE& date) noexcept
{
    const bool hasTime = HasPattern(text, "0000-00-00 00:00:00");
    if (!hasTime && !HasPattern(text, "0000-00-00"))
    {
        return ParseReal(text, date);
    }
    const auto field = [text](std::size_t position, std::size_t digits) {
        int number = 0;
        for (const char digit : text.substr(position, digits))
        {
            number = number * 10 + (digit - '0');
        }
        return number;
    };
    const std::chrono::year_month_day calendar(std::chrono::year(field(0, 4)),
                                               std::chrono::month(static_cast<unsigned>(field(5, 2))),
                                               std::chrono::day(static_cast<unsigned>(field(8, 2))));
    const int hour = hasTime ? field(11, 2) : 0;
    const int minute = hasTime ? field(14, 2) : 0;
    const int second = hasTime ? field(17, 2) : 0;
    if (!calendar.ok() || hour > 23 || minute > 59 || second > 59)
    {
        return DISP_E_TYPEMISMATCH;
    }
    const auto days = static_cast<double>((std::chrono::sys_days(calendar) - kDateEpoch).count());
    const double time = (hour * 3600 + minute * 60 + second) / double{kSecondsPerDay};
    date = days < 0 ? days - time : days + time;
    return S_OK;
}

template <class TInteger>
HRESULT StoreInteger(long double number, TInteger& target) noexcept
{
    const long double rounded = std::nearbyint(number);
    // Written so that NaN is outside too.
    if (!(rounded >= static_cast<long double>(std::numeric_limits<TInteger>::min()) &&
          rounded <= static_cast<long double>(std::numeric_limits<TInteger>::max())))
    {
        return DISP_E_OVERFLOW;
    }
    target = static_cast<TInteger>(rounded);
    return S_OK;
}

template <class TReal>
HRESULT StoreReal(long double number, TReal& target) noexcept
{
    const auto narrowed = static_cast<TReal>(number);
    if (std::isinf(narrowed) && !std::isinf(number))
    {
        return DISP_E_OVERFLOW;
    }
    target = narrowed;
    return S_OK;
}

HRESULT StoreDate(long double number, DATE& target) noexcept
{
    const auto date = static_cast<DATE>(number);
    if (!IsWithinDates(date))
    {
        return DISP_E_OVERFLOW;
    }
    target = date;
    return S_OK;
}

HRESULT StoreScalar(long double number, VARTYPE type, VARIANT& fresh) noexcept
{
    switch (type)
    {
    case VT_I1:
        return StoreInteger(number, fresh.cVal);
    case VT_UI1:
        return StoreInteger(number, fresh.bVal);
    case VT_I2:
        return StoreInteger(number, fresh.iVal);
    case VT_UI2:
        return StoreInteger(number, fresh.uiVal);
    case VT_I4:
    case VT_INT:
        return StoreInteger(number, fresh.lVal);
    case VT_UI4:
    case VT_UINT:
        return StoreInteger(number, fresh.ulVal);
    case VT_I8:
        return StoreInteger(number, fresh.llVal);
    case VT_UI8:
        return StoreInteger(number, fresh.ullVal);
    case VT_R4:
        return StoreReal(number, fresh.fltVal);
    case VT_R8:
        return StoreReal(number, fresh.dblVal);
    case VT_CY:
        return StoreInteger(number * 10000, fresh.cyVal.int64);
    case VT_DATE:
        return StoreDate(number, fresh.date);
    case VT_BOOL:
        fresh.boolVal = ToVariantBool(number != 0);
        return S_OK;
    default:
        return DISP_E_TYPEMISMATCH;
    }
}
} // namespace

HRESULT StoreNumber(long double number, VARTYPE type, VARIANT& value) noexcept
{
    VARIANT fresh{};
    fresh.vt = type;
    const HRESULT result = StoreScalar(number, type, fresh);
    if (SUCCEEDED(result))
    {
        value = fresh;
    }
    return result;
}

BSTR FormatScalar(const VARIANT& value, bool alphabeticTruth) noexcept
{
    char buffer[kNumberTextSize];
    char* const last = std::end(buffer);
    char* end = buffer;
    switch (VariantType(value.vt).kind)
    {
    case VariantKind::Signed:
        end = std::to_chars(buffer, last, static_cast<LONGLONG>(LoadNumber(value))).ptr;
        break;
    case VariantKind::Unsigned:
        end = std::to_chars(buffer, last, static_cast<ULONGLONG>(LoadNumber(value))).ptr;
        break;
    case VariantKind::Real:
        end = value.vt == VT_R4 ? FormatReal(buffer, last, value.fltVal)
                                : FormatReal(buffer, last, value.dblVal);
        break;
    case VariantKind::Currency:
        end = FormatCurrency(buffer, last, value.cyVal.int64);
        break;
    case VariantKind::Date:
        end =
            IsWithinDates(value.date) ? FormatDate(buffer, value.date) : FormatReal(buffer, last, value.date);
        break;
    case VariantKind::Bool:
        if (alphabeticTruth)
        {
            return A2WBSTR(value.boolVal == VARIANT_FALSE ? "False" : "True");
        }
        return A2WBSTR(value.boolVal == VARIANT_FALSE ? "0" : "-1");
    default:
        break;
    }
    return A2WBSTR(buffer, static_cast<int>(end - buffer));
}

HRESULT ParseScalar(const wchar_t* text, VARTYPE type, VARIANT& value)
{
    if (text == nullptr)
    {
        return DISP_E_TYPEMISMATCH;
    }
    std::string narrow = TrimAndNarrow({text, SysStringLen(text)});
    if (narrow == "TRUE" || narrow == "FALSE")
    {
        VARIANT truth{};
        truth.vt = VT_BOOL;
        truth.boolVal = ToVariantBool(narrow == "TRUE");
        return VariantChangeType(&value, &truth, 0, type);
    }
    VARIANT fresh{};
    fresh.vt = type;
    HRESULT result = S_OK;
    switch (type)
    {
    case VT_CY:
        return ParseCurrency(std::move(narrow), value);
    case VT_R4:
        result = ParseRealOrSpecial(narrow, fresh.fltVal);
        break;
    case VT_R8:
        result = ParseRealOrSpecial(narrow, fresh.dblVal);
        break;
    case VT_DATE: {
        DATE date = 0;
        result = ParseDate(narrow, date);
        return FAILED(result) ? result : StoreNumber(date, type, value);
    }
    default: {
        // 64 bits of mantissa: no integer type loses anything on the way.
        long double number = 0;
        result = ParseReal(narrow, number);
        return FAILED(result) ? result : StoreNumber(number, type, value);
    }
    }
    if (SUCCEEDED(result))
    {
        value = fresh;
    }
    return result;
}
