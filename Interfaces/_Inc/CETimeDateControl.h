#pragma once

#include "CTimeDateChecks.h"
#include "CTraceCallStackObject.h"
#include "GuardedEntry.h"
#include "IZOTimeDateControl.h"

namespace ZoVelkor
{

/// Entry layer in front of a time and date control: traces each call, checks arguments and results and lets
/// no exception out.
///
/// While argument checking is on for the object, fields out of their ranges give ZO_E_ARGUMENT_RANGE before
/// the base layer sees them, and also when the base layer returns them; null pointers give
/// ZO_E_NULL_ARGUMENT. The year is not checked, nor whether the month has the day. A result of the base layer
/// other than S_OK and S_FALSE is returned (E_FAIL for another success code), an exception becomes
/// ZO_E_SHELL. All these are reported.
/// @tparam TBase  CBTimeDateControl or a class derived from it
template <class TBase>
class CETimeDateControl : public TBase
{
public:
    HRESULT GetTimeAndDate(tagTimeStruct* pTime, tagDateStruct* pDate) override
    {
        return Enter(
            "GetTimeAndDate",
            [=](const CTimeDateChecks& checks) {
                checks.Pointer(pTime);
                checks.Pointer(pDate);
            },
            [=, this] { return TBase::GetTimeAndDate(pTime, pDate); },
            [=](const CTimeDateChecks& checks) {
                checks.Returned(*pTime);
                checks.Returned(*pDate);
            });
    }

    HRESULT GetTime(tagTimeStruct* pTime) override
    {
        return Enter(
            "GetTime",
            [=](const CTimeDateChecks& checks) { checks.Pointer(pTime); },
            [=, this] { return TBase::GetTime(pTime); },
            [=](const CTimeDateChecks& checks) { checks.Returned(*pTime); });
    }

    HRESULT GetDate(tagDateStruct* pDate) override
    {
        return Enter(
            "GetDate",
            [=](const CTimeDateChecks& checks) { checks.Pointer(pDate); },
            [=, this] { return TBase::GetDate(pDate); },
            [=](const CTimeDateChecks& checks) { checks.Returned(*pDate); });
    }

    HRESULT SetTimeAndDate(tagTimeStruct Time, tagDateStruct Date) override
    {
        return Enter(
            "SetTimeAndDate",
            [=](const CTimeDateChecks& checks) {
                checks.Argument(Time);
                checks.Argument(Date);
            },
            [=, this] { return TBase::SetTimeAndDate(Time, Date); });
    }

    HRESULT SetTime(tagTimeStruct Time) override
    {
        return Enter(
            "SetTime",
            [=](const CTimeDateChecks& checks) { checks.Argument(Time); },
            [=, this] { return TBase::SetTime(Time); });
    }

    HRESULT SetDate(tagDateStruct Date) override
    {
        return Enter(
            "SetDate",
            [=](const CTimeDateChecks& checks) { checks.Argument(Date); },
            [=, this] { return TBase::SetDate(Date); });
    }

    /// What comes back unchanged counts as not returned and is not checked.
    HRESULT GetTimeZone(tagTimeStruct* pTime) override
    {
        tagTimeStruct former{};
        return Enter(
            "GetTimeZone",
            [=, &former](const CTimeDateChecks& checks) {
                checks.Pointer(pTime);
                former = *pTime;
            },
            [=, this] { return TBase::GetTimeZone(pTime); },
            [=, &former](const CTimeDateChecks& checks) {
                if (*pTime != former)
                {
                    checks.Returned(*pTime);
                }
            });
    }

    HRESULT SetTimeZone(tagTimeStruct Time) override
    {
        return Enter(
            "SetTimeZone",
            [=](const CTimeDateChecks& checks) { checks.Argument(Time); },
            [=, this] { return TBase::SetTimeZone(Time); });
    }

protected:
    ~CETimeDateControl() override = default;

private:
    static constexpr tagSourceUnit kSourceUnit{"Interfaces/_Inc/CETimeDateControl", __DATE__ " " __TIME__};

    static void CheckNothing(const CTimeDateChecks& /*checks*/) {}

    /// @param function        name for the trace, a literal
    /// @param checkArguments  called before, checkReturned after the base layer, both while checking is on
    /// @param call            the base layer's operation
    template <class TCheckArguments, class TCall, class TCheckReturned = void (*)(const CTimeDateChecks&)>
    HRESULT Enter(const char* function,
                  const TCheckArguments& checkArguments,
                  const TCall& call,
                  const TCheckReturned& checkReturned = &CheckNothing) const
    {
        const CTraceCallStackObject trace("TimeDateControl", function);
        return GuardedEntry([&]() -> HRESULT {
            const CTimeDateChecks checks(*this, kSourceUnit);
            const bool isChecking = this->IsArgumentChecking();
            if (isChecking)
            {
                checkArguments(checks);
            }
            const HRESULT result = CallGuarded(checks, call);
            checks.Result(result);
            if (isChecking)
            {
                checkReturned(checks);
            }
            return result;
        });
    }

    template <class TCall>
    static HRESULT CallGuarded(const CTimeDateChecks& checks, const TCall& call)
    {
        try
        {
            return call();
        }
        catch (...)
        {
            checks.UnexpectedException();
        }
    }
};

} // namespace ZoVelkor
