#pragma once

#include "CComBSTR.h"
#include "CCritSection.h"
#include "ZoExport.h"

#include <atomic>
#include <cstdint>

namespace ZoVelkor
{

/// Errors of LXI event handling, in families of ten: connection, alarms, arming sources, capabilities,
/// events, trigger sources, instances, trigger activation.
enum class EnumLxiErrors : std::int32_t
{
    NoError = 0,
    CapabilityConnection = 5000,
    AlarmExists = 5100,
    AlarmNotFound = 5101,
    ArmingSourceExists = 5110,
    ArmingSourceNotFound = 5111,
    SoftwareCapabilityExists = 5120,
    HardwareCapabilityExists = 5121,
    LanCapabilityExists = 5122,
    TimerCapabilityExists = 5123,
    CapabilityNotFound = 5124,
    EventExists = 5130,
    EventNotFound = 5131,
    EventNotEnabled = 5132,
    EventNotDisabled = 5133,
    TriggerSourceExists = 5140,
    TriggerSourceNotFound = 5141,
    InstanceNotEnabled = 5150,
    InstanceNotDisabled = 5151,
    TriggerSourceNotActivated = 5160,
    TriggerSourceNotDeactivated = 5161
};

/// Cell for the last error of an object of LXI event handling: one side sets it, another fetches it once.
///
/// It keeps the last error, not every error. Threads: any operation from any thread.
class ZO_EXPORT CLxiErrorStorage
{
public:
    CLxiErrorStorage() = default;
    /// Takes the current error along; the lock is the copy's own.
    CLxiErrorStorage(const CLxiErrorStorage& other);
    CLxiErrorStorage& operator=(const CLxiErrorStorage&) = delete;
    virtual ~CLxiErrorStorage();

    /// Stores an error in place of the one before, fetched or not.
    ///
    /// @param code  any value; one outside the enumeration has the text "Unknown error"
    void SetError(EnumLxiErrors code);
    /// Stores NoError.
    void ClearError();

    /// English text of the current error, which stays; that of NoError when there is none. Throws
    /// std::bad_alloc.
    CComBSTR GetErrorString() const;

    /// Fetches the current error and clears it. An error that is set while this runs may be lost.
    ///
    /// @param[out] text  the text of that very code; what it held is freed
    /// @throws std::bad_alloc with the error still stored
    void GetLastError(EnumLxiErrors& code, CComBSTR& text);

private:
    CCritSection m_section;
    /// Written inside the section, read without it.
    std::atomic<EnumLxiErrors> m_code{EnumLxiErrors::NoError};
};

} // namespace ZoVelkor
