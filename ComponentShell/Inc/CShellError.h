#pragma once

#include "ErrorReport.h"
#include "ZoExport.h"

#include <exception>
#include <memory>
#include <string>

namespace ZoVelkor
{
/// The exception of a raised internal error; ThrowError is the one place that throws it.
///
/// The error has been reported before it is thrown: whoever catches it acts on it, or turns it into a
/// result, but does not report it again. Copies share one report, so copying never throws and the report
/// outlives rethrowing. Threads: a report is never changed, so copies may be read in several threads.
class ZO_EXPORT CShellError : public std::exception
{
public:
    /// Takes a copy of the report and notes the object's name and number while it lives.
    ///
    /// @throws std::bad_alloc
    explicit CShellError(const tagErrorReport& report);
    /// Shares the report.
    CShellError(const CShellError&) noexcept;
    /// Shares the other's report in place of the former one.
    CShellError& operator=(const CShellError&) noexcept;
    ~CShellError() override;

    /// The whole report. Its object pointer tells objects apart; do not follow it, because unwinding may
    /// have destroyed the object.
    const tagErrorReport& Report() const noexcept;

    /// Name and number of the object, as they were when the error was raised; empty without object.
    const std::string& ObjectText() const noexcept;

    /// The report as one line of text, valid as long as the exception.
    const char* what() const noexcept override;

private:
    struct tagContent;
    std::shared_ptr<const tagContent> m_content;
};
} // namespace ZoVelkor
