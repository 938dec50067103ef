#pragma once

#include <cstdint>
#include <string>

namespace ZoVelkor::Demo::Conformance
{

/// Handler indexes of the commands of the conformance profile, as they stand in its command table.
enum ConformanceHandler : std::int32_t
{
    SENSE_CENTER,
    SENSE_SPAN,
    SENSE_RANGE,
    SOURCE_VOLTAGE,
    OUTPUT_ON,
    TRIGGER_SOURCE,
    TRIGGER_COUNT,
    TRIGGER_DELAY,
    TEXT_ON_DISPLAY,
    TRACE_BLOCK,
    CALCULATE_SUM,
    CLOSE_SWITCHES,
    TEST_INTEGER,
    TEST_NUMBER,
    TEST_EVENT,
    TEST_QUERY_ONLY,
    TEST_SLOW,
    TEST_ERROR,
    TEST_CONDITION,
    TEST_INDEFINITE,
    CONFORMANCE_HANDLER_COUNT
};

/// Values of the mnemonics of TEST:CONDition.
enum RegisterWord : std::uint32_t
{
    REGISTER_OPERATION = 1,
    REGISTER_QUESTIONABLE
};

/// The short form of a trigger source, out of the table.
///
/// @param value  TriggerSource
std::string TriggerSourceWord(long value);

} // namespace ZoVelkor::Demo::Conformance
