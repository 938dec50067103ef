// Scpi: `zo scpi`, talking to an instrument.
//
// ScpiCommands reads the command line; ScpiExchange sends one command by a CInstrumentLink, passes its answer
// to a CAnswerTaker (AnswerOutput: terminal, file, hex dump) and asks for errors; ScpiConsole does so line by
// line, with CLineEditor and the headers that CHeaderCompletion knows. One thread; Ctrl-C ends the wait at
// hand. Locks: none.

#pragma once

#include "Instrument/CInstrumentLink.h"

#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// Receives the answer to a command.
class CAnswerTaker
{
public:
    CAnswerTaker() = default;
    CAnswerTaker(const CAnswerTaker&) = delete;
    CAnswerTaker& operator=(const CAnswerTaker&) = delete;
    virtual ~CAnswerTaker() = default;

    /// Takes a part as it came; the last one ends with the LF of the answer.
    virtual void Take(std::string_view part) = 0;

    /// The answer begins with a definite-length block that the taker wants to have without its header.
    ///
    /// @param size  bytes to take from the link before anything else is read from it
    virtual void TakeBlock(CInstrumentLink& link, std::size_t size) = 0;

    /// Whether TakeBlock is to be called for a block at the beginning of the answer.
    virtual bool WantsBlocks() const { return false; }
};

/// One command for an instrument.
struct ScpiCommand
{
    std::string_view text;
    std::string inputFile{}; ///< sent behind the text as a definite-length block; empty for none
    bool isChecked = true;   ///< ask for errors; without it a query that fails ends with the time-out
};

/// Sends a command, passes its answer on and asks for the errors that it left in the instrument's queue.
///
/// A query that fails has no answer, so `SYSTem:ERRor?` is sent along, and behind queries `*STB?` too: the
/// answers then tell themselves apart, and nothing is waited for in vain.
/// @return the entries of the error queue, oldest first, as the instrument words them
/// @throws CToolError  as CInstrumentLink; Failed when the instrument answers SYSTem:ERRor? with something
/// else
std::vector<std::string> CarryOut(CInstrumentLink& link, const ScpiCommand& command, CAnswerTaker& taker);

/// Passes on what the instrument sends unasked, up to the end of a response.
void TakeResponse(CInstrumentLink& link, CAnswerTaker& taker);

} // namespace ZoVelkor::Tools
