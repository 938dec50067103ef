#pragma once

#include "PlatformTypes.h"

/// Type of the value in a VARIANT: one of the types below, perhaps with VT_ARRAY or VT_BYREF.
using VARTYPE = WORD;

/// The type numbers, with the field of a VARIANT that has the value. Those up to VT_UINT (without VT_VARIANT
/// and VT_DECIMAL) can be held by a VARIANT of this platform; the others occur in descriptions only.
enum VARENUM : VARTYPE
{
    VT_EMPTY = 0,    ///< nothing; counts as 0
    VT_NULL = 1,     ///< no value, and none can be made of it
    VT_I2 = 2,       ///< iVal
    VT_I4 = 3,       ///< lVal
    VT_R4 = 4,       ///< fltVal
    VT_R8 = 5,       ///< dblVal
    VT_CY = 6,       ///< cyVal
    VT_DATE = 7,     ///< date
    VT_BSTR = 8,     ///< bstrVal, owned
    VT_DISPATCH = 9, ///< punkVal, owned
    VT_ERROR = 10,   ///< scode
    VT_BOOL = 11,    ///< boolVal
    VT_VARIANT = 12, ///< only with VT_BYREF: pvarVal
    VT_UNKNOWN = 13, ///< punkVal, owned
    VT_DECIMAL = 14,
    VT_I1 = 16,   ///< cVal
    VT_UI1 = 17,  ///< bVal
    VT_UI2 = 18,  ///< uiVal
    VT_UI4 = 19,  ///< ulVal
    VT_I8 = 20,   ///< llVal
    VT_UI8 = 21,  ///< ullVal
    VT_INT = 22,  ///< intVal, 32 bits
    VT_UINT = 23, ///< uintVal, 32 bits
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_SAFEARRAY = 27,
    VT_CARRAY = 28,
    VT_USERDEFINED = 29,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_RECORD = 36,
    VT_INT_PTR = 37,
    VT_UINT_PTR = 38,
    VT_FILETIME = 64,
    VT_BLOB = 65,
    VT_STREAM = 66,
    VT_STORAGE = 67,
    VT_STREAMED_OBJECT = 68,
    VT_STORED_OBJECT = 69,
    VT_BLOB_OBJECT = 70,
    VT_CF = 71,
    VT_CLSID = 72,
    VT_VERSIONED_STREAM = 73,
    VT_VECTOR = 0x1000,
    VT_ARRAY = 0x2000, ///< parray, owned; elements of the type beside it
    VT_BYREF = 0x4000, ///< a pointer to the value, which is not owned
    VT_RESERVED = 0x8000,
    VT_TYPEMASK = 0x0FFF ///< the type without VT_ARRAY and VT_BYREF
};
