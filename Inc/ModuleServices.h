#pragma once

#include "CComPtr.h"
#include "Guid.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Name, with version, of the service that reads and sets the system clock: IZOTimeDateControl.
inline constexpr const wchar_t* kTimeServices = L"TimeServices_2.6";

/// Name, with version, of the service that reads and writes the registry: IZORegistryAccess.
inline constexpr const wchar_t* kRegistryServices = L"RegistryServices_2.6";

/// Hands out a service of this module; each call makes a new component.
///
/// Results as of FindService. Threads: any.
/// @param name            one of the names above
/// @param[out] ppService  the interface, counted for the caller; null on failure
ZO_EXPORT HRESULT GetModuleService(const wchar_t* name, const IID& iid, void** ppService) noexcept;

/// The same for the interface that the pointer asks for: `GetModuleService(kTimeServices, &clock)`.
template <class T>
HRESULT GetModuleService(const wchar_t* name, T** ppService) noexcept
{
    void* pFound = nullptr;
    const HRESULT result = GetModuleService(name, T::kInterfaceId, ppService == nullptr ? nullptr : &pFound);
    if (ppService != nullptr)
    {
        *ppService = static_cast<T*>(pFound);
    }
    return result;
}

/// The same into a smart pointer; what it held before is released.
template <class T>
HRESULT GetModuleService(const wchar_t* name, CComPtr<T>* pspService) noexcept
{
    T* found = nullptr;
    const HRESULT result = GetModuleService(name, pspService == nullptr ? nullptr : &found);
    if (pspService != nullptr)
    {
        pspService->Attach(found);
    }
    return result;
}

} // namespace ZoVelkor
