#pragma once

#include "CObjectDataReference.h"
#include "ErrorReport.h"
#include "TimeDateStruct.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// The checks of CETimeDateControl, in the name of one object.
///
/// Each check returns when all is well and raises an error otherwise; `line` is the line in the report.
/// Threads: any.
class ZO_EXPORT CTimeDateChecks
{
public:
    /// @param object  borrowed; outlives the checks
    /// @param unit    where the reports come from; borrowed likewise
    CTimeDateChecks(const CObjectDataReference& object, const tagSourceUnit& unit) noexcept
        : m_object(object),
          m_unit(unit)
    {}

    /// Refuses a null pointer.
    ///
    /// @throws CShellError with ZO_E_NULL_ARGUMENT
    void Pointer(const tagTimeStruct* pTime, int line = __builtin_LINE()) const;
    void Pointer(const tagDateStruct* pDate, int line = __builtin_LINE()) const;

    /// Refuses an input with a field out of its range.
    ///
    /// @throws CShellError with ZO_E_ARGUMENT_RANGE for the first such field
    void Argument(const tagTimeStruct& Time, int line = __builtin_LINE()) const;
    void Argument(const tagDateStruct& Date, int line = __builtin_LINE()) const;

    /// The same for what an operation has returned.
    void Returned(const tagTimeStruct& Time, int line = __builtin_LINE()) const;
    void Returned(const tagDateStruct& Date, int line = __builtin_LINE()) const;

    /// Refuses a result of the base layer other than S_OK and S_FALSE.
    ///
    /// @throws CShellError with that result
    void Result(HRESULT result, int line = __builtin_LINE()) const;

    /// Raises what stands for an exception that came out of the base layer.
    /// @throws CShellError with ZO_E_SHELL
    [[noreturn]] void UnexpectedException(int line = __builtin_LINE()) const;

private:
    [[noreturn]] void
    Raise(const char* condition, const std::string& message, HRESULT result, int line) const;
    template <class TStruct, class TFields>
    void Fields(const TStruct& value, const TFields& fields, bool isReturned, int line) const;

    const CObjectDataReference& m_object;
    const tagSourceUnit& m_unit;
};

} // namespace ZoVelkor
