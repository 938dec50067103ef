#include "CRootRegistration.h"

#include "ErrorRaising.h"

namespace ZoVelkor::Demo
{
namespace
{
ZO_SOURCE_UNIT("DemoInstrument/Common/CRootRegistration")
}

CRootRegistration::CRootRegistration(const IID& iid, IUnknown* pObject) : m_iid(iid)
{
    HRESULT hr = GetRoot(&m_spRoot);
    hr = FAILED(hr) ? hr : m_spRoot->RegisterInterface(m_iid, pObject);
    if (FAILED(hr))
    {
        ThrowError(ZO_ERROR(nullptr, "RegisterInterface", "The root refuses an interface", hr));
    }
}

CRootRegistration::~CRootRegistration()
{
    m_spRoot->UnregisterInterface(m_iid);
}

} // namespace ZoVelkor::Demo
