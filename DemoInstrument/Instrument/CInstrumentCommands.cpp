#include "CInstrumentCommands.h"

#include "CharacterClasses.h"
#include "InstrumentTable.h"
#include "ScpiErrorCodes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

namespace ZoVelkor::Demo
{
namespace
{

/// A label of a host name (RFC 1123 section 2.1), in ASCII.
constexpr std::size_t kMaxHostName = 63;

using Fields = std::array<std::uint16_t, 3>;

/// Reads three numbers; -222 for one that no field of a date or time has room for.
HRESULT ReadFields(CCommandExecutionData& record, Fields& fields)
{
    if (record.CheckArgumentCount(fields.size() - 1, true) != S_OK)
    {
        return S_FALSE;
    }
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        long value = 0;
        if (record.GetIntegerArgument(value, static_cast<long>(i)) != S_OK)
        {
            return S_FALSE;
        }
        if (value < 0 || value > std::numeric_limits<std::uint16_t>::max())
        {
            return record.SetScpiErrorEx(kScpiDataOutOfRange, fmt::format("Value out of range ({})", value));
        }
        fields[i] = static_cast<std::uint16_t>(value);
    }
    return S_OK;
}

HRESULT AnswerFields(CCommandExecutionData& record, const Fields& fields)
{
    const bool answered =
        record.CheckArgumentNotAllowed() == S_OK &&
        std::ranges::all_of(fields, [&record](long field) { return record.IntegerResponse(field) == S_OK; });
    return answered ? S_OK : S_FALSE;
}

} // namespace

bool IsHostName(const std::string& name)
{
    return !name.empty() && name.size() <= kMaxHostName && name.front() != '-' && name.back() != '-' &&
           std::ranges::all_of(name, [](char c) { return c == '-' || IsLetter(c) || IsDigit(c); });
}

std::span<const HandlerRow<CInstrumentCommands>> CInstrumentCommands::Handlers()
{
    using Self = CInstrumentCommands;
    static constexpr HandlerRow<Self> kRows[] = {
        {SAVE_STATE, &Self::Save},
        {RECALL_STATE, &Self::Recall},
        {SYSTEM_DATE, &Self::Date},
        {SYSTEM_TIME, &Self::Time},
        {LAN_HOST_NAME, &Self::HostName},
    };
    static_assert(IsHandlerTable(kRows, INSTRUMENT_HANDLER_COUNT));
    return kRows;
}

HRESULT CInstrumentCommands::Save(Record& record)
{
    return RunOnState(record, &CSavedStates::Save);
}

HRESULT CInstrumentCommands::Recall(Record& record)
{
    return RunOnState(record, &CSavedStates::Recall);
}

HRESULT CInstrumentCommands::RunOnState(Record& record, StateError (CSavedStates::*operation)(long number))
{
    long number = 0;
    if (record.CheckArgumentCount(0, true) != S_OK || record.GetIntegerArgument(number, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (number < 0 || number >= kSavedStateCount)
    {
        return record.SetScpiError(kScpiDataOutOfRange);
    }
    const StateError error = (m_instrument.states.*operation)(number);
    return error.code == kScpiNoError ? S_OK : record.SetScpiErrorEx(error.code, error.detail);
}

HRESULT CInstrumentCommands::Date(Record& record)
{
    tagTimeStruct time{};
    tagDateStruct date{};
    m_instrument.clock.Get(time, date);
    Fields fields{date.iYear, date.iMonth, date.iDay};
    if (record.IsQuery())
    {
        return AnswerFields(record, fields);
    }
    return ReadFields(record, fields) == S_OK ? SetClock(record, time, {fields[0], fields[1], fields[2]})
                                              : S_FALSE;
}

HRESULT CInstrumentCommands::Time(Record& record)
{
    tagTimeStruct time{};
    tagDateStruct date{};
    m_instrument.clock.Get(time, date);
    Fields fields{time.iHour, time.iMin, time.iSec};
    if (record.IsQuery())
    {
        return AnswerFields(record, fields);
    }
    return ReadFields(record, fields) == S_OK ? SetClock(record, {fields[0], fields[1], fields[2], 0}, date)
                                              : S_FALSE;
}

HRESULT CInstrumentCommands::SetClock(Record& record, const tagTimeStruct& time, const tagDateStruct& date)
{
    const std::string fault = m_instrument.clock.Set(time, date);
    return fault.empty() ? CheckKept(record, CInstrumentClock::Keep(m_instrument.registry))
                         : record.SetScpiErrorEx(kScpiDataOutOfRange, fault);
}

HRESULT CInstrumentCommands::HostName(Record& record)
{
    if (record.IsQuery())
    {
        return record.CheckArgumentNotAllowed() == S_OK ? record.StringResponse(m_instrument.hostName)
                                                        : S_FALSE;
    }
    std::string name;
    if (record.CheckArgumentCount(0, true) != S_OK || record.GetStringArgument(name, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (!IsHostName(name))
    {
        return record.SetScpiErrorEx(kScpiIllegalParameterValue, "1 to 63 letters, digits and inner hyphens");
    }
    m_instrument.hostName = name;
    return CheckKept(record, m_instrument.registry.Write(kNetworkKey, kHostNameValue, name));
}

HRESULT CInstrumentCommands::CheckKept(Record& record, HRESULT result)
{
    return SUCCEEDED(result) ? S_OK : record.SetScpiErrorEx(kScpiStorageFault, "Lost at power-off");
}

} // namespace ZoVelkor::Demo
