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
struct tagInstrumentState
{
    tagAnalyzerSettings settings;
    bool bContinuous = false;
    CSwitchBoard switches;
    std::string displayText;
    CGenerator generator;
    std::array<tagLanSettings, kLanEventCount> lan{};
};

/// Names every value of a state, with its limits.
void Describe(CStateText& text, tagInstrumentState& state);

/// Reads a part of a state, or puts it in force; the sweep at hand is aborted then.
void ReadState(CAnalyzer& analyzer, tagInstrumentState& state);
void PutState(CAnalyzer& analyzer, tagInstrumentState&& state);
void ReadState(const CLxiTrigger& trigger, tagInstrumentState& state);
void PutState(CLxiTrigger& trigger, const tagInstrumentState& state);

} // namespace ZoVelkor::Demo
