#pragma once

#include "Analyzer/CAnalyzer.h"
#include "CStateText.h"
#include "Generator/CGenerator.h"
#include "Lxi/CLxiTrigger.h"

#include <array>
#include <string>

namespace ZoVelkor::Demo
{

/// What *SAV keeps of the instrument and *RCL brings back: all that *RST sets but the traces, which are data.
struct InstrumentState
{
    AnalyzerSettings settings;
    bool continuous = false;
    CSwitchBoard switches;
    std::string displayText;
    CGenerator generator;
    std::array<LanSettings, kLanEventCount> lan{};
};

/// Names every value of a state, with its limits.
void Describe(CStateText& text, InstrumentState& state);

/// Reads a part of a state, or puts it in force; the sweep at hand is aborted then.
void ReadState(CAnalyzer& analyzer, InstrumentState& state);
void PutState(CAnalyzer& analyzer, InstrumentState&& state);
void ReadState(const CLxiTrigger& trigger, InstrumentState& state);
void PutState(CLxiTrigger& trigger, const InstrumentState& state);

} // namespace ZoVelkor::Demo
