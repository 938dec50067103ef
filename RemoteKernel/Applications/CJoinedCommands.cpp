#include "CJoinedCommands.h"

#include "CScpiParserTable.h"
#include "CScpiPropErrorStrategy.h"

#include <list>

namespace ZoVelkor::RemoteKernel
{

CJoinedCommands::CJoinedCommands(const ApplicationSet& set)
{
    std::list<CScpiParserTable::PlugInData> plugins;
    for (const auto& application : set.applications)
    {
        const std::vector<_CMD_SET_RECORD>& records = application->Table();
        if (records.empty())
        {
            continue;
        }
        // Merging only reads the records.
        plugins.push_back({const_cast<_CMD_SET_RECORD*>(records.data()),
                           static_cast<std::uint32_t>(records.size() * sizeof(_CMD_SET_RECORD)),
                           nullptr,
                           application->Name()});
    }
    // Each table was examined when it was registered; that a later command replaces an earlier one is normal.
    CScpiPropErrorStrategy errors;
    errors.SetMember(nullptr, ZO_SCPI_NODE_IGNORE, false, false, false);
    CScpiParserTable joined;
    std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>> sinks;
    joined.MergePlugins(errors, plugins, m_table, sinks, m_size);
    m_tree = {static_cast<std::uint32_t>(m_size), joined.GetParserTable()};
}

} // namespace ZoVelkor::RemoteKernel
