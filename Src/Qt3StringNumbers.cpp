#include "Qt3String.h"

#include <QtDebug>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

namespace ZoVelkor::Qt3String
{

namespace
{

constexpr int kDefaultPrecision = 6;
/// Room for the digits in front of the decimal point, sign, point and exponent.
constexpr std::size_t kDoubleOverhead = 330;

int CheckedBase(int base)
{
    if (base >= 2 && base <= 36)
    {
        return base;
    }
    qWarning("Number base %d is outside 2 to 36, 10 is used", base);
    return 10;
}

std::chars_format CharsFormat(char format)
{
    switch (format)
    {
    case 'e':
    case 'E':
        return std::chars_format::scientific;
    case 'g':
    case 'G':
        return std::chars_format::general;
    default:
        return std::chars_format::fixed;
    }
}

std::string FormatDouble(double value, char format, int precision)
{
    if (std::isnan(value))
    {
        return "nan";
    }
    if (value == 0.0)
    {
        value = 0.0; // drops the sign
    }
    if (precision < 0)
    {
        precision = kDefaultPrecision;
    }
    std::string text(kDoubleOverhead + static_cast<std::size_t>(precision), '\0');
    const auto written =
        std::to_chars(text.data(), text.data() + text.size(), value, CharsFormat(format), precision);
    text.resize(static_cast<std::size_t>(written.ptr - text.data()));
    return text;
}

/// A placeholder of a text: its digit and the characters from the percent sign to the digit.
struct Placeholder
{
    char16_t digit = u'9' + 1;
    qsizetype position = -1;
    qsizetype length = 0;
};

bool IsDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

/// The first occurrence of the lowest digit; %L1 counts too.
Placeholder LowestPlaceholder(const QString& text)
{
    Placeholder lowest;
    for (qsizetype i = 0; i + 1 < text.size(); ++i)
    {
        if (text[i] != QLatin1Char('%'))
        {
            continue;
        }
        const qsizetype offset = text[i + 1] == QLatin1Char('L') && i + 2 < text.size() ? 2 : 1;
        const char16_t digit = text[i + offset].unicode();
        if (IsDigit(digit) && digit < lowest.digit)
        {
            lowest = {digit, i, offset + 1};
        }
    }
    return lowest;
}

/// The digit of a placeholder without L at an index, or -1.
int PlainPlaceholder(const QString& text, qsizetype index)
{
    const bool found =
        text[index] == QLatin1Char('%') && index + 1 < text.size() && IsDigit(text[index + 1].unicode());
    return found ? text[index + 1].unicode() - u'0' : -1;
}

/// Puts commas between each three digits of the integer part.
QString Grouped(QString text)
{
    const qsizetype begin = text.startsWith(QLatin1Char('-')) ? 1 : 0;
    qsizetype end = begin;
    while (end < text.size() && IsDigit(text[end].unicode()))
    {
        ++end;
    }
    for (qsizetype i = end - 3; i > begin; i -= 3)
    {
        text.insert(i, QLatin1Char(','));
    }
    return text;
}

QString Padded(const QString& value, int fieldWidth)
{
    return fieldWidth < 0 ? value.leftJustified(-static_cast<qsizetype>(fieldWidth))
                          : value.rightJustified(fieldWidth);
}

/// @param groupable  whether %L1 groups the digits of the value
QString Substitute(const QString& text, const QString& value, int fieldWidth, bool groupable)
{
    const Placeholder place = LowestPlaceholder(text);
    if (place.position < 0)
    {
        if (!text.isNull())
        {
            qWarning("No placeholder for an argument in \"%s\"", text.toLatin1().constData());
        }
        return text;
    }
    const bool grouped = groupable && place.length == 3;
    QString result = text;
    result.replace(place.position, place.length, Padded(grouped ? Grouped(value) : value, fieldWidth));
    return result;
}

bool IsWhiteSpace(char c)
{
    return (c >= 9 && c <= 13) || c == ' ' || c == '\xA0';
}

void TrimFront(std::string_view& text)
{
    while (!text.empty() && IsWhiteSpace(text.front()))
    {
        text.remove_prefix(1);
    }
}

void TrimBack(std::string_view& text)
{
    while (!text.empty() && IsWhiteSpace(text.back()))
    {
        text.remove_suffix(1);
    }
}

/// Removes a sign and tells whether it was a minus.
bool TakeSign(std::string_view& text)
{
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    return negative;
}

/// Removes the prefix of a number and gives its base.
int TakeBase(std::string_view& digits, int base)
{
    if (base != 0)
    {
        base = CheckedBase(base);
    }
    if ((base == 0 || base == 16) && (digits.starts_with("0x") || digits.starts_with("0X")))
    {
        digits.remove_prefix(2);
        return 16;
    }
    if (base == 0)
    {
        return digits.starts_with('0') ? 8 : 10;
    }
    return base;
}

struct Integer
{
    bool negative;
    std::uint64_t magnitude;
};

std::optional<Integer> ParseInteger(const QString& text, int base)
{
    const QByteArray bytes = text.toLatin1();
    std::string_view digits(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    TrimFront(digits);
    TrimBack(digits);
    const bool negative = TakeSign(digits);
    base = TakeBase(digits, base);
    std::uint64_t magnitude = 0;
    const char* end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, magnitude, base);
    if (parsed.ec != std::errc() || parsed.ptr != end)
    {
        return std::nullopt;
    }
    return Integer{negative, magnitude};
}

/// Removes a special value's name in any letter case.
bool TakeName(std::string_view& text, std::string_view name)
{
    if (text.size() < name.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < name.size(); ++i)
    {
        // Sets the bit that tells small letters from capitals.
        if ((text[i] | 0x20) != name[i])
        {
            return false;
        }
    }
    text.remove_prefix(name.size());
    return true;
}

/// Removes the number at the beginning of a text; nothing when there is none or it is out of range.
std::optional<double> TakeDouble(std::string_view& text)
{
    if (TakeName(text, "nan"))
    {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const bool negative = TakeSign(text);
    double value = std::numeric_limits<double>::infinity();
    if (!TakeName(text, "inf"))
    {
        if (text.empty() || (!IsDigit(static_cast<unsigned char>(text.front())) && text.front() != '.'))
        {
            return std::nullopt;
        }
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
        if (parsed.ec != std::errc())
        {
            return std::nullopt;
        }
        text.remove_prefix(static_cast<std::size_t>(parsed.ptr - text.data()));
    }
    return negative ? -value : value;
}

void StoreOk(bool* ok, bool value)
{
    if (ok != nullptr)
    {
        *ok = value;
    }
}

} // namespace

QString Number(std::int64_t value, int base)
{
    base = CheckedBase(base);
    return base == 10 ? QString::number(value) : Number(static_cast<std::uint64_t>(value), base);
}

QString Number(std::uint64_t value, int base)
{
    return QString::number(value, CheckedBase(base));
}

QString Number(double value, char format, int precision)
{
    const QString text = QString::fromStdString(FormatDouble(value, format, precision));
    return format == 'E' || format == 'F' || format == 'G' ? text.toUpper() : text;
}

QString Arg(const QString& text, const QString& value, int fieldWidth)
{
    return Substitute(text, value, fieldWidth, false);
}

QString Arg(const QString& text, std::int64_t value, int fieldWidth, int base)
{
    base = CheckedBase(base);
    return Substitute(text, Number(value, base), fieldWidth, base == 10);
}

QString Arg(const QString& text, std::uint64_t value, int fieldWidth, int base)
{
    base = CheckedBase(base);
    return Substitute(text, Number(value, base), fieldWidth, base == 10);
}

QString Arg(const QString& text, double value, int fieldWidth, char format, int precision)
{
    return Substitute(text, Number(value, format, precision), fieldWidth, true);
}

QString ArgMulti(const QString& text, std::span<const QString> values)
{
    std::array<bool, 10> present{};
    for (qsizetype i = 0; i < text.size(); ++i)
    {
        const int digit = PlainPlaceholder(text, i);
        if (digit >= 0)
        {
            present[static_cast<std::size_t>(digit)] = true;
        }
    }
    std::array<const QString*, 10> valueOfDigit{};
    auto next = values.begin();
    for (std::size_t digit = 0; digit < present.size() && next != values.end(); ++digit)
    {
        if (present[digit])
        {
            valueOfDigit[digit] = &*next++;
        }
    }
    if (next != values.end() && !text.isEmpty())
    {
        qWarning("Fewer placeholders than arguments in \"%s\"", text.toLatin1().constData());
    }
    QString result = text.isEmpty() ? QString() : QString(QLatin1String(""));
    for (qsizetype i = 0; i < text.size(); ++i)
    {
        const int digit = PlainPlaceholder(text, i);
        const QString* value = digit < 0 ? nullptr : valueOfDigit[static_cast<std::size_t>(digit)];
        if (value == nullptr)
        {
            result += text[i];
            continue;
        }
        result += *value;
        ++i;
    }
    return result;
}

std::optional<std::int64_t>
ToSigned(const QString& text, int base, std::int64_t minimum, std::int64_t maximum)
{
    const std::optional<Integer> number = ParseInteger(text, base);
    // Negation in the unsigned type, which holds the magnitude of the smallest value too.
    const auto limit = number && number->negative ? 0 - static_cast<std::uint64_t>(minimum)
                                                  : static_cast<std::uint64_t>(maximum);
    if (!number || number->magnitude > limit)
    {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(number->negative ? 0 - number->magnitude : number->magnitude);
}

std::optional<std::uint64_t> ToUnsigned(const QString& text, int base, std::uint64_t maximum)
{
    const std::optional<Integer> number = ParseInteger(text, base);
    if (!number || number->negative || number->magnitude > maximum)
    {
        return std::nullopt;
    }
    return number->magnitude;
}

double ToDouble(const QString& text, bool* ok)
{
    const QByteArray bytes = text.toLatin1();
    std::string_view rest(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    TrimFront(rest);
    const std::optional<double> value = TakeDouble(rest);
    StoreOk(ok, value && rest.empty());
    TrimFront(rest);
    return value && rest.empty() ? *value : 0.0;
}

float ToFloat(const QString& text, bool* ok)
{
    bool isNumber = false;
    const double value = ToDouble(text, &isNumber);
    isNumber = isNumber && !(std::fabs(value) > static_cast<double>(std::numeric_limits<float>::max()));
    StoreOk(ok, isNumber);
    return isNumber ? static_cast<float>(value) : 0.0F;
}

} // namespace ZoVelkor::Qt3String
