#include "CScpiSinkFramework.h"

#include "ErrorRaising.h"
#include "ResponseData.h"

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Remote/Src/CScpiSinkFramework");

namespace
{

template <class TExecution>
HRESULT CloseExecution(long result, TExecution& execution) noexcept
{
    const auto outcome = static_cast<HRESULT>(result);
    const HRESULT finished = GuardedEntry([&]() -> HRESULT {
        // Any other result is the handler's own failure. A SCPI error that it has set says more than -200
        // would.
        const bool isMapped = outcome == S_OK || outcome == S_FALSE || outcome == E_ABORT;
        if (!isMapped && execution.GetScpiError() == kScpiNoError)
        {
            execution.SetScpiExecutionError("");
        }
        return execution.FinishCommandExecution();
    });
    if (finished != S_OK)
    {
        RepairError(
            ZO_ERROR(execution.GetObjectReference(), "hr == S_OK", "Fatal scpi execution error", finished));
    }
    return outcome == E_ABORT ? E_ABORT : S_OK;
}

} // namespace

HRESULT CScpiSinkFramework::FinishCommandExecution(long result, CCommandExecutionData& data) noexcept
{
    return CloseExecution(result, data);
}

HRESULT CScpiSinkFramework::FinishCommandExecution(long result, CScpiFunctionExecutionDataPool& pool) noexcept
{
    return CloseExecution(result, pool);
}

std::string CScpiSinkFramework::GetScpiStringFormat(std::string_view text)
{
    std::string formatted(QuotedSize(text), '\0');
    WriteQuoted(formatted.data(), text);
    return formatted;
}

} // namespace ZoVelkor
