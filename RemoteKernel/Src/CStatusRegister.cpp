#include "CStatusRegister.h"

#include "ScpiStatusData.h"

#include <algorithm>
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
