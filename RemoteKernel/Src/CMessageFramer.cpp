#include "CMessageFramer.h"

#include "CharacterClasses.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <cstring>

namespace ZoVelkor::RemoteKernel
{

namespace
{
/// Stretch that is searched at a time: queued messages are not searched again and again for a far '#', nor a
/// block for a line feed before its own '#' is seen.
constexpr std::size_t kStretch = 256;

const char* FindByte(const char* begin, std::size_t length, char byte) noexcept
{
    return static_cast<const char*>(std::memchr(begin, byte, length));
}
} // namespace

tagFrame CMessageFramer::Scan(std::span<const char> buffer) noexcept
{
    tagFrame frame;
    tagStep step = tagStep::Continue;
    while (step == tagStep::Continue)
    {
        switch (m_state)
        {
        case tagState::Text:
            step = ScanText(buffer, frame);
            break;
        case tagState::IndefiniteBlock:
            step = ScanIndefinite(buffer, frame);
            break;
        case tagState::DropBlock:
        case tagState::DropLine:
            Drop(buffer, frame);
            step = tagStep::Done;
            break;
        }
    }
    return frame;
}

void CMessageFramer::Reset() noexcept
{
    *this = CMessageFramer(m_limits);
}

CMessageFramer::tagStep CMessageFramer::ScanText(std::span<const char> buffer, tagFrame& frame) noexcept
{
    if (m_scanned >= buffer.size())
    {
        frame.iBytesNeeded = m_scanned - buffer.size() + 1;
        return tagStep::Done;
    }
    const char* const begin = buffer.data() + m_scanned;
    const std::size_t stretch = std::min(kStretch, buffer.size() - m_scanned);
    const char* const lineFeed = FindByte(begin, stretch, '\n');
    const std::size_t textLength = lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - begin) : stretch;
    const char* const hash = FindByte(begin, textLength, '#');
    m_scanned += hash != nullptr ? static_cast<std::size_t>(hash - begin) : textLength;
    if (m_scanned - m_blockBytes > m_limits.iMaxText)
    {
        const bool isComplete = lineFeed != nullptr && hash == nullptr;
        Fail(kScpiInputBufferOverrun,
             isComplete ? tagState::Text : tagState::DropLine,
             m_scanned + (isComplete ? 1 : 0),
             frame);
        return tagStep::Done;
    }
    if (hash != nullptr)
    {
        return ScanHash(buffer, frame);
    }
    if (lineFeed != nullptr)
    {
        FinishMessage(m_scanned, frame);
        return tagStep::Done;
    }
    return tagStep::Continue;
}

CMessageFramer::tagStep CMessageFramer::ScanHash(std::span<const char> buffer, tagFrame& frame) noexcept
{
    const std::size_t hash = m_scanned;
    if (!IsElementStart(buffer, hash))
    {
        m_scanned = hash + 1;
        return tagStep::Continue;
    }
    if (hash + 1 == buffer.size())
    {
        return tagStep::Done;
    }
    if (!IsDigit(buffer[hash + 1]))
    {
        m_scanned = hash + 1;
        return tagStep::Continue;
    }
    const auto digits = static_cast<std::size_t>(buffer[hash + 1] - '0');
    const std::size_t dataBegin = hash + 2 + digits;
    if (digits == 0)
    {
        m_state = tagState::IndefiniteBlock;
        m_scanned = dataBegin;
        return tagStep::Continue;
    }
    std::size_t length = 0;
    for (std::size_t place = hash + 2; place < dataBegin; ++place)
    {
        if (place == buffer.size())
        {
            return tagStep::Done;
        }
        if (!IsDigit(buffer[place]))
        {
            m_scanned = hash + 1;
            return tagStep::Continue;
        }
        length = length * 10 + static_cast<std::size_t>(buffer[place] - '0');
    }
    return EnterBlock(dataBegin, length, buffer.size(), frame);
}

CMessageFramer::tagStep CMessageFramer::EnterBlock(std::size_t dataBegin,
                                                   std::size_t length,
                                                   std::size_t size,
                                                   tagFrame& frame) noexcept
{
    const std::size_t end = dataBegin + length;
    if (length > m_limits.iMaxBlock - std::min(m_limits.iMaxBlock, m_blockBytes))
    {
        m_toDrop = end - std::min(end, size);
        Fail(kScpiTooMuchData, tagState::DropBlock, std::min(end, size), frame);
        return tagStep::Done;
    }
    m_blockBytes += length;
    m_scanned = end;
    m_lexed = end;
    return tagStep::Continue;
}

CMessageFramer::tagStep CMessageFramer::ScanIndefinite(std::span<const char> buffer, tagFrame& frame) noexcept
{
    const char* const begin = buffer.data() + m_scanned;
    const std::size_t available = buffer.size() - m_scanned;
    const char* const lineFeed = FindByte(begin, available, '\n');
    const std::size_t length = lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - begin) : available;
    m_blockBytes += length;
    m_scanned += length;
    if (m_blockBytes > m_limits.iMaxBlock)
    {
        Fail(kScpiTooMuchData,
             lineFeed != nullptr ? tagState::Text : tagState::DropLine,
             m_scanned + (lineFeed != nullptr ? 1 : 0),
             frame);
    }
    else if (lineFeed != nullptr)
    {
        FinishMessage(m_scanned, frame);
    }
    return tagStep::Done;
}

void CMessageFramer::Drop(std::span<const char> buffer, tagFrame& frame) noexcept
{
    frame.iConsumed = std::min(m_toDrop, buffer.size());
    m_toDrop -= frame.iConsumed;
    frame.iBytesNeeded = m_toDrop;
    if (m_toDrop != 0)
    {
        return;
    }
    m_state = tagState::DropLine;
    const std::span<const char> rest = buffer.subspan(frame.iConsumed);
    const char* const lineFeed = rest.empty() ? nullptr : FindByte(rest.data(), rest.size(), '\n');
    if (lineFeed == nullptr)
    {
        frame.iConsumed = buffer.size();
        return;
    }
    frame.iConsumed += static_cast<std::size_t>(lineFeed - rest.data()) + 1;
    frame.eStatus = tagFrameStatus::Dropped;
    Reset();
}

bool CMessageFramer::IsElementStart(std::span<const char> buffer, std::size_t hash) noexcept
{
    FollowQuotes(buffer, hash);
    return m_quote == 0 && hash > 0 && (buffer[hash - 1] == ',' || IsWhiteSpace(buffer[hash - 1]));
}

void CMessageFramer::FollowQuotes(std::span<const char> buffer, std::size_t end) noexcept
{
    for (; m_lexed < end; ++m_lexed)
    {
        const char c = buffer[m_lexed];
        if (c == m_quote)
        {
            m_quote = 0;
        }
        else if (m_quote == 0 && (c == '"' || c == '\''))
        {
            m_quote = c;
        }
    }
}

void CMessageFramer::FinishMessage(std::size_t lineFeed, tagFrame& frame) noexcept
{
    Reset();
    frame.eStatus = tagFrameStatus::Message;
    frame.iLength = lineFeed;
    frame.iConsumed = lineFeed + 1;
}

void CMessageFramer::Fail(short error, tagState next, std::size_t consumed, tagFrame& frame) noexcept
{
    const std::size_t toDrop = m_toDrop;
    Reset();
    m_state = next;
    m_toDrop = toDrop;
    frame.eStatus = tagFrameStatus::Error;
    frame.iError = error;
    frame.iConsumed = consumed;
}

} // namespace ZoVelkor::RemoteKernel
