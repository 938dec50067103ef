#pragma once

#include "CObjectDataReference.h"
#include "ErrorReport.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

#include <initializer_list>

namespace ZoVelkor
{

/// The checks of CERegistryAccess, in the name of one object.
///
/// Each check returns when all is well and raises an error otherwise; `line` is the line in the report.
/// Threads: any.
class ZO_EXPORT CRegistryAccessChecks
{
public:
    /// @param object  borrowed; outlives the checks
    /// @param unit    where the reports come from; borrowed likewise
    CRegistryAccessChecks(const CObjectDataReference& object, const tagSourceUnit& unit) noexcept
        : m_object(object),
          m_unit(unit)
    {}

    /// Refuses a null pointer.
    ///
    /// @param name       of the parameter, a literal
    /// @param condition  "<name> != NULL", a literal
    /// @throws CShellError with E_POINTER
    void
    Pointer(const void* pointer, const char* name, const char* condition, int line = __builtin_LINE()) const;

    /// Refuses pointers of which none is set: nothing would be asked for.
    ///
    /// @throws CShellError with E_POINTER
    void Any(std::initializer_list<const void*> pointers,
             const char* condition,
             int line = __builtin_LINE()) const;

    /// Checks the address of a text that an operation gives out.
    ///
    /// @throws CShellError with E_POINTER for a null address, with E_INVALIDARG for one that holds a text,
    ///         which would be lost
    void Text(wchar_t* const* value, int line = __builtin_LINE()) const;
    /// The same for an address that may be null.
    void OptionalText(wchar_t* const* value, int line = __builtin_LINE()) const;

    /// Checks a size and the buffer that it speaks of.
    ///
    /// @throws CShellError with E_POINTER when a size above 0 comes without data
    void Buffer(const long* size, const unsigned char* data, int line = __builtin_LINE()) const;

    /// Refuses a result that no registration gives; S_OK, S_FALSE and E_FAIL are expected.
    ///
    /// @throws CShellError with that result
    void Result(HRESULT result, int line = __builtin_LINE()) const;

private:
    [[noreturn]] void Raise(const char* condition, const char* message, HRESULT result, int line) const;

    const CObjectDataReference& m_object;
    const tagSourceUnit& m_unit;
};

} // namespace ZoVelkor
