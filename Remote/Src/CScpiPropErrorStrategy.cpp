#include "CScpiPropErrorStrategy.h"

#include "CObjectDataReference.h"
#include "CPerformanceDiagnose.h"
#include "ErrorRaising.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Remote/Src/CScpiPropErrorStrategy");

void ReportToShell(const CObjectDataReferenceBase* pObject,
                   tagErrorSeverity severity,
                   const std::string& message) noexcept
{
    const auto* reference = dynamic_cast<const CObjectDataReference*>(pObject);
    RepairError(ZO_REPORT(severity, reference, "false", message, ZO_E_SHELL));
}

} // namespace

void CScpiPropErrorStrategy::SetMember(CObjectDataReferenceBase* pObject,
                                       tagEnumScpiNodeRepairUpdateMode mode,
                                       bool reportAsWarnings,
                                       bool reportEmptyWarnings,
                                       bool strict) noexcept
{
    m_object = pObject;
    m_mode = mode;
    m_reportAsWarnings = reportAsWarnings;
    m_reportEmptyWarnings = reportEmptyWarnings;
    m_strict = strict;
}

void CScpiPropErrorStrategy::Count() noexcept
{
    if (m_errorCounter < std::numeric_limits<std::int32_t>::max())
    {
        ++m_errorCounter;
    }
}

void CScpiPropErrorStrategy::Warn(const void* value, const CAtlStringA& message)
{
    // Deliberate: a warning is for the object alone; in the other modes it neither counts nor shows.
    if (m_mode != ZO_SCPI_NODE_REPORT_TO_OBJECT)
    {
        return;
    }
    if (m_object != nullptr)
    {
        m_object->PropertyWarning(value, message);
    }
    else
    {
        ReportToShell(nullptr, tagErrorSeverity::Warning, message);
    }
}

void CScpiPropErrorStrategy::PropError(const void* value, CAtlStringA message)
{
    if (CPerformanceDiagnose::IsScpiChecksDisabled())
    {
        return;
    }
    if (m_reportAsWarnings)
    {
        Warn(value, message);
        return;
    }
    switch (m_mode)
    {
    case ZO_SCPI_NODE_CAPTURE:
        Count();
        m_capturedErrors.push_back(std::move(message));
        break;
    case ZO_SCPI_NODE_REPORT_TO_OBJECT:
        Count();
        if (m_object != nullptr)
        {
            m_object->PropertyError(value, message);
            break;
        }
        ReportToShell(nullptr, tagErrorSeverity::Error, message);
        break;
    case ZO_SCPI_NODE_REPORT_TO_SHELL:
        Count();
        ReportToShell(m_object, tagErrorSeverity::Error, message);
        break;
    case ZO_SCPI_NODE_IGNORE:
    case ZO_SCPI_NODE_REPAIR:
    default:
        break;
    }
}

void CScpiPropErrorStrategy::PropErrorEmpty(const void* value, CAtlStringA message)
{
    if (m_reportEmptyWarnings)
    {
        PropError(value, std::move(message));
    }
}

void CScpiPropErrorStrategy::PropErrorRelaxed(const void* value, CAtlStringA message)
{
    if (IsRelaxed())
    {
        PropError(value, std::move(message));
    }
}

void CScpiPropErrorStrategy::CheckUndefinedLong(const long& value, long undefined)
{
    if (value == undefined)
    {
        PropErrorEmpty(&value, "This value is undefined");
    }
}

void CScpiPropErrorStrategy::CheckNullGuid(const GUID& value)
{
    if (value == GUID_NULL)
    {
        PropErrorEmpty(&value, "Undefined GUID config error");
    }
}

void CScpiPropErrorStrategy::PropErrorBstrRepair(CComBSTR& value,
                                                 CAtlStringA message,
                                                 const std::string& repair)
{
    if (m_mode == ZO_SCPI_NODE_REPAIR)
    {
        value = CComBSTR(static_cast<int>(repair.size()), repair.data());
        return;
    }
    PropError(std::addressof(value), std::move(message)); // the operator & of the string would empty it
}

void CScpiPropErrorStrategy::ResetErrorCounter() noexcept
{
    m_capturedErrors.clear();
    m_errorCounter = 0;
}

std::string CScpiPropErrorStrategy::ReportCapturedErrors(long limit) const
{
    const std::size_t count = m_capturedErrors.size();
    const std::size_t taken = limit > 0 ? std::min(count, static_cast<std::size_t>(limit)) : count;
    const auto first = m_capturedErrors.begin();
    return fmt::format("{}", fmt::join(first, first + static_cast<std::ptrdiff_t>(taken), "\n"));
}

} // namespace ZoVelkor
