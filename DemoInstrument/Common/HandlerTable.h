#pragma once

#include "CBScpiExecutionSink.h"
#include "CCommandExecutionData.h"
#include "CScpiFunctionExecutionDataPoolParser.h"
#include "CScpiSinkFramework.h"

#include <cstddef>
#include <span>

namespace ZoVelkor::Demo
{

/// One row of an application's handler table: the handler of a command, in the style that suits it.
///
/// The record (CCommandExecutionData) is the simple style; the pool (CScpiFunctionExecutionDataPool) formats
/// responses through the format subsystem and lends blocks.
template <class TApplication>
struct HandlerRow
{
    using RecordHandler = HRESULT (TApplication::*)(CCommandExecutionData&);
    using PoolHandler = HRESULT (TApplication::*)(CScpiFunctionExecutionDataPool&);

    constexpr HandlerRow(unsigned long number, RecordHandler handler) : index(number), recordHandler(handler)
    {}
    constexpr HandlerRow(unsigned long number, PoolHandler handler) : index(number), poolHandler(handler) {}

    unsigned long index; ///< handler index of the command table
    RecordHandler recordHandler = nullptr;
    PoolHandler poolHandler = nullptr;
};

/// True when row i is that of handler index i and no index below count lacks a row.
template <class TApplication, std::size_t TSize>
constexpr bool IsHandlerTable(const HandlerRow<TApplication> (&rows)[TSize], std::size_t count)
{
    for (std::size_t i = 0; i < TSize; ++i)
    {
        if (rows[i].index != i)
        {
            return false;
        }
    }
    return TSize == count;
}

/// Execution sink of an application whose handlers stand in a table: TCommands::Handlers().
template <class TCommands>
class CHandlerSink : public CBScpiExecutionSink
{
public:
    /// @param commands  borrowed; outlives the registration of the sink
    explicit CHandlerSink(TCommands& commands) : m_commands(commands) {}

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
        const std::span<const HandlerRow<TCommands>> rows = TCommands::Handlers();
        if (command >= rows.size())
        {
            return E_UNEXPECTED;
        }
        const tagZO_SCPI_PARSER_DATA data = MakeScpiParserData(
            context, remotePath, command, isQuery, numericSuffixes, argumentCount, arguments, header, output);
        const HandlerRow<TCommands>& row = rows[command];
        return row.recordHandler != nullptr
                   ? Run<CCommandExecutionData>(data, row.recordHandler)
                   : Run<CScpiFunctionExecutionDataPoolParser>(data, row.poolHandler);
    }

protected:
    ~CHandlerSink() override = default;

private:
    template <class TData, class THandler>
    HRESULT Run(const tagZO_SCPI_PARSER_DATA& command, THandler handler)
    {
        TData data(command, this);
        return CScpiSinkFramework::RunCommand(data, [&](TData& d) { return (m_commands.*handler)(d); });
    }

    TCommands& m_commands;
};

} // namespace ZoVelkor::Demo
