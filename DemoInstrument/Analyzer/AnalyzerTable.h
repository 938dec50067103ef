#pragma once

#include "ScpiCommandTable.h"

#include <span>
#include <string>

namespace ZoVelkor::Demo
{

/// Handler indexes of the analyser's commands, as they stand in its command table.
///
/// One index serves the query and the setting of a command.
enum AnalyzerHandler : std::int32_t
{
    FREQ_CENTER,
    FREQ_SPAN,
    FREQ_START,
    FREQ_STOP,
    BAND_RESOLUTION,
    BAND_AUTO,
    REFERENCE_LEVEL,
    SWEEP_POINTS,
    SWEEP_TIME,
    SWEEP_TIME_AUTO,
    DETECTOR,
    INIT_IMMEDIATE,
    INIT_CONTINUOUS,
    ABORT_SWEEP,
    TRIGGER_IMMEDIATE,
    TRIGGER_SOURCE,
    TRACE_DATA,
    FORMAT_DATA,
    FORMAT_BORDER,
    MARKER_X,
    MARKER_Y,
    MARKER_MAXIMUM,
    DISPLAY_TEXT,
    FILE_DATA,
    FILE_CATALOG,
    FILE_DELETE,
    ROUTE_CLOSE,
    SERVICE_COUNT,
    ANALYZER_HANDLER_COUNT
};

/// Values of the mnemonics of FORMat[:DATA].
enum FormatWord : std::uint32_t
{
    FORMAT_WORD_ASCII = 1,
    FORMAT_WORD_REAL
};

/// Values of the mnemonics of FORMat:BORDer.
enum BorderWord : std::uint32_t
{
    BORDER_WORD_NORMAL = 1,
    BORDER_WORD_SWAPPED
};

/// The analyser's command table; static data.
std::span<const _CMD_SET_RECORD> AnalyzerTable();

/// Short forms of mnemonics as queries answer them, out of the table.
///
/// @param value  of the mnemonic, one of the enumeration
std::string DetectorWord(long value);
std::string BorderWord(long value);
std::string TriggerSourceWord(long value);

} // namespace ZoVelkor::Demo
