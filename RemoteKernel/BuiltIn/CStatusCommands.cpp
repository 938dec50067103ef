#include "CStatusCommands.h"

#include "BuiltInTable.h"
#include "ScpiErrorCodes.h"
#include "Status/RegisterMask.h"
#include "Status/StatusBits.h"

#include <charconv>
#include <cstdlib>
#include <string>

namespace ZoVelkor::RemoteKernel
{

namespace
{

constexpr std::uint32_t kHighestStandardMask = 0xFF;
constexpr std::uint32_t kHighestScpiMask = 0xFFFF;
constexpr long kHighestPowerFlag = 32767;

} // namespace

HRESULT CStatusCommands::Execute(const ParsedCommand& command)
{
    using THandler = HRESULT (CStatusCommands::*)(const ParsedCommand&);
    static constexpr THandler kHandlers[] = {
        &CStatusCommands::SetEventEnable, // BUILTIN_ESE
        &CStatusCommands::QueryEventEnable,
        &CStatusCommands::QueryEvents,
        &CStatusCommands::SetServiceEnable, // BUILTIN_SRE
        &CStatusCommands::QueryServiceEnable,
        &CStatusCommands::QueryStatusByte,
        &CStatusCommands::SetPowerOnClear, // BUILTIN_PSC
        &CStatusCommands::QueryPowerOnClear,
        &CStatusCommands::SetPollEnable, // BUILTIN_PRE
        &CStatusCommands::QueryPollEnable,
        &CStatusCommands::QueryIndividualStatus,
        &CStatusCommands::Preset,
    };
    static_assert(std::size(kHandlers) == BUILTIN_REGISTER_FIRST - BUILTIN_STATUS_FIRST);
    const std::size_t index = command.command - BUILTIN_STATUS_FIRST;
    return index < std::size(kHandlers) ? (this->*kHandlers[index])(command)
                                        : ExecuteOnRegister(index - std::size(kHandlers), command);
}

HRESULT CStatusCommands::AnswerWord(IZOScpiStatusRegister& statusRegister, TWordReader reader) const
{
    wchar_t word = 0;
    const HRESULT result = (statusRegister.*reader)(&word);
    return FAILED(result) ? result : m_context.AnswerInteger(static_cast<std::size_t>(word));
}

EnableMasks CStatusCommands::Masks() const noexcept
{
    EnableMasks masks;
    m_context.status.StandardEvent().GetEnable(&masks.event);
    m_context.status.StatusByte().GetEnable(&masks.service);
    masks.poll = m_pollEnable;
    return masks;
}

HRESULT CStatusCommands::CheckKept(bool kept) const
{
    return kept ? S_OK : m_context.Fail(kScpiStorageFault, "Lost at power-off");
}

HRESULT CStatusCommands::NoteMasks(HRESULT result)
{
    return FAILED(result) ? result : CheckKept(m_context.instrument.NoteMasks(Masks()));
}

HRESULT CStatusCommands::SetEventEnable(const ParsedCommand& command)
{
    const RegisterMask mask =
        ReadRegisterMask(command, CScpiExpression::s_StandardEventTrafo, kHighestStandardMask);
    return mask.error != 0
               ? m_context.Fail(mask.error, mask.detail)
               : NoteMasks(m_context.status.StandardEvent().SetEnable(static_cast<wchar_t>(mask.value)));
}

HRESULT CStatusCommands::QueryEventEnable(const ParsedCommand&)
{
    return AnswerWord(m_context.status.StandardEvent(), &IZOScpiStatusRegister::GetEnable);
}

HRESULT CStatusCommands::QueryEvents(const ParsedCommand&)
{
    return AnswerWord(m_context.status.StandardEvent(), &IZOScpiStatusRegister::GetEvents);
}

HRESULT CStatusCommands::SetServiceEnable(const ParsedCommand& command)
{
    const RegisterMask mask =
        ReadRegisterMask(command, CScpiExpression::s_StatusByteTrafo, kHighestStandardMask);
    // A request for service cannot be its own reason: bit 6 stays clear (IEEE 488.2 section 11.3.2).
    const auto enable = static_cast<wchar_t>(mask.value & ~static_cast<std::uint32_t>(kStatusService));
    return mask.error != 0 ? m_context.Fail(mask.error, mask.detail)
                           : NoteMasks(m_context.status.StatusByte().SetEnable(enable));
}

HRESULT CStatusCommands::QueryServiceEnable(const ParsedCommand&)
{
    return AnswerWord(m_context.status.StatusByte(), &IZOScpiStatusRegister::GetEnable);
}

wchar_t CStatusCommands::ReadStatusByte() noexcept
{
    return m_context.status.StatusByte().Read(!m_context.output.IsEmpty());
}

HRESULT CStatusCommands::QueryStatusByte(const ParsedCommand&)
{
    return m_context.AnswerInteger(static_cast<std::size_t>(ReadStatusByte()));
}

HRESULT CStatusCommands::SetPowerOnClear(const ParsedCommand& command)
{
    const tagZO_SCPI_PARAMETER& argument = command.arguments[0];
    const char* const end = argument.szText + argument.iTextLength;
    long flag = 0;
    const auto [place, result] = std::from_chars(argument.szText, end, flag);
    if (result != std::errc() || place != end || std::labs(flag) > kHighestPowerFlag)
    {
        return m_context.Fail(kScpiDataOutOfRange, std::string("parameter 1: ") + argument.szText);
    }
    return CheckKept(m_context.instrument.SetPowerOnClear(flag != 0, Masks()));
}

HRESULT CStatusCommands::QueryPowerOnClear(const ParsedCommand&)
{
    return m_context.Answer(m_context.instrument.IsPowerOnClear() ? "1" : "0");
}

HRESULT CStatusCommands::SetPollEnable(const ParsedCommand& command)
{
    const RegisterMask mask =
        ReadRegisterMask(command, CScpiExpression::s_ParallelPollTrafo, kHighestScpiMask);
    if (mask.error != 0)
    {
        return m_context.Fail(mask.error, mask.detail);
    }
    m_pollEnable = static_cast<wchar_t>(mask.value);
    return NoteMasks(S_OK);
}

HRESULT CStatusCommands::QueryPollEnable(const ParsedCommand&)
{
    return m_context.AnswerInteger(static_cast<std::size_t>(m_pollEnable));
}

HRESULT CStatusCommands::QueryIndividualStatus(const ParsedCommand&)
{
    return m_context.Answer((ReadStatusByte() & m_pollEnable) != 0 ? "1" : "0");
}

HRESULT CStatusCommands::Preset(const ParsedCommand&)
{
    m_context.instrument.Preset();
    return S_OK;
}

HRESULT CStatusCommands::ExecuteOnRegister(std::size_t form, const ParsedCommand& command)
{
    using TSet = HRESULT (IZOScpiStatusRegister::*)(wchar_t);
    struct Form
    {
        TSet set;
        TWordReader get;
    };
    static constexpr Form kForms[] = {
        {nullptr, &IZOScpiStatusRegister::GetEvents}, // REGISTER_EVENT_QUERY
        {nullptr, &IZOScpiStatusRegister::GetCondition},
        {&IZOScpiStatusRegister::SetEnable, nullptr}, // REGISTER_ENABLE
        {nullptr, &IZOScpiStatusRegister::GetEnable},
        {&IZOScpiStatusRegister::SetPosTrans, nullptr}, // REGISTER_POSITIVE
        {nullptr, &IZOScpiStatusRegister::GetPosTrans},
        {&IZOScpiStatusRegister::SetNegTrans, nullptr}, // REGISTER_NEGATIVE
        {nullptr, &IZOScpiStatusRegister::GetNegTrans},
    };
    static_assert(std::size(kForms) == REGISTER_FORM_COUNT);
    const auto index = static_cast<InstrumentRegister>(form / REGISTER_FORM_COUNT);
    CStatusRegisterObject& statusRegister = m_context.instrument.InstrumentRegister(index);
    const Form& operation = kForms[form % REGISTER_FORM_COUNT];
    if (operation.get != nullptr)
    {
        return AnswerWord(statusRegister, operation.get);
    }
    const RegisterMask mask = ReadRegisterMask(command, RegisterBitNames(index), kHighestScpiMask);
    return mask.error != 0
               ? m_context.Fail(mask.error, mask.detail)
               : (statusRegister.*operation.set)(static_cast<wchar_t>(mask.value) & statusRegister.Mask());
}

} // namespace ZoVelkor::RemoteKernel
