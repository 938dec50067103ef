#include "CStatusRegister.h"

#include "ScpiStatusData.h"

#include <cstdint>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

CStatusRegister::CStatusRegister(std::wstring name, wchar_t mask, wchar_t presetEnable)
    : m_name(std::move(name)),
      m_mask(mask)
{
    SetObjectName(std::string(m_name.begin(), m_name.end()));
    DoSetRegisterMask(mask);
    SetPresetDefaults(0, mask, presetEnable);
    Preset();
}

void CStatusRegister::EndWaitsWith(SharedEvent event)
{
    m_waitEnd = std::move(event);
    SetDeviceClearHandle(m_waitEnd->Get());
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
    m_name.copy(data->szName, kScpiStatusNameSize - 1);
    GetSnapshot(&data->condition, &data->negTrans, &data->posTrans, &data->events, &data->enable);
    GetPresetDefaults(&data->presetNegTrans, &data->presetPosTrans, &data->presetEnable);
    GetSummary(&data->summary);
    GetParentUpdate(&data->parentUpdate);
    CComPtr<IZOScpiStatusRegister> parent;
    wchar_t parentMask = 0;
    GetParentRegister(&parent, &parentMask);
    data->parentMask = parent == nullptr ? L'\0' : parentMask;
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
