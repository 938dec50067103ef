#include "ModuleServices.h"

#include "CBRegistryAccess.h"
#include "CComObject.h"
#include "CERegistryAccess.h"
#include "CSystemTimeDateControl.h"
#include "ServiceLookup.h"

namespace ZoVelkor
{

namespace
{
constexpr std::wstring_view kVersionSuffix = L"_2.6";

using CRegistryService = CComObject<CERegistryAccess<CBRegistryAccess>, IZORegistryAccess>;
using CTimeService = CComObject<CSystemTimeDateControl, IZOTimeDateControl>;

constexpr tagServiceEntry kServices[] = {
    {L"RegistryServices", &MakeService<CRegistryService>},
    {L"TimeServices", &MakeService<CTimeService>},
};
} // namespace

HRESULT GetModuleService(const wchar_t* name, const IID& iid, void** ppService) noexcept
{
    return FindService(kServices, kVersionSuffix, name, iid, ppService);
}

} // namespace ZoVelkor
