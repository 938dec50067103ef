#pragma once

#include "CBTimeDateControl.h"
#include "CETimeDateControl.h"

namespace ZoVelkor
{

/// The time and date control of the system clock.
class CSystemTimeDateControl : public CETimeDateControl<CBTimeDateControl>
{
protected:
    HRESULT DoGetTimeDate(tagTimeStruct& Time, tagDateStruct& Date) override;
    /// @return S_OK; S_FALSE when the platform refuses, for a day that the month has not as well
    HRESULT DoSetTimeDate(const tagTimeStruct& Time, const tagDateStruct& Date) override;

    ~CSystemTimeDateControl() override = default;
};

} // namespace ZoVelkor
