#pragma once

#include "ZoExport.h"

#include <atomic>
#include <cstdint>
#include <string_view>

namespace ZoVelkor
{
/// Switches and counters of the diagnosis, one block a process. At its first use the switches are those that
/// the environment variable ZO_DIAGNOSE names, and the frequency is that of the platform's performance
/// counter.
///
/// Threads: every field may be read and written by any thread without a lock. The fields do not belong
/// together: relaxed order is enough. New switches are added at the end.
struct tagRemoteDiagnoseControl
{
    std::atomic<bool> bRpcModeActive{false};        ///< remote calls are diagnosed
    std::atomic<bool> bTimingActive{false};         ///< timed trace lines are printed
    std::atomic<bool> bScpiChecksDisabled{false};   ///< property problems are not reported
    std::atomic<std::int64_t> iCounterFrequency{1}; ///< ticks per second of the two counters below
    std::atomic<std::int64_t> iTimingBase{0};       ///< counter value that counts as time 0 of trace lines
    std::atomic<std::int64_t> iLastTiming{0};       ///< counter value of the previous timed line
    std::atomic<bool> bTraceModeActive{false};      ///< trace lines are printed
    std::atomic<bool> bStatisticModeActive{false};  ///< execution times are collected
    std::atomic<bool> bCallStackTraceActive{false}; ///< CTraceCallStackObject prints
    std::atomic<bool> bMessageTraceActive{false};   ///< program messages and responses are printed
};

/// The control block of the process; never null. Whoever configures the diagnosis writes into it.
ZO_EXPORT tagRemoteDiagnoseControl* get_RemoteDiagnoseControl() noexcept __attribute__((const));

/// Sets every switch that a text names and clears all others.
///
/// The words are rpc, timing, nochecks, trace, statistic, calls and messages, in this order those of the
/// block's switches; between them stand commas, semicolons or blanks. Unknown words change nothing and are
/// named in one log line on stderr. Timed lines count from the moment at which timing comes on.
///
/// @param words  may be empty: all switches off
/// @param source  where the text comes from, for the log line
ZO_EXPORT void ApplyDiagnoseFlags(tagRemoteDiagnoseControl& control,
                                  std::string_view words,
                                  std::string_view source) noexcept;
} // namespace ZoVelkor
