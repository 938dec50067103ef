#pragma once

#include "MakeEvent.h"

#include <memory>

namespace ZoVelkor::RemoteKernel
{

/// An event that several objects need; the last of them closes it.
using SharedEvent = std::shared_ptr<const CUniqueEvent>;

/// Makes a manual-reset event that is not set.
///
/// @param failure  says what lacks an event
/// @throws std::system_error when the system is short of descriptors
inline SharedEvent MakeSharedEvent(const char* failure)
{
    return std::make_shared<const CUniqueEvent>(MakeEvent(TRUE, failure));
}

} // namespace ZoVelkor::RemoteKernel
