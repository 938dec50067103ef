#include "CAnalyzerProperties.h"

#include "AnalyzerSettingRows.h"
#include "CComVariant.h"
#include "ErrorRaising.h"

#include <iterator>
#include <string>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Analyzer/CAnalyzerProperties");

/// A property of each channel or marker, or one of the whole analyser; exactly one setting is given.
struct PropertyRow
{
    const char* name = nullptr;
    long count = 0; ///< of channels or markers; 0: one without number in its name
    VARTYPE type = VT_EMPTY;
    const NumericSetting* number = nullptr;
    const BooleanSetting* boolean = nullptr;
    const WordSetting* word = nullptr;
    long lastWord = 0; ///< the first is 1
};

constexpr PropertyRow kRows[] = {
    {.name = "Center", .count = kChannelCount, .type = VT_R8, .number = &kCenter},
    {.name = "Span", .count = kChannelCount, .type = VT_R8, .number = &kSpan},
    {.name = "Start", .count = kChannelCount, .type = VT_R8, .number = &kStart},
    {.name = "Stop", .count = kChannelCount, .type = VT_R8, .number = &kStop},
    {.name = "Bandwidth", .count = kChannelCount, .type = VT_R8, .number = &kBandwidth},
    {.name = "BandwidthAuto", .count = kChannelCount, .type = VT_BOOL, .boolean = &kBandwidthAuto},
    {.name = "ReferenceLevel", .count = kChannelCount, .type = VT_R8, .number = &kReferenceLevel},
    {.name = "SweepPoints", .count = 0, .type = VT_I4, .number = &kPoints},
    {.name = "SweepTime", .count = 0, .type = VT_R8, .number = &kSweepTime},
    {.name = "SweepTimeAuto", .count = 0, .type = VT_BOOL, .boolean = &kSweepTimeAuto},
    {.name = "Detector",
     .count = 0,
     .type = VT_I4,
     .word = &kDetector,
     .lastWord = static_cast<long>(Detector::Average)},
    {.name = "TriggerSource",
     .count = 0,
     .type = VT_I4,
     .word = &kTriggerSource,
     .lastWord = static_cast<long>(TriggerSource::Lxi)},
    {.name = "Marker", .count = kMarkerCount, .type = VT_R8, .number = &kMarkerX},
};

/// Distance of the identifiers of two rows; the suffix is added.
constexpr long kIdsPerRow = 100;

constexpr long SuffixCount(const PropertyRow& row)
{
    return row.count == 0 ? 1 : row.count;
}

/// @return null when no property has the identifier
const PropertyRow* FindRow(long dispId)
{
    const long row = dispId / kIdsPerRow - 1;
    const long suffix = dispId % kIdsPerRow;
    const bool isKnown = row >= 0 && row < std::ssize(kRows) && suffix >= 1 &&
                         suffix <= SuffixCount(kRows[static_cast<std::size_t>(row)]);
    return isKnown ? &kRows[static_cast<std::size_t>(row)] : nullptr;
}

/// @param value  empty
void GetValue(const PropertyRow& row, const AnalyzerSettings& settings, long suffix, VARIANT& value)
{
    value.vt = row.type;
    if (row.boolean != nullptr)
    {
        value.boolVal = ToVariantBool(row.boolean->get(settings, suffix));
    }
    else if (row.word != nullptr)
    {
        value.lVal = static_cast<LONG>(row.word->get(settings));
    }
    else if (const double number = row.number->find(settings, suffix).Value(); row.type == VT_I4)
    {
        value.lVal = static_cast<LONG>(number);
    }
    else
    {
        value.dblVal = number;
    }
}

/// @param value  of the property's type
HRESULT PutValue(const PropertyRow& row, AnalyzerSettings& settings, long suffix, const VARIANT& value)
{
    if (row.boolean != nullptr)
    {
        row.boolean->put(settings, suffix, value.boolVal != VARIANT_FALSE);
        return S_OK;
    }
    if (row.word != nullptr)
    {
        const bool isWord = value.lVal >= 1 && value.lVal <= row.lastWord;
        return isWord ? (row.word->put(settings, value.lVal), S_OK) : E_INVALIDARG;
    }
    const double number = row.type == VT_I4 ? value.lVal : value.dblVal;
    const tagNumericLimits limits = row.number->find(settings, suffix).Limits();
    if (!(number >= limits.minimum && number <= limits.maximum))
    {
        return E_INVALIDARG;
    }
    row.number->put(settings, suffix, number);
    return S_OK;
}

} // namespace

CAnalyzerProperties::CAnalyzerProperties(const CApplicationAccess<CAnalyzer>& analyzer) : m_analyzer(analyzer)
{
    long firstId = 0;
    for (const PropertyRow& row : kRows)
    {
        firstId += kIdsPerRow;
        for (long suffix = 1; suffix <= SuffixCount(row); ++suffix)
        {
            const std::string name = row.name + (row.count == 0 ? std::string() : std::to_string(suffix));
            // Without variable: the value is the analyser's, and is read and written there.
            AddPropertyReference({row.type, firstId + suffix, name, nullptr});
        }
    }
}

HRESULT CAnalyzerProperties::DoGetScalarValue(long dispId, VARIANT* value)
{
    const PropertyRow* const row = FindRow(dispId);
    if (value == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "value"));
    }
    VariantInit(value);
    return row == nullptr ? S_FALSE : m_analyzer.Run([=](const CAnalyzer& analyzer) -> HRESULT {
        GetValue(*row, analyzer.Settings(), dispId % kIdsPerRow, *value);
        return S_OK;
    });
}

HRESULT CAnalyzerProperties::DoSetScalarValue(long dispId, VARIANT value)
{
    const PropertyRow* const row = FindRow(dispId);
    if (row == nullptr)
    {
        return S_FALSE;
    }
    CComVariant converted;
    if (const HRESULT result = VariantChangeType(&converted, &value, 0, row->type); FAILED(result))
    {
        return result;
    }
    return m_analyzer.Run([&](CAnalyzer& analyzer) -> HRESULT {
        AnalyzerSettings settings = analyzer.Settings();
        const HRESULT result = PutValue(*row, settings, dispId % kIdsPerRow, converted);
        if (result == S_OK)
        {
            analyzer.Apply(settings);
        }
        return result;
    });
}

} // namespace ZoVelkor::Demo
