// Conformance: one command of every kind, for tests of controllers and of the remote interface.
//
// CConformanceTarget holds the settings, CConformanceCommands the handlers of ConformanceTable. It is an
// instrument of its own, started instead of analyser and generator, and keeps nothing from one start to the
// next. Handlers run one at a time under the kernel's lock of the application.
// Locks: none of its own; timed operations have that of COperationTimer.

#pragma once

#include "CNumericSetting.h"
#include "Common/COperationTimer.h"
#include "Common/CSwitchBoard.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace ZoVelkor::Demo::Conformance
{

inline constexpr std::size_t kSenseCount = 4;   ///< SENSe<1..4>
inline constexpr std::size_t kVoltageCount = 2; ///< SOURce<1..2>, OUTPut<1..2>

inline constexpr tagNumericLimits kCenterHz{0.0, 1e9, 1e6, 1e5};
inline constexpr tagNumericLimits kSpanHz{0.0, 1e9, 1e9};
inline constexpr tagNumericLimits kRangeOhm{0.0, 1e9, 1000.0};
inline constexpr tagNumericLimits kVoltageV{-10.0, 10.0, 0.0};
inline constexpr tagNumericLimits kTriggerCount{1.0, 1000.0, 1.0};
inline constexpr tagNumericLimits kTriggerDelayS{0.0, 10.0, 0.0};

inline constexpr std::size_t kMaxDisplayText = 255;  ///< characters
inline constexpr std::size_t kMaxTraceBytes = 65536; ///< TRACe:DATA
inline constexpr double kMaxSlowTimeS = 60.0;        ///< TEST:SLOW
inline constexpr long kMaxRegisterValue = 0x7FFF;    ///< bit 15 of the status registers is never used

/// Values of the mnemonics of TRIGger:SOURce.
enum TriggerSource : std::uint32_t
{
    TRIGGER_IMMEDIATE = 1,
    TRIGGER_EXTERNAL,
    TRIGGER_BUS,
    TRIGGER_TIMER1,
    TRIGGER_TIMER2
};

struct SenseChannel
{
    double centerHz = kCenterHz.defaultValue;
    double spanHz = kSpanHz.defaultValue;
    double rangeOhm = kRangeOhm.defaultValue;
};

struct VoltageChannel
{
    double voltageV = kVoltageV.defaultValue;
    bool outputOn = false;
};

/// What the commands of the conformance profile set; a new object is the reset state.
struct ConformanceSettings
{
    std::array<SenseChannel, kSenseCount> senses{};
    std::array<VoltageChannel, kVoltageCount> voltages{};
    long triggerSource = TRIGGER_IMMEDIATE;
    double triggerCount = kTriggerCount.defaultValue;
    double triggerDelayS = kTriggerDelayS.defaultValue;
    std::string displayText;
    std::vector<unsigned char> trace;
    CSwitchBoard switches;
    long testInteger = 0;
    double testNumber = 0.0;
};

/// An instrument that does nothing but keep values: one command of every kind to test controllers and the
/// remote interface with.
///
/// Threads: the thread that executes the command, except for the parts that say otherwise.
class CConformanceTarget
{
public:
    /// Returns to the reset state and ends what is pending.
    void Reset()
    {
        m_settings = {};
        m_slowOperations.EndAll();
    }

    ConformanceSettings& Settings() { return m_settings; }
    COperationTimer& SlowOperations() { return m_slowOperations; }

private:
    ConformanceSettings m_settings;
    COperationTimer m_slowOperations;
};

} // namespace ZoVelkor::Demo::Conformance
