#pragma once

#include "CBScpiExecutionSink.h"
#include "CScpiFunctionExecutionDataPoolParser.h"
#include "CScpiSinkFramework.h"
#include "CommandInvocation.h"
#include "DeclaredCommands.h"

#include <array>
#include <cstddef>
#include <span>
#include <utility>

namespace ZoVelkor::Commands
{

/// Execution sink of declared commands: calls their typed handlers on one instrument.
///
/// Threads: as IZOScpiExecutionSink says; handlers of one sink run one at a time.
template <const auto& kCommands>
class CCommandSink : public CBScpiExecutionSink
{
public:
    /// The class whose members are the handlers.
    using Instrument = typename std::remove_cvref_t<decltype(kCommands)>::Instrument;

    /// @param instrument  borrowed; outlives the registration of the sink
    explicit CCommandSink(Instrument& instrument) : m_instrument(instrument) {}

    /// The command table, in read-only memory.
    static constexpr std::span<const _CMD_SET_RECORD> Table() { return CommandTable<kCommands>::kRecords; }

    HRESULT Execute(IUnknown* context,
                    long remotePath,
                    unsigned long command,
                    short isQuery,
                    long* numericSuffixes,
                    unsigned long argumentCount,
                    tagZO_SCPI_PARAMETER* arguments,
                    wchar_t* header,
                    IZOScpiOutputBuffer* output) override
    {
        if (command >= kRows.size() || kRows[command] == nullptr)
        {
            return E_UNEXPECTED;
        }
        CScpiFunctionExecutionDataPoolParser pool(MakeScpiParserData(context,
                                                                     remotePath,
                                                                     command,
                                                                     isQuery,
                                                                     numericSuffixes,
                                                                     argumentCount,
                                                                     arguments,
                                                                     header,
                                                                     output),
                                                  this);
        CCommandCall call(pool, {arguments, argumentCount}, numericSuffixes);
        return CScpiSinkFramework::RunCommand(pool, [&](auto&) { return RunRow(kRows[command], call); });
    }

protected:
    ~CCommandSink() override = default;

private:
    using Row = HRESULT (*)(Instrument&, CCommandCall&);

    HRESULT RunRow(Row row, CCommandCall& call)
    {
        try
        {
            return row(m_instrument, call);
        }
        catch (const CCommandError& error)
        {
            return SetError(call, error);
        }
        catch (const CBlockAborted&)
        {
            return E_ABORT;
        }
    }

    template <std::size_t I>
    static HRESULT RunSettingOf(Instrument& instrument, CCommandCall& call)
    {
        return RunSetting(kCommands.template Get<I>(), instrument, call);
    }
    template <std::size_t I>
    static HRESULT RunQueryOf(Instrument& instrument, CCommandCall& call)
    {
        return RunQuery(kCommands.template Get<I>(), instrument, call);
    }

    template <std::size_t I>
    static constexpr void AddRows(auto& rows)
    {
        using Command = std::remove_cvref_t<decltype(kCommands.template Get<I>())>;
        const CommandData& data = kCommands.data[I];
        if constexpr (!std::same_as<typename Command::Query_t, NoHandler>)
        {
            rows[2 * I] = &RunQueryOf<I>;
        }
        if constexpr (!std::same_as<typename Command::Setting_t, NoHandler>)
        {
            rows[2 * I + (data.hasSetting || data.hasQuery ? 1 : 0)] = &RunSettingOf<I>;
        }
    }

    static constexpr auto MakeRows()
    {
        std::array<Row, 2 * std::remove_cvref_t<decltype(kCommands)>::kCount> rows{};
        [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            (AddRows<I>(rows), ...);
        }
        (std::make_index_sequence<rows.size() / 2>());
        return rows;
    }

    static constexpr auto kRows = MakeRows();

    Instrument& m_instrument;
};

} // namespace ZoVelkor::Commands
