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

    /// @param[out] registration  a new reference; there is one registration for all paths
    virtual HRESULT GetObjectRegistration(IZOScpiObjectRegistration** registration) = 0;

    /// @return S_OK; S_FALSE when parsing was not stopped
    virtual HRESULT StartParser() = 0;

    /// Messages at hand are finished; later ones wait in the input until StartParser.
    ///
    /// @return S_OK; S_FALSE when parsing was stopped already
    virtual HRESULT StopParser() = 0;

    /// @param[out] started  VARIANT_TRUE: not stopped here
    virtual HRESULT get_ParserStarted(short* started) = 0;

protected:
    ~IZOScpiParserManagement() = default;
};

inline constexpr const IID& IID_IZOScpiParserManagement = IZOScpiParserManagement::kInterfaceId;

} // namespace ZoVelkor
