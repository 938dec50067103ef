#pragma once

#include "CNumericSetting.h"

#include <algorithm>
#include <cmath>

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

} // namespace ZoVelkor::Demo
