#include "ServiceLookup.h"

#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <algorithm>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/ServiceLookup");
}

HRESULT FindService(std::span<const tagServiceEntry> services,
                    std::wstring_view versionSuffix,
                    const wchar_t* name,
                    const IID& iid,
                    void** ppService) noexcept
{
    return GuardedEntry([&]() -> HRESULT {
        if (ppService == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "ppService"));
        }
        *ppService = nullptr;
        if (name == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "name"));
        }
        const std::wstring_view wanted(name);
        const auto found = std::find_if(services.begin(), services.end(), [&](const tagServiceEntry& entry) {
            return wanted.starts_with(entry.name) && wanted.substr(entry.name.size()) == versionSuffix;
        });
        return found == services.end() ? E_NOINTERFACE : found->make(iid, ppService);
    });
}
} // namespace ZoVelkor
