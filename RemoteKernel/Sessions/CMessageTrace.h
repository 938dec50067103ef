#pragma once

#include "IZOScpiTraceManagement.h"
#include "RemoteDiagnoseControl.h"

#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// Prints program messages and responses while the switch of the diagnosis is on. Threads: any.
class CMessageTrace : public IZOScpiTraceManagement
{
public:
    virtual ~CMessageTrace() = default;

    HRESULT put_MessageTraceActive(short active) override;
    HRESULT get_MessageTraceActive(short* active) override;

    /// Prints a line while the trace is active.
    ///
    /// @param direction  '<' for what came in, '>' for what went out; nothing is printed for an empty text
    static void Print(long remotePath, char direction, std::string_view text) noexcept
    {
        if (get_RemoteDiagnoseControl()->bMessageTraceActive.load(std::memory_order_relaxed) && !text.empty())
        {
            PrintLine(remotePath, direction, text);
        }
    }

private:
    static void PrintLine(long remotePath, char direction, std::string_view message) noexcept;
};

} // namespace ZoVelkor::RemoteKernel
