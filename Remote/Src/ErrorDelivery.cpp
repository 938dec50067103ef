#include "ErrorDelivery.h"

#include "CComBSTR.h"
#include "CLazyScpiManager.h"
#include "ErrorRaising.h"

namespace ZoVelkor
{

// A part of the sink framework as far as error reports go: whoever reads them looks for this name.
ZO_SOURCE_UNIT("Remote/Src/CScpiSinkFramework");

HRESULT ScpiExecution::DeliverError(const ErrorDelivery& delivery)
{
    constexpr char kMissingInterface[] = "Fatal missing interface";
    if (delivery.services.Manager() == nullptr)
    {
        ThrowError(ZO_ERROR(delivery.pObject, "m_pScpiManager != NULL", kMissingInterface, E_POINTER));
    }
    if (delivery.remotePath < 0)
    {
        ThrowError(ZO_ERROR(delivery.pObject, "m_iRemotePath >= 0", "Invalid remote path", ZO_E_SHELL));
    }
    const CComPtr<IZOScpiErrorManagement> errorManagement = delivery.services.ErrorManagement();
    if (errorManagement == nullptr)
    {
        ThrowError(ZO_ERROR(delivery.pObject, "pScpiErrorManagement != NULL", kMissingInterface, E_POINTER));
    }
    const CComBSTR detail(delivery.detail.c_str());
    return errorManagement->SetError(delivery.remotePath, delivery.code, detail);
}

} // namespace ZoVelkor
