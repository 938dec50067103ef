#include "CMessageExchange.h"

#include "ScpiErrorCodes.h"

#include <algorithm>

namespace ZoVelkor::Transports
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
    const bool messageOpen = m_accepted != m_handed || !m_messageOver;
    const bool endsMessage = end && count == bytes.size() && messageOpen;
    if (endsMessage && (m_ends.empty() || m_ends.back() != m_accepted))
    {
        m_ends.push_back(m_accepted);
    }
    m_hungry = m_hungry && count == 0 && !endsMessage;
    return count;
}

short CMessageExchange::WaitForRoom(bool waits) noexcept
{
    m_senderWaits = waits;
    return CheckDeadlock();
}

short CMessageExchange::CheckDeadlock() noexcept
{
    if (!m_senderWaits || !m_writerWaits || !IsUnread())
    {
        return kScpiNoError;
    }
    DropAnswer();
    return kScpiQueryDeadlocked;
}

short CMessageExchange::BeginTrigger() noexcept
{
    m_triggerWaits = true;
    return Listen();
}

short CMessageExchange::Talk() noexcept
{
    if (!m_hungry || m_clearing || m_response != Response::None)
    {
        return kScpiNoError;
    }
    m_clearing = true;
    return kScpiQueryUnterminated;
}

bool CMessageExchange::Take(std::size_t max, std::string& bytes)
{
    const std::size_t count = std::min(max, Takeable());
    bytes.append(m_output.Data(), count);
    m_output.Consume(count);
    m_writerWaits = m_writerWaits && count == 0;
    if (m_response != Response::Complete || !m_output.IsEmpty())
    {
        return false;
    }
    m_response = Response::Taken;
    return true;
}

void CMessageExchange::DeviceClear() noexcept
{
    DropInput();
    DropAnswer();
    m_clearing = true;
    m_hungry = false;
}

bool CMessageExchange::PassEnd(std::span<char> space, Handed& handed) noexcept
{
    if (!IsAtEnd())
    {
        return false;
    }
    if (!m_messageOver && !m_endHanded)
    {
        space[0] = '\n';
        m_endHanded = m_lineFeedHanded = true;
        handed.count = 1;
        return true;
    }
    m_ends.pop_front();
    m_endHanded = false;
    if (!m_messageOver)
    {
        m_clearing = true;
        handed.error = kScpiInvalidBlockData;
    }
    return !m_messageOver;
}

CMessageExchange::Handed CMessageExchange::Hand(std::span<char> space)
{
    Handed handed{0, kScpiNoError};
    if (m_clearing || space.empty() || PassEnd(space, handed))
    {
        return handed;
    }
    const std::size_t untilEnd =
        m_ends.empty() ? m_input.Size() : static_cast<std::size_t>(m_ends.front() - m_handed);
    const std::string_view bytes = m_input.View().substr(0, std::min(space.size(), untilEnd));
    if (bytes.empty())
    {
        m_hungry = true;
        return handed;
    }
    // What comes behind a message stays here, where it is known to interrupt the response.
    const std::size_t lineFeed = bytes.find('\n');
    m_lineFeedHanded = lineFeed != std::string_view::npos;
    handed.count = m_lineFeedHanded ? lineFeed + 1 : bytes.size();
    std::copy_n(bytes.data(), handed.count, space.data());
    m_input.Consume(handed.count);
    m_handed += handed.count;
    m_messageOver = false;
    if (IsAtEnd() && !m_lineFeedHanded && handed.count < space.size())
    {
        space[handed.count++] = '\n';
        m_endHanded = m_lineFeedHanded = true;
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
    m_response = Response::Open;
    // A message is answered when its line feed was handed out: what is left belongs to a later one.
    if (m_triggerWaits || (m_lineFeedHanded && !m_input.IsEmpty()))
    {
        return Interrupt();
    }
    taken = std::min(bytes.size(), m_outputSize - m_output.Size());
    m_output.Append(bytes.data(), taken);
    m_writerWaits = taken < bytes.size();
    return CheckDeadlock();
}

void CMessageExchange::EndAnswer() noexcept
{
    m_writerWaits = false;
    if (m_response == Response::Open)
    {
        m_response = m_output.IsEmpty() ? Response::Taken : Response::Complete;
    }
}

void CMessageExchange::DropAnswer() noexcept
{
    m_output.Clear();
    m_writerWaits = false;
    m_response = IsUnread() ? Response::Dropped : m_response;
}

void CMessageExchange::DropInput() noexcept
{
    m_input.Clear();
    m_ends.clear();
    m_handed = m_accepted;
    m_endHanded = false;
}

void CMessageExchange::EndMessage() noexcept
{
    m_response = Response::None;
    m_output.Clear();
    m_writerWaits = false;
    m_messageOver = true;
}

void CMessageExchange::Acknowledge() noexcept
{
    EndMessage();
    m_clearing = false;
}

} // namespace ZoVelkor::Transports
