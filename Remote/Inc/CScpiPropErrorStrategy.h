#pragma once

#include "CAtlString.h"
#include "CComBSTR.h"
#include "Guid.h"
#include "ZoExport.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ZoVelkor
{

class CObjectDataReferenceBase;

/// What becomes of a problem that a check of the command tree or of property values finds.
///
/// The values are those of stored configurations. They are alternatives and not combined.
enum tagEnumScpiNodeRepairUpdateMode : std::int32_t
{
    ZO_SCPI_NODE_IGNORE = 0,           ///< nothing; so does every value without a name
    ZO_SCPI_NODE_CAPTURE = 1,          ///< the message is collected, see ReportCapturedErrors
    ZO_SCPI_NODE_REPAIR = 2,           ///< what can be repaired is repaired, all else ignored
    ZO_SCPI_NODE_REPORT_TO_OBJECT = 8, ///< property error or warning of the object
    ZO_SCPI_NODE_REPORT_TO_SHELL = 16  ///< RepairError
};

/// Decides, for one run of checks, whether a problem is an error, a warning, a collected message or nothing,
/// and counts the errors.
///
/// A new strategy loses nothing: it reports to the component shell, has no object, reports errors and not
/// warnings, leaves undefined values alone and is relaxed. The diagnosis switch "nochecks" silences every
/// strategy; repairs are made all the same.
///
/// Threads: one instance belongs to the thread that runs the checks; no locks.
class ZO_EXPORT CScpiPropErrorStrategy
{
public:
    /// Configures the next run. The counter and the collected messages stay; ResetErrorCounter clears them.
    ///
    /// @param pObject  whose problems they are; borrowed until the next SetMember or the strategy's end. With
    ///                 null, the mode ZO_SCPI_NODE_REPORT_TO_OBJECT reports to the component shell
    /// @param reportAsWarnings  problems are warnings: the object is told, nothing is counted, collected or
    ///                          reported to the shell
    /// @param reportEmptyWarnings  undefined values are problems
    /// @param strict  PropErrorRelaxed does nothing
    void SetMember(CObjectDataReferenceBase* pObject,
                   tagEnumScpiNodeRepairUpdateMode mode,
                   bool reportAsWarnings,
                   bool reportEmptyWarnings,
                   bool strict) noexcept;

    /// @name Problems
    /// @{

    /// Handles one problem as the mode says.
    ///
    /// @param value    address of the faulty value, for identification only; may be null
    /// @param message  what is wrong, one line in English
    void PropError(const void* value, CAtlStringA message);
    /// The same, but only while undefined values are problems.
    void PropErrorEmpty(const void* value, CAtlStringA message);
    /// The same, but only while the strategy is relaxed.
    void PropErrorRelaxed(const void* value, CAtlStringA message);
    /// "This value is undefined", when the value equals `undefined` and undefined values are problems.
    void CheckUndefinedLong(const long& value, long undefined);
    /// "Undefined GUID config error", when the identifier is all zero and undefined values are problems.
    void CheckNullGuid(const GUID& value);
    /// Replaces the text in the mode ZO_SCPI_NODE_REPAIR; in every other mode the problem is handled as by
    /// PropError.
    void PropErrorBstrRepair(CComBSTR& value, CAtlStringA message, const std::string& repair);
    /// @}

    /// Problems that were errors since the last reset; stays at 2147483647 once it is there.
    long GetErrorCounter() const noexcept { return m_errorCounter; }
    /// Zeroes the counter and drops the collected messages.
    void ResetErrorCounter() noexcept;
    /// The collected messages in their order, joined by line feeds.
    ///
    /// @param limit  the most messages to take; 0 or less takes all
    std::string ReportCapturedErrors(long limit) const;

    /// Whether problems are warnings, see SetMember.
    bool ReportAsWarnings() const noexcept { return m_reportAsWarnings; }
    /// Whether undefined values are problems.
    bool ReportEmptyWarnings() const noexcept { return m_reportEmptyWarnings; }
    /// Whether PropErrorRelaxed does nothing.
    bool IsStrict() const noexcept { return m_strict; }
    /// The opposite of IsStrict.
    bool IsRelaxed() const noexcept { return !m_strict; }

private:
    void Warn(const void* value, const CAtlStringA& message);
    void Count() noexcept;

    CObjectDataReferenceBase* m_object = nullptr;
    tagEnumScpiNodeRepairUpdateMode m_mode = ZO_SCPI_NODE_REPORT_TO_SHELL;
    std::int32_t m_errorCounter = 0;
    bool m_reportAsWarnings = false;
    bool m_reportEmptyWarnings = false;
    bool m_strict = false;
    std::vector<CAtlStringA> m_capturedErrors;
};

} // namespace ZoVelkor
