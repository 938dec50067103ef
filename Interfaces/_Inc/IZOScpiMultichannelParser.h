#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Hands out one parser engine per remote path, so that paths do not share state.
struct IZOScpiMultichannelParser : IUnknown
{
    static constexpr IID kInterfaceId{
        0x92A1E343, 0xBC22, 0x41ED, {0xBD, 0xC0, 0xCD, 0x43, 0xEE, 0x1B, 0xD3, 0xE8}};

    /// Makes an engine for one path.
    ///
    /// @param[out] engine  a new reference; a null address is an internal error, which is raised
    virtual HRESULT CreateClone(IUnknown** engine) = 0;
    /// Takes an engine back when its path has ended.
    ///
    /// @param engine  of CreateClone, lent for the call; null is an internal error, which is raised
    virtual HRESULT ReleaseClone(IUnknown* engine) = 0;

protected:
    ~IZOScpiMultichannelParser() = default;
};

inline constexpr const IID& IID_IZOScpiMultichannelParser = IZOScpiMultichannelParser::kInterfaceId;

} // namespace ZoVelkor
