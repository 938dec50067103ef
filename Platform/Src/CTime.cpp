#include "CTime.h"

#include <locale.h>
#include <time.h>

namespace
{
/// What GetYear and GetMonth turn into 0.
constexpr int kNoYear = -1900;
constexpr int kNoMonth = -1;
/// Longest text of one conversion; a time zone has the longest name.
constexpr std::size_t kLongestField = 64;

std::tm LocalFields(std::time_t seconds) noexcept
{
    std::tm fields{};
    if (::localtime_r(&seconds, &fields) == nullptr)
    {
        fields = {};
        fields.tm_year = kNoYear;
        fields.tm_mon = kNoMonth;
    }
    return fields;
}

/// Lives as long as the process, so that texts can be made until its very end.
locale_t PlainLocale() noexcept
{
    static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}
} // namespace

CTime::CTime(std::time_t seconds) noexcept : m_seconds(seconds), m_fields(LocalFields(seconds))
{}

CAtlStringA CTime::Format(const char* format) const
{
    if (format == nullptr || m_fields.tm_mon == kNoMonth)
    {
        return {};
    }
    const CAtlStringA pattern(format);
    // Room for the case that the pattern is nothing but conversions of two characters.
    CAtlStringA text((pattern.size() / 2 + 1) * kLongestField, '\0');
    text.resize(::strftime_l(text.data(), text.size(), pattern.c_str(), &m_fields, PlainLocale()));
    return text;
}
