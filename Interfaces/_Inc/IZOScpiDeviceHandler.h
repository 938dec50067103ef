#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Receives the device events of IEEE 488.2 for one application.
///
/// A failure of Reset, SystemPreset, Trigger, Calibrate or Selftest is told to whoever asked for it; other
/// results are not looked at. Threads: called like Execute, one at a time for one application; so a handler
/// needs no lock of its own, but it must not wait for another session.
struct IZOScpiDeviceHandler : IUnknown
{
    static constexpr IID kInterfaceId{
        0x0ADFA30E, 0x8459, 0x4F19, {0xA3, 0xEB, 0xFA, 0xE2, 0xCB, 0xEC, 0x6B, 0x06}};

    /// The path has become local: the front panel may be used (IEEE 488.1 section 2.8).
    virtual HRESULT GotoLocal() = 0;
    /// The path has become remote.
    virtual HRESULT GotoRemote() = 0;
    /// Local lockout was set or released.
    ///
    /// @param on  VARIANT_TRUE: the front panel cannot return to local
    virtual HRESULT LocalLockout(short on) = 0;
    /// A device clear has dropped messages and responses of the path (IEEE 488.2 section 5.8); settings
    /// stay.
    virtual HRESULT DeviceClear() = 0;
    /// *TRG and the group execute trigger (IEEE 488.2 section 10.37).
    /// @return S_OK when something was triggered, S_FALSE when the trigger was ignored
    virtual HRESULT Trigger() = 0;
    /// *RST (IEEE 488.2 section 10.32).
    virtual HRESULT Reset() = 0;
    /// The instrument's preset, as by the key of its front panel, see
    /// IZOScpiDeviceManagement::SystemPreset.
    virtual HRESULT SystemPreset() = 0;
    /// The first command of a program message for this application follows; messages without one are not
    /// told.
    virtual HRESULT ProgramMessageBegin() = 0;
    /// The program message of that command has been worked off.
    ///
    /// @param aborted  non-zero when the message was cancelled before its end
    virtual HRESULT ProgramMessageEnd(short aborted) = 0;
    /// *CAL? (IEEE 488.2 section 10.2).
    ///
    /// @param[out] result  0: passed; else a number that the documentation of the instrument explains
    virtual HRESULT Calibrate(long* result) = 0;
    /// *TST? (IEEE 488.2 section 10.38).
    /// @param[out] passed  VARIANT_TRUE: passed
    virtual HRESULT Selftest(short* passed) = 0;
    /// *OPT? (IEEE 488.2 section 10.20).
    /// @param[out] text  options separated by commas, a new BSTR; null: none
    virtual HRESULT GetDeviceOptions(wchar_t** text) = 0;
    /// Fourth field of *IDN? (IEEE 488.2 section 10.14); asked for once, when the application is registered.
    /// @param[out] text  a new BSTR; null: the kernel's own identity holds
    virtual HRESULT GetFirmwareLevel(wchar_t** text) = 0;

protected:
    ~IZOScpiDeviceHandler() = default;
};

inline constexpr const IID& IID_IZOScpiDeviceHandler = IZOScpiDeviceHandler::kInterfaceId;

} // namespace ZoVelkor
