#pragma once

#include "BuiltInContext.h"
#include "Parsing/ParsedCommand.h"

namespace ZoVelkor::RemoteKernel
{

/// The commands of a session that work on status registers: those of IEEE 488.2 section 11 and STATus of
/// SCPI-99 vol. 2, 20. Threads: the session's.
class CStatusCommands
{
public:
    explicit CStatusCommands(const BuiltInContext& context) noexcept
        : m_context(context),
          m_pollEnable(context.instrument.PowerOnMasks().poll)
    {}

    /// Runs one command of BuiltInTable() from BUILTIN_STATUS_FIRST on; results as
    /// IZOScpiExecutionSink::Execute.
    HRESULT Execute(const ParsedCommand& command);

private:
    HRESULT SetEventEnable(const ParsedCommand& command);
    HRESULT QueryEventEnable(const ParsedCommand& command);
    HRESULT QueryEvents(const ParsedCommand& command);
    HRESULT SetServiceEnable(const ParsedCommand& command);
    HRESULT QueryServiceEnable(const ParsedCommand& command);
    HRESULT QueryStatusByte(const ParsedCommand& command);
    HRESULT SetPowerOnClear(const ParsedCommand& command);
    HRESULT QueryPowerOnClear(const ParsedCommand& command);
    HRESULT SetPollEnable(const ParsedCommand& command);
    HRESULT QueryPollEnable(const ParsedCommand& command);
    HRESULT QueryIndividualStatus(const ParsedCommand& command);
    HRESULT Preset(const ParsedCommand& command);
    HRESULT ExecuteOnRegister(std::size_t form, const ParsedCommand& command);

    wchar_t ReadStatusByte() noexcept;
    EnableMasks Masks() const noexcept;
    /// @return S_OK; E_FAIL with -320 when a mask or the flag could not be kept
    HRESULT CheckKept(bool kept) const;
    HRESULT NoteMasks(HRESULT result);
    using TWordReader = HRESULT (IZOScpiStatusRegister::*)(wchar_t*);
    HRESULT AnswerWord(IZOScpiStatusRegister& statusRegister, TWordReader reader) const;

    const BuiltInContext& m_context;
    wchar_t m_pollEnable;
};

} // namespace ZoVelkor::RemoteKernel
