#pragma once

#include "Guid.h"
#include "PlatformTypes.h"
#include "Unknown.h"
#include "ZoExport.h"

#include <span>
#include <string_view>

namespace ZoVelkor
{
/// Makes a service and gives out the wanted interface of it.
///
/// @param[out] ppService  counted for the caller; never a null address, and null before the call
/// @return S_OK; E_NOINTERFACE; it may throw
using ServiceMaker = HRESULT (*)(const IID& iid, void** ppService);

/// One service that a module hands out.
struct tagServiceEntry
{
    std::wstring_view name; ///< without version suffix
    ServiceMaker make;      ///< called by each look-up
};

/// The usual maker: a new component for every look-up, so that callers share no state.
///
/// @tparam TComponent  a CComObject whose base needs no arguments
template <class TComponent>
HRESULT MakeService(const IID& iid, void** ppService)
{
    return TComponent::Create()->QueryInterface(iid, ppService);
}

/// Finds a service of a module by its name and makes it.
///
/// @param services       the module's services
/// @param versionSuffix  what follows the name in every request, as "_1.0"; a request for another version, or
///                       for none, finds nothing
/// @param name           name and version suffix, upper and lower case as in the table
/// @param[out] ppService the interface, counted for the caller; null on failure
/// @return S_OK; E_NOINTERFACE when no service has this name and version or the service has not this
///         interface (not reported: the caller decides whether it can do without); E_POINTER with a report
///         for a null pointer; E_OUTOFMEMORY
ZO_EXPORT HRESULT FindService(std::span<const tagServiceEntry> services,
                              std::wstring_view versionSuffix,
                              const wchar_t* name,
                              const IID& iid,
                              void** ppService) noexcept;
} // namespace ZoVelkor
