#include "CMessageFramer.h"

#include "BlockHeader.h"
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
        step = m_bIndefinite ? ScanIndefinite(buffer, frame) : ScanText(buffer, frame);
    }
    if (m_bSkips)
    {
        DropScanned(buffer, frame);
    }
    return frame;
}

void CMessageFramer::Reset() noexcept
{
    *this = CMessageFramer(m_limits, m_bStreams);
}

void CMessageFramer::Hold() noexcept
{
    Reset();
    m_bHolds = true;
}

void CMessageFramer::Skip(std::int64_t blockRest) noexcept
{
    Reset();
    m_bSkips = true;
    m_bIndefinite = blockRest < 0;
    m_scanned = m_lexed = m_blockEnd = m_bIndefinite ? 0 : static_cast<std::size_t>(blockRest);
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
    if (!m_bSkips && m_scanned - m_blockBytes > m_limits.iMaxText)
    {
        Fail(kScpiInputBufferOverrun, frame);
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
    const tagBlockHeader header = ReadBlockHeader({buffer.data() + hash, buffer.size() - hash});
    switch (header.iResult)
    {
    case CBScpiBlockData::HeaderIncomplete:
        return tagStep::Done;
    case CBScpiBlockData::HeaderInvalid:
        m_scanned = hash + 1;
        return tagStep::Continue;
    default:
        break;
    }
    const std::size_t dataBegin = hash + header.iSize;
    if (header.iLength >= 0)
    {
        return EnterBlock(dataBegin, static_cast<std::size_t>(header.iLength), frame);
    }
    m_bIndefinite = true;
    m_scanned = m_blockBegin = dataBegin;
    return tagStep::Continue;
}

bool CMessageFramer::IsStreamed(std::size_t blockBytes) const noexcept
{
    return m_bStreams && !m_bHolds && !m_bSkips && blockBytes > m_limits.iMaxHeld;
}

CMessageFramer::tagStep
CMessageFramer::EnterBlock(std::size_t dataBegin, std::size_t length, tagFrame& frame) noexcept
{
    if (IsStreamed(m_blockBytes + length))
    {
        LeaveBlock(dataBegin, static_cast<std::int64_t>(length), frame);
        return tagStep::Done;
    }
    const bool bTooMuch = !m_bSkips && m_blockBytes + length > m_limits.iMaxBlock;
    m_blockBytes += length;
    m_scanned = dataBegin + length;
    m_lexed = m_blockEnd = m_scanned;
    if (bTooMuch)
    {
        Fail(kScpiTooMuchData, frame);
        return tagStep::Done;
    }
    return tagStep::Continue;
}

CMessageFramer::tagStep CMessageFramer::ScanIndefinite(std::span<const char> buffer, tagFrame& frame) noexcept
{
    const std::size_t available = buffer.size() - m_scanned;
    const char* const begin = buffer.data() + m_scanned;
    const char* const lineFeed = available == 0 ? nullptr : FindByte(begin, available, '\n');
    const std::size_t length = lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - begin) : available;
    m_blockBytes += length;
    m_scanned += length;
    if (IsStreamed(m_blockBytes))
    {
        LeaveBlock(m_blockBegin, -1, frame);
        return tagStep::Done;
    }
    if (!m_bSkips && m_blockBytes > m_limits.iMaxBlock)
    {
        Fail(kScpiTooMuchData, frame);
    }
    else if (lineFeed != nullptr)
    {
        FinishMessage(m_scanned, frame);
    }
    return tagStep::Done;
}

bool CMessageFramer::IsElementStart(std::span<const char> buffer, std::size_t hash) noexcept
{
    FollowQuotes(buffer, hash);
    return m_quote == 0 && hash > m_blockEnd && (buffer[hash - 1] == ',' || IsWhiteSpace(buffer[hash - 1]));
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
    frame.eStatus = m_bSkips ? tagFrameStatus::Dropped : tagFrameStatus::Message;
    Reset();
    frame.iLength = lineFeed;
    frame.iConsumed = lineFeed + 1;
}

void CMessageFramer::LeaveBlock(std::size_t dataBegin, std::int64_t length, tagFrame& frame) noexcept
{
    Reset();
    frame.eStatus = tagFrameStatus::Block;
    frame.iLength = dataBegin;
    frame.iConsumed = dataBegin;
    frame.iBlockLength = length;
}

void CMessageFramer::Fail(short error, tagFrame& frame) noexcept
{
    m_bSkips = true;
    frame.eStatus = tagFrameStatus::Error;
    frame.iError = error;
}

/// Takes what has been looked at out of the buffer, but for the last byte: a block begins behind a separator.
void CMessageFramer::DropScanned(std::span<const char> buffer, tagFrame& frame) noexcept
{
    if (m_scanned <= buffer.size() && !m_bIndefinite)
    {
        FollowQuotes(buffer, m_scanned);
    }
    const std::size_t dropped = std::min(buffer.size(), m_scanned - std::min<std::size_t>(m_scanned, 1));
    m_scanned -= dropped;
    m_lexed -= std::min(m_lexed, dropped);
    m_blockEnd -= std::min(m_blockEnd, dropped);
    frame.iConsumed = dropped;
    frame.iBytesNeeded = m_scanned > buffer.size() - dropped ? m_scanned - (buffer.size() - dropped) + 1 : 0;
}

} // namespace ZoVelkor::RemoteKernel
