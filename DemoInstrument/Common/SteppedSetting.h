#pragma once

#include "BySuffix.h"
#include "CNumericSetting.h"
#include "HeaderSuffix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace ZoVelkor::Demo
{

/// The step to the next value; it stops at the limit, and from the limit it leads beyond, to be refused.
inline double StepTo(double next, double value, double limit)
{
    const double step = std::abs(next - value);
    return value == limit ? step : std::min(step, std::abs(limit - value));
}

/// A setting whose DOWN and UP lead to the values given, or to the limit that comes before them.
inline CNumericSetting
MakeSetting(double minimum, double maximum, double reset, double value, double down, double up)
{
    return CNumericSetting(
        {minimum, maximum, reset, StepTo(up, value, maximum), StepTo(down, value, minimum)}, value);
}

/// Handles both forms of a numeric command on a value with fixed steps; see MakeSetting.
///
/// @return as CNumericSetting::Handle; a refused setting leaves the value alone
inline HRESULT
HandleNumber(CScpiFunctionExecutionDataPool& pool, const tagNumericLimits& limits, double& value)
{
    CNumericSetting setting = MakeSetting(
        limits.minimum, limits.maximum, limits.defaultValue, value, value - limits.step, value + limits.step);
    const HRESULT result = setting.Handle(pool);
    value = setting.Value();
    return result;
}

/// The same for a command whose first numeric suffix says which channel is meant, counted from 1.
template <class TChannel, std::size_t TCount>
HRESULT HandleNumber(CScpiFunctionExecutionDataPool& pool,
                     const tagNumericLimits& limits,
                     std::array<TChannel, TCount>& channels,
                     double TChannel::*value)
{
    return HandleNumber(pool, limits, BySuffix(channels, HeaderSuffix(pool)).*value);
}

} // namespace ZoVelkor::Demo
