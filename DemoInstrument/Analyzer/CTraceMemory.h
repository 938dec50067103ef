#pragma once

#include "AnalyzerSettings.h"
#include "CCritSection.h"
#include "ThreadAnnotations.h"

#include <array>
#include <memory>
#include <vector>

namespace ZoVelkor::Demo
{

inline constexpr long kTraceCount = kChannelCount;

/// Values that a client may load into one trace (128 MiB as REAL,64); more is refused with -223.
inline constexpr std::size_t kMaxTraceValues = std::size_t{16} * 1024 * 1024;

/// A measured or loaded trace; never changed once it is made.
struct Trace
{
    CFrequencyRange range;         ///< of the first to the last value
    std::vector<double> levelsDbm; ///< one value or more

    /// The frequency at an index.
    double FrequencyHz(std::size_t index) const;
    /// Index of the value nearest to a frequency within the range.
    std::size_t NearestIndex(double frequencyHz) const;
    /// Index of the largest value, the first of several.
    std::size_t PeakIndex() const;
};

using TracePtr = std::shared_ptr<const Trace>;

/// The traces 1 to kTraceCount; each is empty until it is measured or loaded.
///
/// A reader shares a trace and is not disturbed by the next sweep. Threads: any operation from any thread.
class CTraceMemory
{
public:
    /// @return null while the trace is empty
    TracePtr Get(long trace) const;
    void Put(long trace, TracePtr newTrace);
    void Clear();

private:
    mutable CCritSection m_section;
    std::array<TracePtr, kTraceCount> m_traces ZO_GUARDED_BY(m_section);
};

} // namespace ZoVelkor::Demo
