#pragma once

#include "Guid.h"
#include "PlatformTypes.h"

/// Root of every interface: lifetime by reference count, other faces by identifier (the COM rules).
///
/// The rules for QueryInterface hold for every object: asking for IUnknown gives the same pointer always,
/// an interface once given is given again, and from each face every other one can be reached.
///
/// Threads: implementations of this project count atomically. The destructor is protected and not virtual,
/// so that it takes no slot: only the final component deletes itself.
struct IUnknown
{
    static constexpr IID kInterfaceId{
        0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    /// Fetches another interface of the same object.
    ///
    /// @param[out] object  the interface, counted for the caller; null on failure
    /// @return S_OK; E_NOINTERFACE; E_POINTER when object is null
    virtual HRESULT QueryInterface(const IID& iid, void** object) = 0;

    /// Takes one reference; the returned count serves diagnosis only.
    virtual ULONG AddRef() = 0;

    /// Gives one reference back; the last one deletes the object. The returned count serves diagnosis only.
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};

inline constexpr const IID& IID_IUnknown = IUnknown::kInterfaceId;
