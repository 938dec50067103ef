#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Command trees that are plugged into the instrument's own beside the parsers. Found at the root.
///
/// A plug-in has IZOScpiCommands, whose table is taken over, and IZOScpiExecutionSink, which runs its
/// commands; it may have IZOScpiDeviceHandler. Threads: any operation from any thread, but not from inside a
/// handler.
struct IZOScpiTree : IUnknown
{
    static constexpr IID kInterfaceId{
        0xE6B2D584, 0x9F90, 0x4772, {0x97, 0x8C, 0xB6, 0x6A, 0x33, 0x50, 0x15, 0xC9}};

    /// Adds the commands of a plug-in.
    ///
    /// @param plugIn  counted until it is unregistered
    /// @return S_OK; E_POINTER; E_NOINTERFACE; E_INVALIDARG, reported, for one without usable table or one
    ///         that is plugged in already
    virtual HRESULT RegisterPlugIn(IUnknown* plugIn) = 0;
    /// Takes a plug-in out.
    ///
    /// @return S_OK, and nothing of the plug-in is running or will run; S_FALSE when it is not plugged in
    virtual HRESULT UnregisterPlugIn(IUnknown* plugIn) = 0;

protected:
    ~IZOScpiTree() = default;
};

inline constexpr const IID& IID_IZOScpiTree = IZOScpiTree::kInterfaceId;

} // namespace ZoVelkor
