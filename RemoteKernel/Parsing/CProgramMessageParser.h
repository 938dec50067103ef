// Parsing: from bytes to commands with checked parameters.
//
// CMessageFramer finds the end of a message in the session's input buffer; CProgramMessageParser splits the
// message into commands, follows each header through the CCommandIndex, has CParameterParser read the
// parameters into a reused array, and hands a ParsedCommand to an ICommandExecutor, the session. Blocks are
// lent from the message, or read on from the transport by CBlockStream. CCommandIndexBuilder makes the index,
// once for every set of applications. A session calls this room on its own thread; an index never changes and
// is read by all sessions at once.
// Locks: none.

#pragma once

#include "CCommandIndex.h"
#include "ICommandExecutor.h"
#include "ParsedCommand.h"

#include <cstddef>
#include <memory>
#include <span>

namespace ZoVelkor::RemoteKernel
{

/// Parameters of one command; further ones raise -223.
inline constexpr std::size_t kMaxParameters = std::size_t{1} << 17;

class CBlockStream;

/// What is to be done behind a piece of a message that ended with a block.
enum class PieceResult
{
    Continue, ///< take the rest of the block out, then parse on
    Drop,     ///< drop the rest of the message, block included
    Hold      ///< the last command needs the block in memory: collect it, and give that command again
};

/// Understands program messages and runs their commands one after another.
///
/// Accepted are compound messages with path memory (SCPI-99 vol. 1, 6.2.4), short and long forms in any case,
/// default nodes, numeric suffixes, and all kinds of program data of IEEE 488.2 section 7.7. Parameters are
/// checked against the command's table before the command runs. A command error ends the message; an
/// execution error that the parser finds (-222, -223) only ends its command.
///
/// Threads: one session's; Parse is not reentrant.
class CProgramMessageParser
{
public:
    CProgramMessageParser();
    CProgramMessageParser(const CProgramMessageParser&) = delete;
    CProgramMessageParser& operator=(const CProgramMessageParser&) = delete;
    ~CProgramMessageParser();

    /// Parses one complete message and calls the executor for each command.
    ///
    /// @param message  the message without its line feed; must stay in place until the call returns, since
    ///                 blocks are lent from it
    /// @return false when the rest of the message was dropped: after a command error, or on the executor's
    /// wish
    bool Parse(const CCommandIndex& index, std::span<char> message, ICommandExecutor& executor);

    /// Prepares for a message that comes in pieces.
    void BeginMessage() noexcept;
    /// Runs a message up to a block that arrives while its command runs.
    ///
    /// @param piece  ends with the header of the block; otherwise as for Parse
    /// @param[out] heldFrom  for Hold: start of the command that has not been run
    PieceResult ParsePiece(const CCommandIndex& index,
                           std::span<char> piece,
                           CBlockStream& block,
                           ICommandExecutor& executor,
                           std::size_t& heldFrom);
    /// Runs the last piece, from behind a block; parameters and result as for Parse.
    bool ParseRest(const CCommandIndex& index, std::span<char> rest, ICommandExecutor& executor);

private:
    class CImplementation;
    std::unique_ptr<CImplementation> m_implementation;
};

} // namespace ZoVelkor::RemoteKernel
