#include "CMessageScanner.h"

#include "CharacterClasses.h"

#include <algorithm>

namespace ZoVelkor::Tools
{

std::size_t CMessageScanner::Take(std::string_view bytes)
{
    std::size_t taken = 0;
    while (taken < bytes.size())
    {
        if (m_blockLeft > 0)
        {
            const std::size_t part = std::min(m_blockLeft, bytes.size() - taken);
            m_blockLeft -= part;
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
        m_state = Progress::ItemStart;
        m_isInside = true;
        m_hasQuestion = false;
        m_quote = '\0';
    }
    if (byte == '\n')
    {
        m_state = Progress::End;
        m_isInside = false;
        return;
    }
    m_hasQuestion = m_hasQuestion || (byte == '?' && m_state != Progress::Text);
    m_state = StateAfter(byte);
}

CMessageScanner::Progress CMessageScanner::StateAfter(char byte)
{
    const bool isSeparator = byte == ',' || byte == ';' || byte == ' ' || byte == '\t';
    switch (m_state)
    {
    case Progress::Text:
        return byte == m_quote ? Progress::Item : Progress::Text;
    case Progress::BlockMark:
        if (IsDigit(byte) && byte != '0')
        {
            m_digits = byte - '0';
            m_block = 0;
            return Progress::BlockDigits;
        }
        break;
    case Progress::BlockDigits:
        if (IsDigit(byte))
        {
            return TakeLengthDigit(byte);
        }
        break;
    case Progress::Item:
        // The second of two quotes goes on with the string that the first one seemed to end.
        if (byte == m_quote)
        {
            return Progress::Text;
        }
        break;
    case Progress::End:
    case Progress::ItemStart:
        if (byte == '"' || byte == '\'')
        {
            m_quote = byte;
            return Progress::Text;
        }
        if (byte == '#')
        {
            return Progress::BlockMark;
        }
        break;
    }
    m_quote = '\0';
    return isSeparator ? Progress::ItemStart : Progress::Item;
}

CMessageScanner::Progress CMessageScanner::TakeLengthDigit(char byte)
{
    m_block = m_block * 10 + static_cast<std::size_t>(byte - '0');
    if (--m_digits > 0)
    {
        return Progress::BlockDigits;
    }
    m_blockLeft = m_block;
    return Progress::Item;
}

} // namespace ZoVelkor::Tools
