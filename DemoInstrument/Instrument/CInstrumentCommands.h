#pragma once

#include "CInstrumentClock.h"
#include "CSavedStates.h"
#include "Common/HandlerTable.h"

#include <span>
#include <string>

namespace ZoVelkor::Demo
{

/// Value of the registry's network key: the instrument's name in the network.
inline constexpr const wchar_t* kHostNameValue = L"HostName";

/// Up to 63 letters, digits and inner hyphens.
bool IsHostName(const std::string& name);

/// What the instrument has beside its measuring applications; *RST leaves it alone.
struct InstrumentParts
{
    const CInstrumentRegistry& registry;
    CInstrumentClock& clock;
    CSavedStates states;
    std::string hostName;

    void Reset() {}
};

/// The command table of the application "instrument" and the handlers of its commands: saved states, date and
/// time, name in the network.
///
/// Threads: the thread that executes the command.
class CInstrumentCommands
{
public:
    /// @param instrument  borrowed
    explicit CInstrumentCommands(InstrumentParts& instrument) : m_instrument(instrument) {}

    /// Static data.
    static std::span<const _CMD_SET_RECORD> Table();
    /// The handlers in the order of the table's handler indexes.
    static std::span<const HandlerRow<CInstrumentCommands>> Handlers();

private:
    using Record = CCommandExecutionData;

    HRESULT Save(Record& record);
    HRESULT Recall(Record& record);
    HRESULT Date(Record& record);
    HRESULT Time(Record& record);
    HRESULT HostName(Record& record);

    HRESULT RunOnState(Record& record, StateError (CSavedStates::*operation)(long number));
    HRESULT SetClock(Record& record, const tagTimeStruct& time, const tagDateStruct& date);
    static HRESULT CheckKept(Record& record, HRESULT result);

    InstrumentParts& m_instrument;
};

} // namespace ZoVelkor::Demo
