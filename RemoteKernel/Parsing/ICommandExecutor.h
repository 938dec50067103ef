#pragma once

#include "ParsedCommand.h"

#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// Receives what the program-message parser finds, in the order of the message.
///
/// Threads: the thread that parses.
class ICommandExecutor
{
public:
    /// Runs one command.
    ///
    /// @return false: the rest of the program message is dropped (device clear, broken connection)
    virtual bool ExecuteCommand(const ParsedCommand& command) = 0;

    /// Takes an error. After a command error the parser drops the rest of the message; after an execution
    /// error (-222, -223: a parameter out of range or too long) only its command is not run.
    ///
    /// @param code  SCPI error number
    /// @param detail  what was wrong and where, for people; lent for the call
    virtual void ReportError(short code, std::string_view detail) = 0;

protected:
    ~ICommandExecutor() = default;
};

} // namespace ZoVelkor::RemoteKernel
