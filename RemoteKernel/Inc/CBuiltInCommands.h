#pragma once

#include "CApplicationRegistry.h"
#include "CErrorQueue.h"
#include "CFormatSubsystem.h"
#include "CPendingOperations.h"
#include "ParsedCommand.h"

#include <memory>

namespace ZoVelkor::RemoteKernel
{

/// What the kernel's own commands work on: one session and what it sees of the kernel. All borrowed.
struct tagBuiltInContext
{
    COutputQueue& output;
    CFormatSubsystem& format;
    CErrorQueue& errors;
    CPendingOperations& operations;
    const std::shared_ptr<const tagApplicationSet>& applications; ///< set of the message at hand
    long iRemotePath;
    HANDLE cancelEvent; ///< ends *OPC? and *WAI
    int connection;     ///< its error or hang-up does the same; -1: none
};

/// The commands that every session has: the mandatory ones of IEEE 488.2 that need no status registers, and
/// SYSTem:ERRor, SYSTem:HELP and SYSTem:VERSion of SCPI-99 vol. 2, 21. Threads: the session's.
class CBuiltInCommands
{
public:
    explicit CBuiltInCommands(const tagBuiltInContext& context) noexcept : m_context(context) {}

    /// Runs one command of BuiltInTable(); results as IZOScpiExecutionSink::Execute.
    HRESULT Execute(const tagParsedCommand& command);

private:
    HRESULT ClearStatus(const tagParsedCommand& command);
    HRESULT Identify(const tagParsedCommand& command);
    HRESULT NoteOperationComplete(const tagParsedCommand& command);
    HRESULT QueryOperationComplete(const tagParsedCommand& command);
    HRESULT QueryOptions(const tagParsedCommand& command);
    HRESULT Reset(const tagParsedCommand& command);
    HRESULT Test(const tagParsedCommand& command);
    HRESULT WaitToContinue(const tagParsedCommand& command);
    HRESULT QueryNextError(const tagParsedCommand& command);
    HRESULT QueryAllErrors(const tagParsedCommand& command);
    HRESULT QueryErrorCount(const tagParsedCommand& command);
    HRESULT QueryHeaders(const tagParsedCommand& command);
    HRESULT QuerySyntax(const tagParsedCommand& command);
    HRESULT QueryVersion(const tagParsedCommand& command);

    HRESULT Answer(std::string_view text);
    HRESULT AnswerInteger(std::size_t value);
    bool WaitUntilIdle();

    const tagBuiltInContext m_context;
};

} // namespace ZoVelkor::RemoteKernel
