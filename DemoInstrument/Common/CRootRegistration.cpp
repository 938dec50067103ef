#include "CRootRegistration.h"

#include "ErrorRaising.h"

namespace ZoVelkor::Demo
{
namespace
{
ZO_SOURCE_UNIT("DemoInstrument/Common/CRootRegistration");
}

CRootRegistration::CRootRegistration(const IID& iid, IUnknown* pObject) : m_iid(iid)
{
    HRESULT result = GetRoot(&m_root);
    result = FAILED(result) ? result : m_root->RegisterInterface(m_iid, pObject);
    if (FAILED(result))
    {
        ThrowError(ZO_ERROR(nullptr, "RegisterInterface", "The root refuses an interface", result));
    }
}

CRootRegistration::~CRootRegistration()
{
    m_root->UnregisterInterface(m_iid);
}

} // namespace ZoVelkor::Demo
