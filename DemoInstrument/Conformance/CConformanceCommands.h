#pragma once

#include "CConformanceTarget.h"
#include "Common/CSimpleApplication.h"

#include <span>

namespace ZoVelkor::Demo::Conformance
{

/// The command table of the conformance profile and the handlers of its commands.
///
/// Each handler checks everything first and then applies it, so a refused command changes nothing.
/// Threads: the thread that executes the command.
class CConformanceCommands
{
public:
    static constexpr const wchar_t* kApplicationName = L"conformance";

    /// @param target  borrowed
    explicit CConformanceCommands(CConformanceTarget& target) : m_target(target) {}

    /// Static data.
    static std::span<const _CMD_SET_RECORD> Table();
    /// The handlers in the order of the table's handler indexes.
    static std::span<const HandlerRow<CConformanceCommands>> Handlers();

private:
    using Record = CCommandExecutionData;
    using Pool = CScpiFunctionExecutionDataPool;

    HRESULT CenterFrequency(Pool& pool);
    HRESULT Span(Pool& pool);
    HRESULT ResistanceRange(Pool& pool);
    HRESULT Voltage(Pool& pool);
    HRESULT OutputState(Record& record);
    HRESULT TriggerSource(Record& record);
    HRESULT TriggerCount(Pool& pool);
    HRESULT TriggerDelay(Pool& pool);
    HRESULT DisplayText(Record& record);
    HRESULT TraceData(Pool& pool);
    HRESULT Sum(Pool& pool);
    HRESULT RouteClose(Record& record);

    HRESULT TestInteger(Record& record);
    HRESULT TestNumber(Pool& pool);
    HRESULT TestEvent(Record& record);
    HRESULT TestQueryOnly(Record& record);
    HRESULT TestSlow(Record& record);
    HRESULT TestError(Record& record);
    HRESULT TestCondition(Record& record);
    HRESULT TestIndefinite(Pool& pool);

    CConformanceTarget& m_target;
};

/// The application "conformance".
using CConformanceApplication = CSimpleApplication<CConformanceTarget, CConformanceCommands>;

} // namespace ZoVelkor::Demo::Conformance
