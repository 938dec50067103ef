#pragma once

#include "PlatformTypes.h"
#include "VarType.h"
#include "ZoExport.h"

/// Extent of one dimension.
struct SAFEARRAYBOUND
{
    ULONG cElements; ///< number of elements; 0 is allowed
    LONG lLbound;    ///< index of the first one
};

/// One-dimensional array of scalars of one type, with its own description.
///
/// Made by SafeArrayCreateVector only; the fields are for reading. Threads: the elements are as safe as plain
/// memory; lock counting is not synchronized.
struct SAFEARRAY
{
    WORD cDims;                  ///< always 1
    VARTYPE elementType;         ///< a scalar type, see SafeArrayCreateVector
    ULONG cbElements;            ///< size of one element in bytes
    ULONG cLocks;                ///< accesses under way; an array with any cannot be destroyed
    void* pvData;                ///< the elements one after the other; SafeArrayAccessData gives them out
    SAFEARRAYBOUND rgsabound[1]; ///< extent of the one dimension
};

/// Makes an array with all elements zero.
///
/// @param type  a scalar: integers of 1 to 8 bytes, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_ERROR
/// @return the array, freed with SafeArrayDestroy; null for another type, for bounds that pass 2^31 - 1 and
///         when memory is short
[[nodiscard]] ZO_EXPORT SAFEARRAY*
SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elementCount) noexcept;

/// Frees an array; null is allowed.
///
/// @return S_OK; DISP_E_ARRAYISLOCKED while somebody accesses it (it then stays)
ZO_EXPORT HRESULT SafeArrayDestroy(SAFEARRAY* array) noexcept;

/// Makes an independent, unlocked copy.
///
/// @param[out] copy  null on failure and for a null array
/// @return S_OK; E_POINTER when copy is null; E_OUTOFMEMORY
ZO_EXPORT HRESULT SafeArrayCopy(const SAFEARRAY* array, SAFEARRAY** copy) noexcept;

/// Locks the array and gives its first element; every success needs one SafeArrayUnaccessData.
///
/// @return S_OK; E_INVALIDARG when array is null; E_POINTER when data is null
ZO_EXPORT HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) noexcept;

/// Takes back one lock.
///
/// @return S_OK; E_INVALIDARG when array is null; E_UNEXPECTED when it is not locked
ZO_EXPORT HRESULT SafeArrayUnaccessData(SAFEARRAY* array) noexcept;

/// Size of one element in bytes; 0 for null.
[[nodiscard]] ZO_EXPORT UINT SafeArrayGetElemsize(const SAFEARRAY* array) noexcept;

/// Gives the highest index; one below the lowest for an empty array.
///
/// @param dimension  counts from 1
/// @return S_OK; E_INVALIDARG when array is null; DISP_E_BADINDEX; E_POINTER when bound is null
ZO_EXPORT HRESULT SafeArrayGetUBound(const SAFEARRAY* array, UINT dimension, LONG* bound) noexcept;

/// Gives the lowest index; results as SafeArrayGetUBound.
ZO_EXPORT HRESULT SafeArrayGetLBound(const SAFEARRAY* array, UINT dimension, LONG* bound) noexcept;
