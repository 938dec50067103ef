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
    explicit CStatusCommands(const tagBuiltInContext& context) noexcept
        : m_context(context),
          m_pollEnable(context.instrument.PowerOnMasks().poll)
    {}

    /// Runs one command of BuiltInTable() from BUILTIN_STATUS_FIRST on; results as
    /// IZOScpiExecutionSink::Execute.
    HRESULT Execute(const tagParsedCommand& command);

private:
    HRESULT SetEventEnable(const tagParsedCommand& command);
    HRESULT QueryEventEnable(const tagParsedCommand& command);
    HRESULT QueryEvents(const tagParsedCommand& command);
    HRESULT SetServiceEnable(const tagParsedCommand& command);
    HRESULT QueryServiceEnable(const tagParsedCommand& command);
    HRESULT QueryStatusByte(const tagParsedCommand& command);
    HRESULT SetPowerOnClear(const tagParsedCommand& command);
    HRESULT QueryPowerOnClear(const tagParsedCommand& command);
    HRESULT SetPollEnable(const tagParsedCommand& command);
    HRESULT QueryPollEnable(const tagParsedCommand& command);
    HRESULT QueryIndividualStatus(const tagParsedCommand& command);
    HRESULT Preset(const tagParsedCommand& command);
    HRESULT ExecuteOnRegister(std::size_t form, const tagParsedCommand& command);

    wchar_t ReadStatusByte() noexcept;
    tagEnableMasks Masks() const noexcept;
    /// @return S_OK; E_FAIL with -320 when a mask or the flag could not be kept
    HRESULT CheckKept(bool kept) const;
    HRESULT NoteMasks(HRESULT result);
    using TWordReader = HRESULT (IZOScpiStatusRegister::*)(wchar_t*);
    HRESULT AnswerWord(IZOScpiStatusRegister& statusRegister, TWordReader reader) const;

    const tagBuiltInContext& m_context;
    wchar_t m_pollEnable;
};

} // namespace ZoVelkor::RemoteKernel
