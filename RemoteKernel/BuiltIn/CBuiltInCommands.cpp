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

HRESULT CBuiltInCommands::Execute(const ParsedCommand& command)
{
    using THandler = HRESULT (CBuiltInCommands::*)(const ParsedCommand&);
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
        return command.command < BUILTIN_STATUS_FIRST ? (this->*kHandlers[command.command])(command)
                                                      : m_status.Execute(command);
    });
}

HRESULT BuiltInContext::Answer(std::string_view text) const
{
    return output.Write(text.size(), text.data(), nullptr);
}

HRESULT BuiltInContext::AnswerInteger(std::size_t value) const
{
    char text[kMaxNumberText];
    return Answer({text, static_cast<std::size_t>(WriteInteger(text, std::uint64_t{value}) - text)});
}

HRESULT BuiltInContext::Fail(short code, std::string_view detail) const
{
    errors.Push(code, detail);
    return E_FAIL;
}

bool CBuiltInCommands::WaitUntilIdle()
{
    return m_context.operations.WaitUntilIdle(
        m_context.remotePath, m_context.cancelEvent, m_context.connection);
}

HRESULT CBuiltInCommands::ClearStatus(const ParsedCommand&)
{
    CancelOperationComplete();
    m_context.errors.Clear();
    m_context.instrument.ClearEvents();
    return m_context.status.StandardEvent().ClearEvents();
}

HRESULT CBuiltInCommands::Identify(const ParsedCommand&)
{
    return m_context.Answer(m_context.applications->identity);
}

HRESULT CBuiltInCommands::NoteOperationComplete(const ParsedCommand&)
{
    m_context.operations.RequestOperationComplete(m_context.remotePath);
    return S_OK;
}

HRESULT CBuiltInCommands::QueryOperationComplete(const ParsedCommand&)
{
    return WaitUntilIdle() ? m_context.Answer("1") : E_ABORT;
}

HRESULT CBuiltInCommands::WaitToContinue(const ParsedCommand&)
{
    return WaitUntilIdle() ? S_OK : E_ABORT;
}

HRESULT CBuiltInCommands::QueryOptions(const ParsedCommand&)
{
    std::string options;
    for (const auto& application : m_context.applications->applications)
    {
        CComBSTR text;
        const HRESULT result =
            application->CallDeviceHandler(m_context.remotePath, [&text](IZOScpiDeviceHandler& handler) {
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

HRESULT CBuiltInCommands::Reset(const ParsedCommand&)
{
    const HRESULT result = m_context.format.Reset();
    CancelOperationComplete();
    // Every application is reset, also after one that failed.
    const HRESULT resetResult = m_context.events.Tell(
        m_context.remotePath, &IZOScpiDeviceHandler::Reset, &IZOScpiMultichannelEventObserver::Reset);
    return FAILED(resetResult) ? resetResult : result;
}

HRESULT CBuiltInCommands::Trigger(const ParsedCommand&)
{
    return GroupExecuteTrigger();
}

HRESULT CBuiltInCommands::GroupExecuteTrigger()
{
    const HRESULT result = m_context.events.Tell(
        m_context.remotePath, &IZOScpiDeviceHandler::Trigger, &IZOScpiMultichannelEventObserver::Trigger);
    return result == S_OK ? S_OK : m_context.Fail(kScpiTriggerIgnored);
}

bool CBuiltInCommands::ChangesInstrument(const ParsedCommand& command) noexcept
{
    return command.command == BUILTIN_RST || command.command == BUILTIN_TRG;
}

void CBuiltInCommands::CancelOperationComplete()
{
    if (m_context.operations.CancelOperationComplete(m_context.remotePath))
    {
        m_context.events.TellOpcReset(m_context.remotePath);
    }
}

HRESULT CBuiltInCommands::Test(const ParsedCommand&)
{
    std::size_t failures = 0;
    for (const auto& application : m_context.applications->applications)
    {
        VARIANT_BOOL passed = VARIANT_TRUE;
        const HRESULT result =
            application->CallDeviceHandler(m_context.remotePath, [&passed](IZOScpiDeviceHandler& handler) {
                return handler.Selftest(&passed);
            });
        if (FAILED(result) || passed == VARIANT_FALSE)
        {
            ++failures;
        }
    }
    return m_context.AnswerInteger(failures);
}

HRESULT CBuiltInCommands::QueryNextError(const ParsedCommand&)
{
    ErrorEntry entry;
    m_context.errors.Pop(entry);
    std::string response;
    AppendErrorResponse(response, entry);
    return m_context.Answer(response);
}

HRESULT CBuiltInCommands::QueryAllErrors(const ParsedCommand&)
{
    ErrorEntry entry;
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

HRESULT CBuiltInCommands::QueryErrorCount(const ParsedCommand&)
{
    return m_context.AnswerInteger(m_context.errors.Count());
}

HRESULT CBuiltInCommands::QueryHeaders(const ParsedCommand&)
{
    const CCommandIndex& index = *m_context.applications->index;
    std::list<std::string> lines;
    for (std::size_t i = 0; i < index.EntryCount(); ++i)
    {
        const CommandEntry& entry = index.Entry(static_cast<std::uint32_t>(i));
        const bool executable = entry.HasQuery() || entry.HasSetting();
        if (executable && !CScpiParserTable::GetSystemHelpHeaderIsDiagnostic(*entry.record))
        {
            CScpiParserTable::CollectHeaderHelp(entry.syntaxPath, lines, *entry.record, entry.pTable);
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

HRESULT CBuiltInCommands::QuerySyntax(const ParsedCommand& command)
{
    const tagZO_SCPI_PARAMETER& header = command.arguments[0];
    const CommandEntry* entry = m_context.applications->index->Find({header.szText, header.iTextLength});
    std::list<std::string> lines;
    if (entry != nullptr)
    {
        CScpiParserTable::CollectSyntaxHelp(entry->syntaxPath, lines, *entry->record, entry->pTable);
    }
    const std::string text = lines.empty() ? std::string() : lines.front();
    return m_context.format.StringText(text.size(), text.data());
}

HRESULT CBuiltInCommands::QueryTable(const ParsedCommand&)
{
    const auto commands = CComObject<CJoinedCommands, IZOScpiCommands>::Create(*m_context.applications);
    if (commands->Size() > CBScpiCommands::kLargestTree)
    {
        return m_context.Fail(kScpiTooMuchData,
                              fmt::format("Command table of {} bytes, limit {}",
                                          commands->Size(),
                                          CBScpiCommands::kLargestTree));
    }
    const HRESULT result = commands->SendCommandTree(&m_context.output);
    return result == S_FALSE ? m_context.Fail(kScpiExecutionError, "The command tables do not join") : result;
}

HRESULT CBuiltInCommands::QueryVersion(const ParsedCommand&)
{
    return m_context.Answer(kScpiVersion);
}

} // namespace ZoVelkor::RemoteKernel
