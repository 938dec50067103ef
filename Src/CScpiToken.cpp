#include "CScpiToken.h"

#include "CharacterClasses.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>

namespace ZoVelkor
{

namespace
{

constexpr std::size_t kLongestShortForm = 4;
constexpr std::size_t kLongestKeyword = 12;

char ToUpperByte(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

char ToLowerByte(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool IsVowel(char c)
{
    return std::string_view("AEIOUaeiou").find(c) != std::string_view::npos;
}

std::size_t ShortLength(std::string_view keyword)
{
    if (keyword.size() <= kLongestShortForm)
    {
        return keyword.size();
    }
    // Deliberate: a digit behind the fourth letter keeps that letter, so that numbered keywords stay
    // distinct.
    return IsVowel(keyword[3]) && !IsDigit(keyword[4]) ? 3 : kLongestShortForm;
}

std::string InCapitals(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), ToUpperByte);
    return text;
}

} // namespace

CScpiToken::CScpiToken(const std::string& keyword) : m_keyword(keyword)
{}

std::string CScpiToken::ScpiToken2LongForm(const std::string& keyword)
{
    return InCapitals(keyword);
}

std::string CScpiToken::ScpiToken2ShortForm(const std::string& keyword)
{
    return InCapitals(keyword.substr(0, ShortLength(keyword)));
}

std::string CScpiToken::ScpiToken2SyntaxForm(const std::string& keyword)
{
    std::string form = ScpiToken2ShortForm(keyword);
    std::transform(keyword.begin() + static_cast<std::ptrdiff_t>(form.size()),
                   keyword.end(),
                   std::back_inserter(form),
                   ToLowerByte);
    return form;
}

std::string CScpiToken::ScpiToken2NumericShortForm(const std::string& keyword)
{
    if (keyword.size() <= kLongestShortForm || !IsDigit(keyword[kLongestShortForm]))
    {
        return ScpiToken2ShortForm(keyword);
    }
    const auto end = std::find_if_not(keyword.begin() + kLongestShortForm, keyword.end(), IsDigit);
    return InCapitals(std::string(keyword.begin(), end));
}

std::string CScpiToken::Check() const
{
    if (m_keyword.empty())
    {
        return "Empty scpi token";
    }
    if (m_keyword.size() > kLongestKeyword)
    {
        // Deliberate: says digits for characters; scripts that build tables look for this text.
        return "The token '" + m_keyword + "' has too many digits (12 are o.k.).";
    }
    if (!IsLetter(m_keyword.front()))
    {
        return "The first character is invalid in the scpi token " + m_keyword;
    }
    return {};
}

} // namespace ZoVelkor
