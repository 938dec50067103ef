#pragma once

#include "CCritSection.h"
#include "CCritSectionLocker.h"
#include "ErrorRaising.h"
#include "ErrorSink.h"

#include <string>
#include <utility>
#include <vector>

namespace ZoVelkor
{
/// Records the errors reported during its life and keeps them off stderr.
class CErrorRecorder final : public IErrorSink
{
public:
    struct Entry
    {
        tagErrorReport report;
        bool thrown = false;
    };

    CErrorRecorder() : m_former(SetErrorSink(this)) {}
    CErrorRecorder(const CErrorRecorder&) = delete;
    CErrorRecorder& operator=(const CErrorRecorder&) = delete;
    ~CErrorRecorder() { SetErrorSink(m_former); }

    void Report(const tagErrorReport& report, bool thrown) noexcept override
    {
        const CCritSectionLocker locker(m_section);
        m_entries.push_back({report, thrown});
    }

    std::vector<Entry> Take()
    {
        const CCritSectionLocker locker(m_section);
        return std::exchange(m_entries, {});
    }

private:
    CCritSection m_section;
    std::vector<Entry> m_entries ZO_GUARDED_BY(m_section);
    IErrorSink* const m_former;
};
} // namespace ZoVelkor
