#include "CBScpiDeviceHandler.h"

#include "ErrorRaising.h"
#include "Variant.h"

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiDeviceHandler")

namespace
{

/// Checks an out-pointer and answers through it.
template <class TValue>
HRESULT Answer(TValue* pTarget, TValue value, char const* name, char const* condition)
{
    if (pTarget == nullptr)
    {
        return RepairError(NullPointerError(kSourceUnit, nullptr, name, condition));
    }
    *pTarget = value;
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
    return Answer(result, 0L, "result", "result != NULL");
}

HRESULT CBScpiDeviceHandler::Selftest(short* passed)
{
    return Answer(passed, VARIANT_TRUE, "passed", "passed != NULL");
}

HRESULT CBScpiDeviceHandler::GetDeviceOptions(wchar_t** text)
{
    return Answer(text, static_cast<wchar_t*>(nullptr), "text", "text != NULL");
}

HRESULT CBScpiDeviceHandler::GetFirmwareLevel(wchar_t** text)
{
    return Answer(text, static_cast<wchar_t*>(nullptr), "text", "text != NULL");
}

} // namespace ZoVelkor
