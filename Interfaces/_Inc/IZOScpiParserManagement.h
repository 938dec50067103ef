#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiObjectRegistration;

/// Registration of parsers, and whether program messages are worked off.
///
/// Found at the root, for all remote paths, or for one path through IZOScpiMultichannelFunctionality. A path
/// works messages off while neither its own parsing nor that of the instrument is stopped; it begins started.
/// Threads: any operation from any thread.
struct IZOScpiParserManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0x21EDAFC2, 0xE240, 0x4AED, {0xAE, 0xF9, 0x2F, 0xE5, 0x1D, 0x8F, 0x67, 0xBE}};

    /// Gives the registration of applications.
    ///
    /// @param[out] registration  a new reference; there is one registration for all paths
    /// @return S_OK; E_POINTER
    virtual HRESULT GetObjectRegistration(IZOScpiObjectRegistration** registration) = 0;

    /// Lets program messages be worked off again.
    ///
    /// @return S_OK; S_FALSE when parsing was not stopped
    virtual HRESULT StartParser() = 0;

    /// Holds program messages up: those at hand are finished; later ones wait in the input until
    /// StartParser.
    ///
    /// It does not wait for the messages at hand.
    /// @return S_OK; S_FALSE when parsing was stopped already
    virtual HRESULT StopParser() = 0;

    /// Tells whether messages are worked off.
    ///
    /// @param[out] started  VARIANT_TRUE: not stopped here; the other of path and instrument may still be
    /// @return S_OK; E_POINTER
    virtual HRESULT get_ParserStarted(short* started) = 0;

protected:
    ~IZOScpiParserManagement() = default;
};

inline constexpr const IID& IID_IZOScpiParserManagement = IZOScpiParserManagement::kInterfaceId;

} // namespace ZoVelkor
