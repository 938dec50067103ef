#include "CBScpiDeviceHandler.h"

#include "Variant.h"

namespace ZoVelkor
{

HRESULT CBScpiDeviceHandler::GotoLocal()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::GotoRemote()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::LocalLockout(short /*on*/)
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::DeviceClear()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::Trigger()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::Reset()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::SystemPreset()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::ProgramMessageBegin()
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::ProgramMessageEnd(short /*aborted*/)
{
    return S_OK;
}

HRESULT CBScpiDeviceHandler::Calibrate(long* result)
{
    *result = 0;
    return S_OK;
}

HRESULT CBScpiDeviceHandler::Selftest(short* passed)
{
    *passed = VARIANT_TRUE;
    return S_OK;
}

HRESULT CBScpiDeviceHandler::GetDeviceOptions(wchar_t** text)
{
    *text = nullptr;
    return S_OK;
}

HRESULT CBScpiDeviceHandler::GetFirmwareLevel(wchar_t** text)
{
    *text = nullptr;
    return S_OK;
}

} // namespace ZoVelkor
