#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiDeviceHandler;

/// Device events of IEEE 488.2 for components that have no parser, and such events from the instrument
/// itself.
///
/// Found at the root, for the events of all paths, or for one path, for its events alone.
/// Threads: any operation from any thread, but not from inside a handler.
struct IZOScpiDeviceManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0x833E058E, 0x3034, 0x422D, {0x83, 0x18, 0x5E, 0xDB, 0x97, 0xBA, 0xB3, 0x1B}};

    /// Adds a handler for the events of the paths that this serves.
    ///
    /// @param handler  counted until it is unregistered
    /// @return S_OK; S_FALSE when it is registered here already; E_POINTER
    virtual HRESULT RegisterDeviceHandler(IZOScpiDeviceHandler* handler) = 0;
    /// Takes a handler out.
    ///
    /// @return S_OK, and the handler is not called any more; S_FALSE when it is not registered here;
    ///         E_POINTER
    virtual HRESULT UnregisterDeviceHandler(IZOScpiDeviceHandler* handler) = 0;
    /// Calls Reset of all device handlers, those of the applications first; settings of sessions stay.
    ///
    /// @return S_OK; E_FAIL when a handler failed, after the others have been called
    virtual HRESULT Reset() = 0;
    /// Calls SystemPreset of all device handlers, those of the applications first; results as Reset.
    virtual HRESULT SystemPreset() = 0;

protected:
    ~IZOScpiDeviceManagement() = default;
};

inline constexpr const IID& IID_IZOScpiDeviceManagement = IZOScpiDeviceManagement::kInterfaceId;

} // namespace ZoVelkor
