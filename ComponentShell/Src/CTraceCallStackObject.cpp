#include "CTraceCallStackObject.h"

#include "Trace.h"

#include <fmt/format.h>

#include <exception>

namespace ZoVelkor
{
namespace
{
thread_local unsigned t_iDepth = 0;

void PrintStep(const char* component, char direction, const char* function) noexcept
{
    constexpr unsigned kIndent = 2;
    try
    {
        DebugPrint(component, fmt::format("{:{}}{} {}", "", t_iDepth * kIndent, direction, function));
    }
    catch (const std::exception&) // no memory: the line is dropped
    {
        return;
    }
}
} // namespace

void CTraceCallStackObject::Enter(const char* component, const char* function) noexcept
{
    m_component = component;
    m_function = function;
    PrintStep(component, '>', function);
    ++t_iDepth;
}

void CTraceCallStackObject::Leave() noexcept
{
    --t_iDepth;
    PrintStep(m_component, '<', m_function);
}
} // namespace ZoVelkor
