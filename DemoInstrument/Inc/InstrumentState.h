#pragma once

#include "CAnalyzer.h"
#include "CGenerator.h"
#include "CStateText.h"

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
};

/// Names every value of a state, with its limits.
void Describe(CStateText& text, tagInstrumentState& state);

/// Reads the analyser's part of a state; puts it in force, without a sweep at hand.
void ReadState(CAnalyzer& analyzer, tagInstrumentState& state);
void PutState(CAnalyzer& analyzer, const tagInstrumentState& state);

} // namespace ZoVelkor::Demo
