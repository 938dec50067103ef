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
    struct tagEntry
    {
        tagErrorReport report;
        bool thrown = false;
    };

    CErrorRecorder() : m_pFormer(SetErrorSink(this)) {}
    CErrorRecorder(const CErrorRecorder&) = delete;
    CErrorRecorder& operator=(const CErrorRecorder&) = delete;
    ~CErrorRecorder() { SetErrorSink(m_pFormer); }

    void Report(const tagErrorReport& report, bool thrown) noexcept override
    {
        const CCritSectionLocker locker(m_section);
        m_entries.push_back({report, thrown});
    }

    std::vector<tagEntry> Take()
    {
        const CCritSectionLocker locker(m_section);
        return std::exchange(m_entries, {});
    }

private:
    CCritSection m_section;
    std::vector<tagEntry> m_entries ZO_GUARDED_BY(m_section);
    IErrorSink* const m_pFormer;
};
} // namespace ZoVelkor
