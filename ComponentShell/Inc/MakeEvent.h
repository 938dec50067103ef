#pragma once

#include "Event.h"

#include <cerrno>
#include <system_error>

namespace ZoVelkor
{

/// Makes an event that is not set, for objects that cannot be without it.
///
/// @param manualReset  as for CreateEvent
/// @param failure      says what lacks an event
/// @throws std::system_error when the system is short of descriptors
inline CUniqueEvent MakeEvent(BOOL manualReset, const char* failure)
{
    CUniqueEvent event(CreateEvent(manualReset, FALSE));
    if (!event)
    {
        throw std::system_error(EMFILE, std::generic_category(), failure);
    }
    return event;
}

} // namespace ZoVelkor
