#pragma once

#include "SystemTime.h"

#include <optional>
#include <utility>

/// Takes the place of the machine's clock during its life, so that nothing can set that.
struct CClockRecorder
{
    using Setting = std::pair<LONGLONG, int>;

    /// @param refusal  errno number with which every setting is refused; 0 accepts them
    explicit CClockRecorder(int refusal = 0) : m_former(SetSystemClockPrimitive(&Record))
    {
        s_refusal = refusal;
    }
    CClockRecorder(const CClockRecorder&) = delete;
    CClockRecorder& operator=(const CClockRecorder&) = delete;
    ~CClockRecorder() { SetSystemClockPrimitive(m_former); }

    /// The time that reached the clock since the last call, in seconds since 1970 and milliseconds.
    static std::optional<Setting> Take() { return std::exchange(s_last, std::nullopt); }

private:
    static int Record(LONGLONG seconds, int milliseconds) noexcept
    {
        s_last = Setting(seconds, milliseconds);
        return s_refusal;
    }
    static inline int s_refusal = 0;
    static inline std::optional<Setting> s_last;
    const SystemClockPrimitive m_former;
};
