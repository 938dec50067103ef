#pragma once

#include "CComPtr.h"
#include "IZOScpiObjectRegistration.h"

#include <span>

namespace ZoVelkor::Demo
{

/// Keeps an application registered with remote control for as long as the object lives.
///
/// When the destructor returns no handler of the application is running or will run.
class CApplicationRegistration
{
public:
    /// @param name  for messages and listings
    /// @param table  stays valid while registered
    /// @param pSink, pDeviceHandler  counted while registered; pDeviceHandler may be null
    /// @throws CShellError without remote control in this process, or when it refuses the table
    CApplicationRegistration(const wchar_t* name,
                             std::span<const _CMD_SET_RECORD> table,
                             IZOScpiExecutionSink* pSink,
                             IZOScpiDeviceHandler* pDeviceHandler);
    CApplicationRegistration(const CApplicationRegistration&) = delete;
    CApplicationRegistration& operator=(const CApplicationRegistration&) = delete;
    ~CApplicationRegistration();

private:
    CComPtr<IZOScpiObjectRegistration> m_spRegistration;
    GUID m_objectId = GUID_NULL;
};

} // namespace ZoVelkor::Demo
