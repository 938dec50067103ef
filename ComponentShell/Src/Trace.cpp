#include "Trace.h"

#include "CSinkSlot.h"
#include "LogLine.h"

#include <fmt/format.h>

#include <exception>
#include <utility>

namespace ZoVelkor
{
namespace
{
CSinkSlot<ITraceSink>& Slot() noexcept
{
    static CImmortalSinkSlot<ITraceSink> immortal;
    return immortal.slot;
}
} // namespace

ITraceSink* SetTraceSink(ITraceSink* sink)
{
    return Slot().Replace(sink);
}

void DebugPrint(std::string_view component, std::string_view text) noexcept
{
    try
    {
        std::string line = OnOneLine(fmt::format("[{}] {}", component, text));
        Slot().Use([&line](ITraceSink* sink) {
            if (sink == nullptr)
            {
                WriteStandardErrorLine(std::move(line));
            }
            else
            {
                sink->Print(line);
            }
        });
    }
    catch (const std::exception&) // no memory: the line is dropped, the program goes on
    {
        return;
    }
}
} // namespace ZoVelkor
