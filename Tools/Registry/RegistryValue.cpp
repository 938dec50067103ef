#include "RegistryValue.h"

#include "RegistryText.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>

namespace ZoVelkor::Tools
{

namespace
{

constexpr ValueType kTypes[] = {
    {"string", REG_SZ, ValueForm::Text, 0},
    {"expand", REG_EXPAND_SZ, ValueForm::Text, 0},
    {"dword", REG_DWORD, ValueForm::Number, 4},
    {"qword", REG_QWORD, ValueForm::Number, 8},
    {"multi", REG_MULTI_SZ, ValueForm::List, 0},
    {"binary", REG_BINARY, ValueForm::Bytes, 0},
};

constexpr std::size_t kBytesOfLine = 32;

/// The characters in front of the last one, which must be a NUL.
std::optional<std::wstring> TerminatedText(std::span<const BYTE> data)
{
    if (data.empty() || data.size() % sizeof(wchar_t) != 0)
    {
        return std::nullopt;
    }
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data.data(), data.size());
    if (text.back() != L'\0')
    {
        return std::nullopt;
    }
    text.pop_back();
    return text;
}

/// The texts of a list, each with its terminator; none when the last terminator is missing.
std::optional<std::vector<std::wstring>> SplitList(std::wstring_view rest)
{
    std::vector<std::wstring> texts;
    while (!rest.empty())
    {
        const std::size_t length = rest.find(L'\0');
        if (length == std::wstring_view::npos)
        {
            return std::nullopt;
        }
        texts.emplace_back(rest.substr(0, length));
        rest.remove_prefix(length + 1);
    }
    return texts;
}

void AppendText(std::vector<BYTE>& data, std::wstring_view text)
{
    const std::size_t former = data.size();
    data.resize(former + text.size() * sizeof(wchar_t));
    if (!text.empty())
    {
        std::memcpy(data.data() + former, text.data(), text.size() * sizeof(wchar_t));
    }
}

/// A number of up to 64 bits; negative ones as their two's complement.
struct Number
{
    std::uint64_t bits;
    bool isNegative;
};

std::optional<Number> ParseNumber(std::wstring_view wide)
{
    const std::string text = Utf8Text(wide);
    const bool isNegative = text.starts_with('-');
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    const char* const begin = text.data() + (isHex ? 2 : isNegative ? 1 : 0);
    const char* const end = text.data() + text.size();
    std::uint64_t magnitude = 0;
    const auto [stop, error] = std::from_chars(begin, end, magnitude, isHex ? 16 : 10);
    constexpr std::uint64_t kLowest = std::uint64_t{1} << 63U;
    if (begin == end || stop != end || error != std::errc{} || (isNegative && magnitude > kLowest))
    {
        return std::nullopt;
    }
    return Number{isNegative ? ~magnitude + 1 : magnitude, isNegative && magnitude != 0};
}

bool FitsIntoDword(const Number& number) noexcept
{
    constexpr std::uint64_t kHighest = std::numeric_limits<std::uint32_t>::max();
    constexpr std::uint64_t kLowest = ~std::uint64_t{0x7FFFFFFF};
    return number.isNegative ? number.bits >= kLowest : number.bits <= kHighest;
}

/// Whether there is a %NAME% in a text; more than a word between percent signs is none.
bool NamesVariable(std::wstring_view text)
{
    constexpr std::wstring_view kLetters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    std::size_t begin = text.find(L'%');
    while (begin != std::wstring_view::npos)
    {
        const std::size_t end = text.find_first_not_of(kLetters, begin + 1);
        if (end != std::wstring_view::npos && end > begin + 1 && text[end] == L'%')
        {
            return true;
        }
        begin = text.find(L'%', begin + 1);
    }
    return false;
}

std::string NameOfType(DWORD type)
{
    const ValueType* const known = FindValueType(type);
    return known != nullptr && known->form == ValueForm::Bytes ? known->name : fmt::format("type {}", type);
}

unsigned DigitOf(wchar_t character)
{
    if (character >= L'0' && character <= L'9')
    {
        return static_cast<unsigned>(character - L'0');
    }
    constexpr wchar_t kCaseBit = 0x20;
    const wchar_t letter = character | kCaseBit;
    if (letter < L'a' || letter > L'f')
    {
        throw CTextFault(fmt::format("{} is no hexadecimal digit", QuotedText({&character, 1})));
    }
    return static_cast<unsigned>(letter - L'a') + 10;
}

/// Fills in what stands behind the name of a value.
struct Description
{
    const RegistryValue& value;
    ValueText& text;

    const char* Type() const { return FindValueType(value.type)->name; }

    void operator()(const std::wstring& content) const
    {
        text.head += fmt::format("{} {}", Type(), QuotedText(content));
    }
    void operator()(std::uint64_t content) const { text.head += fmt::format("{} {}", Type(), content); }
    void operator()(const std::vector<std::wstring>& content) const
    {
        text.head += Type();
        std::ranges::transform(content, std::back_inserter(text.items), QuotedText);
    }
    void operator()(std::span<const BYTE> content) const
    {
        text.head += NameOfType(value.type);
        for (; !content.empty(); content = content.subspan(std::min(kBytesOfLine, content.size())))
        {
            text.items.push_back(HexText(content.first(std::min(kBytesOfLine, content.size()))));
        }
    }
};

} // namespace

const ValueType* FindValueType(std::string_view name) noexcept
{
    const auto* row = std::ranges::find(kTypes, name, &ValueType::name);
    return row == std::end(kTypes) ? nullptr : row;
}

