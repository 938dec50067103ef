#include "CBTimeDateControl.h"

#include "ErrorRaising.h"

namespace ZoVelkor
{

namespace
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBTimeDateControl");

HRESULT ReportFailedReading(const CObjectDataReference& object, HRESULT result)
{
    return RepairError(ZO_ERROR(&object, "hResult == S_OK", "DoGetTimeDate failed", result));
}

} // namespace

HRESULT CBTimeDateControl::GetTimeAndDate(tagTimeStruct* pTime, tagDateStruct* pDate)
{
    if (pTime == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "pTime"));
    }
    if (pDate == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(this, "pDate"));
    }
    tagTimeStruct time{};
    tagDateStruct date{};
    const HRESULT result = DoGetTimeDate(time, date);
    if (result != S_OK && result != S_FALSE)
    {
        return ReportFailedReading(*this, result);
    }
    *pTime = time;
    *pDate = date;
    return result;
}

HRESULT CBTimeDateControl::GetTime(tagTimeStruct* pTime)
{
    tagDateStruct unused{};
    // Qualified: the entry layer overrides the operation and would check and trace a second call.
    return CBTimeDateControl::GetTimeAndDate(pTime, &unused);
}

HRESULT CBTimeDateControl::GetDate(tagDateStruct* pDate)
{
    tagTimeStruct unused{};
    return CBTimeDateControl::GetTimeAndDate(&unused, pDate);
}

HRESULT CBTimeDateControl::SetTimeAndDate(tagTimeStruct Time, tagDateStruct Date)
{
    return DoSetTimeDate(Time, Date);
}

HRESULT CBTimeDateControl::SetTime(tagTimeStruct Time)
{
    tagTimeStruct replaced{};
    tagDateStruct date{};
    const HRESULT result = DoGetTimeDate(replaced, date);
    return result == S_OK ? DoSetTimeDate(Time, date) : ReportFailedReading(*this, result);
}

HRESULT CBTimeDateControl::SetDate(tagDateStruct Date)
{
    tagTimeStruct time{};
    tagDateStruct replaced{};
    const HRESULT result = DoGetTimeDate(time, replaced);
    return result == S_OK ? DoSetTimeDate(time, Date) : ReportFailedReading(*this, result);
}

HRESULT CBTimeDateControl::GetTimeZone(tagTimeStruct* pTime)
{
    return DoGetTimeZone(pTime);
}

HRESULT CBTimeDateControl::SetTimeZone(tagTimeStruct Time)
{
    return DoSetTimeZone(Time);
}

HRESULT CBTimeDateControl::DoGetTimeDate(tagTimeStruct& /*Time*/, tagDateStruct& /*Date*/)
{
    return E_NOTIMPL;
}

HRESULT CBTimeDateControl::DoSetTimeDate(const tagTimeStruct& /*Time*/, const tagDateStruct& /*Date*/)
{
    return E_NOTIMPL;
}

// Deliberate: an instrument without time zones still answers the tools that ask for one.
HRESULT CBTimeDateControl::DoGetTimeZone(tagTimeStruct* /*pTime*/)
{
    return S_OK;
}

HRESULT CBTimeDateControl::DoSetTimeZone(tagTimeStruct /*Time*/)
{
    return S_OK;
}

} // namespace ZoVelkor
