#pragma once

#include "ZoExport.h"

#include <string_view>

namespace ZoVelkor
{
/// Receives the lines of the debug print.
///
/// One sink a process, for those who keep or show the lines. Ownership: the sink stays its maker's.
class ITraceSink
{
public:
    /// Takes one line; called in the printing thread, by several threads at once. Must not call SetTraceSink.
    ///
    /// @param line  "[component] text", without line end; borrowed for the call
    virtual void Print(std::string_view line) noexcept = 0;

protected:
    ~ITraceSink() = default;
};

/// Replaces the sink of the process; the first one writes to stderr. Rules as for SetErrorSink.
ZO_EXPORT ITraceSink* SetTraceSink(ITraceSink* sink);

/// Prints the line "[component] text", whatever switches are set; callers ask their switch first.
///
/// Threads: any; a line is never torn. A line that finds no memory is dropped.
ZO_EXPORT void DebugPrint(std::string_view component, std::string_view text) noexcept;
} // namespace ZoVelkor
