#pragma once

namespace ZoVelkor::RemoteKernel
{

/// The enable registers that IEEE 488.2 section 10.25 speaks of.
struct EnableMasks
{
    wchar_t event = 0;   ///< *ESE
    wchar_t service = 0; ///< *SRE
    wchar_t poll = 0;    ///< *PRE

    bool operator==(const EnableMasks&) const = default;
};

/// The status that an instrument keeps while it is switched off; a new object is that of the first start.
struct PowerOnStatus
{
    bool clear = true; ///< *PSC: the masks are 0 after power-on, whatever was kept
    EnableMasks masks; ///< otherwise they begin with these

    bool operator==(const PowerOnStatus&) const = default;
};

/// Keeps the power-on status from one start of the instrument to the next.
class IPowerOnStore
{
public:
    /// Keeps a status for the next start. Called one at a time, by the thread of the session that has changed
    /// it; for a change, and again after a failure.
    ///
    /// @return false when it cannot be kept; that becomes error -320 of the session
    virtual bool Keep(const PowerOnStatus& status) noexcept = 0;

protected:
    ~IPowerOnStore() = default;
};

} // namespace ZoVelkor::RemoteKernel
