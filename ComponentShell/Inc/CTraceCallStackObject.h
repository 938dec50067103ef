#pragma once

#include "RemoteDiagnoseControl.h"
#include "ZoExport.h"

namespace ZoVelkor
{
/// Traces one call: a line "> function" at construction and "< function" at destruction, indented by depth.
///
/// Costs one flag test while bCallStackTraceActive of the control block is off. When the flag changes in
/// between, a call whose start was printed also prints its end, and no other does.
/// Threads: belongs to the scope it stands in; each thread counts its own depth.
class ZO_EXPORT CTraceCallStackObject
{
public:
    /// @param component  begins the lines; outlives the object (a literal)
    /// @param function   the same for the function's name
    CTraceCallStackObject(const char* component, const char* function) noexcept
    {
        if (get_RemoteDiagnoseControl()->bCallStackTraceActive.load(std::memory_order_relaxed)) [[unlikely]]
        {
            Enter(component, function);
        }
    }
    CTraceCallStackObject(const CTraceCallStackObject&) = delete;
    CTraceCallStackObject& operator=(const CTraceCallStackObject&) = delete;
    ~CTraceCallStackObject()
    {
        if (m_function != nullptr) [[unlikely]]
        {
            Leave();
        }
    }

private:
    void Enter(const char* component, const char* function) noexcept;
    void Leave() noexcept;

    const char* m_component = nullptr;
    const char* m_function = nullptr;
};
} // namespace ZoVelkor
