#pragma once

#include "CLxiTrigger.h"
#include "Common/HandlerTable.h"
#include "ScpiCommandTable.h"

#include <span>

namespace ZoVelkor::Demo
{

/// The command table of the LXI events and the handlers of its commands.
///
/// Threads: the thread that executes the command.
class CLxiCommands
{
public:
    static constexpr const wchar_t* kApplicationName = L"lxi";

    /// @param trigger  borrowed
    explicit CLxiCommands(CLxiTrigger& trigger) : m_trigger(trigger) {}

    /// Static data.
    static std::span<const _CMD_SET_RECORD> Table();
    /// The handlers in the order of the table's handler indexes.
    static std::span<const HandlerRow<CLxiCommands>> Handlers();

private:
    using Record = CCommandExecutionData;
    using Pool = CScpiFunctionExecutionDataPool;

    HRESULT Enabled(Record& record);
    HRESULT Delay(Pool& pool);
    HRESULT Identify(Record& record);
    HRESULT Send(Record& record);
    HRESULT LogAll(Record& record);
    HRESULT LogCount(Record& record);
    HRESULT LogClear(Record& record);
    HRESULT Error(Record& record);

    CLxiTrigger& m_trigger;
};

} // namespace ZoVelkor::Demo
