#pragma once

#include "Variant.h"

/// What the conversions need to know of a type.
enum class VariantKind : std::uint8_t
{
    Invalid,
    Nothing,
    Signed,
    Unsigned,
    Real,
    Currency,
    Date,
    Bool,
    Text,
    Error,
    Interface,
    Variant
};

struct VariantTypeRow
{
    VariantKind kind;
    std::uint8_t size;
};

/// Indexed by VARTYPE.
inline constexpr VariantTypeRow kVariantTypes[] = {
    {VariantKind::Nothing, 0},
    {VariantKind::Nothing, 0},
    {VariantKind::Signed, 2},
    {VariantKind::Signed, 4},
    {VariantKind::Real, 4},
    {VariantKind::Real, 8},
    {VariantKind::Currency, 8},
    {VariantKind::Date, 8},
    {VariantKind::Text, 8},
    {VariantKind::Interface, 8},
    {VariantKind::Error, 4},
    {VariantKind::Bool, 2},
    {VariantKind::Variant, sizeof(VARIANT)},
    {VariantKind::Interface, 8},
    {VariantKind::Invalid, 0},
    {VariantKind::Invalid, 0},
    {VariantKind::Signed, 1},
    {VariantKind::Unsigned, 1},
    {VariantKind::Unsigned, 2},
    {VariantKind::Unsigned, 4},
    {VariantKind::Signed, 8},
    {VariantKind::Unsigned, 8},
    {VariantKind::Signed, 4},
    {VariantKind::Unsigned, 4},
};
static_assert(sizeof kVariantTypes / sizeof kVariantTypes[0] == VT_UINT + 1);
static_assert(kVariantTypes[VT_BOOL].kind == VariantKind::Bool && kVariantTypes[VT_UI1].size == 1);

constexpr VariantTypeRow VariantType(VARTYPE type) noexcept
{
    return type <= VT_UINT ? kVariantTypes[type] : VariantTypeRow{VariantKind::Invalid, 0};
}

/// Tells whether a type can stand in an array: a scalar without resources.
constexpr bool IsPlainScalar(VARTYPE type) noexcept
{
    switch (VariantType(type).kind)
    {
    case VariantKind::Signed:
    case VariantKind::Unsigned:
    case VariantKind::Real:
    case VariantKind::Currency:
    case VariantKind::Date:
    case VariantKind::Bool:
    case VariantKind::Error:
        return true;
    default:
        return false;
    }
}

/// Follows a reference. The result borrows what the source refers to and must not be cleared.
///
/// @return S_OK; DISP_E_BADVARTYPE; E_POINTER for a null reference
[[nodiscard]] HRESULT Dereference(const VARIANT& source, VARIANT& value) noexcept;

/// Reads a number; Nothing counts as 0, true as -1. The type must be a number, truth or Nothing.
///
/// long double holds every 64-bit integer exactly.
[[nodiscard]] long double LoadNumber(const VARIANT& value) noexcept;

/// Frees the value of target and stores fresh in its place; fresh is freed when that fails.
///
/// @return S_OK; the failure of VariantClear on target, which then stays
[[nodiscard]] HRESULT ReplaceValue(VARIANT* target, VARIANT& fresh) noexcept;
