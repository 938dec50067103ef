#pragma once

#include "CAtlString.h"
#include "CObjectDataReference.h"
#include "IZOScalarPropertyAccess.h"
#include "ZoExport.h"

#include <vector>

namespace ZoVelkor
{

/// Base of scalar property access: a component registers its variables as properties, and values that come in
/// are converted to the property's type and stored straight into the variable.
///
/// An unknown identifier or name is no error: S_FALSE. Where several properties share one, the first
/// registered answers. No exception leaves an operation of the interface; it becomes E_OUTOFMEMORY or E_FAIL.
/// Ownership: the list only points at the variables, which outlive their registration; a copy of the
/// component's base points at the same variables.
/// Threads: no locks; registration belongs to the set-up, and the component sees to it that a variable is not
/// written and used at once.
class ZO_EXPORT CBScalarPropertyAccess : public IZOScalarPropertyAccess, public virtual CObjectDataReference
{
public:
    /// One registered property.
    class ZO_EXPORT CAnyProperty
    {
    public:
        /// @param type      the variable's type, see the table of SetScalarValue
        /// @param dispId    dispatch identifier
        /// @param name      in code page 0
        /// @param variable  address of the component's variable; may be null for VT_EMPTY and VT_NULL
        CAnyProperty(VARTYPE type, long dispId, CAtlStringA name, void* variable);
        CAnyProperty(const CAnyProperty&) = default;
        CAnyProperty& operator=(const CAnyProperty&) = default;

        /// The dispatch identifier.
        virtual long GetDisp() const;
        /// The name, in code page 0.
        virtual const CAtlStringA& GetName() const;
        /// Copies the variable's present value.
        ///
        /// @param[in,out] value  an initialized variant; its former value is freed
        /// @return S_OK; the failures of VariantCopyInd with value as it was
        virtual HRESULT Get(VARIANT& value) const;
        /// Converts a value and stores it; unlike SetScalarValue it refuses what cannot be converted.
        ///
        /// @return S_OK; the failures of VariantChangeType; DISP_E_BADVARTYPE for a type that the table of
        ///         SetScalarValue has not, E_POINTER without variable. On failure the variable stays.
        virtual HRESULT Set(VARIANT value);
        /// The type of the variable, without VT_BYREF.
        virtual VARTYPE GetType() const;

        virtual ~CAnyProperty();

    private:
        friend class CBScalarPropertyAccess;

        /// Whether a failing conversion stops the assignment or assigns zeros.
        enum class tagConversion
        {
            MustSucceed,
            MayFail
        };
        HRESULT Assign(const VARIANT& value, tagConversion conversion);

        VARIANT m_value; ///< VT_BYREF with the address of the variable
        LONG m_dispId;
        CAtlStringA m_name;
    };

    CBScalarPropertyAccess() = default;
    CBScalarPropertyAccess(const CBScalarPropertyAccess&) = default;
    CBScalarPropertyAccess& operator=(const CBScalarPropertyAccess&) = default;

    /// Finds a property by DoGetPropertyDispId.
    ///
    /// @param name         compared without regard to case, as scripts write names
    /// @param[out] dispId  -1 when no property has the name
    /// @return S_OK; S_FALSE; E_POINTER with a report for a null pointer
    HRESULT GetPropertyDispId(wchar_t* name, long* dispId) override;
    /// Names a property by DoGetPropertyName.
    ///
    /// @param[out] name  null when there is no such property; may be null when only the result matters
    /// @return S_OK; S_FALSE; E_OUTOFMEMORY
    HRESULT GetPropertyName(long dispId, wchar_t** name) override;
    /// Reads nothing: derived components do. For a registered property that is reported.
    /// @return S_FALSE
    HRESULT GetScalarValue(long dispId, VARIANT* value) override;
    /// Stores a value into the property's variable.
    ///
    /// | type of the property | what the variable gets |
    /// |---|---|
    /// | VT_EMPTY, VT_NULL | nothing |
    /// | VT_I1, VT_UI1 | 8 bits |
    /// | VT_I2, VT_BOOL, VT_UI2 | 16 bits |
    /// | VT_I4, VT_R4, VT_UI4, VT_INT, VT_UINT | 32 bits |
    /// | VT_R8 | the double |
    /// | VT_BSTR | a new BSTR, or null; the former one is freed |
    ///
    /// A value that cannot be converted to the type stores zeros, or the null string. Properties of other
    /// types are left alone and reported.
    /// @return S_OK, for an unsupported type too; S_FALSE; E_POINTER with a report for a property without
    ///         variable
    HRESULT SetScalarValue(long dispId, VARIANT value) override;

    /// Registers a property behind those that are there.
    void AddPropertyReference(CAnyProperty property);
    /// Forgets all properties; the variables stay as they are.
    void ClearPropertyReferences();

protected:
    // These stand before the destructor, so that they take the slots that follow the interface.
    /// Does what GetPropertyDispId says; exceptions are caught there, as for the other three.
    virtual HRESULT DoGetPropertyDispId(wchar_t* name, long* dispId);
    /// Does what GetPropertyName says.
    virtual HRESULT DoGetPropertyName(long dispId, wchar_t** name);
    /// Reads nothing; a component that can be read overrides it.
    virtual HRESULT DoGetScalarValue(long dispId, VARIANT* value);
    /// Does what SetScalarValue says.
    virtual HRESULT DoSetScalarValue(long dispId, VARIANT value);

    ~CBScalarPropertyAccess() override = default;

private:
    CAnyProperty* Find(long dispId);

    std::vector<CAnyProperty> m_properties;
};

} // namespace ZoVelkor
