#include "InstrumentState.h"

#include "ScpiParameter.h"

#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

/// Start and stop couple while they are set; here both are known to fit.
void Describe(CStateText& text, const std::string& name, CFrequencyRange& range)
{
    double startHz = range.StartHz();
    double stopHz = range.StopHz();
    text.Value(name + "start", startHz, kMinFrequencyHz, kMaxFrequencyHz);
    text.Value(name + "stop", stopHz, startHz, kMaxFrequencyHz);
    range = {};
    range.SetStart(startHz);
    range.SetStop(stopHz);
}

void Describe(CStateText& text, const std::string& name, ChannelSettings& channel)
{
    Describe(text, name, channel.frequency);
    text.Flag(name + "bandwidth.auto", channel.bandwidthAuto);
    text.Value(name + "bandwidth", channel.manualBandwidthHz, kMinBandwidthHz, kMaxBandwidthHz);
    text.Value(
        name + "reference.level", channel.referenceLevelDbm, kMinReferenceLevelDbm, kMaxReferenceLevelDbm);
}

void Describe(CStateText& text, AnalyzerSettings& settings)
{
    for (long i = 1; i <= kChannelCount; ++i)
    {
        Describe(text, "channel" + std::to_string(i) + '.', settings.Channel(i));
    }
    text.Value("sweep.points", settings.sweepPoints, kMinSweepPoints, kMaxSweepPoints);
    text.Flag("sweep.time.auto", settings.sweepTimeAuto);
    text.Value("sweep.time", settings.manualSweepTimeS, kMinSweepTimeS, kMaxSweepTimeS);
    text.Word("detector", settings.detector, Detector::Average);
    text.Word("trigger.source", settings.triggerSource, TriggerSource::Lxi);
    for (long i = 1; i <= kMarkerCount; ++i)
    {
        text.Value("marker" + std::to_string(i), settings.MarkerHz(i), kMinFrequencyHz, kMaxFrequencyHz);
    }
}

void Describe(CStateText& text, const std::string& name, SignalSource& source)
{
    text.Value(
        name + "frequency", source.frequencyHz, kGeneratorFrequencyHz.minimum, kGeneratorFrequencyHz.maximum);
    text.Value(name + "power", source.powerDbm, kGeneratorPowerDbm.minimum, kGeneratorPowerDbm.maximum);
    text.Flag(name + "output", source.outputOn);
    text.Numbers(name + "list",
                 source.listHz,
                 kGeneratorFrequencyHz.minimum,
                 kGeneratorFrequencyHz.maximum,
                 kMaxListPoints);
}

} // namespace

void Describe(CStateText& text, InstrumentState& state)
{
    Describe(text, state.settings);
    text.Flag("continuous", state.continuous);
    unsigned long closed = state.switches.Closed();
    text.Value("switches", closed, 0, (1U << kSwitchCount) - 1);
    state.switches.SetClosed(closed);
    text.Text("display.text", state.displayText, kParameterTextSize);
    for (std::size_t i = 0; i < kGeneratorCount; ++i)
    {
        Describe(text, "source" + std::to_string(i + 1) + '.', state.generator.sources[i]);
    }
    for (std::size_t i = 0; i < kLanEventCount; ++i)
    {
        const std::string name = "lan" + std::to_string(i) + '.';
        text.Flag(name + "enabled", state.lan[i].enabled);
        text.Value(name + "delay", state.lan[i].delayS, 0, kMaxLxiDelayS);
    }
    text.Value("brightness", state.generator.brightness, kBrightness.minimum, kBrightness.maximum);
}

void ReadState(CAnalyzer& analyzer, InstrumentState& state)
{
    state.settings = analyzer.Settings();
    state.continuous = analyzer.Sweeps().IsContinuous();
    state.switches = analyzer.Switches();
    state.displayText = analyzer.DisplayText();
}

void PutState(CAnalyzer& analyzer, InstrumentState&& state)
{
    analyzer.DisplayText() = std::move(state.displayText);
    analyzer.Sweeps().SetContinuous(false);
    analyzer.Sweeps().AbortSweep();
    analyzer.Apply(state.settings);
    analyzer.Switches() = state.switches;
    analyzer.Sweeps().SetContinuous(state.continuous);
}

void ReadState(const CLxiTrigger& trigger, InstrumentState& state)
{
    for (std::size_t i = 0; i < kLanEventCount; ++i)
    {
        state.lan[i] = trigger.Get(static_cast<long>(i));
    }
}

void PutState(CLxiTrigger& trigger, const InstrumentState& state)
{
    for (std::size_t i = 0; i < kLanEventCount; ++i)
    {
        trigger.Put(static_cast<long>(i), state.lan[i]);
    }
}

} // namespace ZoVelkor::Demo
