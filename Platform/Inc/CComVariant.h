#pragma once

#include "CComBSTR.h"
#include "Variant.h"
#include "ZoExport.h"

#include <concepts>

/// VARIANT that frees itself; numbers cost no allocation and no call.
///
/// The constructors choose the type from the argument's; the second parameter, where there is one, takes a
/// type of the same size instead, and any other value of it counts as not given. Operations that copy or
/// make text throw std::bad_alloc when memory is short; those that return a result code do not throw. The
/// fields of VARIANT may be written directly: what they then own is freed here.
///
/// Threads: one instance belongs to one thread at a time.
class ZO_EXPORT CComVariant : public VARIANT
{
public:
    /// VT_EMPTY.
    CComVariant() noexcept : VARIANT{} {}
    /// VT_BOOL; takes bool alone, so that a pointer never turns into a truth value.
    template <std::same_as<bool> T>
    CComVariant(T value) noexcept : VARIANT{}
    {
        vt = VT_BOOL;
        boolVal = ToVariantBool(value);
    }
    /// VT_I1; the character counts as a signed number of 8 bits.
    CComVariant(char value) noexcept : CComVariant(static_cast<signed char>(value)) {}
    /// VT_I1.
    CComVariant(signed char value) noexcept : VARIANT{}
    {
        vt = VT_I1;
        cVal = value;
    }
    /// VT_UI1.
    CComVariant(unsigned char value) noexcept : VARIANT{}
    {
        vt = VT_UI1;
        bVal = value;
    }
    /// VT_I2, or VT_BOOL when type says so.
    CComVariant(short value, VARTYPE type = VT_I2) noexcept : VARIANT{}
    {
        vt = type == VT_BOOL ? VT_BOOL : VT_I2;
        iVal = value;
    }
    /// VT_UI2.
    CComVariant(unsigned short value) noexcept : VARIANT{}
    {
        vt = VT_UI2;
        uiVal = value;
    }
    /// VT_I4, or VT_INT when type says so.
    CComVariant(int value, VARTYPE type = VT_I4) noexcept : VARIANT{}
    {
        vt = type == VT_INT ? VT_INT : VT_I4;
        lVal = value;
    }
    /// VT_UI4, or VT_UINT when type says so.
    CComVariant(unsigned int value, VARTYPE type = VT_UI4) noexcept : VARIANT{}
    {
        vt = type == VT_UINT ? VT_UINT : VT_UI4;
        ulVal = value;
    }
    /// VT_I4, or VT_ERROR when type says so; a value beyond 32 bits, which no long of the interfaces has,
    /// becomes VT_I8 and loses nothing.
    CComVariant(long value, VARTYPE type = VT_I4) noexcept : VARIANT{}
    {
        const auto narrow = static_cast<LONG>(value);
        if (narrow == value)
        {
            vt = type == VT_ERROR ? VT_ERROR : VT_I4;
            lVal = narrow;
        }
        else
        {
            vt = VT_I8;
            llVal = value;
        }
    }
    /// VT_UI4; a value beyond 32 bits becomes VT_UI8.
    CComVariant(unsigned long value) noexcept : VARIANT{}
    {
        const auto narrow = static_cast<ULONG>(value);
        vt = narrow == value ? VT_UI4 : VT_UI8;
        ullVal = value;
    }
    /// VT_I8.
    CComVariant(long long value) noexcept : VARIANT{}
    {
        vt = VT_I8;
        llVal = value;
    }
    /// VT_UI8.
    CComVariant(unsigned long long value) noexcept : VARIANT{}
    {
        vt = VT_UI8;
        ullVal = value;
    }
    /// VT_R4.
    CComVariant(float value) noexcept : VARIANT{}
    {
        vt = VT_R4;
        fltVal = value;
    }
    /// VT_R8, or VT_DATE when type says so.
    CComVariant(double value, VARTYPE type = VT_R8) noexcept : VARIANT{}
    {
        vt = type == VT_DATE ? VT_DATE : VT_R8;
        dblVal = value;
    }
    /// VT_CY.
    CComVariant(CY value) noexcept : VARIANT{}
    {
        vt = VT_CY;
        cyVal = value;
    }
    /// VT_BSTR, the text up to its terminator; null gives a null BSTR.
    CComVariant(const wchar_t* text);
    /// VT_BSTR, widened from code page 0; null gives a null BSTR.
    CComVariant(const char* text);
    /// VT_BSTR with the whole length, zeros included.
    CComVariant(const CComBSTR& text);
    /// VT_BSTR that takes the string over, null included.
    CComVariant(CComBSTR&& text) noexcept;
    /// VT_UNKNOWN with a reference of its own; null is allowed.
    CComVariant(IUnknown* object) noexcept;
    /// A copy of an array; null gives an empty variant.
    CComVariant(const SAFEARRAY* array);
    /// A copy; a type that cannot be copied becomes VT_ERROR with the result code of the attempt.
    CComVariant(const VARIANT& other);
    CComVariant(const CComVariant& other);
    CComVariant(CComVariant&& other) noexcept : VARIANT{} { MoveFrom(other); }
    ~CComVariant()
    {
        if (OwnsResource())
        {
            VariantClear(this);
        }
    }

    CComVariant& operator=(const CComVariant& other);
    CComVariant& operator=(CComVariant&& other) noexcept
    {
        if (this != &other)
        {
            CComVariant former;
            former.MoveFrom(*this);
            MoveFrom(other);
        }
        return *this;
    }

    /// Frees the value and becomes VT_EMPTY; results as VariantClear.
    HRESULT Clear() noexcept;
    /// Replaces the value by a copy; results as VariantCopy.
    HRESULT Copy(const VARIANT* source) noexcept;
    /// Takes over the value of a variant, which becomes empty.
    ///
    /// @return S_OK; E_POINTER; the result of VariantClear when the former value cannot be freed
    HRESULT Attach(VARIANT* source) noexcept;
    /// Hands the value over to a variant, whose former value is freed; this variant becomes empty.
    ///
    /// @return S_OK; E_POINTER; the result of VariantClear when the former value cannot be freed
    HRESULT Detach(VARIANT* target) noexcept;
    /// Converts source, or this variant when source is null, into this variant; results as VariantChangeType.
    HRESULT ChangeType(VARTYPE type, const VARIANT* source = nullptr) noexcept;

    /// Same type and same value. Arrays are equal with equal bounds and elements, references and interfaces
    /// with equal pointers.
    friend ZO_EXPORT bool operator==(const CComVariant& left, const CComVariant& right) noexcept;
    /// By VarCmp; values that cannot be compared are not less, so that this orders only values that can.
    friend bool operator<(const CComVariant& left, const CComVariant& right) noexcept
    {
        return VarCmp(&left, &right) == VARCMP_LT;
    }
    friend bool operator>(const CComVariant& left, const CComVariant& right) noexcept { return right < left; }

private:
    [[nodiscard]] bool OwnsResource() const noexcept
    {
        return vt == VT_BSTR || vt == VT_UNKNOWN || vt == VT_DISPATCH || (vt & VT_ARRAY) != 0;
    }
    void MoveFrom(VARIANT& source) noexcept
    {
        static_cast<VARIANT&>(*this) = source;
        source = VARIANT{};
    }
};
static_assert(sizeof(CComVariant) == sizeof(VARIANT));
