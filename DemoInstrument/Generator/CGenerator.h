// Generator: a signal generator with two sources, and the plainest application of the demo.
//
// CGenerator holds the settings, CGeneratorCommands the handlers of GeneratorTable, and CSimpleApplication
// registers both. Nothing happens by itself: a setting is stored, a query answers it. Handlers run one at a
// time under the kernel's lock of the application, saved states come in between them.
// Locks: none of its own.

#pragma once

#include "CNumericSetting.h"

#include <array>
#include <cstddef>
#include <vector>

namespace ZoVelkor::Demo
{

inline constexpr std::size_t kGeneratorCount = 2; ///< SOURce<1..2>, OUTPut<1..2>

inline constexpr tagNumericLimits kGeneratorFrequencyHz{100e3, 6e9, 1e9, 1e6};
inline constexpr tagNumericLimits kGeneratorPowerDbm{-130.0, 20.0, -30.0, 1.0};
inline constexpr tagNumericLimits kBrightness{0.0, 1.0, 0.5, 0.25}; ///< dark to full

inline constexpr std::size_t kMaxListPoints = 1000; ///< SOURce:LIST; more are refused with -223

/// One signal source.
struct SignalSource
{
    double frequencyHz = kGeneratorFrequencyHz.defaultValue;
    double powerDbm = kGeneratorPowerDbm.defaultValue;
    bool outputOn = false;
    std::vector<double> listHz{kGeneratorFrequencyHz.defaultValue}; ///< one value or more
};

/// The window that a value of a source is watched against, edges included; limit n is row n - 1.
struct SourceLimit
{
    std::size_t source; ///< index
    double SignalSource::*value;
    double minimum;
    double maximum;
};

/// Where the sources keep their specified level accuracy.
inline constexpr auto kSourceLimits = std::to_array<SourceLimit>({
    {0, &SignalSource::frequencyHz, 10e6, 3e9},
    {0, &SignalSource::powerDbm, -100.0, 10.0},
    {1, &SignalSource::frequencyHz, 10e6, 3e9},
    {1, &SignalSource::powerDbm, -100.0, 10.0},
});

/// The signal generator without remote control: two sources and a display; a new object is the reset state.
struct CGenerator
{
    std::array<SignalSource, kGeneratorCount> sources{};
    double brightness = kBrightness.defaultValue;

    void Reset() { *this = {}; }

    /// Tells whether the watched value has left the window.
    bool IsOutside(const SourceLimit& limit) const
    {
        const double value = sources[limit.source].*limit.value;
        return value < limit.minimum || value > limit.maximum;
    }
};

} // namespace ZoVelkor::Demo
