// The analyser's commands around the measurement: DISPlay, ROUTe, MMEMory, DIAGnostic.

#include "CAnalyzerCommands.h"
#include "Common/BlockReading.h"
#include "Common/SettingHandlers.h"
#include "ScpiErrorCodes.h"

namespace ZoVelkor::Demo
{
namespace
{

/// Type of every file, as the catalogue names it.
constexpr std::string_view kFileType = "BIN";

} // namespace

HRESULT CAnalyzerCommands::DisplayText(Record& record)
{
    return HandleString(record, m_analyzer.DisplayText(), kParameterTextSize);
}

HRESULT CAnalyzerCommands::RouteClose(Record& record)
{
    return m_analyzer.Switches().HandleClose(record);
}

HRESULT CAnalyzerCommands::ServiceCount(Record& record)
{
    return record.IntegerResponse(m_analyzer.Sweeps().SweepCount());
}

HRESULT CAnalyzerCommands::FileData(Pool& pool)
{
    std::string name;
    if (pool.CheckArgumentCount(pool.IsQuery() ? 0 : 1, true) != S_OK ||
        pool.GetStringArgument(name, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (!pool.IsQuery())
    {
        return StoreFile(pool, name);
    }
    const CMassMemory::Content* const content = m_analyzer.Files().Find(name);
    if (content == nullptr)
    {
        return pool.SetScpiError(kScpiFileNameNotFound);
    }
    return pool.BlockResponse(reinterpret_cast<const char*>(content->data()),
                              static_cast<long>(content->size()));
}

HRESULT CAnalyzerCommands::StoreFile(Pool& pool, const std::string& name)
{
    long bytes = 0;
    CComPtr<IZOScpiBlockData> block;
    if (const HRESULT result = pool.GetBlockArgument(&block, bytes, 1); result != S_OK)
    {
        return result;
    }
    if (!block)
    {
        return pool.SetScpiBlockDataError("");
    }
    // A file without room is refused before its content is copied.
    const std::size_t announcedBytes = bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
    if (const short error = m_analyzer.Files().CheckRoom(name, announcedBytes); error != kScpiNoError)
    {
        return pool.SetScpiError(error);
    }
    CMassMemory::Content content;
    const std::size_t room = m_analyzer.Files().RoomFor(name);
    const HRESULT result = ReadBlock(content, bytes, room, [&](auto count, unsigned char* data, auto* got) {
        return block->Read(count, data, got);
    });
    if (result != S_OK)
    {
        return FAILED(result) ? result : pool.SetScpiError(kScpiMediaFull);
    }
    return pool.SetScpiError(m_analyzer.Files().Store(name, std::move(content)));
}

HRESULT CAnalyzerCommands::FileCatalog(Pool& pool)
{
    const CMassMemory& files = m_analyzer.Files();
    if (pool.NumericResponse(static_cast<long>(files.UsedBytes())) != S_OK ||
        pool.NumericResponse(static_cast<long>(files.FreeBytes())) != S_OK)
    {
        return S_FALSE;
    }
    for (const auto& [name, content] : files.AllFiles())
    {
        const std::string entry = name + ',' + std::string(kFileType) + ',' + std::to_string(content.size());
        if (pool.StringResponse(entry) != S_OK)
        {
            return S_FALSE;
        }
    }
    return S_OK;
}

HRESULT CAnalyzerCommands::FileDelete(Record& record)
{
    std::string name;
    if (record.CheckArgumentCount(0, true) != S_OK || record.GetStringArgument(name, 0) != S_OK)
    {
        return S_FALSE;
    }
    return record.SetScpiError(m_analyzer.Files().Delete(name));
}

} // namespace ZoVelkor::Demo
