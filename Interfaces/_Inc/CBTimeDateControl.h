#pragma once

#include "CObjectDataReference.h"
#include "IZOTimeDateControl.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of time and date controls: the operations on top of four overridable primitives.
///
/// A primitive that fails to read the clock is reported as "DoGetTimeDate failed" and its result returned;
/// the base primitives know no clock, so that reading and setting give E_NOTIMPL. A null pointer is reported
/// and gives E_POINTER. What a primitive throws goes to the caller: CETimeDateControl stands in front.
/// Setting the time alone or the date alone reads the clock first; a midnight in between shifts the result by
/// a day.
class ZO_EXPORT CBTimeDateControl : public IZOTimeDateControl, public virtual CObjectDataReference
{
public:
    HRESULT GetTimeAndDate(tagTimeStruct* pTime, tagDateStruct* pDate) override;
    HRESULT GetTime(tagTimeStruct* pTime) override;
    HRESULT GetDate(tagDateStruct* pDate) override;
    HRESULT SetTimeAndDate(tagTimeStruct Time, tagDateStruct Date) override;
    /// Sets nothing unless the date was read with S_OK.
    HRESULT SetTime(tagTimeStruct Time) override;
    /// Sets nothing unless the time was read with S_OK.
    HRESULT SetDate(tagDateStruct Date) override;
    HRESULT GetTimeZone(tagTimeStruct* pTime) override;
    HRESULT SetTimeZone(tagTimeStruct Time) override;

protected:
    // These stand before the destructor, so that they take the slots that follow the interface.
    /// Reads the clock.
    ///
    /// @param[out] Time  zero before the call, like Date
    /// @return S_OK; S_FALSE, which the get operations take and the set operations do not; E_NOTIMPL here
    virtual HRESULT DoGetTimeDate(tagTimeStruct& Time, tagDateStruct& Date);
    /// Sets the clock.
    ///
    /// @return S_OK; S_FALSE for a refusal; E_NOTIMPL here
    virtual HRESULT DoSetTimeDate(const tagTimeStruct& Time, const tagDateStruct& Date);
    /// @param pTime  may be null; left alone here
    /// @return S_OK
    virtual HRESULT DoGetTimeZone(tagTimeStruct* pTime);
    /// Does nothing here.
    /// @return S_OK
    virtual HRESULT DoSetTimeZone(tagTimeStruct Time);

    ~CBTimeDateControl() override = default;
};

} // namespace ZoVelkor
