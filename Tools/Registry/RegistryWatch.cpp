#include "RegistryWatch.h"

#include "RegistryJson.h"

#include <fmt/format.h>

#include <map>

namespace ZoVelkor::Tools
{

namespace
{

struct EventText
{
    const char* word;
    const char* jsonWord;
    bool isOfValue;
    bool hasData;
};

/// In the order of RegistryEvent.
constexpr EventText kEvents[] = {
    {"made", "keyMade", false, false},
    {"deleted", "keyDeleted", false, false},
    {"set", "valueSet", true, true},
    {"deleted", "valueDeleted", true, false},
};

const EventText& TextOf(RegistryEvent event) noexcept
{
    return kEvents[static_cast<std::size_t>(event)];
}

template <class TItem>
std::map<std::wstring_view, const TItem*> ByName(const std::vector<TItem>& items)
{
    std::map<std::wstring_view, const TItem*> found;
    for (const TItem& item : items)
    {
        found.emplace(item.name, &item);
    }
    return found;
}

class CDifferenceFinder
{
public:
    void Compare(const RegistryPath& path, const RegistryKey& former, const RegistryKey& now)
    {
        CompareValues(path, former, now);
        const auto formerKeys = ByName(former.keys);
        const auto keys = ByName(now.keys);
        for (const RegistryKey& key : former.keys)
        {
            if (!keys.contains(key.name))
            {
                Add(RegistryEvent::KeyDeleted, path.Below(key.name));
            }
        }
        for (const RegistryKey& key : now.keys)
        {
            static const RegistryKey kNothing;
            const auto known = formerKeys.find(key.name);
            const bool isNew = known == formerKeys.end();
            const RegistryPath place = path.Below(key.name);
            if (isNew)
            {
                Add(RegistryEvent::KeyMade, place);
            }
            Compare(place, isNew ? kNothing : *known->second, key);
        }
    }

    std::vector<RegistryDifference> Take() noexcept { return std::move(m_found); }

private:
    void CompareValues(const RegistryPath& path, const RegistryKey& former, const RegistryKey& now)
    {
        const auto formerValues = ByName(former.values);
        const auto values = ByName(now.values);
        for (const RegistryValue& value : former.values)
        {
            if (!values.contains(value.name))
            {
                Add(RegistryEvent::ValueDeleted, path, value);
            }
        }
        for (const RegistryValue& value : now.values)
        {
            const auto known = formerValues.find(value.name);
            if (known == formerValues.end() || !(*known->second == value))
            {
                Add(RegistryEvent::ValueSet, path, value);
            }
        }
    }

    void Add(RegistryEvent event, const RegistryPath& path, const RegistryValue& value = {})
    {
        m_found.push_back({event, path, value});
    }

    std::vector<RegistryDifference> m_found;
};

} // namespace

std::vector<RegistryDifference> FindDifferences(std::span<const RegistryTree> former,
                                                std::span<const RegistryTree> now)
{
    CDifferenceFinder finder;
    for (std::size_t i = 0; i < now.size(); ++i)
    {
        finder.Compare(now[i].path, former[i].top, now[i].top);
    }
    return finder.Take();
}

std::string DifferenceText(const RegistryDifference& difference)
{
    const EventText& text = TextOf(difference.event);
    std::string line = fmt::format("{} {}", text.word, PathText(difference.path));
    if (text.isOfValue)
    {
        line += ' ' + (text.hasData ? SummarizeValue(difference.value) : QuotedText(difference.value.name));
    }
    return line;
}

std::string JsonDifference(const RegistryDifference& difference)
{
    const EventText& text = TextOf(difference.event);
    std::string json = fmt::format(
        R"({{"event":"{}","key":{})", text.jsonWord, JsonText(WideText(PathText(difference.path))));
    if (text.isOfValue)
    {
        json += R"(,"name":)" + JsonText(difference.value.name);
    }
    return json + (text.hasData ? ',' + JsonMembers(difference.value) : "") + '}';
}

} // namespace ZoVelkor::Tools
