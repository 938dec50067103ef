#pragma once

#include "PlatformTypes.h"

#include <string>

namespace ZoVelkor
{
class CObjectDataReference;

/// The component shell's own failure code; it accompanies internal errors that have no better result.
inline constexpr HRESULT ZO_E_SHELL = static_cast<HRESULT>(0x80001007U);

/// How much a reported error matters to the one who reads the log.
enum class tagErrorSeverity
{
    Warning, ///< the work goes on and its result is valid
    Error,   ///< an operation failed; the component stays usable
    Fatal    ///< the component can no longer do its work
};

/// A source file as error reports name it; made by ZO_SOURCE_UNIT.
struct tagSourceUnit
{
    const char* name = "";       ///< path below the project's root, without extension
    const char* buildStamp = ""; ///< date and time at which the file was compiled
};

/// Everything known about one internal error.
///
/// Ownership: the C strings are literals, or live at least as long as the report and its copies; the object
/// is borrowed and can be gone once the error has left the operation that raised it.
struct tagErrorReport
{
    const char* condition = "";                          ///< the condition that did not hold, as source text
    const char* sourceUnit = "";                         ///< where it was checked, see tagSourceUnit
    const char* buildStamp = "";                         ///< when that file was compiled
    int line = 0;                                        ///< line of the check
    tagErrorSeverity severity = tagErrorSeverity::Error; ///< how bad it is
    const CObjectDataReference* object = nullptr;        ///< the object at work; null when there is none
    std::string message;                                 ///< what was wrong, with values; one line
    HRESULT result = ZO_E_SHELL;                         ///< what callers get; a failure
};
} // namespace ZoVelkor
