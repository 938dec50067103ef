#include "Analyzer/AnalyzerTable.h"
#include "CScpiParserTable.h"
#include "CScpiPropErrorStrategy.h"
#include "Generator/CGeneratorCommands.h"
#include "RoundTripTable.h"

#include <list>
#include <valarray>

namespace ZoVelkor
{

namespace
{

CScpiParserTable::PlugInData PlugInOf(std::span<const _CMD_SET_RECORD> table, const char* name)
{
    // Merging only reads the records.
    return {const_cast<_CMD_SET_RECORD*>(table.data()),
            static_cast<std::uint32_t>(table.size_bytes()),
            nullptr,
            name};
}

std::valarray<_CMD_SET_RECORD> MergeDemoTables()
{
    std::list<CScpiParserTable::PlugInData> plugins{PlugInOf(Demo::AnalyzerTable(), "analyser"),
                                                    PlugInOf(Demo::CGeneratorCommands::Table(), "generator")};
    CScpiPropErrorStrategy errors;
    std::valarray<_CMD_SET_RECORD> records;
    std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>> sinks;
    unsigned long size = 0;
    CScpiParserTable().MergePlugins(errors, plugins, records, sinks, size);
    return records;
}

} // namespace

std::span<const _CMD_SET_RECORD> RoundTripTable()
{
    static const std::valarray<_CMD_SET_RECORD> records = MergeDemoTables();
    return {std::begin(records), records.size()};
}

} // namespace ZoVelkor
