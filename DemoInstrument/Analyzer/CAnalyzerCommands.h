#pragma once

#include "AnalyzerTable.h"
#include "CAnalyzer.h"
#include "Common/HandlerTable.h"

#include <span>

namespace ZoVelkor::Demo
{

/// The analyser's command handlers, one for each row of its command table.
///
/// Each handler checks everything first and then applies it, so a refused command changes nothing.
/// Threads: the thread that executes the command.
class CAnalyzerCommands
{
public:
    /// @param analyzer  borrowed
    explicit CAnalyzerCommands(CAnalyzer& analyzer) : m_analyzer(analyzer) {}

    /// The handlers in the order of AnalyzerHandler.
    static std::span<const HandlerRow<CAnalyzerCommands>> Handlers();

private:
    using Record = CCommandExecutionData;
    using Pool = CScpiFunctionExecutionDataPool;

    template <const auto& TSetting>
    HRESULT NumericSetting(Pool& pool);
    template <const auto& TSetting>
    HRESULT BooleanSetting(Record& record);
    template <const auto& TSetting>
    HRESULT WordSetting(Record& record);

    HRESULT Initiate(Record& record);
    HRESULT InitiateContinuous(Record& record);
    HRESULT AbortSweep(Record& record);
    HRESULT TriggerImmediate(Record& record);

    HRESULT TraceData(Pool& pool);
    HRESULT AnswerTrace(Pool& pool, long trace);

    HRESULT FormatData(Pool& pool);
    HRESULT FormatBorder(Pool& pool);

    HRESULT MarkerY(Pool& pool);
    HRESULT MarkerMaximum(Pool& pool);
    HRESULT ReadMarkerTrace(Pool& pool, TracePtr& found);

    HRESULT DisplayText(Record& record);
    HRESULT RouteClose(Record& record);
    HRESULT ServiceCount(Record& record);

    HRESULT FileData(Pool& pool);
    HRESULT StoreFile(Pool& pool, const std::string& name);
    HRESULT FileCatalog(Pool& pool);
    HRESULT FileDelete(Record& record);

    CAnalyzer& m_analyzer;
};

} // namespace ZoVelkor::Demo
