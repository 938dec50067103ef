#include "Root.h"

#include "CComObject.h"
#include "CCritSection.h"
#include "CCritSectionLocker.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"
#include "ThreadAnnotations.h"

#include <map>
#include <utility>

namespace ZoVelkor
{
namespace
{
ZO_SOURCE_UNIT("ComponentShell/Src/Root");

class CRoot : public IZORoot
{
public:
    HRESULT RegisterInterface(const IID& iid, IUnknown* pObject) override;
    HRESULT UnregisterInterface(const IID& iid) override;
    HRESULT GetRegisteredInterface(const IID& iid, void** ppInterface) override;

protected:
    CRoot() = default;
    ~CRoot() = default;

private:
    using CRegistrations = std::map<IID, CComPtr<IUnknown>>;

    CComPtr<IUnknown> Find(const IID& iid);

    CCritSection m_section;
    CRegistrations m_registrations ZO_GUARDED_BY(m_section);
};

HRESULT CRoot::RegisterInterface(const IID& iid, IUnknown* pObject)
{
    return GuardedEntry([this, &iid, pObject]() -> HRESULT {
        if (pObject == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "pObject"));
        }
        // Asked before the lock, because it runs code of the object. What is registered is the object as it
        // was handed in; each look-up asks it again.
        void* interface = nullptr;
        if (FAILED(pObject->QueryInterface(iid, &interface)))
        {
            return E_NOINTERFACE;
        }
        static_cast<IUnknown*>(interface)->Release();

        CComPtr<IUnknown> object(pObject); // then the replaced one, released after the lock
        const CCritSectionLocker locker(m_section);
        CComPtr<IUnknown>& slot = m_registrations[iid];
        std::swap(slot, object);
        return object == nullptr ? S_OK : S_FALSE;
    });
}

HRESULT CRoot::UnregisterInterface(const IID& iid)
{
    CRegistrations::node_type removed; // released after the lock
    const CCritSectionLocker locker(m_section);
    removed = m_registrations.extract(iid);
    return removed.empty() ? S_FALSE : S_OK;
}

HRESULT CRoot::GetRegisteredInterface(const IID& iid, void** ppInterface)
{
    if (ppInterface == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "ppInterface"));
    }
    *ppInterface = nullptr;
    const CComPtr<IUnknown> object = Find(iid);
    return object == nullptr ? E_NOINTERFACE : object->QueryInterface(iid, ppInterface);
}

CComPtr<IUnknown> CRoot::Find(const IID& iid)
{
    const CCritSectionLocker locker(m_section);
    const auto it = m_registrations.find(iid);
    return it == m_registrations.end() ? nullptr : it->second;
}

// Never destroyed: services are looked up and unregistered until the last static object is gone.
IZORoot* ProcessRoot()
{
    static IZORoot* const root = CComObject<CRoot, IZORoot>::Create().Detach();
    return root;
}
} // namespace

HRESULT GetRoot(IZORoot** ppRoot) noexcept
{
    return GuardedEntry([ppRoot]() -> HRESULT {
        if (ppRoot == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "ppRoot"));
        }
        *ppRoot = nullptr;
        *ppRoot = ProcessRoot();
        (*ppRoot)->AddRef();
        return S_OK;
    });
}

HRESULT ZoGetRegisteredInterface(const IID* pIid, void** ppInterface) noexcept
{
    return GuardedEntry([pIid, ppInterface]() -> HRESULT {
        if (ppInterface == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "ppInterface"));
        }
        *ppInterface = nullptr;
        if (pIid == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "pIid"));
        }
        return ProcessRoot()->GetRegisteredInterface(*pIid, ppInterface);
    });
}
} // namespace ZoVelkor
