#include "CShellError.h"

#include "ErrorRaising.h"
#include "LogLine.h"

namespace ZoVelkor
{
struct CShellError::tagContent
{
    tagErrorReport report;
    std::string objectText;
    std::string text;
};

CShellError::CShellError(const tagErrorReport& report)
    : m_content(std::make_shared<const tagContent>(
          tagContent{report, ZoVelkor::ObjectText(report.object), FormatErrorReport(report, true)}))
{}

CShellError::CShellError(const CShellError&) noexcept = default;
CShellError& CShellError::operator=(const CShellError&) noexcept = default;
CShellError::~CShellError() = default;

const tagErrorReport& CShellError::Report() const noexcept
{
    return m_content->report;
}

const std::string& CShellError::ObjectText() const noexcept
{
    return m_content->objectText;
}

const char* CShellError::what() const noexcept
{
    return m_content->text.c_str();
}
} // namespace ZoVelkor
