#include "NumericSetting.h"

#include <algorithm>
#include <cmath>

namespace ZoVelkor::Demo
{
namespace
{

/// The number that a word stands for; false for a word that stands for none.
bool NumberOf(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word, const tagNumericState& state, double& value)
{
    switch (word)
    {
    case ZO_SCPI_SPECIAL_MINIMUM:
        value = state.minimum;
        return true;
    case ZO_SCPI_SPECIAL_MAXIMUM:
        value = state.maximum;
        return true;
    case ZO_SCPI_SPECIAL_DEFAULT:
        value = state.reset;
        return true;
    default:
        return false;
    }
}

/// The number that a step leads to; from a limit it leads beyond.
bool NumberOfStep(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word, const tagNumericState& state, double& value)
{
    if (word == ZO_SCPI_SPECIAL_UP)
    {
        value = state.value < state.maximum ? std::min(state.up, state.maximum) : HUGE_VAL;
        return true;
    }
    if (word == ZO_SCPI_SPECIAL_DOWN)
    {
        value = state.value > state.minimum ? std::max(state.down, state.minimum) : -HUGE_VAL;
        return true;
    }
    return false;
}

HRESULT ReadUnchecked(CScpiFunctionExecutionDataPool& pool, const tagNumericState& state, double& value)
{
    tagZO_SCPI_PARAMTYPE type = ZO_SCPI_PARAMTYPE_UNDEFINED;
    if (pool.GetArgumentType(type, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (type != ZO_SCPI_PARAMTYPE_SPECIAL)
    {
        return pool.GetDoubleArgument(value, 0);
    }
    auto word = ZO_SCPI_SPECIAL_NONE;
    if (pool.GetMnemonicArgument(word, 0) != S_OK)
    {
        return S_FALSE;
    }
    return NumberOf(word, state, value) || NumberOfStep(word, state, value)
               ? S_OK
               : pool.SetScpiError(kScpiIllegalParameterValue);
}

} // namespace

HRESULT ReadNumber(CScpiFunctionExecutionDataPool& pool, const tagNumericState& state, double& value)
{
    double number = 0.0;
    if (pool.CheckArgumentCount(0, true) != S_OK || ReadUnchecked(pool, state, number) != S_OK)
    {
        return S_FALSE;
    }
    if (state.isInteger)
    {
        number = std::round(number);
    }
    if (!(number >= state.minimum && number <= state.maximum))
    {
        return pool.SetScpiError(kScpiDataOutOfRange);
    }
    value = number;
    return S_OK;
}

HRESULT AnswerNumber(CScpiFunctionExecutionDataPool& pool, const tagNumericState& state)
{
    double number = state.value;
    if (pool.GetArgumentCount() != 0)
    {
        auto word = ZO_SCPI_SPECIAL_NONE;
        if (pool.CheckArgumentCount(0, true) != S_OK || pool.GetMnemonicArgument(word, 0) != S_OK)
        {
            return S_FALSE;
        }
        if (!NumberOf(word, state, number))
        {
            return pool.SetScpiError(kScpiIllegalParameterValue);
        }
    }
    return state.isInteger ? pool.IntegerResponse(std::lround(number)) : pool.NumericResponse(number);
}

HRESULT ReadSuffix(CScpiFunctionExecutionDataPool& pool, long index, long last, long& suffix)
{
    const unsigned long value = pool.GetRawNumericSuffixValue(index);
    if (value < 1 || value > static_cast<unsigned long>(last))
    {
        return pool.SetScpiError(kScpiHeaderSuffixOutOfRange);
    }
    suffix = static_cast<long>(value);
    return S_OK;
}

} // namespace ZoVelkor::Demo
