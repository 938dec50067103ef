#include "CChannelList.h"

#include <charconv>
#include <cstdlib>
#include <limits>
#include <utility>

namespace ZoVelkor::Commands
{
namespace
{

/// Takes the elements of a text from its front.
class CElementReader
{
public:
    explicit CElementReader(std::string_view text) : m_rest(text) {}

    bool TakeCharacter(char expected)
    {
        SkipWhiteSpace();
        if (m_rest.empty() || m_rest.front() != expected)
        {
            return false;
        }
        m_rest.remove_prefix(1);
        return true;
    }

    bool TakeChannel(long& channel)
    {
        SkipWhiteSpace();
        const char* const end = m_rest.data() + m_rest.size();
        const auto [next, fault] = std::from_chars(m_rest.data(), end, channel);
        if (fault == std::errc::invalid_argument || channel < 0 || *m_rest.data() == '-')
        {
            return false;
        }
        if (fault == std::errc::result_out_of_range)
        {
            channel = std::numeric_limits<long>::max(); // a channel that no instrument has
        }
        m_rest.remove_prefix(static_cast<std::size_t>(next - m_rest.data()));
        return true;
    }

    bool IsAtEnd()
    {
        SkipWhiteSpace();
        return m_rest.empty();
    }

private:
    void SkipWhiteSpace()
    {
        while (!m_rest.empty() && (m_rest.front() == ' ' || m_rest.front() == '\t'))
        {
            m_rest.remove_prefix(1);
        }
    }

    std::string_view m_rest;
};

void AppendRange(long first, long last, std::size_t maxCount, std::vector<long>& channels)
{
    const long steps = std::labs(last - first);
    for (long i = 0; i <= steps && channels.size() <= maxCount; ++i)
    {
        channels.push_back(first <= last ? first + i : first - i);
    }
}

bool TakeRange(CElementReader& reader, std::size_t maxCount, std::vector<long>& channels)
{
    long first = 0;
    if (!reader.TakeChannel(first))
    {
        return false;
    }
    long last = first;
    if (reader.TakeCharacter(':') && !reader.TakeChannel(last))
    {
        return false;
    }
    AppendRange(first, last, maxCount, channels);
    return true;
}

} // namespace

std::vector<long> CChannelList::Channels(std::size_t maxCount) const
{
    std::optional<std::vector<long>> channels = ParseChannelList(m_text, maxCount);
    if (!channels)
    {
        throw CCommandError(kScpiInvalidExpression);
    }
    if (channels->size() > maxCount)
    {
        throw CCommandError(kScpiTooMuchData);
    }
    return std::move(*channels);
}

std::optional<std::vector<long>> ParseChannelList(std::string_view text, std::size_t maxCount)
{
    CElementReader reader(text);
    if (!reader.TakeCharacter('(') || !reader.TakeCharacter('@'))
    {
        return std::nullopt;
    }
    std::vector<long> channels;
    if (!reader.TakeCharacter(')'))
    {
        do
        {
            if (!TakeRange(reader, maxCount, channels))
            {
                return std::nullopt;
            }
        } while (reader.TakeCharacter(','));
        if (!reader.TakeCharacter(')'))
        {
            return std::nullopt;
        }
    }
    return reader.IsAtEnd() ? std::optional(std::move(channels)) : std::nullopt;
}

} // namespace ZoVelkor::Commands
