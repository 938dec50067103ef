// BuiltIn: the commands that every instrument has, as a table and its handlers.
//
// BuiltInTable joins the index like an application's table. A session hands such a command to its own
// CBuiltInCommands, which works on what BuiltInContext lends: output, format, errors and status of the
// session, and what sessions share; CStatusCommands has those on registers. They run without an application's
// lock, also while other sessions' commands run. The session calls, on its thread; *OPC? and *WAI wait there.
// Locks: none of its own.

#pragma once

#include "BuiltInContext.h"
#include "CStatusCommands.h"
#include "Parsing/ParsedCommand.h"

namespace ZoVelkor::RemoteKernel
{

/// The commands that every session has: the mandatory ones of IEEE 488.2, *TRG, SYSTem:ERRor, SYSTem:HELP and
/// SYSTem:VERSion of SCPI-99 vol. 2, 21, and those of CStatusCommands. Threads: the session's.
class CBuiltInCommands
{
public:
    explicit CBuiltInCommands(const BuiltInContext& context) noexcept
        : m_context(context),
          m_status(m_context)
    {}
    CBuiltInCommands(const CBuiltInCommands&) = delete;
    CBuiltInCommands& operator=(const CBuiltInCommands&) = delete;

    /// Runs one command of BuiltInTable(); results as IZOScpiExecutionSink::Execute.
    HRESULT Execute(const ParsedCommand& command);

    /// Tells whether a command changes what the front panel would change, as *RST does.
    static bool ChangesInstrument(const ParsedCommand& command) noexcept;
    /// Triggers the applications, as *TRG does.
    ///
    /// @return S_OK; E_FAIL when none took it (-211 is queued)
    HRESULT GroupExecuteTrigger();

private:
    HRESULT ClearStatus(const ParsedCommand& command);
    HRESULT Identify(const ParsedCommand& command);
    HRESULT NoteOperationComplete(const ParsedCommand& command);
    HRESULT QueryOperationComplete(const ParsedCommand& command);
    HRESULT QueryOptions(const ParsedCommand& command);
    HRESULT Reset(const ParsedCommand& command);
    HRESULT Trigger(const ParsedCommand& command);
    HRESULT Test(const ParsedCommand& command);
    HRESULT WaitToContinue(const ParsedCommand& command);
    HRESULT QueryNextError(const ParsedCommand& command);
    HRESULT QueryAllErrors(const ParsedCommand& command);
    HRESULT QueryErrorCount(const ParsedCommand& command);
    HRESULT QueryHeaders(const ParsedCommand& command);
    HRESULT QuerySyntax(const ParsedCommand& command);
    HRESULT QueryTable(const ParsedCommand& command);
    HRESULT QueryVersion(const ParsedCommand& command);

    bool WaitUntilIdle();
    void CancelOperationComplete();

    const BuiltInContext m_context;
    CStatusCommands m_status;
};

} // namespace ZoVelkor::RemoteKernel
