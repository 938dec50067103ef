#include "ErrorRaising.h"

#include "CSinkSlot.h"
#include "ErrorSink.h"
#include "GuardedEntry.h"
#include "LogLine.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <utility>

namespace ZoVelkor
{
namespace
{
CSinkSlot<IErrorSink>& Slot() noexcept
{
    static CImmortalSinkSlot<IErrorSink> immortal;
    return immortal.slot;
}

const char* SeverityText(tagErrorSeverity severity) noexcept
{
    switch (severity)
    {
    case tagErrorSeverity::Warning:
        return "warning";
    case tagErrorSeverity::Error:
        return "error";
    case tagErrorSeverity::Fatal:
        return "fatal error";
    }
    return "error of unknown severity";
}

void LogToStandardError(const tagErrorReport& report, bool thrown) noexcept
{
    try
    {
        WriteStandardErrorLine("[ComponentShell] " + FormatErrorReport(report, thrown));
    }
    catch (...)
    {
        std::fputs("[ComponentShell] error that could not be formatted\n", stderr);
    }
}

void Dispatch(const tagErrorReport& report, bool thrown) noexcept
{
    Slot().Use([&report, thrown](IErrorSink* sink) {
        if (sink == nullptr)
        {
            LogToStandardError(report, thrown);
        }
        else
        {
            sink->Report(report, thrown);
        }
    });
}
} // namespace

void ThrowError(const tagErrorReport& report)
{
    Dispatch(report, true);
    throw CShellError(report);
}

HRESULT RepairError(const tagErrorReport& report) noexcept
{
    Dispatch(report, false);
    return report.result;
}

tagErrorReport ErrorAt(const tagSourceUnit& unit,
                       int line,
                       const CObjectDataReference* object,
                       const char* condition,
                       std::string message,
                       HRESULT result)
{
    return {condition,
            unit.name,
            unit.buildStamp,
            line,
            tagErrorSeverity::Error,
            object,
            std::move(message),
            result};
}

tagErrorReport NullPointerError(const tagSourceUnit& unit,
                                const CObjectDataReference* object,
                                const char* name,
                                const char* condition,
                                int line)
{
    return ErrorAt(unit, line, object, condition, fmt::format("Null pointer detected ({})", name), E_POINTER);
}

tagErrorReport NullPointerError(const tagSourceUnit& unit,
                                const CObjectDataReference* object,
                                const char* condition,
                                int line)
{
    const std::string name(condition, std::string_view(condition).find(' '));
    return NullPointerError(unit, object, name.c_str(), condition, line);
}

HRESULT RefuseNullPointer(const tagSourceUnit& unit,
                          const CObjectDataReference* object,
                          const char* condition,
                          int line) noexcept
{
    return GuardedEntry([&] { return RepairError(NullPointerError(unit, object, condition, line)); });
}

std::string FormatErrorReport(const tagErrorReport& report, bool thrown)
{
    std::string text = fmt::format("{}({}): {} {}: {} [condition: {}] [result: 0x{:08X}]",
                                   report.sourceUnit,
                                   report.line,
                                   SeverityText(report.severity),
                                   thrown ? "thrown" : "repaired",
                                   report.message,
                                   report.condition,
                                   static_cast<std::uint32_t>(report.result));
    if (report.object != nullptr)
    {
        text += fmt::format(" [object: {}]", ObjectText(report.object));
    }
    text += fmt::format(" [built: {}]", report.buildStamp);
    return OnOneLine(text);
}

IErrorSink* SetErrorSink(IErrorSink* sink)
{
    return Slot().Replace(sink);
}
} // namespace ZoVelkor
