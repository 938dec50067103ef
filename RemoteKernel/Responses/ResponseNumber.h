#pragma once

#include "Variant.h"

#include <cstdint>

namespace ZoVelkor::RemoteKernel
{

/// A number on its way into a response, without loss whatever type it came in.
struct tagResponseNumber
{
    enum class tagKind
    {
        Signed,
        Unsigned,
        Float,
        Double
    };

    tagKind eKind = tagKind::Signed;
    std::int64_t iSigned = 0;
    std::uint64_t iUnsigned = 0;
    double dReal = 0; // Float: its value is one of a float

    double AsDouble() const noexcept;
    /// The nearest integer, halves to the even neighbour, limited to the range; not-a-number gives 0.
    std::int64_t AsInteger(std::int64_t low, std::int64_t high) const noexcept;
};

/// Reads a scalar variant that is no reference; text is converted.
///
/// @return S_OK; the failing result of VariantChangeType
HRESULT ReadResponseNumber(const VARIANT& value, tagResponseNumber& number) noexcept;

} // namespace ZoVelkor::RemoteKernel
