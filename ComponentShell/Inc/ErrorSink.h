#pragma once

#include "ErrorReport.h"
#include "ZoExport.h"

namespace ZoVelkor
{
/// Receives every internal error of the process.
///
/// One sink a process: it is for those who keep or show the log, and for tests, which record. Ownership:
/// the sink stays its maker's.
class IErrorSink
{
public:
    /// Takes one report; called in the thread that met the error, by several threads at once.
    ///
    /// May itself call RepairError; must not call SetErrorSink.
    /// @param report  borrowed for the call, its object is alive
    /// @param thrown  true when the operation is abandoned (ThrowError), false when it goes on (RepairError)
    virtual void Report(const tagErrorReport& report, bool thrown) noexcept = 0;

protected:
    ~IErrorSink() = default;
};

/// Replaces the sink of the process. The first sink writes each report as one line to stderr.
///
/// Returns when no thread is left inside the former sink, so that the caller may destroy it.
/// Threads: any, but not from within a sink.
/// @param sink  borrowed until the next call; null brings back the line on stderr
/// @return the former sink, null when it was the line on stderr
ZO_EXPORT IErrorSink* SetErrorSink(IErrorSink* sink);
} // namespace ZoVelkor
