#include "CBScpiBlockData.h"

#include "CharacterClasses.h"

#include <algorithm>
#include <cstddef>

namespace ZoVelkor
{

namespace
{

constexpr std::int64_t kIndefinite = -1;

/// Recognises "( 123)" behind the number sign.
int ParseParenthesised(std::string_view text, std::int64_t& length) noexcept
{
    const std::size_t begin = text.find_first_not_of(' ', 1);
    if (begin == std::string_view::npos)
    {
        return CBScpiBlockData::HeaderIncomplete;
    }
    const auto* const end = std::find_if_not(text.begin() + begin, text.end(), &IsDigit);
    if (end == text.begin() + begin)
    {
        return CBScpiBlockData::HeaderInvalid;
    }
    if (end == text.end())
    {
        return CBScpiBlockData::HeaderIncomplete;
    }
    if (*end != ')')
    {
        return CBScpiBlockData::HeaderInvalid;
    }
    // Deliberate: the digits are not believed, such a block is read to its end.
    length = kIndefinite;
    return CBScpiBlockData::HeaderComplete;
}

/// Recognises "3123" behind the number sign.
int ParseDefinite(std::string_view text, std::int64_t& length) noexcept
{
    const auto digits = static_cast<std::size_t>(text[0] - '0');
    if (text.size() < 1 + digits)
    {
        return CBScpiBlockData::HeaderIncomplete;
    }
    const std::string_view number = text.substr(1, digits);
    if (!std::all_of(number.begin(), number.end(), &IsDigit))
    {
        return CBScpiBlockData::HeaderInvalid;
    }
    length = 0;
    for (const char c : number)
    {
        length = length * 10 + (c - '0');
    }
    return CBScpiBlockData::HeaderComplete;
}

} // namespace

int CBScpiBlockData::ParseBlockDataHeader(std::string_view text, std::int64_t& length) noexcept
{
    if (text.empty() || text == "#")
    {
        return HeaderIncomplete;
    }
    if (text[0] != '#')
    {
        return HeaderInvalid;
    }
    if (text[1] == '(')
    {
        return ParseParenthesised(text.substr(1), length);
    }
    if (text[1] == '0')
    {
        length = kIndefinite;
        return HeaderComplete;
    }
    return IsDigit(text[1]) ? ParseDefinite(text.substr(1), length) : int{HeaderInvalid};
}

HRESULT CBScpiBlockData::Read(unsigned long, unsigned char*, unsigned long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::Status(short*, long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::Discard()
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::GetStatusEx(short*, long*, unsigned long*, unsigned long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::ReadFromStream(IStream*, unsigned long, unsigned long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::ContinueRead(long)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::InitReaderFormat(tagEnumFormatDataType, long, tagEnumFormatByteOrder)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::GetNextElement(VARIANT*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::GetNextDouble(double*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::GetNextInteger(long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::GetNextArray(unsigned long, double*, unsigned long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::GetNextScatteredArrays(unsigned long, unsigned long, double* const*, unsigned long*)
{
    return E_NOTIMPL;
}

HRESULT CBScpiBlockData::Access(unsigned char**, unsigned long*)
{
    return E_NOTIMPL;
}

} // namespace ZoVelkor
