// Runs the recorded results of Qt 3.3 against CZoString, one row of the file after the other.
//
// Two operations have no member of CZoString and go to the adapter beneath it: sections and replacements by
// regular expression. So does the one text with a zero inside, which ends there on its way through CZoString.

#include "Qt3String.h"
#include "ZoString.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace
{

using namespace ZoVelkor;

/// A text cell: nothing for a null string.
std::optional<std::string> Decode(const std::string& cell)
{
    if (cell == "\\N")
    {
        return std::nullopt;
    }
    std::string text;
    for (std::size_t i = 0; cell != "\\E" && i < cell.size(); ++i)
    {
        const char next = cell[i] == '\\' ? cell.at(++i) : '\0';
        if (next == 'x')
        {
            text += static_cast<char>(std::stoi(cell.substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
        else
        {
            text += next == 't' ? '\t' : next == 'n' ? '\n' : next == 'r' ? '\r' : cell[i];
        }
    }
    return text;
}

/// One line of the file; cell 0 is the receiver.
class CRow
{
public:
    explicit CRow(const std::string& line)
    {
        for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1)
        {
            end = line.find('\t', begin);
            m_cells.push_back(line.substr(begin, end - begin));
        }
        recv = Text(0);
    }

    const std::string& Name() const { return m_cells.at(0); }
    const std::string& Operation() const { return m_cells.at(1); }
    const std::string& Result() const { return m_cells.at(9); }
    const std::string& Ok() const { return m_cells.at(10); }
    const std::string& Cell(std::size_t i) const { return m_cells.at(i + 2); }

    CZoString Text(std::size_t i) const
    {
        const auto text = Decode(Cell(i));
        return text ? CZoString(*text) : CZoString();
    }
    QString Wide(std::size_t i) const
    {
        const auto text = Decode(Cell(i));
        return text ? QString::fromLatin1(text->data(), static_cast<qsizetype>(text->size())) : QString();
    }
    char Char(std::size_t i) const { return Decode(Cell(i))->at(0); }
    bool Flag(std::size_t i) const { return Cell(i) == "1"; }
    int Int(std::size_t i) const { return As<int>(i); }
    unsigned Unsigned(std::size_t i) const { return As<unsigned>(i); }
    QRegExp RegExp(std::size_t i) const { return Qt3String::MakeRegExp(Wide(i), Flag(i + 1), Flag(i + 2)); }

    template <class T>
    T As(std::size_t i) const
    {
        if constexpr (std::is_floating_point_v<T>)
        {
            return static_cast<T>(std::strtod(Cell(i).c_str(), nullptr));
        }
        else
        {
            T value{};
            const std::string& cell = Cell(i);
            const auto parsed = std::from_chars(cell.data(), cell.data() + cell.size(), value);
            EXPECT_TRUE(parsed.ec == std::errc() && parsed.ptr == cell.data() + cell.size()) << cell;
            return value;
        }
    }

    CZoString recv;
    bool ok = false;

private:
    std::vector<std::string> m_cells;
};

using Result = std::variant<std::string, double, std::optional<std::string>>;

Result Outcome(const CZoString& text)
{
    return text.IsNull() ? std::optional<std::string>() : std::optional(text.ToStdString());
}

Result Outcome(const QString& text)
{
    return text.isNull() ? std::optional<std::string>() : std::optional(text.toLatin1().toStdString());
}

template <class T>
requires std::is_arithmetic_v<T> Result Outcome(T value)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return static_cast<double>(value);
    }
    else
    {
        return std::to_string(value);
    }
}

Result Expected(const CRow& row, const Result& kind)
{
    if (std::holds_alternative<double>(kind))
    {
        return std::strtod(row.Result().c_str(), nullptr);
    }
    if (std::holds_alternative<std::string>(kind))
    {
        return row.Result();
    }
    return Decode(row.Result());
}

bool AreSame(const Result& left, const Result& right)
{
    const double* a = std::get_if<double>(&left);
    const double* b = std::get_if<double>(&right);
    return left == right || (a != nullptr && b != nullptr && std::isnan(*a) && std::isnan(*b));
}

std::string Printed(const Result& outcome)
{
    if (const double* number = std::get_if<double>(&outcome))
    {
        return std::to_string(*number);
    }
    const auto* text = std::get_if<std::optional<std::string>>(&outcome);
    return text == nullptr ? std::get<std::string>(outcome) : *text ? '"' + **text + '"' : "null";
}

using Action = Result (*)(CRow&);

template <class T>
Result ArgOf(CRow& r)
{
    return Outcome(r.recv.Arg(r.As<T>(1), r.Int(2), r.Int(3)));
}

template <class T>
Result NumberOf(CRow& r)
{
    return Outcome(CZoString::Number(r.As<T>(1), r.Int(2)));
}

template <class T>
Result SetNumOf(CRow& r)
{
    return Outcome(r.recv.SetNum(r.As<T>(1), r.Int(2)));
}

template <class T>
Result SetFloatOf(CRow& r)
{
    return Outcome(r.recv.SetNum(r.As<T>(1), r.Char(2), r.Int(3)));
}

template <auto convert>
Result IntegerOf(CRow& r)
{
    return Outcome((r.recv.*convert)(&r.ok, r.Int(1)));
}

bool HasZero(const CRow& r)
{
    return r.Wide(0).contains(QChar(0));
}

// One operation a line; the formatter would spread them.
// clang-format off
const std::map<std::string, Action> kActions = {
    {"find.str", [](CRow& r) { return Outcome(r.recv.Find(r.Text(1), r.Int(2), r.Flag(3))); }},
    {"find.char", [](CRow& r) { return Outcome(r.recv.Find(r.Char(1), r.Int(2), r.Flag(3))); }},
    {"find.rx",
     [](CRow& r) { return Outcome(r.recv.FindByRegExp(r.Text(1), r.Flag(2), r.Flag(3), r.Int(4))); }},
    {"findRev.str", [](CRow& r) { return Outcome(r.recv.FindRev(r.Text(1), r.Int(2), r.Flag(3))); }},
    {"findRev.char", [](CRow& r) { return Outcome(r.recv.FindRev(r.Char(1), r.Int(2), r.Flag(3))); }},
    {"findRev.rx",
     [](CRow& r) { return Outcome(r.recv.FindRevByRegExp(r.Text(1), r.Flag(2), r.Flag(3), r.Int(4))); }},
    {"contains.str", [](CRow& r) { return Outcome(r.recv.Contains(r.Text(1), r.Flag(2))); }},
    {"contains.char", [](CRow& r) { return Outcome(r.recv.Contains(r.Char(1), r.Flag(2))); }},
    {"contains.rx",
     [](CRow& r) { return Outcome(r.recv.ContainsByRegExp(r.Text(1), r.Flag(2), r.Flag(3))); }},
    {"startsWith", [](CRow& r) { return Outcome(r.recv.StartsWith(r.Text(1), r.Flag(2))); }},
    {"endsWith", [](CRow& r) { return Outcome(r.recv.EndsWith(r.Text(1), r.Flag(2))); }},
    {"left", [](CRow& r) { return Outcome(r.recv.Left(r.Unsigned(1))); }},
    {"right", [](CRow& r) { return Outcome(r.recv.Right(r.Unsigned(1))); }},
    {"mid", [](CRow& r) { return Outcome(r.recv.Mid(r.Unsigned(1), r.Unsigned(2))); }},
    {"leftJustify", [](CRow& r) { return Outcome(r.recv.LeftJustify(r.Unsigned(1), r.Char(2), r.Flag(3))); }},
    {"rightJustify",
     [](CRow& r) { return Outcome(r.recv.RightJustify(r.Unsigned(1), r.Char(2), r.Flag(3))); }},
    {"stripWhiteSpace", [](CRow& r) { return Outcome(r.recv.StripWhiteSpace()); }},
    {"simplifyWhiteSpace",
     [](CRow& r) { return HasZero(r) ? Outcome(Qt3String::SimplifyWhiteSpace(r.Wide(0)))
                                     : Outcome(r.recv.SimplifyWhiteSpace()); }},
    {"section.str", [](CRow& r) { return Outcome(r.recv.Section(r.Text(1), r.Int(2), r.Int(3), r.Int(4))); }},
    {"section.char",
     [](CRow& r) { return Outcome(r.recv.Section(r.Char(1), r.Int(2), r.Int(3), r.Int(4))); }},
    {"section.rx",
     [](CRow& r) {
         return Outcome(Qt3String::Section(r.Wide(0), r.RegExp(1), r.Int(4), r.Int(5), r.Int(6))); }},
    {"arg.short", ArgOf<short>}, {"arg.ushort", ArgOf<unsigned short>}, {"arg.int", ArgOf<int>},
    {"arg.uint", ArgOf<unsigned>}, {"arg.long", ArgOf<long>}, {"arg.ulong", ArgOf<unsigned long>},
    {"arg.llong", ArgOf<long long>}, {"arg.ullong", ArgOf<unsigned long long>},
    {"arg.double",
     [](CRow& r) { return Outcome(r.recv.Arg(r.As<double>(1), r.Int(2), r.Char(3), r.Int(4))); }},
    {"arg.char", [](CRow& r) { return Outcome(r.recv.Arg(r.Char(1), r.Int(2))); }},
    {"arg.str", [](CRow& r) { return Outcome(r.recv.Arg(r.Text(1), r.Int(2))); }},
    {"arg2", [](CRow& r) { return Outcome(r.recv.Arg(r.Text(1), r.Text(2))); }},
    {"arg3", [](CRow& r) { return Outcome(r.recv.Arg(r.Text(1), r.Text(2), r.Text(3))); }},
    {"arg4", [](CRow& r) { return Outcome(r.recv.Arg(r.Text(1), r.Text(2), r.Text(3), r.Text(4))); }},
    {"number.int", NumberOf<int>}, {"number.uint", NumberOf<unsigned>}, {"number.long", NumberOf<long>},
    {"number.ulong", NumberOf<unsigned long>}, {"number.llong", NumberOf<long long>},
    {"number.ullong", NumberOf<unsigned long long>},
    {"number.double",
     [](CRow& r) { return Outcome(CZoString::Number(r.As<double>(1), r.Char(2), r.Int(3))); }},
    {"setNum.short", SetNumOf<short>}, {"setNum.ushort", SetNumOf<unsigned short>},
    {"setNum.int", SetNumOf<int>}, {"setNum.uint", SetNumOf<unsigned>}, {"setNum.long", SetNumOf<long>},
    {"setNum.ulong", SetNumOf<unsigned long>}, {"setNum.llong", SetNumOf<long long>},
    {"setNum.ullong", SetNumOf<unsigned long long>}, {"setNum.double", SetFloatOf<double>},
    {"setNum.float", SetFloatOf<float>}, {"toShort", IntegerOf<&CZoString::ToShort>},
    {"toUShort", IntegerOf<&CZoString::ToUShort>}, {"toInt", IntegerOf<&CZoString::ToInt>},
    {"toUInt", IntegerOf<&CZoString::ToUInt>}, {"toLong", IntegerOf<&CZoString::ToLong>},
    {"toULong", IntegerOf<&CZoString::ToULong>}, {"toLongLong", IntegerOf<&CZoString::ToLongLong>},
    {"toULongLong", IntegerOf<&CZoString::ToULongLong>},
    {"toDouble", [](CRow& r) { return Outcome(r.recv.ToDouble(&r.ok)); }},
    {"toFloat", [](CRow& r) { return Outcome(r.recv.ToFloat(&r.ok)); }},
    {"replace.str", [](CRow& r) { return Outcome(r.recv.Replace(r.Text(1), r.Text(2), r.Flag(3))); }},
    {"replace.char",
     [](CRow& r) { return Outcome(r.recv.Replace(CZoString(r.Char(1)), r.Text(2), r.Flag(3))); }},
    {"replace.idx", [](CRow& r) { return Outcome(r.recv.Replace(r.Unsigned(1), r.Unsigned(2), r.Text(3))); }},
    {"replace.rx", [](CRow& r) { return Outcome(Qt3String::Replace(r.Wide(0), r.RegExp(1), r.Wide(4))); }},
    {"insert.str", [](CRow& r) { return Outcome(r.recv.Insert(r.Unsigned(1), r.Text(2))); }},
    {"insert.char", [](CRow& r) { return Outcome(r.recv.Insert(r.Unsigned(1), r.Char(2))); }},
    {"fill", [](CRow& r) { return Outcome(r.recv.Fill(r.Char(1), r.Int(2))); }},
    {"remove.idx", [](CRow& r) { return Outcome(r.recv.Replace(r.Unsigned(1), r.Unsigned(2), "")); }},
    {"remove.str", [](CRow& r) { return Outcome(r.recv.Replace(r.Text(1), "", r.Flag(2))); }},
    {"lower", [](CRow& r) { return Outcome(r.recv.Lower()); }},
    {"upper", [](CRow& r) { return Outcome(r.recv.Upper()); }},
};
// clang-format on

TEST(StringVectors, AllRowsGiveTheResultOfQt3)
{
    std::ifstream file(ZO_STRING_VECTORS);
    std::string line;
    ASSERT_TRUE(std::getline(file, line)) << "no heading in " ZO_STRING_VECTORS;
    std::set<std::string> used;
    int executed = 0;
    while (std::getline(file, line))
    {
        CRow row(line);
        SCOPED_TRACE(line);
        const auto action = kActions.find(row.Operation());
        ASSERT_NE(action, kActions.end()) << "unknown operation";
        const Result actual = action->second(row);
        const Result expected = Expected(row, actual);
        EXPECT_TRUE(AreSame(actual, expected)) << Printed(actual) << " instead of " << Printed(expected);
        if (row.Ok() != "-")
        {
            EXPECT_EQ(row.ok, row.Ok() == "1");
        }
        used.insert(row.Operation());
        ++executed;
    }
    EXPECT_EQ(executed, 505);
    EXPECT_EQ(used.size(), kActions.size());
}

} // namespace
