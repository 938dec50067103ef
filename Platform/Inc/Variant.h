#pragma once

#include "Bstr.h"
#include "PlatformTypes.h"
#include "SafeArray.h"
#include "Unknown.h"
#include "VarType.h"
#include "ZoExport.h"

/// Days since 30 December 1899, time of day in the fraction (whose sign does not count).
using DATE = double;

/// Fixed-point amount in units of 1/10000.
union CY
{
    LONGLONG int64; ///< the amount times 10000
};

/// Tagged value that crosses interfaces.
///
/// Ownership: a VARIANT owns its string, array or interface reference, but nothing that it refers to with
/// VT_BYREF. VT_INT and VT_UINT are 32 bits wide.
struct VARIANT
{
    VARTYPE vt;      ///< type of the value: says which field of the union holds it
    WORD wReserved1; ///< 0
    WORD wReserved2; ///< 0
    WORD wReserved3; ///< 0
    union
    {
        LONGLONG llVal;
        ULONGLONG ullVal;
        LONG lVal;
        ULONG ulVal;
        int intVal;
        unsigned int uintVal;
        short iVal;
        unsigned short uiVal;
        signed char cVal;
        BYTE bVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        HRESULT scode;
        CY cyVal;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        SAFEARRAY* parray;
        void* byref;
        LONGLONG* pllVal;
        ULONGLONG* pullVal;
        LONG* plVal;
        ULONG* pulVal;
        int* pintVal;
        unsigned int* puintVal;
        short* piVal;
        unsigned short* puiVal;
        signed char* pcVal;
        BYTE* pbVal;
        float* pfltVal;
        double* pdblVal;
        VARIANT_BOOL* pboolVal;
        HRESULT* pscode;
        CY* pcyVal;
        DATE* pdate;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        SAFEARRAY** pparray;
        VARIANT* pvarVal;
    };
};
static_assert(sizeof(VARIANT) == 16);

/// A VARIANT that belongs to somebody else or is passed by value.
using VARIANTARG = VARIANT;

/// VariantChangeType: write truth values as "True" and "False" instead of "-1" and "0".
inline constexpr WORD VARIANT_ALPHABOOL = 0x0002;
/// VariantChangeType: do not ask an object for its default value; always so on this platform.
inline constexpr WORD VARIANT_NOVALUEPROP = 0x0001;

/// Result of VarCmp.
enum VARCMP : HRESULT
{
    VARCMP_LT = 0,
    VARCMP_EQ = 1,
    VARCMP_GT = 2,
    /// The values cannot be compared.
    VARCMP_NULL = 3
};

/// Makes fresh memory an empty variant, all bytes zero; nothing is freed.
ZO_EXPORT void VariantInit(VARIANT* variant) noexcept;

/// Frees what a variant owns and makes it empty.
///
/// @return S_OK; E_POINTER when variant is null; DISP_E_BADVARTYPE for a type that a variant cannot hold and
///         DISP_E_ARRAYISLOCKED for an array in use (the variant then stays as it is)
ZO_EXPORT HRESULT VariantClear(VARIANT* variant) noexcept;

/// Copies a value with all that it owns; a reference (VT_BYREF) is copied as a reference.
///
/// @param target  an initialized variant; its former value is freed; may be source
/// @return S_OK; E_POINTER; DISP_E_BADVARTYPE; DISP_E_ARRAYISLOCKED when the former value is in use;
///         E_OUTOFMEMORY. On failure target stays as it was.
ZO_EXPORT HRESULT VariantCopy(VARIANT* target, const VARIANT* source) noexcept;

/// As VariantCopy, but a reference is replaced by the value to which it refers.
ZO_EXPORT HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source) noexcept;

/// Converts a value to another type.
///
/// Rules:
/// - Real numbers become integers by rounding to the nearest, halves to the even neighbour.
/// - Truth becomes -1, in unsigned types the value with all bits set; every number but 0 becomes true.
/// - VT_EMPTY becomes 0, false or the empty text. VT_NULL and VT_ERROR become nothing but themselves.
/// - Text holds one decimal number, perhaps with blanks around it, or "True" or "False" in any case; for
///   VT_R4, VT_R8 and VT_DATE also "INF", "-INF" and "NAN". A null BSTR is no number.
/// - Numbers become the shortest text that reads back as the same number of the same type, with '.' and
///   without grouping: "0.1", "1E+15" (exponent from 15 on and below -4), "INF". VT_CY has at most four
///   decimals.
/// - Truth becomes "-1" or "0", with VARIANT_ALPHABOOL "True" or "False".
/// - VT_DATE becomes "YYYY-MM-DD hh:mm:ss" and is read from that, from the date alone and from a number of
///   days; years 100 to 9999.
/// - References are followed. Arrays and interfaces become nothing but themselves.
/// Nothing depends on the locale.
///
/// @param target  an initialized variant; its former value is freed; may be source
/// @param flags   VARIANT_ALPHABOOL, VARIANT_NOVALUEPROP or 0
/// @return S_OK; DISP_E_OVERFLOW; DISP_E_TYPEMISMATCH; DISP_E_BADVARTYPE; E_POINTER; E_OUTOFMEMORY;
///         DISP_E_ARRAYISLOCKED. On failure target stays as it was.
ZO_EXPORT HRESULT VariantChangeType(VARIANT* target,
                                    const VARIANT* source,
                                    WORD flags,
                                    VARTYPE type) noexcept;

/// Compares two values: numbers by value whatever their types, texts character by character.
///
/// VT_EMPTY counts as the number 0.
/// @return VARCMP_NULL when either is VT_NULL, when one is a number and the other a text, for a NaN, for
///         arrays and interfaces, and for VT_ERROR unless both are
[[nodiscard]] ZO_EXPORT VARCMP VarCmp(const VARIANT* left, const VARIANT* right) noexcept;
