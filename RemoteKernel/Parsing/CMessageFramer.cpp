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

Frame CMessageFramer::Scan(std::span<const char> buffer) noexcept
{
    Frame frame;
    Step step = Step::Continue;
    while (step == Step::Continue)
    {
        step = m_indefinite ? ScanIndefinite(buffer, frame) : ScanText(buffer, frame);
    }
    if (m_skips)
    {
        DropScanned(buffer, frame);
    }
    return frame;
}

void CMessageFramer::Reset() noexcept
{
    *this = CMessageFramer(m_limits, m_streams);
}

void CMessageFramer::Hold() noexcept
{
    Reset();
    m_holds = true;
}

void CMessageFramer::Skip(std::int64_t blockRest) noexcept
{
    Reset();
    m_skips = true;
    m_indefinite = blockRest < 0;
    m_scanned = m_lexed = m_blockEnd = m_indefinite ? 0 : static_cast<std::size_t>(blockRest);
}

CMessageFramer::Step CMessageFramer::ScanText(std::span<const char> buffer, Frame& frame) noexcept
{
    if (m_scanned >= buffer.size())
    {
        frame.bytesNeeded = m_scanned - buffer.size() + 1;
        return Step::Done;
    }
    const char* const begin = buffer.data() + m_scanned;
    const std::size_t stretch = std::min(kStretch, buffer.size() - m_scanned);
    const char* const lineFeed = FindByte(begin, stretch, '\n');
    const std::size_t textLength = lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - begin) : stretch;
    const char* const hash = FindByte(begin, textLength, '#');
    m_scanned += hash != nullptr ? static_cast<std::size_t>(hash - begin) : textLength;
    // Data of blocks is left out: it has a limit of its own.
    if (!m_skips && m_scanned - m_blockBytes > m_limits.maxText)
    {
        Fail(kScpiInputBufferOverrun, frame);
        return Step::Done;
    }
    if (hash != nullptr)
    {
        return ScanHash(buffer, frame);
    }
    if (lineFeed != nullptr)
    {
        FinishMessage(m_scanned, frame);
        return Step::Done;
    }
    return Step::Continue;
}

CMessageFramer::Step CMessageFramer::ScanHash(std::span<const char> buffer, Frame& frame) noexcept
{
    const std::size_t hash = m_scanned;
    if (!IsElementStart(buffer, hash))
    {
        m_scanned = hash + 1;
        return Step::Continue;
    }
    if (hash + 1 == buffer.size())
    {
        return Step::Done;
    }
    const BlockHeader header = ReadBlockHeader({buffer.data() + hash, buffer.size() - hash});
    switch (header.result)
    {
    case CBScpiBlockData::HeaderIncomplete:
        return Step::Done;
    // A number such as #HFF, or a mistake that the parser tells of better.
    case CBScpiBlockData::HeaderInvalid:
        m_scanned = hash + 1;
        return Step::Continue;
    default:
        break;
    }
    const std::size_t dataBegin = hash + header.iSize;
    if (header.length >= 0)
    {
        return EnterBlock(dataBegin, static_cast<std::size_t>(header.length), frame);
    }
    m_indefinite = true;
    m_scanned = m_blockBegin = dataBegin;
    return Step::Continue;
}

bool CMessageFramer::IsStreamed(std::size_t blockBytes) const noexcept
{
    return m_streams && !m_holds && !m_skips && blockBytes > m_limits.maxHeld;
}

CMessageFramer::Step
CMessageFramer::EnterBlock(std::size_t dataBegin, std::size_t length, Frame& frame) noexcept
{
    if (IsStreamed(m_blockBytes + length))
    {
        LeaveBlock(dataBegin, static_cast<std::int64_t>(length), frame);
        return Step::Done;
    }
    const bool tooMuch = !m_skips && m_blockBytes + length > m_limits.maxBlock;
    m_blockBytes += length;
    m_scanned = dataBegin + length;
    // What looks like quotes inside the block is data.
    m_lexed = m_blockEnd = m_scanned;
    if (tooMuch)
    {
        Fail(kScpiTooMuchData, frame);
        return Step::Done;
    }
    return Step::Continue;
}

CMessageFramer::Step CMessageFramer::ScanIndefinite(std::span<const char> buffer, Frame& frame) noexcept
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
        return Step::Done;
    }
    if (!m_skips && m_blockBytes > m_limits.maxBlock)
    {
        Fail(kScpiTooMuchData, frame);
    }
    else if (lineFeed != nullptr)
    {
        FinishMessage(m_scanned, frame);
    }
    return Step::Done;
}

bool CMessageFramer::IsElementStart(std::span<const char> buffer, std::size_t hash) noexcept
{
    // Only now: quotes matter at a '#' alone, and most messages have none.
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

void CMessageFramer::FinishMessage(std::size_t lineFeed, Frame& frame) noexcept
{
    frame.status = m_skips ? FrameStatus::Dropped : FrameStatus::Message;
    Reset();
    frame.length = lineFeed;
    frame.consumed = lineFeed + 1;
}

void CMessageFramer::LeaveBlock(std::size_t dataBegin, std::int64_t length, Frame& frame) noexcept
{
    Reset();
    frame.status = FrameStatus::Block;
    frame.length = dataBegin;
    frame.consumed = dataBegin;
    frame.blockLength = length;
}

void CMessageFramer::Fail(short error, Frame& frame) noexcept
{
    // Its rest is dropped as it comes, because the next message begins behind its end.
    m_skips = true;
    frame.status = FrameStatus::Error;
    frame.error = error;
}

/// Takes what has been looked at out of the buffer, but for the last byte: a block begins behind a separator.
void CMessageFramer::DropScanned(std::span<const char> buffer, Frame& frame) noexcept
{
    if (m_scanned <= buffer.size() && !m_indefinite)
    {
        FollowQuotes(buffer, m_scanned);
    }
    const std::size_t dropped = std::min(buffer.size(), m_scanned - std::min<std::size_t>(m_scanned, 1));
    m_scanned -= dropped;
    m_lexed -= std::min(m_lexed, dropped);
    m_blockEnd -= std::min(m_blockEnd, dropped);
    frame.consumed = dropped;
    frame.bytesNeeded = m_scanned > buffer.size() - dropped ? m_scanned - (buffer.size() - dropped) + 1 : 0;
}

} // namespace ZoVelkor::RemoteKernel
