#include "CBScpiDeviceHandler.h"

#include "Variant.h"

namespace ZoVelkor
{
namespace
{

/// All defaults succeed: an answer that nobody wants is no mistake.
template <class T>
HRESULT Store(T* target, T value) noexcept
{
    if (target != nullptr)
    {
        *target = value;
    }
    return S_OK;
}

} // namespace

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
    return Store(result, 0L);
}

HRESULT CBScpiDeviceHandler::Selftest(short* passed)
{
    return Store(passed, VARIANT_TRUE);
}

HRESULT CBScpiDeviceHandler::GetDeviceOptions(wchar_t** text)
{
    return Store<wchar_t*>(text, nullptr);
}

HRESULT CBScpiDeviceHandler::GetFirmwareLevel(wchar_t** text)
{
    return Store<wchar_t*>(text, nullptr);
}

} // namespace ZoVelkor
