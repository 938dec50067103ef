#pragma once

#include "Event.h"

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

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
    CUniqueEvent event(CreateEvent(TRUE, FALSE));
    if (!event)
    {
        throw std::system_error(EMFILE, std::generic_category(), failure);
    }
    return std::make_shared<const CUniqueEvent>(std::move(event));
}

} // namespace ZoVelkor::RemoteKernel
