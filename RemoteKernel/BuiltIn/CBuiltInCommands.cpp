#include "CBuiltInCommands.h"

#include "Applications/CJoinedCommands.h"
#include "BuiltInTable.h"
#include "CComBSTR.h"
#include "CComObject.h"
#include "CScpiParserTable.h"
#include "GuardedEntry.h"
#include "Parsing/NumberText.h"
#include "Responses/ResponseText.h"
#include "ScpiErrorCodes.h"
#include "ScpiVersion.h"

#include <fmt/format.h>

#include <list>
#include <string>

namespace ZoVelkor::RemoteKernel
{

HRESULT CBuiltInCommands::Execute(const tagParsedCommand& command)
{
    using THandler = HRESULT (CBuiltInCommands::*)(const tagParsedCommand&);
    static constexpr THandler kHandlers[] = {
        &CBuiltInCommands::ClearStatus,           // BUILTIN_CLS
        &CBuiltInCommands::Identify,              // BUILTIN_IDN_QUERY
        &CBuiltInCommands::NoteOperationComplete, // BUILTIN_OPC
        &CBuiltInCommands::QueryOperationComplete,
        &CBuiltInCommands::QueryOptions,
        &CBuiltInCommands::Reset,
        &CBuiltInCommands::Trigger,
        &CBuiltInCommands::Test,
        &CBuiltInCommands::WaitToContinue,
        &CBuiltInCommands::QueryNextError, // BUILTIN_ERROR_NEXT_QUERY
        &CBuiltInCommands::QueryAllErrors,
        &CBuiltInCommands::QueryErrorCount,
        &CBuiltInCommands::QueryHeaders, // BUILTIN_HELP_HEADERS_QUERY
        &CBuiltInCommands::QuerySyntax,
        &CBuiltInCommands::QueryTable,
        &CBuiltInCommands::QueryVersion,
    };
    static_assert(std::size(kHandlers) == BUILTIN_STATUS_FIRST);
    return GuardedEntry([&] {
        return command.iCommand < BUILTIN_STATUS_FIRST ? (this->*kHandlers[command.iCommand])(command)
                                                       : m_status.Execute(command);
    });
}

HRESULT tagBuiltInContext::Answer(std::string_view text) const
{
    return output.Write(text.size(), text.data(), nullptr);
}

HRESULT tagBuiltInContext::AnswerInteger(std::size_t value) const
{
    char text[kMaxNumberText];
    return Answer({text, static_cast<std::size_t>(WriteInteger(text, std::uint64_t{value}) - text)});
}

HRESULT tagBuiltInContext::Fail(short code, std::string_view detail) const
{
    errors.Push(code, detail);
    return E_FAIL;
}

bool CBuiltInCommands::WaitUntilIdle()
{
    return m_context.operations.WaitUntilIdle(
        m_context.iRemotePath, m_context.cancelEvent, m_context.connection);
}

HRESULT CBuiltInCommands::ClearStatus(const tagParsedCommand&)
{
    CancelOperationComplete();
    m_context.errors.Clear();
    m_context.instrument.ClearEvents();
    return m_context.status.StandardEvent().ClearEvents();
}

HRESULT CBuiltInCommands::Identify(const tagParsedCommand&)
{
    return m_context.Answer(m_context.applications->sIdentity);
}

HRESULT CBuiltInCommands::NoteOperationComplete(const tagParsedCommand&)
{
    m_context.operations.RequestOperationComplete(m_context.iRemotePath);
    return S_OK;
}

HRESULT CBuiltInCommands::QueryOperationComplete(const tagParsedCommand&)
{
    return WaitUntilIdle() ? m_context.Answer("1") : E_ABORT;
}

HRESULT CBuiltInCommands::WaitToContinue(const tagParsedCommand&)
{
    return WaitUntilIdle() ? S_OK : E_ABORT;
}

HRESULT CBuiltInCommands::QueryOptions(const tagParsedCommand&)
{
    std::string options;
    for (const auto& spApplication : m_context.applications->applications)
    {
        CComBSTR text;
        const HRESULT result =
            spApplication->CallDeviceHandler(m_context.iRemotePath, [&text](IZOScpiDeviceHandler& handler) {
                return handler.GetDeviceOptions(&text);
            });
        if (result == S_OK && text.Length() != 0)
        {
            options += options.empty() ? "" : ",";
            options += NarrowResponseText(text);
        }
    }
    return m_context.Answer(options.empty() ? "0" : options);
}

HRESULT CBuiltInCommands::Reset(const tagParsedCommand&)
{
    const HRESULT result = m_context.format.Reset();
    CancelOperationComplete();
    // Every application is reset, also after one that failed.
    const HRESULT resetResult = m_context.events.Tell(
        m_context.iRemotePath, &IZOScpiDeviceHandler::Reset, &IZOScpiMultichannelEventObserver::Reset);
    return FAILED(resetResult) ? resetResult : result;
}

HRESULT CBuiltInCommands::Trigger(const tagParsedCommand&)
{
    return GroupExecuteTrigger();
}

HRESULT CBuiltInCommands::GroupExecuteTrigger()
{
    const HRESULT result = m_context.events.Tell(
        m_context.iRemotePath, &IZOScpiDeviceHandler::Trigger, &IZOScpiMultichannelEventObserver::Trigger);
    return result == S_OK ? S_OK : m_context.Fail(kScpiTriggerIgnored);
}

bool CBuiltInCommands::ChangesInstrument(const tagParsedCommand& command) noexcept
{
    return command.iCommand == BUILTIN_RST || command.iCommand == BUILTIN_TRG;
}

void CBuiltInCommands::CancelOperationComplete()
{
    if (m_context.operations.CancelOperationComplete(m_context.iRemotePath))
    {
        m_context.events.TellOpcReset(m_context.iRemotePath);
    }
}

HRESULT CBuiltInCommands::Test(const tagParsedCommand&)
{
    std::size_t failures = 0;
    for (const auto& spApplication : m_context.applications->applications)
    {
        VARIANT_BOOL passed = VARIANT_TRUE;
        const HRESULT result =
            spApplication->CallDeviceHandler(m_context.iRemotePath, [&passed](IZOScpiDeviceHandler& handler) {
                return handler.Selftest(&passed);
            });
        if (FAILED(result) || passed == VARIANT_FALSE)
        {
            ++failures;
        }
    }
    return m_context.AnswerInteger(failures);
}

HRESULT CBuiltInCommands::QueryNextError(const tagParsedCommand&)
{
    tagErrorEntry entry;
    m_context.errors.Pop(entry);
    std::string response;
    AppendErrorResponse(response, entry);
    return m_context.Answer(response);
}

HRESULT CBuiltInCommands::QueryAllErrors(const tagParsedCommand&)
{
    tagErrorEntry entry;
    std::string response;
    while (m_context.errors.Pop(entry))
    {
        AppendErrorResponse(response, entry);
        response += ',';
    }
    if (response.empty())
    {
        AppendErrorResponse(response, entry);
        return m_context.Answer(response);
    }
    response.pop_back();
    return m_context.Answer(response);
}

HRESULT CBuiltInCommands::QueryErrorCount(const tagParsedCommand&)
{
    return m_context.AnswerInteger(m_context.errors.Count());
}

HRESULT CBuiltInCommands::QueryHeaders(const tagParsedCommand&)
{
    const CCommandIndex& index = *m_context.applications->spIndex;
    std::list<std::string> lines;
    for (std::size_t i = 0; i < index.EntryCount(); ++i)
    {
        const tagCommandEntry& entry = index.Entry(static_cast<std::uint32_t>(i));
        const bool bExecutable = entry.HasQuery() || entry.HasSetting();
        if (bExecutable && !CScpiParserTable::GetSystemHelpHeaderIsDiagnostic(*entry.pRecord))
        {
            CScpiParserTable::CollectHeaderHelp(entry.sSyntaxPath, lines, *entry.pRecord, entry.pTable);
        }
    }
    std::string text;
    for (const std::string& line : lines)
    {
        text += line;
        text += '\n';
    }
    const HRESULT result = m_context.format.WriteBlockHeader(text.size());
    return FAILED(result) ? result : m_context.Answer(text);
}

HRESULT CBuiltInCommands::QuerySyntax(const tagParsedCommand& command)
{
    const tagZO_SCPI_PARAMETER& header = command.pArguments[0];
    const tagCommandEntry* entry = m_context.applications->spIndex->Find({header.szText, header.iTextLength});
    std::list<std::string> lines;
    if (entry != nullptr)
    {
        CScpiParserTable::CollectSyntaxHelp(entry->sSyntaxPath, lines, *entry->pRecord, entry->pTable);
    }
    const std::string text = lines.empty() ? std::string() : lines.front();
    return m_context.format.StringText(text.size(), text.data());
}

HRESULT CBuiltInCommands::QueryTable(const tagParsedCommand&)
{
    const auto spCommands = CComObject<CJoinedCommands, IZOScpiCommands>::Create(*m_context.applications);
    if (spCommands->Size() > CBScpiCommands::kLargestTree)
    {
        return m_context.Fail(kScpiTooMuchData,
                              fmt::format("Command table of {} bytes, limit {}",
                                          spCommands->Size(),
                                          CBScpiCommands::kLargestTree));
    }
    const HRESULT result = spCommands->SendCommandTree(&m_context.output);
    return result == S_FALSE ? m_context.Fail(kScpiExecutionError, "The command tables do not join") : result;
}

HRESULT CBuiltInCommands::QueryVersion(const tagParsedCommand&)
{
    return m_context.Answer(kScpiVersion);
}

} // namespace ZoVelkor::RemoteKernel
