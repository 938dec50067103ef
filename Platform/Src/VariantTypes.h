#pragma once

#include "Variant.h"

/// What the conversions need to know of a type.
enum class tagVariantKind : std::uint8_t
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

struct tagVariantType
{
    tagVariantKind kind;
    std::uint8_t size;
};

/// Indexed by VARTYPE.
inline constexpr tagVariantType kVariantTypes[] = {
    {tagVariantKind::Nothing, 0},
    {tagVariantKind::Nothing, 0},
    {tagVariantKind::Signed, 2},
    {tagVariantKind::Signed, 4},
    {tagVariantKind::Real, 4},
    {tagVariantKind::Real, 8},
    {tagVariantKind::Currency, 8},
    {tagVariantKind::Date, 8},
    {tagVariantKind::Text, 8},
    {tagVariantKind::Interface, 8},
    {tagVariantKind::Error, 4},
    {tagVariantKind::Bool, 2},
    {tagVariantKind::Variant, sizeof(VARIANT)},
    {tagVariantKind::Interface, 8},
    {tagVariantKind::Invalid, 0},
    {tagVariantKind::Invalid, 0},
    {tagVariantKind::Signed, 1},
    {tagVariantKind::Unsigned, 1},
    {tagVariantKind::Unsigned, 2},
    {tagVariantKind::Unsigned, 4},
    {tagVariantKind::Signed, 8},
    {tagVariantKind::Unsigned, 8},
    {tagVariantKind::Signed, 4},
    {tagVariantKind::Unsigned, 4},
};
static_assert(sizeof kVariantTypes / sizeof kVariantTypes[0] == VT_UINT + 1);
static_assert(kVariantTypes[VT_BOOL].kind == tagVariantKind::Bool && kVariantTypes[VT_UI1].size == 1);

constexpr tagVariantType VariantType(VARTYPE type) noexcept
{
    return type <= VT_UINT ? kVariantTypes[type] : tagVariantType{tagVariantKind::Invalid, 0};
}

/// Tells whether a type can stand in an array: a scalar without resources.
constexpr bool IsPlainScalar(VARTYPE type) noexcept
{
    switch (VariantType(type).kind)
    {
    case tagVariantKind::Signed:
    case tagVariantKind::Unsigned:
    case tagVariantKind::Real:
    case tagVariantKind::Currency:
    case tagVariantKind::Date:
    case tagVariantKind::Bool:
    case tagVariantKind::Error:
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
