#include "AnswerOutput.h"

#include "Common/ToolFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <unistd.h>

namespace ZoVelkor::Tools
{

namespace
{

constexpr std::size_t kPieceBytes = 65536;
constexpr std::size_t kShownCommand = 60;

/// Calls for every piece of a block.
template <class TPiece>
void TakePieces(CInstrumentLink& link, std::size_t size, TPiece piece)
{
    while (size > 0)
    {
        const ResponsePart part = link.Read(std::min(size, kPieceBytes));
        piece(part.bytes);
        size -= part.bytes.size();
    }
}

} // namespace

CAnswerPrinter::CAnswerPrinter() : m_isTerminal(isatty(STDOUT_FILENO) != 0)
{}

void CAnswerPrinter::Take(std::string_view part)
{
    if (!m_isTerminal)
    {
        WriteOutput("-", part);
        return;
    }
    std::string shown = Printable(part);
    for (std::size_t i = 0; i < part.size(); ++i)
    {
        if (part[i] == '\n' || part[i] == '\t')
        {
            shown[i] = part[i];
        }
    }
    std::erase_if(shown, [](char c) { return c == '\r'; });
    WriteOutput("-", shown);
}

void CAnswerFile::Take(std::string_view part)
{
    WriteOutput(m_name, part, m_isBegun);
    m_isBegun = true;
}

void CAnswerFile::TakeBlock(CInstrumentLink& link, std::size_t size)
{
    if (m_name == kStandardStream)
    {
        TakePieces(link, size, [this](std::string_view piece) { Take(piece); });
    }
    else
    {
        link.FetchFile(m_name, size);
    }
}

void CAnswerText::Take(std::string_view part)
{
    m_text += part;
}

void CAnswerText::TakeBlock(CInstrumentLink& link, std::size_t size)
{
    TakePieces(link, size, [this](std::string_view piece) { Take(piece); });
}

bool TellErrors(std::string_view command, const std::vector<std::string>& errors)
{
    for (const std::string& error : errors)
    {
        Tell(fmt::format("{}: {}", Printable(command.substr(0, kShownCommand)), error));
    }
    return !errors.empty();
}

} // namespace ZoVelkor::Tools
