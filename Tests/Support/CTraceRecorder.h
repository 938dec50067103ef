#pragma once

#include "CCritSection.h"
#include "CCritSectionLocker.h"
#include "Trace.h"

#include <string>
#include <utility>
#include <vector>

namespace ZoVelkor
{
/// Records the lines of the debug print during its life and keeps them off stderr.
class CTraceRecorder final : public ITraceSink
{
public:
    CTraceRecorder() : m_former(SetTraceSink(this)) {}
    CTraceRecorder(const CTraceRecorder&) = delete;
    CTraceRecorder& operator=(const CTraceRecorder&) = delete;
    ~CTraceRecorder() { SetTraceSink(m_former); }

    void Print(std::string_view line) noexcept override
    {
        const CCritSectionLocker locker(m_section);
        m_lines.emplace_back(line);
    }

    std::vector<std::string> Take()
    {
        const CCritSectionLocker locker(m_section);
        return std::exchange(m_lines, {});
    }

private:
    CCritSection m_section;
    std::vector<std::string> m_lines ZO_GUARDED_BY(m_section);
    ITraceSink* const m_former;
};
} // namespace ZoVelkor
