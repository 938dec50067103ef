#pragma once

#include "CCommandExecutionData.h"
#include "CScpiFunctionExecutionDataPool.h"

namespace ZoVelkor::Demo
{

// The numeric suffix of the first header node that takes one. The parser lets only those through that the
// command table states.

inline long HeaderSuffix(const CScpiFunctionExecutionDataPool& pool)
{
    return static_cast<long>(pool.GetRawNumericSuffixValue(0));
}

inline long HeaderSuffix(CCommandExecutionData& record)
{
    long suffix = 0;
    record.GetNumericSuffix(suffix, 0);
    return suffix;
}

} // namespace ZoVelkor::Demo
