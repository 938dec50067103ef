#pragma once

#include <cstdint>

namespace ZoVelkor::Demo
{

/// Handler indexes of the generator's commands, as they stand in its command table.
enum GeneratorHandler : std::int32_t
{
    SOURCE_FREQUENCY,
    SOURCE_POWER,
    LIST_FREQUENCY,
    OUTPUT_STATE,
    LIMIT_FAIL,
    DISPLAY_BRIGHTNESS,
    GENERATOR_HANDLER_COUNT
};

} // namespace ZoVelkor::Demo
