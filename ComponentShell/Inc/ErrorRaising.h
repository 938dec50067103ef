#pragma once

#include "CObjectDataReference.h"
#include "CShellError.h"
#include "ErrorReport.h"
#include "ZoExport.h"

#include <string>

namespace ZoVelkor
{
/// Reports an internal error and abandons the operation.
///
/// The sink has the report before the exception is thrown. For what the operation cannot go on with; where
/// the caller is told by a result, RepairError. Threads: any.
/// @throws CShellError with a copy of the report
[[noreturn]] ZO_EXPORT void ThrowError(const tagErrorReport& report);

/// Reports an internal error; the caller goes on.
///
/// Threads: any; allowed while an exception is under way.
/// @return report.result, so that an operation can end with `return RepairError(...)`
ZO_EXPORT HRESULT RepairError(const tagErrorReport& report) noexcept;

/// The report of severity Error that a condition did not hold, for checks on behalf of another source file.
///
/// @param unit       the file at work
/// @param object     the object at work; may be null
/// @param condition  the failed condition, a literal
ZO_EXPORT tagErrorReport ErrorAt(const tagSourceUnit& unit,
                                 int line,
                                 const CObjectDataReference* object,
                                 const char* condition,
                                 std::string message,
                                 HRESULT result);

/// The report about a null pointer argument: "Null pointer detected (<name>)", E_POINTER.
///
/// @param object     the object at work; may be null
/// @param name       name of the parameter
/// @param condition  the failed condition, a literal
/// @param line       line of the check; the default is the line of the call
ZO_EXPORT tagErrorReport NullPointerError(const tagSourceUnit& unit,
                                          const CObjectDataReference* object,
                                          const char* name,
                                          const char* condition,
                                          int line = __builtin_LINE());

/// The same where the condition begins with the parameter's name, as in "<name> != NULL".
///
/// @param condition  the failed condition, a literal
/// @param line       line of the check
ZO_EXPORT tagErrorReport NullPointerError(const tagSourceUnit& unit,
                                          const CObjectDataReference* object,
                                          const char* condition,
                                          int line);

/// Reports a null pointer argument, for operations that let no exception out; parameters as for the report.
///
/// @return E_POINTER; E_OUTOFMEMORY when there is no memory for the report
ZO_EXPORT HRESULT RefuseNullPointer(const tagSourceUnit& unit,
                                    const CObjectDataReference* object,
                                    const char* condition,
                                    int line) noexcept;

/// The report as one line: place, severity, message, condition, object and result. Control characters of
/// the message are replaced, so that a message never becomes two lines.
///
/// @param thrown  as IErrorSink::Report gets it; shown as well
ZO_EXPORT std::string FormatErrorReport(const tagErrorReport& report, bool thrown);
} // namespace ZoVelkor

/// Names the source file for the error reports raised in it; stands once, at namespace scope of a .cpp file.
/// The name is the file's path below the project's root without extension, a literal.
#define ZO_SOURCE_UNIT(name)                                                                                 \
    [[maybe_unused]] constexpr ::ZoVelkor::tagSourceUnit kSourceUnit                                         \
    {                                                                                                        \
        name, __DATE__ " " __TIME__                                                                          \
    }

/// A tagErrorReport of the given severity about the line it stands on.
#define ZO_REPORT(severity, object, condition, message, result)                                              \
    ::ZoVelkor::tagErrorReport                                                                               \
    {                                                                                                        \
        (condition), kSourceUnit.name, kSourceUnit.buildStamp, __LINE__, (severity), (object), (message),    \
            (result)                                                                                         \
    }

/// A tagErrorReport of severity Error about the line it stands on; `object` may be nullptr.
///
/// The file must have a ZO_SOURCE_UNIT. The condition is a literal, as the source has it: readers search
/// for it.
#define ZO_ERROR(object, condition, message, result)                                                         \
    ZO_REPORT(::ZoVelkor::tagErrorSeverity::Error, object, condition, message, result)

/// The report that the parameter of this name is null; `name` is a literal. The condition is
/// "<name> != NULL".
#define ZO_NULL_POINTER(object, name)                                                                        \
    ::ZoVelkor::NullPointerError(kSourceUnit, (object), name, name " != NULL")
