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
    : m_spContent(std::make_shared<const tagContent>(
          tagContent{report, ZoVelkor::ObjectText(report.object), FormatErrorReport(report, true)}))
{}

CShellError::CShellError(const CShellError&) noexcept = default;
CShellError& CShellError::operator=(const CShellError&) noexcept = default;
CShellError::~CShellError() = default;

const tagErrorReport& CShellError::Report() const noexcept
{
    return m_spContent->report;
}

const std::string& CShellError::ObjectText() const noexcept
{
    return m_spContent->objectText;
}

const char* CShellError::what() const noexcept
{
    return m_spContent->text.c_str();
}
} // namespace ZoVelkor
