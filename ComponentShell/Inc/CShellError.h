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
/// Copies share one report, so copying never throws and the report outlives rethrowing.
class ZO_EXPORT CShellError : public std::exception
{
public:
    /// @throws std::bad_alloc
    explicit CShellError(const tagErrorReport& report);
    CShellError(const CShellError&) noexcept;
    CShellError& operator=(const CShellError&) noexcept;
    ~CShellError() override;

    /// The whole report. Its object pointer tells objects apart; do not follow it, because unwinding may
    /// have destroyed the object.
    const tagErrorReport& Report() const noexcept;

    /// Name and number of the object, as they were when the error was raised; empty without object.
    const std::string& ObjectText() const noexcept;

    /// The report as one line of text.
    const char* what() const noexcept override;

private:
    struct tagContent;
    std::shared_ptr<const tagContent> m_content;
};
} // namespace ZoVelkor
