#include "CMessageScanner.h"

#include <algorithm>

namespace ZoVelkor::Tools
{

namespace
{

bool IsDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

} // namespace

std::size_t CMessageScanner::Take(std::string_view bytes)
{
    std::size_t taken = 0;
    while (taken < bytes.size())
    {
        if (m_iBlockLeft > 0)
        {
            const std::size_t part = std::min(m_iBlockLeft, bytes.size() - taken);
            m_iBlockLeft -= part;
            taken += part;
            continue;
        }
        TakeOne(bytes[taken++]);
        if (IsEnd())
        {
            break;
        }
    }
    return taken;
}

void CMessageScanner::TakeOne(char byte)
{
    if (!m_isInside)
    {
        m_eState = tagState::ItemStart;
        m_isInside = true;
        m_hasQuestion = false;
        m_cQuote = '\0';
    }
    if (byte == '\n')
    {
        m_eState = tagState::End;
        m_isInside = false;
        return;
    }
    m_hasQuestion = m_hasQuestion || (byte == '?' && m_eState != tagState::Text);
    m_eState = StateAfter(byte);
}

CMessageScanner::tagState CMessageScanner::StateAfter(char byte)
{
    const bool isSeparator = byte == ',' || byte == ';' || byte == ' ' || byte == '\t';
    switch (m_eState)
    {
    case tagState::Text:
        return byte == m_cQuote ? tagState::Item : tagState::Text;
    case tagState::BlockMark:
        if (IsDigit(byte) && byte != '0')
        {
            m_iDigits = byte - '0';
            m_iBlock = 0;
            return tagState::BlockDigits;
        }
        break;
    case tagState::BlockDigits:
        if (IsDigit(byte))
        {
            return TakeLengthDigit(byte);
        }
        break;
    case tagState::Item:
        // The second of two quotes goes on with the string that the first one seemed to end.
        if (byte == m_cQuote)
        {
            return tagState::Text;
        }
        break;
    case tagState::End:
    case tagState::ItemStart:
        if (byte == '"' || byte == '\'')
        {
            m_cQuote = byte;
            return tagState::Text;
        }
        if (byte == '#')
        {
            return tagState::BlockMark;
        }
        break;
    }
    m_cQuote = '\0';
    return isSeparator ? tagState::ItemStart : tagState::Item;
}

CMessageScanner::tagState CMessageScanner::TakeLengthDigit(char byte)
{
    m_iBlock = m_iBlock * 10 + static_cast<std::size_t>(byte - '0');
    if (--m_iDigits > 0)
    {
        return tagState::BlockDigits;
    }
    m_iBlockLeft = m_iBlock;
    return tagState::Item;
}

} // namespace ZoVelkor::Tools
