#include "CStatusRegister.h"

#include "ScpiStatusData.h"

#include <cstdint>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

CStatusRegister::CStatusRegister(std::wstring name, wchar_t mask, wchar_t presetEnable)
    : m_sName(std::move(name)),
      m_mask(mask)
{
    SetObjectName(std::string(m_sName.begin(), m_sName.end()));
    DoSetRegisterMask(mask);
    SetPresetDefaults(0, mask, presetEnable);
    Preset();
}

void CStatusRegister::EndWaitsWith(SharedEvent spEvent)
{
    m_spWaitEnd = std::move(spEvent);
    SetDeviceClearHandle(m_spWaitEnd->Get());
}

HRESULT CStatusRegister::SetCondition(long bit, short on)
{
    const auto mask = static_cast<wchar_t>(std::uint32_t{1} << (static_cast<unsigned long>(bit) % 32));
    return ModifyCondition(mask, on != 0 ? mask : L'\0');
}

HRESULT CStatusRegister::DoGetScpiStatusData(tagScpiStatusData* data)
{
    if (data == nullptr)
    {
        return E_POINTER;
    }
    *data = {};
    m_sName.copy(data->szName, kScpiStatusNameSize - 1);
    GetSnapshot(&data->condition, &data->negTrans, &data->posTrans, &data->events, &data->enable);
    GetPresetDefaults(&data->presetNegTrans, &data->presetPosTrans, &data->presetEnable);
    GetSummary(&data->summary);
    GetParentUpdate(&data->parentUpdate);
    CComPtr<IZOScpiStatusRegister> spParent;
    wchar_t parentMask = 0;
    GetParentRegister(&spParent, &parentMask);
    data->parentMask = spParent == nullptr ? L'\0' : parentMask;
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
