#include "CInstrumentStatus.h"

#include "AnalyzerSettings.h"
#include "ErrorRaising.h"
#include "IZOScpiStatusManagement.h"
#include "Root.h"

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Analyzer/CInstrumentStatus")

constexpr RegisterWord Word(tagSweepPhase phase)
{
    return static_cast<RegisterWord>(phase);
}

/// The bits that the analyser keeps; the others of a register belong to whoever uses them.
constexpr RegisterWord kPhases =
    Word(tagSweepPhase::Settling) | Word(tagSweepPhase::Sweeping) | Word(tagSweepPhase::WaitingForTrigger);
constexpr RegisterWord kAllChannels = ChannelBit(kChannelCount + 1) - 1;

CComPtr<IZOScpiStatusRegister> FindRegister(IZOScpiStatusManagement& management, const wchar_t* name)
{
    CComPtr<IZOScpiStatusRegister> spRegister;
    if (const HRESULT hr = management.GetRegister(kScpiInstrumentPath, name, &spRegister); hr != S_OK)
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control lacks a status register", E_FAIL));
    }
    return spRegister;
}

void SetBits(IZOScpiStatusRegister* pRegister, RegisterWord mask, RegisterWord bits)
{
    const HRESULT hr = pRegister->ModifyCondition(mask, bits);
    if (FAILED(hr))
    {
        RepairError(ZO_ERROR(nullptr, "hr == S_OK", "A status register does not change", hr));
    }
}

} // namespace

CInstrumentStatus::CInstrumentStatus()
{
    CComPtr<IZOScpiStatusManagement> spManagement;
    if (const HRESULT hr = ZoGetRegisteredInterface(&IID_IZOScpiStatusManagement, &spManagement); FAILED(hr))
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control has no status registers", hr));
    }
    m_spOperation = FindRegister(*spManagement, L"STATus:OPERation");
    m_spPower = FindRegister(*spManagement, L"STATus:QUEStionable:POWer");
    m_spFrequency = FindRegister(*spManagement, L"STATus:QUEStionable:FREQuency");
}

void CInstrumentStatus::SetPhase(tagSweepPhase phase) const
{
    SetBits(m_spOperation, kPhases, Word(phase));
}

void CInstrumentStatus::SetOverloaded(RegisterWord channels) const
{
    SetBits(m_spPower, kAllChannels, channels);
}

void CInstrumentStatus::SetUncalibrated(RegisterWord channels) const
{
    SetBits(m_spFrequency, kAllChannels, channels);
}

} // namespace ZoVelkor::Demo
