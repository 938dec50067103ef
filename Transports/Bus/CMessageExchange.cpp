#include "CMessageExchange.h"

#include "ScpiErrorCodes.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

short CMessageExchange::Interrupt() noexcept
{
    DropAnswer();
    return kScpiQueryInterrupted;
}

short CMessageExchange::Listen() noexcept
{
    return IsUnread() ? Interrupt() : kScpiNoError;
}

std::size_t CMessageExchange::Accept(std::string_view bytes, bool end)
{
    const std::size_t count = std::min(bytes.size(), m_inputSize - m_input.Size());
    m_input.Append(bytes.data(), count);
    m_accepted += count;
    const bool bMessageOpen = m_accepted != m_handed || !m_bMessageOver;
    const bool bEndsMessage = end && count == bytes.size() && bMessageOpen;
    if (bEndsMessage && (m_ends.empty() || m_ends.back() != m_accepted))
    {
        m_ends.push_back(m_accepted);
    }
    m_bHungry = m_bHungry && count == 0 && !bEndsMessage;
    return count;
}

short CMessageExchange::WaitForRoom(bool waits) noexcept
{
    m_bSenderWaits = waits;
    return CheckDeadlock();
}

short CMessageExchange::CheckDeadlock() noexcept
{
    if (!m_bSenderWaits || !m_bWriterWaits || !IsUnread())
    {
        return kScpiNoError;
    }
    DropAnswer();
    return kScpiQueryDeadlocked;
}

short CMessageExchange::BeginTrigger() noexcept
{
    m_bTriggerWaits = true;
    return Listen();
}

short CMessageExchange::Talk() noexcept
{
    if (!m_bHungry || m_bClearing || m_eResponse != tagResponse::None)
    {
        return kScpiNoError;
    }
    m_bClearing = true;
    return kScpiQueryUnterminated;
}

bool CMessageExchange::Take(std::size_t max, std::string& bytes)
{
    const std::size_t count = std::min(max, Takeable());
    bytes.append(m_output.Data(), count);
    m_output.Consume(count);
    m_bWriterWaits = m_bWriterWaits && count == 0;
    if (m_eResponse != tagResponse::Complete || !m_output.IsEmpty())
    {
        return false;
    }
    m_eResponse = tagResponse::Taken;
    return true;
}

void CMessageExchange::DeviceClear() noexcept
{
    DropInput();
    DropAnswer();
    m_bClearing = true;
    m_bHungry = false;
}

bool CMessageExchange::PassEnd(std::span<char> space, tagHanded& handed) noexcept
{
    if (!IsAtEnd())
    {
        return false;
    }
    if (!m_bMessageOver && !m_bEndHanded)
    {
        space[0] = '\n';
        m_bEndHanded = m_bLineFeedHanded = true;
        handed.iCount = 1;
        return true;
    }
    m_ends.pop_front();
    m_bEndHanded = false;
    if (!m_bMessageOver)
    {
        m_bClearing = true;
        handed.iError = kScpiInvalidBlockData;
    }
    return !m_bMessageOver;
}

CMessageExchange::tagHanded CMessageExchange::Hand(std::span<char> space)
{
    tagHanded handed{0, kScpiNoError};
    if (m_bClearing || space.empty() || PassEnd(space, handed))
    {
        return handed;
    }
    const std::size_t untilEnd =
        m_ends.empty() ? m_input.Size() : static_cast<std::size_t>(m_ends.front() - m_handed);
    const std::string_view bytes = m_input.View().substr(0, std::min(space.size(), untilEnd));
    if (bytes.empty())
    {
        m_bHungry = true;
        return handed;
    }
    // What comes behind a message stays here, where it is known to interrupt the response.
    const std::size_t lineFeed = bytes.find('\n');
    m_bLineFeedHanded = lineFeed != std::string_view::npos;
    handed.iCount = m_bLineFeedHanded ? lineFeed + 1 : bytes.size();
    std::copy_n(bytes.data(), handed.iCount, space.data());
    m_input.Consume(handed.iCount);
    m_handed += handed.iCount;
    m_bMessageOver = false;
    if (IsAtEnd() && !m_bLineFeedHanded && handed.iCount < space.size())
    {
        space[handed.iCount++] = '\n';
        m_bEndHanded = m_bLineFeedHanded = true;
    }
    return handed;
}

short CMessageExchange::Answer(std::string_view bytes, std::size_t& taken)
{
    taken = 0;
    if (IsDropped())
    {
        return kScpiNoError;
    }
    m_eResponse = tagResponse::Open;
    // A message is answered when its line feed was handed out: what is left belongs to a later one.
    if (m_bTriggerWaits || (m_bLineFeedHanded && !m_input.IsEmpty()))
    {
        return Interrupt();
    }
    taken = std::min(bytes.size(), m_outputSize - m_output.Size());
    m_output.Append(bytes.data(), taken);
    m_bWriterWaits = taken < bytes.size();
    return CheckDeadlock();
}

void CMessageExchange::EndAnswer() noexcept
{
    m_bWriterWaits = false;
    if (m_eResponse == tagResponse::Open)
    {
        m_eResponse = m_output.IsEmpty() ? tagResponse::Taken : tagResponse::Complete;
    }
}

void CMessageExchange::DropAnswer() noexcept
{
    m_output.Clear();
    m_bWriterWaits = false;
    m_eResponse = IsUnread() ? tagResponse::Dropped : m_eResponse;
}

void CMessageExchange::DropInput() noexcept
{
    m_input.Clear();
    m_ends.clear();
    m_handed = m_accepted;
    m_bEndHanded = false;
}

void CMessageExchange::EndMessage() noexcept
{
    m_eResponse = tagResponse::None;
    m_output.Clear();
    m_bWriterWaits = false;
    m_bMessageOver = true;
}

void CMessageExchange::Acknowledge() noexcept
{
    EndMessage();
    m_bClearing = false;
}

} // namespace ZoVelkor::RemoteKernel
