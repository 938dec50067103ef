#include "CApplication.h"

#include "CDeviceExecutionTime.h"
#include "CPerformanceDiagnose.h"
#include "Responses/ResponseText.h"

#include <fmt/format.h>

#include <exception>
#include <utility>

namespace ZoVelkor::RemoteKernel
{
namespace
{

/// Prints "path 0, application, HEADER? (handler 3)", with the milliseconds of the execution while timing is
/// active.
void TraceCommand(const tagParsedCommand& command,
                  const std::string& application,
                  long remotePath,
                  double milliseconds) noexcept
{
    try
    {
        std::string line = fmt::format("path {}, {}, {}{} (handler {})",
                                       remotePath,
                                       application,
                                       NarrowResponseText(command.bsHeader),
                                       command.bQuery ? "?" : "",
                                       command.iCommand);
        if (CPerformanceDiagnose::IsDebugTimingActive())
        {
            line += fmt::format(", {:.3f} ms", milliseconds);
        }
        CPerformanceDiagnose::DebugMessageTrace(line.c_str());
    }
    catch (const std::exception&) // no memory: the line is dropped, the command has been executed
    {
        return;
    }
}

} // namespace

CApplication::CApplication(std::string name, const _CMD_SET_RECORD* table, std::size_t count)
    : m_table(table, table + count),
      m_bBuiltIn(true)
{
    m_parts.sName = std::move(name);
}

CApplication::CApplication(tagApplicationParts parts)
    : m_table(parts.tree.pTable, parts.tree.pTable + parts.tree.iSize / sizeof(_CMD_SET_RECORD)),
      m_bBuiltIn(false),
      m_parts(std::move(parts))
{
    m_parts.tree = {};
    const HRESULT result =
        CallDeviceHandler(tagApplicationParts::kAllPaths, [this](IZOScpiDeviceHandler& handler) {
            return handler.GetFirmwareLevel(&m_bsFirmwareLevel);
        });
    if (result != S_OK)
    {
        m_bsFirmwareLevel.Empty();
    }
}

IZOScpiExecutionSink* CApplication::SinkLocked(long remotePath)
{
    if (m_parts.spEngines == nullptr)
    {
        return m_parts.spSink;
    }
    {
        const std::lock_guard lock(m_enginesMutex);
        if (const auto found = m_engines.find(remotePath); found != m_engines.end())
        {
            return found->second.spSink;
        }
    }
    tagEngine engine = MakeEngineLocked();
    const std::lock_guard lock(m_enginesMutex);
    return m_engines.emplace(remotePath, std::move(engine)).first->second.spSink;
}

CApplication::tagEngine CApplication::MakeEngineLocked()
{
    tagEngine engine;
    engine.spMaker = m_parts.spEngines;
    const HRESULT result = engine.spMaker->CreateClone(&engine.spObject);
    if (SUCCEEDED(result) && engine.spObject != nullptr &&
        FAILED(engine.spObject.QueryInterface(&engine.spSink)))
    {
        engine.spSink = m_parts.spSink; // an engine that keeps state alone
    }
    return engine;
}

void CApplication::ReleaseEngine(long remotePath) noexcept
{
    // No command of the path is running any more, so nobody uses the engine.
    std::map<long, tagEngine>::node_type engine; // released without lock
    const std::lock_guard lock(m_enginesMutex);
    engine = m_engines.extract(remotePath);
    if (!engine.empty())
    {
        GiveBack(engine.mapped());
    }
}

void CApplication::GiveBack(tagEngine& engine) noexcept
{
    if (engine.spObject != nullptr)
    {
        static_cast<void>(
            GuardedEntry([&]() -> HRESULT { return engine.spMaker->ReleaseClone(engine.spObject); }));
    }
}

HRESULT CApplication::RunLocked(const tagParsedCommand& command,
                                IUnknown* context,
                                long remotePath,
                                IZOScpiOutputBuffer* output) noexcept
{
    try
    {
        IZOScpiExecutionSink* const pSink = SinkLocked(remotePath);
        return pSink == nullptr ? E_FAIL
                                : pSink->Execute(context,
                                                 remotePath,
                                                 command.iCommand,
                                                 command.bQuery ? VARIANT_TRUE : VARIANT_FALSE,
                                                 command.pNumericSuffixes,
                                                 command.iArgumentCount,
                                                 command.pArguments,
                                                 command.bsHeader,
                                                 output);
    }
    catch (...)
    {
        // Whatever result the exception carries, it is an internal error and no cancelled execution.
        static_cast<void>(ResultOfCurrentException());
        return E_FAIL;
    }
}

HRESULT CApplication::RunTracedLocked(const tagParsedCommand& command,
                                      IUnknown* context,
                                      long remotePath,
                                      IZOScpiOutputBuffer* output) noexcept
{
    CDeviceExecutionTime time;
    time.StartPerformanceCounter();
    const HRESULT result = RunLocked(command, context, remotePath, output);
    TraceCommand(command, Name(), remotePath, time.GetExecutionTime());
    return result;
}

void CApplication::TellLocked(const tagApplicationNews& news) noexcept
{
    if (m_parts.spDeviceHandler == nullptr)
    {
        return;
    }
    if (news.bRemote)
    {
        static_cast<void>(GuardedEntry([&]() { return m_parts.spDeviceHandler->GotoRemote(); }));
    }
    if (news.bMessageBegin)
    {
        static_cast<void>(GuardedEntry([&]() { return m_parts.spDeviceHandler->ProgramMessageBegin(); }));
    }
}

bool CApplication::Execute(const tagParsedCommand& command,
                           const tagApplicationNews& news,
                           IUnknown* context,
                           long remotePath,
                           IZOScpiOutputBuffer* output,
                           HRESULT& result)
{
    const std::lock_guard lock(m_mutex);
    if (m_parts.spSink == nullptr)
    {
        return false;
    }
    TellLocked(news);
    result = CPerformanceDiagnose::IsDebugTraceModeActive()
                 ? RunTracedLocked(command, context, remotePath, output)
                 : RunLocked(command, context, remotePath, output);
    return true;
}

void CApplication::Close()
{
    CComPtr<IUnknown> spRegistered;
    CComPtr<IZOScpiExecutionSink> spSink;
    CComPtr<IZOScpiDeviceHandler> spDeviceHandler;
    CComPtr<IZOScpiMultichannelParser> spEngines;
    std::map<long, tagEngine> engines;
    {
        const std::lock_guard lock(m_mutex);
        std::swap(spRegistered, m_parts.spRegistered);
        std::swap(spSink, m_parts.spSink);
        std::swap(spDeviceHandler, m_parts.spDeviceHandler);
        std::swap(spEngines, m_parts.spEngines);
    }
    const std::lock_guard lock(m_enginesMutex);
    std::swap(engines, m_engines);
    for (auto& [path, engine] : engines)
    {
        GiveBack(engine);
    }
}

} // namespace ZoVelkor::RemoteKernel
