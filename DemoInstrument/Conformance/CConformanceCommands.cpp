#include "CConformanceCommands.h"

#include "Common/BlockReading.h"
#include "Common/SettingHandlers.h"
#include "Common/SteppedSetting.h"
#include "ConformanceTable.h"
#include "Root.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace ZoVelkor::Demo::Conformance
{
namespace
{

/// Reads the argument that is an integer; -222 outside the limits.
HRESULT
ReadInteger(CCommandExecutionData& record, unsigned long index, long minimum, long maximum, long& value)
{
    if (record.CheckArgumentCount(index, true) != S_OK ||
        record.GetIntegerArgument(value, static_cast<long>(index)) != S_OK)
    {
        return S_FALSE;
    }
    return value < minimum || value > maximum ? record.SetScpiError(kScpiDataOutOfRange) : S_OK;
}

/// Adds with what the stand-ins of infinity and not-a-number mean (SCPI-99 vol. 1, 7.2.1.4 and 7.2.1.5).
double AddMeaning(double sum, double summand)
{
    using Number = std::numeric_limits<double>;
    constexpr double kInfinity = 9.9E37;
    constexpr double kNotANumber = 9.91E37;
    if (summand == kNotANumber)
    {
        return Number::quiet_NaN();
    }
    return sum + (std::abs(summand) == kInfinity ? std::copysign(Number::infinity(), summand) : summand);
}

HRESULT SetCondition(const wchar_t* registerName, long value)
{
    CComPtr<IZOScpiStatusManagement> status;
    HRESULT result = ZoGetRegisteredInterface(&IID_IZOScpiStatusManagement, &status);
    CComPtr<IZOScpiStatusRegister> statusRegister;
    result =
        SUCCEEDED(result) ? status->GetRegister(kScpiInstrumentPath, registerName, &statusRegister) : result;
    return result == S_OK ? statusRegister->ModifyCondition(kMaxRegisterValue, static_cast<wchar_t>(value))
                          : E_FAIL;
}

} // namespace

std::span<const HandlerRow<CConformanceCommands>> CConformanceCommands::Handlers()
{
    using Self = CConformanceCommands;
    static constexpr HandlerRow<Self> kRows[] = {
        {SENSE_CENTER, &Self::CenterFrequency},
        {SENSE_SPAN, &Self::Span},
        {SENSE_RANGE, &Self::ResistanceRange},
        {SOURCE_VOLTAGE, &Self::Voltage},
        {OUTPUT_ON, &Self::OutputState},
        {TRIGGER_SOURCE, &Self::TriggerSource},
        {TRIGGER_COUNT, &Self::TriggerCount},
        {TRIGGER_DELAY, &Self::TriggerDelay},
        {TEXT_ON_DISPLAY, &Self::DisplayText},
        {TRACE_BLOCK, &Self::TraceData},
        {CALCULATE_SUM, &Self::Sum},
        {CLOSE_SWITCHES, &Self::RouteClose},
        {TEST_INTEGER, &Self::TestInteger},
        {TEST_NUMBER, &Self::TestNumber},
        {TEST_EVENT, &Self::TestEvent},
        {TEST_QUERY_ONLY, &Self::TestQueryOnly},
        {TEST_SLOW, &Self::TestSlow},
        {TEST_ERROR, &Self::TestError},
        {TEST_CONDITION, &Self::TestCondition},
        {TEST_INDEFINITE, &Self::TestIndefinite},
    };
    static_assert(IsHandlerTable(kRows, CONFORMANCE_HANDLER_COUNT));
    return kRows;
}

HRESULT CConformanceCommands::CenterFrequency(Pool& pool)
{
    return HandleNumber(pool, kCenterHz, m_target.Settings().senses, &SenseChannel::centerHz);
}

HRESULT CConformanceCommands::Span(Pool& pool)
{
    return HandleNumber(pool, kSpanHz, m_target.Settings().senses, &SenseChannel::spanHz);
}

HRESULT CConformanceCommands::ResistanceRange(Pool& pool)
{
    return HandleNumber(pool, kRangeOhm, m_target.Settings().senses, &SenseChannel::rangeOhm);
}

HRESULT CConformanceCommands::Voltage(Pool& pool)
{
    return HandleNumber(pool, kVoltageV, m_target.Settings().voltages, &VoltageChannel::voltageV);
}

HRESULT CConformanceCommands::OutputState(Record& record)
{
    return HandleBoolean(record, m_target.Settings().voltages, &VoltageChannel::outputOn);
}

HRESULT CConformanceCommands::TriggerSource(Record& record)
{
    return HandleWord(record, m_target.Settings().triggerSource, &TriggerSourceWord);
}

HRESULT CConformanceCommands::TriggerCount(Pool& pool)
{
    return HandleNumber(pool, kTriggerCount, m_target.Settings().triggerCount);
}

HRESULT CConformanceCommands::TriggerDelay(Pool& pool)
{
    return HandleNumber(pool, kTriggerDelayS, m_target.Settings().triggerDelayS);
}

HRESULT CConformanceCommands::DisplayText(Record& record)
{
    return HandleString(record, m_target.Settings().displayText, kMaxDisplayText);
}

HRESULT CConformanceCommands::TraceData(Pool& pool)
{
    std::vector<unsigned char>& trace = m_target.Settings().trace;
    if (pool.IsQuery())
    {
        return pool.CheckArgumentNotAllowed() == S_OK
                   ? pool.BlockResponse(reinterpret_cast<const char*>(trace.data()),
                                        static_cast<long>(trace.size()))
                   : S_FALSE;
    }
    long bytes = 0;
    CComPtr<IZOScpiBlockData> block;
    if (pool.CheckArgumentCount(0, true) != S_OK || pool.GetBlockArgument(&block, bytes, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (!block)
    {
        return pool.SetScpiBlockDataError("");
    }
    std::vector<unsigned char> data;
    const HRESULT result = ReadBlock(data, bytes, kMaxTraceBytes, [&](auto count, auto* place, auto* got) {
        return block->Read(count, place, got);
    });
    if (result != S_OK)
    {
        return FAILED(result) ? result : pool.SetScpiError(kScpiTooMuchData);
    }
    trace = std::move(data);
    return S_OK;
}

HRESULT CConformanceCommands::Sum(Pool& pool)
{
    std::vector<double> summands;
    if (pool.CheckArgumentCount(1, false) != S_OK || ReadNumbers(pool, summands) != S_OK)
    {
        return S_FALSE;
    }
    return pool.DoubleResponse(std::accumulate(summands.begin(), summands.end(), 0.0, &AddMeaning));
}

HRESULT CConformanceCommands::RouteClose(Record& record)
{
    return m_target.Settings().switches.HandleClose(record);
}

HRESULT CConformanceCommands::TestInteger(Record& record)
{
    long& value = m_target.Settings().testInteger;
    if (record.IsQuery())
    {
        return record.CheckArgumentNotAllowed() == S_OK ? record.IntegerResponse(value) : S_FALSE;
    }
    return record.CheckArgumentCount(0, true) == S_OK ? record.GetIntegerArgument(value, 0) : S_FALSE;
}

HRESULT CConformanceCommands::TestNumber(Pool& pool)
{
    double& value = m_target.Settings().testNumber;
    if (pool.IsQuery())
    {
        return pool.CheckArgumentNotAllowed() == S_OK ? pool.DoubleResponse(value) : S_FALSE;
    }
    double number = 0.0; // the getter stores an infinity beside its error
    if (pool.CheckArgumentCount(0, true) != S_OK || pool.GetDoubleArgument(number, 0) != S_OK)
    {
        return S_FALSE;
    }
    value = number;
    return S_OK;
}

HRESULT CConformanceCommands::TestEvent(Record&)
{
    return S_OK;
}

HRESULT CConformanceCommands::TestQueryOnly(Record& record)
{
    constexpr long kAnswer = 42;
    return record.IntegerResponse(kAnswer);
}

HRESULT CConformanceCommands::TestSlow(Record& record)
{
    if (record.IsQuery())
    {
        return record.CheckArgumentNotAllowed() == S_OK
                   ? record.BooleanResponse(m_target.SlowOperations().IsPending())
                   : S_FALSE;
    }
    double seconds = 0.0;
    if (record.CheckArgumentCount(0, true) != S_OK || record.GetDoubleArgument(seconds, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (!(seconds >= 0.0 && seconds <= kMaxSlowTimeS))
    {
        return record.SetScpiError(kScpiDataOutOfRange);
    }
    Commands::CPendingOperation operation;
    if (FAILED(operation.Begin(record.GetServices().PendingOperations(), record.GetRemotePath())))
    {
        return record.SetScpiExecutionError("");
    }
    const bool isPending =
        m_target.SlowOperations().Add(std::move(operation), std::chrono::duration<double>(seconds));
    return isPending ? S_OK : record.SetScpiError(kScpiInitIgnored);
}

HRESULT CConformanceCommands::TestError(Record& record)
{
    using Code = std::numeric_limits<short>;
    long code = 0;
    if (ReadInteger(record, 0, Code::min(), Code::max(), code) != S_OK)
    {
        return S_FALSE;
    }
    // 0 means that there is no error, so there is nothing to queue.
    return record.SetScpiError(code == kScpiNoError ? kScpiIllegalParameterValue : static_cast<short>(code));
}

HRESULT CConformanceCommands::TestCondition(Record& record)
{
    long word = 0;
    long value = 0;
    if (record.GetCharacterArgument(word, 0) != S_OK ||
        ReadInteger(record, 1, 0, kMaxRegisterValue, value) != S_OK)
    {
        return S_FALSE;
    }
    const HRESULT result =
        SetCondition(word == REGISTER_OPERATION ? L"STATus:OPERation" : L"STATus:QUEStionable", value);
    return FAILED(result) ? record.SetScpiExecutionError("") : S_OK;
}

HRESULT CConformanceCommands::TestIndefinite(Pool& pool)
{
    return pool.ArbitraryResponse("#0ABC");
}

} // namespace ZoVelkor::Demo::Conformance
