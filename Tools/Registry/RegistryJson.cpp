#include "RegistryJson.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>

namespace ZoVelkor::Tools
{

namespace
{

/// Strings with commas in between.
std::string Joined(const std::vector<std::string>& parts)
{
    return fmt::format("{}", fmt::join(parts, ","));
}

struct JsonData
{
    const RegistryValue& value;

    std::string operator()(const std::wstring& content) const
    {
        return IsText(content) ? R"("data":)" + JsonText(content) : (*this)(std::span(value.data));
    }
    std::string operator()(const std::vector<std::wstring>& content) const
    {
        if (!std::ranges::all_of(content, IsText))
        {
            return (*this)(std::span(value.data));
        }
        std::vector<std::string> texts;
        std::ranges::transform(content, std::back_inserter(texts), JsonText);
        return fmt::format(R"("data":[{}])", Joined(texts));
    }
    std::string operator()(std::uint64_t content) const { return fmt::format(R"("data":{})", content); }
    std::string operator()(std::span<const BYTE> content) const
    {
        return fmt::format(R"("hex":"{}")", HexText(content));
    }
};

} // namespace

std::string JsonText(std::wstring_view text)
{
    constexpr std::uint32_t kLastOfFourDigits = 0xFFFF;
    std::wstring json(1, L'"');
    for (const wchar_t character : text)
    {
        const std::uint32_t code = static_cast<char32_t>(character);
        if (character == L'"' || character == L'\\')
        {
            json += {L'\\', character};
        }
        else if (IsHidden(character) && code <= kLastOfFourDigits)
        {
            json += fmt::format(L"\\u{:04x}", code);
        }
        else
        {
            json += character;
        }
    }
    return Utf8Text(json + L'"');
}

std::string JsonMembers(const RegistryValue& value)
{
    const ValueType* const type = FindValueType(value.type);
    const std::string typeText =
        type == nullptr ? std::to_string(value.type) : fmt::format("\"{}\"", type->name);
    return fmt::format(R"("type":{},{})", typeText, std::visit(JsonData{value}, ContentOf(value)));
}

std::string JsonValue(const RegistryValue& value)
{
    return fmt::format(R"({{"name":{},{}}})", JsonText(value.name), JsonMembers(value));
}

std::string JsonTree(const RegistryPath& path, const RegistryKey& key)
{
    std::vector<std::string> values;
    std::ranges::transform(key.values, std::back_inserter(values), JsonValue);
    std::vector<std::string> keys;
    for (const RegistryKey& below : key.keys)
    {
        keys.push_back(JsonTree(path.Below(below.name), below));
    }
    return fmt::format(R"({{"key":{},"values":[{}],"keys":[{}]{}}})",
                       JsonText(WideText(PathText(path))),
                       Joined(values),
                       Joined(keys),
                       key.unreadKeys == 0 ? "" : fmt::format(R"(,"unread":{})", key.unreadKeys));
}

} // namespace ZoVelkor::Tools
