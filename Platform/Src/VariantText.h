#pragma once

#include "Variant.h"

/// Writes a scalar as text by the rules of VariantChangeType; null when memory is short.
[[nodiscard]] BSTR FormatScalar(const VARIANT& value, bool alphabeticTruth) noexcept;

/// Reads a scalar of the given type by the rules of VariantChangeType.
///
/// @param[out] value  set on success only
/// @return S_OK; DISP_E_TYPEMISMATCH; DISP_E_OVERFLOW
/// @throws std::bad_alloc
[[nodiscard]] HRESULT ParseScalar(const wchar_t* text, VARTYPE type, VARIANT& value);

/// Stores a number in a scalar of the given type, rounding halves to even; value is set on success only.
///
/// @return S_OK; DISP_E_OVERFLOW; DISP_E_TYPEMISMATCH when the type is no number
[[nodiscard]] HRESULT StoreNumber(long double number, VARTYPE type, VARIANT& value) noexcept;
