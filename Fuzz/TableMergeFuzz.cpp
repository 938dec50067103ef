// Damages a sound command table, merges it with a sound one, then analyses and lists the joined table.
#include "CScpiParserTable.h"
#include "CScpiParserTableGroups.h"
#include "CScpiPropErrorStrategy.h"
#include "ParserTestTable.h"
#include "ScpiTableCheck.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{

using namespace ZoVelkor;
using Records = std::vector<_CMD_SET_RECORD>;

std::uint32_t SizeOf(const Records& table)
{
    return static_cast<std::uint32_t>(table.size() * sizeof(_CMD_SET_RECORD));
}

/// Overwrites words: record, word and value, three bytes each time.
void Damage(Records& table, const std::uint8_t* data, std::size_t size)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(table.data());
    for (std::size_t i = 0; i + 3 <= size; i += 3)
    {
        const std::size_t place = (data[i] * 256U + data[i + 1]) % SizeOf(table);
        bytes[place] = data[i + 2];
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Records sound = RemoteKernel::Testing::MakeParserTestTable();
    Records damaged = sound;
    Damage(damaged, data, size);
    std::list<CScpiParserTable::PlugInData> plugins = {
        {damaged.data(), SizeOf(damaged), {}, "damaged"},
        {sound.data(), SizeOf(sound), {}, "sound"},
    };
    CScpiPropErrorStrategy errors;
    errors.SetMember(nullptr, ZO_SCPI_NODE_CAPTURE, false, false, false);
    std::valarray<_CMD_SET_RECORD> joined;
    std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>> sinks;
    unsigned long bytes = 0;
    CScpiParserTable table;
    table.MergePlugins(errors, plugins, joined, sinks, bytes);
    // The sound plug-in is always there, and what comes out is sound.
    if (joined.size() < 2 || sinks.size() != joined.size() || CheckScpiTable(&joined[0], joined.size()))
    {
        std::abort();
    }
    CScpiParserTableGroups groups;
    std::list<std::string> lines;
    table.AnalyseGroups(groups);
    table.GetAllCommands(false, true, lines);
    CScpiParserTable single;
    single.SetParserTable(damaged.data(), static_cast<long>(damaged.size()));
    single.AnalyseGroups(groups);
    single.GetAllCommands(false, true, lines);
    return 0;
}
