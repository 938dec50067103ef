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
    explicit CBuiltInCommands(const tagBuiltInContext& context) noexcept
        : m_context(context),
          m_status(m_context)
    {}
    CBuiltInCommands(const CBuiltInCommands&) = delete;
    CBuiltInCommands& operator=(const CBuiltInCommands&) = delete;

    /// Runs one command of BuiltInTable(); results as IZOScpiExecutionSink::Execute.
    HRESULT Execute(const tagParsedCommand& command);

    /// Tells whether a command changes what the front panel would change, as *RST does.
    static bool ChangesInstrument(const tagParsedCommand& command) noexcept;
    /// Triggers the applications, as *TRG does.
    ///
    /// @return S_OK; E_FAIL when none took it (-211 is queued)
    HRESULT GroupExecuteTrigger();

private:
    HRESULT ClearStatus(const tagParsedCommand& command);
    HRESULT Identify(const tagParsedCommand& command);
    HRESULT NoteOperationComplete(const tagParsedCommand& command);
    HRESULT QueryOperationComplete(const tagParsedCommand& command);
    HRESULT QueryOptions(const tagParsedCommand& command);
    HRESULT Reset(const tagParsedCommand& command);
    HRESULT Trigger(const tagParsedCommand& command);
    HRESULT Test(const tagParsedCommand& command);
    HRESULT WaitToContinue(const tagParsedCommand& command);
    HRESULT QueryNextError(const tagParsedCommand& command);
    HRESULT QueryAllErrors(const tagParsedCommand& command);
    HRESULT QueryErrorCount(const tagParsedCommand& command);
    HRESULT QueryHeaders(const tagParsedCommand& command);
    HRESULT QuerySyntax(const tagParsedCommand& command);
    HRESULT QueryTable(const tagParsedCommand& command);
    HRESULT QueryVersion(const tagParsedCommand& command);

    bool WaitUntilIdle();
    void CancelOperationComplete();

    const tagBuiltInContext m_context;
    CStatusCommands m_status;
};

} // namespace ZoVelkor::RemoteKernel
