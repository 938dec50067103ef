#include "SystemTime.h"

#include "LastError.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>

namespace
{
using std::chrono::milliseconds;
using std::chrono::seconds;
using Stamp = std::chrono::sys_time<milliseconds>;

constexpr WORD kFirstYear = 1601;
constexpr WORD kLastYear = 30827;

int SetMachineClock(LONGLONG secondsSince1970, int millisecondsOfSecond) noexcept
{
    const timespec time{static_cast<time_t>(secondsSince1970), millisecondsOfSecond * 1'000'000L};
    return ::clock_settime(CLOCK_REALTIME, &time) == 0 ? 0 : errno;
}

std::atomic<SystemClockPrimitive> substitute{nullptr};
std::atomic<SystemClockSource> substituteSource{nullptr};

Stamp Now() noexcept
{
    const SystemClockSource source = substituteSource.load();
    return source != nullptr ? Stamp(milliseconds(source()))
                             : std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
}

std::chrono::year_month_day DateOf(const SYSTEMTIME& time) noexcept
{
    return std::chrono::year_month_day{
        std::chrono::year{time.wYear}, std::chrono::month{time.wMonth}, std::chrono::day{time.wDay}};
}

bool IsTime(const SYSTEMTIME& time) noexcept
{
    // Months and days are compared before the calendar sees them: it keeps their lowest byte only.
    return time.wYear >= kFirstYear && time.wYear <= kLastYear && time.wMonth <= 12 && time.wDay <= 31 &&
           DateOf(time).ok() && time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 &&
           time.wMilliseconds < 1000;
}

seconds SecondsSince1970(const SYSTEMTIME& time) noexcept
{
    return std::chrono::sys_days{DateOf(time)}.time_since_epoch() + std::chrono::hours{time.wHour} +
           std::chrono::minutes{time.wMinute} + seconds{time.wSecond};
}

BOOL Refuse(DWORD error) noexcept
{
    SetLastError(error);
    return FALSE;
}

SYSTEMTIME FieldsOf(Stamp stamp) noexcept
{
    // Floor and not truncation: before 1970, too, a day runs from its beginning to its end.
    const auto day = std::chrono::floor<std::chrono::days>(stamp);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss<milliseconds> clock{stamp - day};
    return {
        static_cast<WORD>(static_cast<int>(date.year())),
        static_cast<WORD>(static_cast<unsigned>(date.month())),
        static_cast<WORD>(std::chrono::weekday{day}.c_encoding()),
        static_cast<WORD>(static_cast<unsigned>(date.day())),
        static_cast<WORD>(clock.hours().count()),
        static_cast<WORD>(clock.minutes().count()),
        static_cast<WORD>(clock.seconds().count()),
        static_cast<WORD>(clock.subseconds().count()),
    };
}
} // namespace

void GetSystemTime(SYSTEMTIME* time) noexcept
{
    if (time != nullptr)
    {
        *time = FieldsOf(Now());
    }
}

BOOL SetSystemTime(const SYSTEMTIME* time) noexcept
{
    if (time == nullptr || !IsTime(*time))
    {
        return Refuse(ERROR_INVALID_PARAMETER);
    }
    const SystemClockPrimitive replaced = substitute.load();
    const SystemClockPrimitive primitive = replaced == nullptr ? &SetMachineClock : replaced;
    switch (primitive(SecondsSince1970(*time).count(), time->wMilliseconds))
    {
    case 0:
        return TRUE;
    case EPERM:
        return Refuse(ERROR_PRIVILEGE_NOT_HELD);
    case EINVAL:
        return Refuse(ERROR_INVALID_PARAMETER);
    default:
        return Refuse(ERROR_NOT_SUPPORTED);
    }
}

SystemClockPrimitive SetSystemClockPrimitive(SystemClockPrimitive primitive) noexcept
{
    return substitute.exchange(primitive);
}

SystemClockSource SetSystemClockSource(SystemClockSource source) noexcept
{
    return substituteSource.exchange(source);
}
