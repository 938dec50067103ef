#include "CInstrumentStatus.h"

#include "AnalyzerSettings.h"
#include "ErrorRaising.h"
#include "IZOScpiStatusManagement.h"
#include "Root.h"

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Analyzer/CInstrumentStatus");

constexpr RegisterWord Word(SweepPhase phase)
{
    return static_cast<RegisterWord>(phase);
}

/// The bits that the analyser keeps; the others of a register belong to whoever uses them.
constexpr RegisterWord kPhases =
    Word(SweepPhase::Settling) | Word(SweepPhase::Sweeping) | Word(SweepPhase::WaitingForTrigger);
constexpr RegisterWord kAllChannels = ChannelBit(kChannelCount + 1) - 1;

CComPtr<IZOScpiStatusRegister> FindRegister(IZOScpiStatusManagement& management, const wchar_t* name)
{
    CComPtr<IZOScpiStatusRegister> statusRegister;
    if (const HRESULT result = management.GetRegister(kScpiInstrumentPath, name, &statusRegister);
        result != S_OK)
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control lacks a status register", E_FAIL));
    }
    return statusRegister;
}

void SetBits(IZOScpiStatusRegister* statusRegister, RegisterWord mask, RegisterWord bits)
{
    const HRESULT result = statusRegister->ModifyCondition(mask, bits);
    if (FAILED(result))
    {
        RepairError(ZO_ERROR(nullptr, "hr == S_OK", "A status register does not change", result));
    }
}

} // namespace

CInstrumentStatus::CInstrumentStatus()
{
    CComPtr<IZOScpiStatusManagement> management;
    if (const HRESULT result = ZoGetRegisteredInterface(&IID_IZOScpiStatusManagement, &management);
        FAILED(result))
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control has no status registers", result));
    }
    m_operation = FindRegister(*management, L"STATus:OPERation");
    m_power = FindRegister(*management, L"STATus:QUEStionable:POWer");
    m_frequency = FindRegister(*management, L"STATus:QUEStionable:FREQuency");
}

void CInstrumentStatus::SetPhase(SweepPhase phase) const
{
    SetBits(m_operation, kPhases, Word(phase));
}

void CInstrumentStatus::SetOverloaded(RegisterWord channels) const
{
    SetBits(m_power, kAllChannels, channels);
}

void CInstrumentStatus::SetUncalibrated(RegisterWord channels) const
{
    SetBits(m_frequency, kAllChannels, channels);
}

} // namespace ZoVelkor::Demo
