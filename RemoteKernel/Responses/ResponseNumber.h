#pragma once

#include "Variant.h"

#include <cstdint>

namespace ZoVelkor::RemoteKernel
{

/// A number on its way into a response, without loss whatever type it came in.
struct ResponseNumber
{
    enum class Kind
    {
        Signed,
        Unsigned,
        Float,
        Double
    };

    Kind kind = Kind::Signed;
    std::int64_t signedValue = 0;
    std::uint64_t number = 0;
    double real = 0; // Float: its value is one of a float

    double AsDouble() const noexcept;
    /// The nearest integer, halves to the even neighbour, limited to the range; not-a-number gives 0.
    std::int64_t AsInteger(std::int64_t low, std::int64_t high) const noexcept;
};

/// Reads a scalar variant that is no reference; text is converted.
///
/// @return S_OK; the failing result of VariantChangeType
HRESULT ReadResponseNumber(const VARIANT& value, ResponseNumber& number) noexcept;

} // namespace ZoVelkor::RemoteKernel
