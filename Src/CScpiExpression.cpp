#include "CScpiExpression.h"

#include "CharacterClasses.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>

namespace ZoVelkor
{
namespace
{

constexpr std::size_t kRegisterBits = 32;

/// The text without the given characters at both ends.
std::string_view Trim(std::string_view text, std::string_view characters)
{
    const std::size_t begin = text.find_first_not_of(characters);
    return begin == std::string_view::npos
               ? std::string_view()
               : text.substr(begin, text.find_last_not_of(characters) - begin + 1);
}

/// Takes the next element off a list.
///
/// @return nothing behind the last element
std::optional<std::string_view> TakeElement(std::optional<std::string_view>& list)
{
    if (!list)
    {
        return std::nullopt;
    }
    const std::size_t comma = list->find(',');
    const std::string_view element = list->substr(0, comma);
    list = comma == std::string_view::npos ? std::nullopt : std::optional(list->substr(comma + 1));
    return element;
}

std::optional<std::string_view> ListOf(std::string_view text)
{
    return text.empty() ? std::nullopt : std::optional(text);
}

/// @param element  ends before a comma or the terminating zero
std::optional<std::uint32_t> ReadNumber(std::string_view element)
{
    if (element.empty() || !IsDigit(element.front()))
    {
        return std::nullopt;
    }
    char* end = nullptr;
    errno = 0;
    // strtol reads on to the comma or the end, whatever the view says; what stops it earlier is a fault.
    const long number = std::strtol(element.data(), &end, 10);
    const bool isWhole = end == element.data() + element.size();
    if (!isWhole || errno != 0 || number > long{std::numeric_limits<std::uint32_t>::max()})
    {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(number);
}

std::optional<std::uint32_t> ReadElement(std::string_view element, const CScpiExpression::Trafo& trafo)
{
    const auto row =
        std::ranges::find_if(trafo, [element](const auto& entry) { return entry.first == element; });
    return row == trafo.end() ? ReadNumber(element) : std::optional(static_cast<std::uint32_t>(row->second));
}

void AppendElement(std::string& list, std::string_view element)
{
    if (!list.empty())
    {
        list += ',';
    }
    list += element;
}

} // namespace

const CScpiExpression::Trafo CScpiExpression::s_StatusByteTrafo =
    GetRegisterValueTrafo("(OPER,RQS,ESB,MAV,QUES,ERR,DD2,DD1)");
const CScpiExpression::Trafo CScpiExpression::s_StandardEventTrafo =
    GetRegisterValueTrafo("(PON,URQ,CME,EXE,DDE,QYE,RQC,OPC)");
// Deliberate: bit 5 is called ESBit here and ESB in the status byte. Expressions are read in capitals, so
// this name is written but never read.
const CScpiExpression::Trafo CScpiExpression::s_ParallelPollTrafo =
    GetRegisterValueTrafo("(PP7,PP6,PP5,PP4,PP3,PP2,PP1,PP0,OPER,RQS,ESBit,MAV,QUES,ERR,DD2,DD1)");

CScpiExpression::Trafo CScpiExpression::GetRegisterValueTrafo(std::string list)
{
    Trafo trafo;
    auto rest = ListOf(Trim(list, "()"));
    while (const auto name = TakeElement(rest))
    {
        trafo.emplace_back(*name, 0);
    }
    const std::size_t count = std::min(trafo.size(), kRegisterBits);
    for (std::size_t bit = 0; bit < count; ++bit)
    {
        trafo[trafo.size() - 1 - bit].second = static_cast<std::int32_t>(std::uint32_t{1} << bit);
    }
    return trafo;
}

bool CScpiExpression::GetRegisterValueFromExpression(std::string expression,
                                                     long& value,
                                                     std::string& error,
                                                     const Trafo& trafo)
{
    constexpr std::string_view kBlanks = " \t";
    value = 0;
    error.clear();
    std::ranges::transform(
        expression, expression.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    auto rest = ListOf(Trim(expression, kBlanks));
    while (const auto element = TakeElement(rest))
    {
        const std::string_view trimmed = Trim(*element, kBlanks);
        const auto bits = ReadElement(trimmed, trafo);
        if (!bits)
        {
            error = trimmed;
            return false;
        }
        value |= long{*bits};
    }
    return true;
}

bool CScpiExpression::GetRegisterValueAsExpression(long value, std::string& expression, const Trafo& trafo)
{
    expression.clear();
    auto rest = static_cast<std::uint32_t>(value);
    for (const auto& [name, bit] : trafo)
    {
        const auto mask = static_cast<std::uint32_t>(bit);
        if ((rest & mask) != 0)
        {
            AppendElement(expression, name);
            rest &= ~mask;
        }
    }
    if (rest != 0)
    {
        AppendElement(expression, std::to_string(rest));
    }
    return true;
}

} // namespace ZoVelkor
