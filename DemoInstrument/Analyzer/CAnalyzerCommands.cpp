#include "CAnalyzerCommands.h"

#include "AnalyzerSettingRows.h"
#include "Common/HeaderSuffix.h"
#include "Common/SettingHandlers.h"

namespace ZoVelkor::Demo
{
namespace
{

/// Reads the suffix; 1 without one.
template <class TCall>
HRESULT ReadSuffix(TCall& call, Suffix kind, long& suffix)
{
    suffix = kind == Suffix::None ? 1 : HeaderSuffix(call);
    // [SENSe] takes more suffixes than some of the commands below it.
    return kind == Suffix::One && suffix != 1 ? call.SetScpiError(kScpiHeaderSuffixOutOfRange) : S_OK;
}

} // namespace

std::span<const HandlerRow<CAnalyzerCommands>> CAnalyzerCommands::Handlers()
{
    using Self = CAnalyzerCommands;
    static constexpr HandlerRow<Self> kRows[] = {
        {FREQ_CENTER, &Self::NumericSetting<kCenter>},
        {FREQ_SPAN, &Self::NumericSetting<kSpan>},
        {FREQ_START, &Self::NumericSetting<kStart>},
        {FREQ_STOP, &Self::NumericSetting<kStop>},
        {BAND_RESOLUTION, &Self::NumericSetting<kBandwidth>},
        {BAND_AUTO, &Self::BooleanSetting<kBandwidthAuto>},
        {REFERENCE_LEVEL, &Self::NumericSetting<kReferenceLevel>},
        {SWEEP_POINTS, &Self::NumericSetting<kPoints>},
        {SWEEP_TIME, &Self::NumericSetting<kSweepTime>},
        {SWEEP_TIME_AUTO, &Self::BooleanSetting<kSweepTimeAuto>},
        {DETECTOR, &Self::WordSetting<kDetector>},
        {INIT_IMMEDIATE, &Self::Initiate},
        {INIT_CONTINUOUS, &Self::InitiateContinuous},
        {ABORT_SWEEP, &Self::AbortSweep},
        {TRIGGER_IMMEDIATE, &Self::TriggerImmediate},
        {TRIGGER_SOURCE, &Self::WordSetting<kTriggerSource>},
        {TRACE_DATA, &Self::TraceData},
        {FORMAT_DATA, &Self::FormatData},
        {FORMAT_BORDER, &Self::FormatBorder},
        {MARKER_X, &Self::NumericSetting<kMarkerX>},
        {MARKER_Y, &Self::MarkerY},
        {MARKER_MAXIMUM, &Self::MarkerMaximum},
        {DISPLAY_TEXT, &Self::DisplayText},
        {FILE_DATA, &Self::FileData},
        {FILE_CATALOG, &Self::FileCatalog},
        {FILE_DELETE, &Self::FileDelete},
        {ROUTE_CLOSE, &Self::RouteClose},
        {SERVICE_COUNT, &Self::ServiceCount},
    };
    static_assert(IsHandlerTable(kRows, ANALYZER_HANDLER_COUNT));
    return kRows;
}

template <const auto& TSetting>
HRESULT CAnalyzerCommands::NumericSetting(Pool& pool)
{
    long suffix = 0;
    if (ReadSuffix(pool, TSetting.suffix, suffix) != S_OK)
    {
        return S_FALSE;
    }
    AnalyzerSettings settings = m_analyzer.Settings();
    CNumericSetting number = TSetting.find(settings, suffix);
    if (const HRESULT result = number.Handle(pool); result != S_OK || pool.IsQuery())
    {
        return result;
    }
    TSetting.put(settings, suffix, number.Value());
    m_analyzer.Apply(settings);
    return S_OK;
}

template <const auto& TSetting>
HRESULT CAnalyzerCommands::BooleanSetting(Record& record)
{
    long suffix = 0;
    if (ReadSuffix(record, TSetting.suffix, suffix) != S_OK)
    {
        return S_FALSE;
    }
    AnalyzerSettings settings = m_analyzer.Settings();
    bool on = TSetting.get(settings, suffix);
    if (const HRESULT result = HandleBoolean(record, on); result != S_OK || record.IsQuery())
    {
        return result;
    }
    TSetting.put(settings, suffix, on);
    m_analyzer.Apply(settings);
    return S_OK;
}

template <const auto& TSetting>
HRESULT CAnalyzerCommands::WordSetting(Record& record)
{
    long suffix = 0;
    if (ReadSuffix(record, TSetting.suffix, suffix) != S_OK)
    {
        return S_FALSE;
    }
    AnalyzerSettings settings = m_analyzer.Settings();
    long value = TSetting.get(settings);
    if (const HRESULT result = HandleWord(record, value, TSetting.shortForm);
        result != S_OK || record.IsQuery())
    {
        return result;
    }
    TSetting.put(settings, value);
    m_analyzer.Apply(settings);
    return S_OK;
}

} // namespace ZoVelkor::Demo
