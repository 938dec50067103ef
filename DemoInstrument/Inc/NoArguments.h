#pragma once

#include "PlatformTypes.h"

namespace ZoVelkor::Demo
{

/// Refuses a query that came with arguments, -108: the kernel lets words and strings through to any query
/// whose setting takes them.
///
/// @tparam TData  either style of handler data
template <class TData>
HRESULT CheckNoArguments(TData& data)
{
    return data.GetArgumentCount() == 0 ? S_OK : data.SetScpiError_ParameterNotAllowed();
}

} // namespace ZoVelkor::Demo
