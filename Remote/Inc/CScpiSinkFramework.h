#pragma once

#include "CCommandExecutionData.h"
#include "CScpiFunctionExecutionDataPool.h"
#include "GuardedEntry.h"
#include "ZoExport.h"

#include <string>
#include <string_view>
#include <utility>

namespace ZoVelkor
{

/// Runs handlers and closes executions: maps a handler's result onto the SCPI error and delivers the error.
///
/// Handlers report to the controller by SCPI errors, to the kernel by 0 alone: only a cancelled command
/// (E_ABORT) is told apart, because nothing of it may have effect. Threads: the thread that executes the
/// command.
class ZO_EXPORT CScpiSinkFramework
{
public:
    CScpiSinkFramework() = delete;

    /// Runs a handler and closes the execution; what an IZOScpiExecutionSink::Execute returns.
    ///
    /// An exception of the handler does not get out; it ends as -200 "Execution error".
    /// @param data  a CCommandExecutionData or a CScpiFunctionExecutionDataPool
    /// @param handler  called with data, returns an HRESULT
    template <class TData, class THandler>
    static HRESULT RunCommand(TData& data, THandler&& handler) noexcept
    {
        const HRESULT result =
            GuardedEntry([&]() -> HRESULT { return std::forward<THandler>(handler)(data); });
        return FinishCommandExecution(result, data);
    }

    /// Closes an execution. A result other than 0, 1 and E_ABORT becomes -200 unless an error is set already;
    /// then the error, if any, is delivered. A delivery that fails is reported and does not show in the
    /// result.
    ///
    /// @param result  the handler's result, a 32-bit value
    /// @return E_ABORT for E_ABORT, else 0
    static HRESULT FinishCommandExecution(long result, CCommandExecutionData& data) noexcept;
    /// The same for the pool style.
    static HRESULT FinishCommandExecution(long result, CScpiFunctionExecutionDataPool& pool) noexcept;

    /// String response data (IEEE 488.2 section 8.7.8): quotes around the text, inner quotes doubled.
    static std::string GetScpiStringFormat(std::string_view text);
};

} // namespace ZoVelkor
