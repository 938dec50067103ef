#include "CSystemTimeDateControl.h"

#include "SystemTime.h"

namespace ZoVelkor
{

HRESULT CSystemTimeDateControl::DoGetTimeDate(tagTimeStruct& Time, tagDateStruct& Date)
{
    SYSTEMTIME now{};
    GetSystemTime(&now);
    Time = {now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
    Date = {now.wYear, now.wMonth, now.wDay};
    return S_OK;
}

HRESULT CSystemTimeDateControl::DoSetTimeDate(const tagTimeStruct& Time, const tagDateStruct& Date)
{
    SYSTEMTIME wanted{};
    wanted.wYear = Date.iYear;
    wanted.wMonth = Date.iMonth;
    wanted.wDay = Date.iDay;
    wanted.wHour = Time.iHour;
    wanted.wMinute = Time.iMin;
    wanted.wSecond = Time.iSec;
    wanted.wMilliseconds = Time.iMilliSec;
    // Deliberate: a refusal is no error, as a program without the right to set the clock can go on.
    return SetSystemTime(&wanted) == TRUE ? S_OK : S_FALSE;
}

} // namespace ZoVelkor
