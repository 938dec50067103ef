#pragma once

namespace ZoVelkor::Demo
{

inline constexpr double kMinFrequencyHz = 0.0;
inline constexpr double kMaxFrequencyHz = 6e9;
inline constexpr double kMaxSpanHz = kMaxFrequencyHz - kMinFrequencyHz;

/// The frequencies that a sweep covers: centre and span, start and stop, coupled to each other.
///
/// Start and stop always lie within the instrument's range and in order. Each setter takes a value within the
/// range of its quantity; what was set last wins and the others follow. A new object covers everything.
class CFrequencyRange
{
public:
    double StartHz() const { return m_startHz; }
    double StopHz() const { return m_stopHz; }
    double CenterHz() const { return (m_startHz + m_stopHz) / 2; }
    double SpanHz() const { return m_stopHz - m_startHz; }

    /// Moves the centre and keeps the span; near the ends of the range the span shrinks.
    void SetCenter(double centerHz);

    /// Sets the span and keeps the centre; where that does not fit the centre moves.
    void SetSpan(double spanHz);

    /// Sets the start and keeps the stop; a start above the stop takes it along.
    void SetStart(double startHz);

    /// Sets the stop and keeps the start; a stop below the start takes it along.
    void SetStop(double stopHz);

    bool operator==(const CFrequencyRange&) const = default;

private:
    double m_startHz = kMinFrequencyHz;
    double m_stopHz = kMaxFrequencyHz;
};

} // namespace ZoVelkor::Demo
