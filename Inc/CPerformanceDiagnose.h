#pragma once

#include "RemoteDiagnoseControl.h"
#include "ZoExport.h"

#include <cstdint>
#include <string>

namespace ZoVelkor
{

/// Diagnosis of the remote-control path: switches, timed trace lines and simple statistics.
///
/// Switches, counter frequency and timing base are those of the process's control block, see
/// get_RemoteDiagnoseControl. A frequency of 0 or less counts as 1. Counter values may be any 64-bit number;
/// differences wrap. Threads: the static operations may be called from any thread; lines of several threads
/// mix freely.
class ZO_EXPORT CPerformanceDiagnose
{
public:
    /// Statistic over time spans in seconds. Threads: one instance belongs to one thread at a time.
    class ZO_EXPORT CStatistik
    {
    public:
        CStatistik() = default;
        CStatistik(const CStatistik&) = default;
        CStatistik& operator=(const CStatistik&) = default;
        virtual ~CStatistik();

        /// Adds a sample of this many counter ticks; after 2147483647 samples further ones are dropped.
        void Push(long long ticks) noexcept;
        /// All five figures become 0.
        void Reset() noexcept;

        /// Number of samples since the last Reset, 0 to 2147483647.
        long get_Count() const noexcept { return m_count; }
        /// Sum of the samples, in seconds.
        double get_Sum() const noexcept { return m_sum; }
        /// Sum of their squares, in square seconds.
        double get_SumOfSquares() const noexcept { return m_sumOfSquares; }
        /// The smallest sample or 0, whichever is less.
        double get_Minimum() const noexcept { return m_minimum; }
        /// The largest sample or 0, whichever is more.
        double get_Maximum() const noexcept { return m_maximum; }
        /// Mean of the samples in seconds; 0 without samples.
        double get_Mean() const noexcept;
        /// Standard deviation of the samples as a whole population, in seconds; 0 without samples.
        double get_Sdev() const noexcept;

    private:
        // Deliberate: the extremes start at 0, so the minimum of positive samples stays there.
        std::int32_t m_count = 0;
        double m_sum = 0.0;
        double m_sumOfSquares = 0.0;
        double m_minimum = 0.0;
        double m_maximum = 0.0;
    };

    /// Three readings of the counter that accompany a run: its start, and start and end of its last section.
    /// All three are the counter at construction.
    class ZO_EXPORT CRunControl
    {
    public:
        CRunControl() noexcept;
        CRunControl(const CRunControl&) = default;
        CRunControl& operator=(const CRunControl&) = default;
        virtual ~CRunControl();

        /// Ends a section now and begins the next one.
        void NextSection() noexcept;

        /// Counter value at construction.
        long long get_RunStart() const noexcept { return m_runStart; }
        /// Counter value at which the last section that has ended began.
        long long get_SectionStart() const noexcept { return m_sectionStart; }
        /// Counter value at which it ended, and the next one began.
        long long get_SectionEnd() const noexcept { return m_sectionEnd; }

    private:
        long long m_runStart;
        long long m_sectionStart;
        long long m_sectionEnd;
    };

    /// A measurement that is under way; its end puts the time since its start into the statistic.
    class ZO_EXPORT CMeasurement
    {
    public:
        CMeasurement(const CMeasurement&) = delete;
        CMeasurement& operator=(const CMeasurement&) = delete;
        ~CMeasurement();

    private:
        friend class CPerformanceDiagnose;
        explicit CMeasurement(CStatistik& statistic) noexcept;

        CStatistik& m_statistic;
        const long long m_start;
    };

    /// The performance counter now; 0 when the platform has none.
    static long long GetPerfCounter() noexcept;
    /// Its ticks per second, 1 or more; 1 when the platform has none.
    static long long GetFrequency() noexcept;

    /// The next timed line measures its dt from now.
    static void BeginDebugTiming() noexcept;

    /// Property problems are not reported.
    static bool IsScpiChecksDisabled() noexcept
    {
        return Flag(&tagRemoteDiagnoseControl::bScpiChecksDisabled);
    }
    /// Timed trace lines are printed.
    static bool IsDebugTimingActive() noexcept { return Flag(&tagRemoteDiagnoseControl::bTimingActive); }
    /// Remote calls are diagnosed.
    static bool IsDebugRpcModeActive() noexcept { return Flag(&tagRemoteDiagnoseControl::bRpcModeActive); }
    /// Trace lines are printed.
    static bool IsDebugTraceModeActive() noexcept
    {
        return Flag(&tagRemoteDiagnoseControl::bTraceModeActive);
    }
    /// Execution times are collected.
    static bool IsDebugStatisticModeActive() noexcept
    {
        return Flag(&tagRemoteDiagnoseControl::bStatisticModeActive);
    }

    /// While timing is active, prints "[RemoteTrace] t = <since the base> : dt = <since the line before> :
    /// <message>".
    ///
    /// @param message  null counts as empty
    static void DebugMessageTiming(const char* message) noexcept;
    /// While trace mode is active, prints "[RemoteTrace] <message>", or the timed line while timing is, too.
    static void DebugMessageTrace(const char* message) noexcept;

    /// Counter ticks as "hh:mm:ss,mmm.uuu": hours of the day, minutes, seconds, milli- and microseconds.
    ///
    /// @param ticks  a negative number gives "-" and the text of its magnitude
    static std::string GetTimestampFromPerformanceCounter(long long ticks);

    /// Starts a measurement; it ends with the scope that keeps it.
    ///
    /// @param statistic  borrowed until then
    [[nodiscard]] static CMeasurement DifferenceMeasurement(CStatistik& statistic) noexcept
    {
        return CMeasurement(statistic);
    }

private:
    static bool Flag(std::atomic<bool> tagRemoteDiagnoseControl::*flag) noexcept
    {
        return (get_RemoteDiagnoseControl()->*flag).load(std::memory_order_relaxed);
    }
};

} // namespace ZoVelkor