const ValueType* FindValueType(DWORD type) noexcept
{
    const auto* row = std::ranges::find(kTypes, type, &ValueType::type);
    return row == std::end(kTypes) ? nullptr : row;
}

std::string ValueTypeNames()
{
    std::string names;
    for (const ValueType& type : kTypes)
    {
        names += (names.empty() ? "" : "|") + std::string(type.name);
    }
    return names;
}

ValueContent ContentOf(const RegistryValue& value)
{
    const ValueType* const type = FindValueType(value.type);
    const std::span<const BYTE> bytes(value.data);
    if (type == nullptr || type->form == ValueForm::Bytes)
    {
        return bytes;
    }
    if (type->form == ValueForm::Number)
    {
        std::uint64_t number = 0;
        std::uint32_t half = 0;
        if (bytes.size() != type->size)
        {
            return bytes;
        }
        std::memcpy(
            type->size == sizeof half ? static_cast<void*>(&half) : &number, bytes.data(), type->size);
        return number + half;
    }
    const auto text = TerminatedText(bytes);
    if (!text)
    {
        return bytes;
    }
    if (type->form == ValueForm::Text)
    {
        return *text;
    }
    const auto texts = SplitList(*text);
    return texts ? ValueContent(*texts) : ValueContent(bytes);
}

std::vector<BYTE> TextData(std::wstring_view text)
{
    std::vector<BYTE> data;
    AppendText(data, text);
    data.resize(data.size() + sizeof(wchar_t));
    return data;
}

std::vector<BYTE> EmptyListData()
{
    return TextData({});
}

void AppendToList(std::vector<BYTE>& data, std::wstring_view text)
{
    if (text.find(L'\0') != std::wstring_view::npos)
    {
        throw CTextFault("a text of a list holds no NUL");
    }
    data.resize(data.size() - sizeof(wchar_t));
    AppendText(data, text);
    data.resize(data.size() + 2 * sizeof(wchar_t));
}

std::vector<BYTE> NumberData(std::wstring_view text, const ValueType& type)
{
    const auto number = ParseNumber(text);
    if (!number)
    {
        throw CTextFault(fmt::format("{} is no number of up to 64 bits", QuotedText(text)));
    }
    const auto half = static_cast<std::uint32_t>(number->bits);
    const bool isHalf = type.size == sizeof half;
    if (isHalf && !FitsIntoDword(*number))
    {
        throw CTextFault(fmt::format("{} does not fit into a {}", Utf8Text(text), type.name));
    }
    std::vector<BYTE> data(type.size);
    std::memcpy(data.data(), isHalf ? static_cast<const void*>(&half) : &number->bits, type.size);
    return data;
}

void AppendBytes(std::vector<BYTE>& data, std::wstring_view text)
{
    while (!text.empty())
    {
        if (text.front() == L' ')
        {
            text.remove_prefix(1);
            continue;
        }
        const unsigned high = DigitOf(text.front());
        if (text.size() < 2)
        {
            throw CTextFault("the last byte has one digit only");
        }
        data.push_back(static_cast<BYTE>(high * 16 + DigitOf(text[1])));
        text.remove_prefix(2);
    }
}

std::string HexText(std::span<const BYTE> bytes)
{
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(3 * bytes.size());
    for (const BYTE byte : bytes)
    {
        text += text.empty() ? "" : " ";
        text += {kDigits[byte / 16], kDigits[byte % 16]};
    }
    return text;
}

std::vector<BYTE> DataOf(std::wstring_view text, const ValueType& type)
{
    std::vector<BYTE> data;
    switch (type.form)
    {
    case ValueForm::Text:
        return TextData(text);
    case ValueForm::Number:
        return NumberData(text, type);
    case ValueForm::Bytes:
        AppendBytes(data, text);
        break;
    case ValueForm::List:
        data = EmptyListData();
        while (!text.empty())
        {
            const std::size_t length = std::min(text.find(L'\n'), text.size());
            AppendToList(data, text.substr(0, length));
            text.remove_prefix(std::min(length + 1, text.size()));
        }
        break;
    }
    return data;
}

const ValueType& GuessType(std::wstring_view text)
{
    // Serial numbers and the like begin with zeros that a number would lose.
    const std::wstring_view digits = text.substr(text.starts_with(L'-') ? 1 : 0);
    const bool hasZeros = digits.size() > 1 && digits[0] == L'0' && (digits[1] != L'x' && digits[1] != L'X');
    const auto number = hasZeros ? std::nullopt : ParseNumber(text);
    if (number)
    {
        return *FindValueType(FitsIntoDword(*number) ? REG_DWORD : REG_QWORD);
    }
    return *FindValueType(NamesVariable(text) ? REG_EXPAND_SZ : REG_SZ);
}

ValueText DescribeValue(const RegistryValue& value)
{
    ValueText text{QuotedText(value.name) + " = ", {}};
    std::visit(Description{value, text}, ContentOf(value));
    return text;
}

std::string SummarizeValue(const RegistryValue& value)
{
    const bool areBytes = std::holds_alternative<std::span<const BYTE>>(ContentOf(value));
    const ValueText text = DescribeValue(value);
    std::string line = text.head;
    for (const std::string& item : text.items)
    {
        line += ' ' + item;
        if (areBytes && text.items.size() > 1)
        {
            return fmt::format("{} ... ({} bytes)", line, value.data.size());
        }
    }
    return line;
}

} // namespace ZoVelkor::Tools
