#pragma once

#include "IZOScpiDeviceHandler.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of device handlers: every event succeeds and does nothing, calibration and self-test pass.
///
/// A null out-pointer is skipped.
class ZO_EXPORT CBScpiDeviceHandler : public IZOScpiDeviceHandler
{
public:
    HRESULT GotoLocal() override;
    HRESULT GotoRemote() override;
    HRESULT LocalLockout(short on) override;
    HRESULT DeviceClear() override;
    HRESULT Trigger() override;
    HRESULT Reset() override;
    HRESULT SystemPreset() override;
    HRESULT ProgramMessageBegin() override;
    HRESULT ProgramMessageEnd(short aborted) override;
    /// @param[out] result  0, passed
    HRESULT Calibrate(long* result) override;
    /// @param[out] passed  VARIANT_TRUE
    HRESULT Selftest(short* passed) override;
    /// @param[out] text  null
    HRESULT GetDeviceOptions(wchar_t** text) override;
    /// @param[out] text  null
    HRESULT GetFirmwareLevel(wchar_t** text) override;

protected:
    virtual ~CBScpiDeviceHandler() = default;
};

} // namespace ZoVelkor
