#include "CTimeDateChecks.h"

#include "ErrorRaising.h"
#include "IZOTimeDateControl.h"

#include <string>

namespace ZoVelkor
{

namespace
{

/// Range of one field, and its text for a field passed in and for one returned.
template <class TStruct>
struct FieldRange
{
    std::uint16_t TStruct::*field;
    unsigned int first;
    unsigned int end;
    const char* argument;
    const char* returned;
};

// clang-format off
constexpr FieldRange<tagTimeStruct> kTimeFields[] = {
    {&tagTimeStruct::iHour, 0, 24,
     "0 <= Time.iHour && Time.iHour < 24", "0 <= pTime->iHour && pTime->iHour < 24"},
    {&tagTimeStruct::iMin, 0, 60,
     "0 <= Time.iMin && Time.iMin < 60", "0 <= pTime->iMin && pTime->iMin < 60"},
    {&tagTimeStruct::iSec, 0, 60,
     "0 <= Time.iSec && Time.iSec < 60", "0 <= pTime->iSec && pTime->iSec < 60"},
    {&tagTimeStruct::iMilliSec, 0, 1000,
     "0 <= Time.iMilliSec && Time.iMilliSec < 1000", "0 <= pTime->iMilliSec && pTime->iMilliSec < 1000"}};

constexpr FieldRange<tagDateStruct> kDateFields[] = {
    {&tagDateStruct::iMonth, 1, 13,
     "1 <= Date.iMonth && Date.iMonth < 13", "1 <= pDate->iMonth && pDate->iMonth < 13"},
    {&tagDateStruct::iDay, 1, 32,
     "1 <= Date.iDay && Date.iDay < 32", "1 <= pDate->iDay && pDate->iDay < 32"}};
// clang-format on

} // namespace

void CTimeDateChecks::Pointer(const tagTimeStruct* pTime, int line) const
{
    if (pTime == nullptr)
    {
        Raise("pTime != NULL", "Null pointer detected (pTime)", ZO_E_NULL_ARGUMENT, line);
    }
}

void CTimeDateChecks::Pointer(const tagDateStruct* pDate, int line) const
{
    if (pDate == nullptr)
    {
        Raise("pDate != NULL", "Null pointer detected (pDate)", ZO_E_NULL_ARGUMENT, line);
    }
}

void CTimeDateChecks::Argument(const tagTimeStruct& Time, int line) const
{
    Fields(Time, kTimeFields, false, line);
}

void CTimeDateChecks::Argument(const tagDateStruct& Date, int line) const
{
    Fields(Date, kDateFields, false, line);
}

void CTimeDateChecks::Returned(const tagTimeStruct& Time, int line) const
{
    Fields(Time, kTimeFields, true, line);
}

void CTimeDateChecks::Returned(const tagDateStruct& Date, int line) const
{
    Fields(Date, kDateFields, true, line);
}

void CTimeDateChecks::Result(HRESULT result, int line) const
{
    if (result != S_OK && result != S_FALSE)
    {
        Raise("hResult == S_OK || hResult == S_FALSE", "HResult was invalid", result, line);
    }
}

void CTimeDateChecks::UnexpectedException(int line) const
{
    // Deliberate: the spelling is what log readers search for.
    Raise("false", "unexpected exception occured", ZO_E_SHELL, line);
}

void CTimeDateChecks::Raise(const char* condition, const std::string& message, HRESULT result, int line) const
{
    ThrowError(ErrorAt(m_unit, line, &m_object, condition, message, result));
}

template <class TStruct, class TFields>
void CTimeDateChecks::Fields(const TStruct& value, const TFields& fields, bool isReturned, int line) const
{
    for (const auto& row : fields)
    {
        const unsigned int field = value.*row.field;
        if (field < row.first || field >= row.end)
        {
            Raise(isReturned ? row.returned : row.argument,
                  "Value out of range (" + std::to_string(field) + ")",
                  ZO_E_ARGUMENT_RANGE,
                  line);
        }
    }
}

} // namespace ZoVelkor
