#include "CStateText.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

void AppendNumber(std::string& text, double value)
{
    char digits[32];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
}

/// Takes a number from the beginning of a text; false when there is none within the limits.
bool TakeNumber(std::string_view& text, double minimum, double maximum, double& value)
{
    double number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (fault != std::errc() || !(number >= minimum && number <= maximum))
    {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    value = number;
    return true;
}

/// Takes what follows the name of a line.
std::string_view TakeLine(std::string_view& text)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line;
}

} // namespace

CStateText::CStateText(std::string_view text) : m_givesBack(true)
{
    while (!text.empty())
    {
        const std::string_view line = TakeLine(text);
        const std::size_t nameEnd = std::min(line.find(' '), line.size());
        m_values.emplace(line.substr(0, nameEnd), line.substr(std::min(nameEnd + 1, line.size())));
    }
}

void CStateText::Collect(const std::string& name, std::string_view value)
{
    m_collected.append(name).append(1, ' ').append(value).append(1, '\n');
}

const std::string* CStateText::Find(const std::string& name)
{
    const auto found = m_values.find(name);
    return found == m_values.end() ? nullptr : &found->second;
}

void CStateText::SetFault(const std::string& name)
{
    m_fault = m_fault.empty() ? name : m_fault;
}

void CStateText::Number(const std::string& name, double& value, double minimum, double maximum)
{
    std::vector<double> numbers{value};
    Numbers(name, numbers, minimum, maximum, 1);
    value = numbers.front();
}

void CStateText::Numbers(const std::string& name,
                         std::vector<double>& values,
                         double minimum,
                         double maximum,
                         std::size_t maxCount)
{
    if (!m_givesBack)
    {
        std::string text;
        for (const double value : values)
        {
            text.append(text.empty() ? "" : " ");
            AppendNumber(text, value);
        }
        return Collect(name, text);
    }
    const std::string* const found = Find(name);
    std::string_view text = found == nullptr ? std::string_view() : *found;
    std::vector<double> numbers;
    double number = 0;
    while (numbers.size() < maxCount && TakeNumber(text, minimum, maximum, number))
    {
        numbers.push_back(number);
        text.remove_prefix(text.starts_with(' ') && text.size() > 1 ? 1 : 0);
    }
    if (numbers.empty() || !text.empty())
    {
        return SetFault(name);
    }
    values = std::move(numbers);
}

void CStateText::Text(const std::string& name, std::string& text, std::size_t maxLength)
{
    if (!m_givesBack)
    {
        std::string digits;
        for (const char c : text)
        {
            const auto byte = static_cast<unsigned char>(c);
            digits.append({kHexDigits[byte >> 4], kHexDigits[byte & 15]});
        }
        return Collect(name, digits);
    }
    const std::string* const digits = Find(name);
    if (digits == nullptr || digits->size() % 2 != 0 || digits->size() > 2 * maxLength ||
        digits->find_first_not_of(kHexDigits) != std::string::npos)
    {
        return SetFault(name);
    }
    text.clear();
    for (std::size_t i = 0; i < digits->size(); i += 2)
    {
        const std::size_t byte = kHexDigits.find((*digits)[i]) * 16 + kHexDigits.find((*digits)[i + 1]);
        text.push_back(static_cast<char>(byte));
    }
}

} // namespace ZoVelkor::Demo
