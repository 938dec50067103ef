#pragma once

#include "CommandDeclaration.h"
#include "CommandTableMaker.h"

#include <array>
#include <cstddef>
#include <utility>

// Commands: an instrument declares its commands once, with typed handlers, and this room makes of it what the house knows.
// Data passes from a declaration (CommandDeclaration.h: pattern, parameters, handlers) in two directions, both at compile
// time: to the record table (CommandTableMaker.h), which registration, merging and listings read, and to the rows of the
// sink (CCommandSink.h), each of which reads its arguments (CommandArguments.h), calls its handler and writes the result
// (CommandResponses.h). Whoever writes an application or a built-in command may call it. It takes no locks: handlers run
// one at a time, as IZOScpiExecutionSink says.
namespace ZoVelkor::Commands
{

/// @cond machinery
/// One element of a flat tuple, which the compiler finds without walking the others.
template <std::size_t I, class T>
struct CommandSlot
{
    T command;
};

template <class TSequence, class... TCommands>
struct CommandSlots;

template <std::size_t... I, class... TCommands>
struct CommandSlots<std::index_sequence<I...>, TCommands...> : CommandSlot<I, TCommands>...
{};

/// @endcond

/// The commands of one kind of instrument, in the order of their declaration.
template <class TInstrument, class... TCommands>
struct DeclaredCommands
{
    using Instrument = TInstrument;                             ///< whose members are the handlers
    static constexpr std::size_t kCount = sizeof...(TCommands); ///< commands

    CommandSlots<std::index_sequence_for<TCommands...>, TCommands...> slots; ///< with their handlers
    std::array<CommandData, kCount> data;                                    ///< what the table is made of

    /// Command I.
    template <std::size_t I>
    constexpr const auto& Get() const
    {
        return Slot<I>(slots).command;
    }

private:
    template <std::size_t I, class T>
    static constexpr const CommandSlot<I, T>& Slot(const CommandSlot<I, T>& slot)
    {
        return slot;
    }
};

/// Puts the commands of an instrument together; the result is a constant with static storage.
/// @code
/// constexpr auto kCommands = DeclareCommands<CPowerSupply>(
///     Command("[SOURce<1-3>]:VOLTage").Variable(&CPowerSupply::m_volts, Number("V").Range(0, 30)),
///     Command("*TST?").Query(&CPowerSupply::SelfTest));
/// @endcode
template <class TInstrument, class... TCommands>
consteval DeclaredCommands<TInstrument, TCommands...> DeclareCommands(const TCommands&... commands)
{
    return {{{commands}...}, {commands.data...}};
}

/// The command table that some declared commands make.
///
/// @tparam kCommands  of DeclareCommands
template <const auto& kCommands>
class CommandTable
{
    static constexpr TableCapacity kCapacity = CapacityOf(kCommands.data);
    static constexpr auto kList =
        CommandTableMaker<kCapacity.nodes, kCapacity.records>(kCommands.data).Make();

    template <std::size_t... I>
    static constexpr std::array<_CMD_SET_RECORD, sizeof...(I)> Trim(std::index_sequence<I...>)
    {
        return {kList.records[I]...};
    }

public:
    /// The records, an array as long as the table.
    static constexpr auto kRecords = Trim(std::make_index_sequence<kList.count>());
};

} // namespace ZoVelkor::Commands
