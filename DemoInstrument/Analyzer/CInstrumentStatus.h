#pragma once

#include "CComPtr.h"
#include "IZOScpiStatusRegister.h"

namespace ZoVelkor::Demo
{

/// Pattern of a status register, as its interface carries it.
using RegisterWord = wchar_t;

/// What the analyser is doing: bits of STATus:OPERation (SCPI-99 vol. 1, 9.3), one at a time.
enum class SweepPhase : RegisterWord
{
    Idle = 0,
    Settling = 1 << 1,
    Sweeping = 1 << 3,
    WaitingForTrigger = 1 << 5
};

/// The bit of a channel in the registers below STATus:QUEStionable.
constexpr RegisterWord ChannelBit(long channel)
{
    return static_cast<RegisterWord>(1 << (channel - 1));
}

/// The conditions of the analyser in the status registers that all clients share.
///
/// A register that refuses a change is reported, the analyser goes on. Threads: any operation from any
/// thread. A register takes locks of its own and of its parents, and never calls the analyser.
class CInstrumentStatus
{
public:
    /// @throws CShellError when remote control has no such registers
    CInstrumentStatus();

    void SetPhase(SweepPhase phase) const;

    /// Says which channels had more level at the input than they are set for, in
    /// STATus:QUEStionable:POWer.
    void SetOverloaded(RegisterWord channels) const;

    /// Says which channels swept too fast for their bandwidth, in STATus:QUEStionable:FREQuency.
    void SetUncalibrated(RegisterWord channels) const;

private:
    CComPtr<IZOScpiStatusRegister> m_operation;
    CComPtr<IZOScpiStatusRegister> m_power;
    CComPtr<IZOScpiStatusRegister> m_frequency;
};

} // namespace ZoVelkor::Demo
