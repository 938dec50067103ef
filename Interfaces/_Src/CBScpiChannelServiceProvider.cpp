#include "CBScpiChannelServiceProvider.h"

#include "GuardedEntry.h"

namespace ZoVelkor
{

HRESULT CBScpiChannelServiceProvider::SignalDataAvailable()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalGotoLocal()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalGotoRemote()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalLocalLockout(short /*on*/)
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalDeviceClear()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalTrigger()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalStbChange(unsigned char /*stb*/)
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::ReportError(short code, wchar_t* text)
{
    return GuardedEntry([&] { return DoReportError(code, text); });
}

HRESULT CBScpiChannelServiceProvider::SignalConnected()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::SignalDisconnected()
{
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::GetScpiManager(IUnknown** manager)
{
    if (manager != nullptr)
    {
        *manager = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CBScpiChannelServiceProvider::DoReportError(short /*code*/, wchar_t* /*text*/)
{
    return S_OK;
}

} // namespace ZoVelkor
