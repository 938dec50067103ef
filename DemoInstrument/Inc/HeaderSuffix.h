#pragma once

#include "CScpiFunctionExecutionDataPool.h"

namespace ZoVelkor::Demo
{

/// Reads the numeric suffix of a header node in the pool style; -114 outside 1 to last.
///
/// @param index  counts the nodes that take a suffix, from the root
inline HRESULT ReadSuffix(CScpiFunctionExecutionDataPool& pool, long index, long last, long& suffix)
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
