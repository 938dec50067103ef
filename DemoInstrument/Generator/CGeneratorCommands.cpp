#include "CGeneratorCommands.h"

#include "Common/SettingHandlers.h"
#include "Common/SteppedSetting.h"
#include "GeneratorTable.h"

#include <algorithm>
#include <iterator>

namespace ZoVelkor::Demo
{

std::span<const HandlerRow<CGeneratorCommands>> CGeneratorCommands::Handlers()
{
    using Self = CGeneratorCommands;
    static constexpr HandlerRow<Self> kRows[] = {
        {SOURCE_FREQUENCY, &Self::Frequency},
        {SOURCE_POWER, &Self::Power},
        {LIST_FREQUENCY, &Self::ListFrequency},
        {OUTPUT_STATE, &Self::OutputState},
        {LIMIT_FAIL, &Self::LimitFail},
        {DISPLAY_BRIGHTNESS, &Self::Brightness},
    };
    static_assert(IsHandlerTable(kRows, GENERATOR_HANDLER_COUNT));
    return kRows;
}

HRESULT CGeneratorCommands::Frequency(Pool& pool)
{
    return HandleNumber(pool, kGeneratorFrequencyHz, m_generator.sources, &SignalSource::frequencyHz);
}

HRESULT CGeneratorCommands::Power(Pool& pool)
{
    return HandleNumber(pool, kGeneratorPowerDbm, m_generator.sources, &SignalSource::powerDbm);
}

HRESULT CGeneratorCommands::ListFrequency(Pool& pool)
{
    std::vector<double>& list = BySuffix(m_generator.sources, HeaderSuffix(pool)).listHz;
    if (pool.IsQuery())
    {
        return pool.CheckArgumentNotAllowed() == S_OK ? AnswerNumbers(pool, list) : S_FALSE;
    }
    std::vector<double> newList;
    if (pool.CheckArgumentCount(0, false) != S_OK || ReadNumbers(pool, newList) != S_OK)
    {
        return S_FALSE;
    }
    if (newList.size() > kMaxListPoints)
    {
        return pool.SetScpiError(kScpiTooMuchData);
    }
    const bool isInside = std::ranges::all_of(newList, [](double frequencyHz) {
        return frequencyHz >= kGeneratorFrequencyHz.minimum && frequencyHz <= kGeneratorFrequencyHz.maximum;
    });
    if (!isInside)
    {
        return pool.SetScpiError(kScpiDataOutOfRange);
    }
    list = std::move(newList);
    return S_OK;
}

HRESULT CGeneratorCommands::OutputState(Record& record)
{
    return HandleBoolean(record, m_generator.sources, &SignalSource::outputOn);
}

HRESULT CGeneratorCommands::LimitFail(Record& record)
{
    return record.BooleanResponse(m_generator.IsOutside(BySuffix(kSourceLimits, HeaderSuffix(record))));
}

HRESULT CGeneratorCommands::Brightness(Pool& pool)
{
    return HandleNumber(pool, kBrightness, m_generator.brightness);
}

} // namespace ZoVelkor::Demo
