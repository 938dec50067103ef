#pragma once

#include "Unknown.h"
#include "Variant.h"

namespace ZoVelkor
{

/// Reads and writes the scalar settings of a component by dispatch identifier or by name, for remote tools
/// and scripts.
///
/// Dispatch identifiers are signed 32-bit numbers; higher bits of an argument are dropped. Implementations
/// say what they do with unknown ones, and from which threads they may be used.
struct IZOScalarPropertyAccess : IUnknown
{
    static constexpr IID kInterfaceId{
        0xC4B3C174, 0xA9E4, 0x4557, {0x80, 0x0E, 0x0D, 0xE1, 0xB1, 0x1E, 0x67, 0x45}};

    /// Finds a property by its name.
    ///
    /// @param[out] dispId  identifier of the property of this name
    virtual HRESULT GetPropertyDispId(wchar_t* name, long* dispId) = 0;
    /// Names a property.
    ///
    /// @param[out] name  a new BSTR, freed by the caller
    virtual HRESULT GetPropertyName(long dispId, wchar_t** name) = 0;
    /// Reads a property.
    ///
    /// @param[out] value  the property's value, owned by the caller
    virtual HRESULT GetScalarValue(long dispId, VARIANT* value) = 0;
    /// Sets a property, which may convert the value to its own type.
    ///
    /// @param value  stays the caller's
    virtual HRESULT SetScalarValue(long dispId, VARIANT value) = 0;

protected:
    ~IZOScalarPropertyAccess() = default;
};

inline constexpr const IID& IID_IZOScalarPropertyAccess = IZOScalarPropertyAccess::kInterfaceId;

} // namespace ZoVelkor
