#include "ModuleServices.h"

#include "CComObject.h"
#include "CSystemTimeDateControl.h"
#include "ServiceLookup.h"

namespace ZoVelkor
{

namespace
{
constexpr std::wstring_view kVersionSuffix = L"_2.6";

constexpr tagServiceEntry kServices[] = {
    {L"TimeServices", &MakeService<CComObject<CSystemTimeDateControl, IZOTimeDateControl>>}
};
} // namespace

HRESULT GetModuleService(const wchar_t* name, const IID& iid, void** ppService) noexcept
{
    return FindService(kServices, kVersionSuffix, name, iid, ppService);
}

} // namespace ZoVelkor
