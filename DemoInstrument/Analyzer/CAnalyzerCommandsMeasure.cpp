// The analyser's commands that sweep and deliver what was measured: INITiate, ABORt, TRIGger, TRACe,
// FORMat, CALCulate.

#include "CAnalyzerCommands.h"
#include "CComBSTR.h"
#include "Common/BlockReading.h"
#include "Common/HeaderSuffix.h"
#include "Common/SettingHandlers.h"
#include "ScpiErrorCodes.h"
#include "ZoString.h"

namespace ZoVelkor::Demo
{
namespace
{

constexpr long kBitsPerByte = 8;

/// Width of FORMat REAL without a number.
constexpr long kDefaultRealBits = 64;

/// All markers sit on this trace.
constexpr long kMarkerTrace = 1;

struct DataFormat
{
    tagEnumFormatDataType type = ZO_FORMAT_ASCII;
    long width = 0;
    tagEnumFormatByteOrder order = ZO_BYTE_ORDER_NORMAL;
};

/// Asks for the data format of the remote path; -200 when it has none.
HRESULT ReadDataFormat(CScpiFunctionExecutionDataPool& pool, DataFormat& format)
{
    IZOScpiSubsystemFormat* const subsystem = pool.GetFormatSubsystem();
    if (subsystem == nullptr || FAILED(subsystem->get_DataFormat(&format.type, &format.width)) ||
        FAILED(subsystem->get_ByteOrder(&format.order)))
    {
        return pool.SetScpiExecutionError("");
    }
    return S_OK;
}

HRESULT ReadTraceBlock(CScpiFunctionExecutionDataPool& pool, std::vector<double>& values)
{
    DataFormat format;
    long bytes = 0;
    CComPtr<IZOScpiBlockData> block;
    if (const HRESULT result = pool.GetBlockArgument(&block, bytes, 0); result != S_OK)
    {
        return result;
    }
    if (pool.CheckArgumentCount(0, true) != S_OK || ReadDataFormat(pool, format) != S_OK)
    {
        return S_FALSE;
    }
    if (!block || format.type != ZO_FORMAT_REAL ||
        FAILED(block->InitReaderFormat(format.type, format.width, format.order)))
    {
        return pool.SetScpiBlockDataError("a block needs the format REAL (%FORMDATA%)");
    }
    const long announced = bytes < 0 ? bytes : bytes / (format.width / kBitsPerByte);
    const HRESULT result =
        ReadBlock(values, announced, kMaxTraceValues, [&](auto count, double* data, auto* got) {
            return block->GetNextArray(count, data, got);
        });
    if (result == E_FAIL || (result == S_OK && values.empty()))
    {
        return pool.SetScpiBlockDataError("the length does not fit the format (%FORMDATA%)");
    }
    return result == S_FALSE ? pool.SetScpiError(kScpiTooMuchData) : result;
}

/// Reads what a trace is loaded with, a block or a list of numbers.
HRESULT ReadTrace(CScpiFunctionExecutionDataPool& pool, std::vector<double>& values)
{
    auto type = ZO_SCPI_PARAMTYPE_UNDEFINED;
    if (pool.CheckArgumentCount(0, false) != S_OK || pool.GetArgumentType(type, 0) != S_OK)
    {
        return S_FALSE;
    }
    return type == ZO_SCPI_PARAMTYPE_BLOCK ? ReadTraceBlock(pool, values) : ReadNumbers(pool, values);
}

} // namespace

HRESULT CAnalyzerCommands::Initiate(Record& record)
{
    if (m_analyzer.Sweeps().IsSweeping())
    {
        return record.SetScpiError(kScpiInitIgnored);
    }
    Commands::CPendingOperation operation;
    if (FAILED(operation.Begin(record.GetServices().PendingOperations(), record.GetRemotePath())))
    {
        return record.SetScpiExecutionError("");
    }
    m_analyzer.Sweeps().Initiate(std::move(operation));
    return S_OK;
}

HRESULT CAnalyzerCommands::InitiateContinuous(Record& record)
{
    bool on = m_analyzer.Sweeps().IsContinuous();
    if (const HRESULT result = HandleBoolean(record, on); result != S_OK || record.IsQuery())
    {
        return result;
    }
    m_analyzer.Sweeps().SetContinuous(on);
    return S_OK;
}

HRESULT CAnalyzerCommands::AbortSweep(Record&)
{
    m_analyzer.Sweeps().AbortSweep();
    return S_OK;
}

HRESULT CAnalyzerCommands::TriggerImmediate(Record& record)
{
    return m_analyzer.Sweeps().Trigger() ? S_OK : record.SetScpiError(kScpiTriggerIgnored);
}

HRESULT CAnalyzerCommands::TraceData(Pool& pool)
{
    const long number = HeaderSuffix(pool);
    if (pool.IsQuery())
    {
        return AnswerTrace(pool, number);
    }
    Trace trace{m_analyzer.Settings().Channel(number).frequency, {}};
    if (const HRESULT result = ReadTrace(pool, trace.levelsDbm); result != S_OK)
    {
        return result;
    }
    m_analyzer.Traces().Put(number, std::make_shared<const Trace>(std::move(trace)));
    return S_OK;
}

HRESULT CAnalyzerCommands::AnswerTrace(Pool& pool, long trace)
{
    const TracePtr found = m_analyzer.Traces().Get(trace);
    if (!found)
    {
        return pool.SetScpiError(kScpiDataCorruptOrStale);
    }
    return AnswerNumbers(pool, found->levelsDbm);
}

HRESULT CAnalyzerCommands::FormatData(Pool& pool)
{
    IZOScpiSubsystemFormat* const subsystem = pool.GetFormatSubsystem();
    if (subsystem == nullptr)
    {
        return pool.SetScpiExecutionError("");
    }
    if (pool.IsQuery())
    {
        if (pool.CheckArgumentNotAllowed() != S_OK)
        {
            return S_FALSE;
        }
        CComBSTR text;
        return FAILED(subsystem->GetDataFormatText(&text)) ? pool.SetScpiExecutionError("")
                                                           : pool.ArbitraryResponse(CZoString(text));
    }
    long word = 0;
    if (pool.CheckArgumentCount(0, false) != S_OK || pool.GetCharacterArgument(word, 0) != S_OK)
    {
        return S_FALSE;
    }
    const bool isReal = word == FORMAT_WORD_REAL;
    long width = isReal ? kDefaultRealBits : 0;
    if (pool.GetArgumentCount() > 1 && pool.GetIntegerArgument(width, 1) != S_OK)
    {
        return S_FALSE;
    }
    return FAILED(subsystem->put_DataFormat(isReal ? ZO_FORMAT_REAL : ZO_FORMAT_ASCII, width))
               ? pool.SetScpiError(kScpiIllegalParameterValue)
               : S_OK;
}

HRESULT CAnalyzerCommands::FormatBorder(Pool& pool)
{
    DataFormat format;
    if (ReadDataFormat(pool, format) != S_OK)
    {
        return S_FALSE;
    }
    if (pool.IsQuery())
    {
        if (pool.CheckArgumentNotAllowed() != S_OK)
        {
            return S_FALSE;
        }
        const bool isSwapped = format.order == ZO_BYTE_ORDER_SWAPPED;
        return pool.ArbitraryResponse(BorderWord(isSwapped ? BORDER_WORD_SWAPPED : BORDER_WORD_NORMAL));
    }
    long word = 0;
    if (pool.CheckArgumentCount(0, true) != S_OK || pool.GetCharacterArgument(word, 0) != S_OK)
    {
        return S_FALSE;
    }
    return pool.GetFormatSubsystem()->put_ByteOrder(word == BORDER_WORD_SWAPPED ? ZO_BYTE_ORDER_SWAPPED
                                                                                : ZO_BYTE_ORDER_NORMAL);
}

HRESULT CAnalyzerCommands::ReadMarkerTrace(Pool& pool, TracePtr& found)
{
    found = m_analyzer.Traces().Get(kMarkerTrace);
    // A trace of another frequency range has nothing at the markers' places.
    const bool isStale = !found || found->range != m_analyzer.Settings().Channel(kMarkerTrace).frequency;
    return isStale ? pool.SetScpiError(kScpiDataCorruptOrStale) : S_OK;
}

HRESULT CAnalyzerCommands::MarkerY(Pool& pool)
{
    TracePtr found;
    if (ReadMarkerTrace(pool, found) != S_OK)
    {
        return S_FALSE;
    }
    const std::size_t index = found->NearestIndex(m_analyzer.Settings().MarkerHz(HeaderSuffix(pool)));
    return pool.NumericResponse(found->levelsDbm[index]);
}

HRESULT CAnalyzerCommands::MarkerMaximum(Pool& pool)
{
    TracePtr found;
    if (ReadMarkerTrace(pool, found) != S_OK)
    {
        return S_FALSE;
    }
    AnalyzerSettings settings = m_analyzer.Settings();
    settings.MarkerHz(HeaderSuffix(pool)) = found->FrequencyHz(found->PeakIndex());
    m_analyzer.Apply(settings);
    return S_OK;
}

} // namespace ZoVelkor::Demo
