#pragma once

#include "CComPtr.h"
#include "Guid.h"
#include "PlatformTypes.h"
#include "Unknown.h"
#include "ZoExport.h"

#include <concepts>

namespace ZoVelkor
{
/// The process's meeting place: components register interfaces here and find each other through it.
///
/// Ownership: the registry holds one counted reference to each registered object until it is unregistered
/// or replaced. The root lives until the process ends and gives nothing back by itself: who registers an
/// interface unregisters it.
/// Threads: any operation from any thread. Objects are released, queried and destroyed outside the lock, so
/// they may use the registry while that happens.
/// Errors: a null pointer argument is reported and gives E_POINTER.
struct IZORoot : public IUnknown
{
    static constexpr IID kInterfaceId{
        0x7C3E4958, 0x213E, 0x42AB, {0xA5, 0x5C, 0x0E, 0x4D, 0x56, 0x30, 0x47, 0xC2}};

    /// Makes an object findable under an interface; a later registration takes the place of the earlier.
    ///
    /// @return S_OK; S_FALSE when another registration was replaced; E_NOINTERFACE when the object does not
    ///         have the interface, E_OUTOFMEMORY, both with the registry unchanged
    virtual HRESULT RegisterInterface(const IID& iid, IUnknown* pObject) = 0;

    /// Takes a registration back and releases the object.
    ///
    /// @return S_OK; S_FALSE when nothing was registered under this interface
    virtual HRESULT UnregisterInterface(const IID& iid) = 0;

    /// Finds the object registered under an interface.
    ///
    /// @param[out] ppInterface  the interface, counted for the caller; null on failure
    /// @return S_OK; E_NOINTERFACE when nothing is registered under it (not reported: the caller decides
    ///         whether it can do without)
    virtual HRESULT GetRegisteredInterface(const IID& iid, void** ppInterface) = 0;

protected:
    ~IZORoot() = default;
};

inline constexpr const IID& IID_IZORoot = IZORoot::kInterfaceId;

/// The root object of the process, made by the first call and kept to the end. Threads: any.
///
/// @param[out] ppRoot  the root, counted for the caller; null on failure
/// @return S_OK; E_POINTER; E_OUTOFMEMORY
ZO_EXPORT HRESULT GetRoot(IZORoot** ppRoot) noexcept;

/// Looks a service up at the root; results as for IZORoot::GetRegisteredInterface.
///
/// @param pIid             null gives E_POINTER, reported
/// @param[out] ppInterface  the interface, counted for the caller; null on failure
ZO_EXPORT HRESULT ZoGetRegisteredInterface(const IID* pIid, void** ppInterface) noexcept;

/// The same with a typed pointer; T must be the interface that *pIid identifies.
template <class T>
requires std::derived_from<T, IUnknown> HRESULT ZoGetRegisteredInterface(const IID* pIid, T** ppInterface)
noexcept
{
    void* pFound = nullptr;
    const HRESULT result = ZoGetRegisteredInterface(pIid, ppInterface == nullptr ? nullptr : &pFound);
    if (ppInterface != nullptr)
    {
        *ppInterface = static_cast<T*>(pFound);
    }
    return result;
}

/// The same into a smart pointer; what it held before is released.
template <class T>
requires std::derived_from<T, IUnknown> HRESULT ZoGetRegisteredInterface(const IID* pIid,
                                                                         CComPtr<T>* pspInterface)
noexcept
{
    T* pFound = nullptr;
    const HRESULT result = ZoGetRegisteredInterface(pIid, pspInterface == nullptr ? nullptr : &pFound);
    if (pspInterface != nullptr)
    {
        pspInterface->Attach(pFound);
    }
    return result;
}
} // namespace ZoVelkor
