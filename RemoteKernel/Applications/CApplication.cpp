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
void TraceCommand(const ParsedCommand& command,
                  const std::string& application,
                  long remotePath,
                  double milliseconds) noexcept
{
    try
    {
        std::string line = fmt::format("path {}, {}, {}{} (handler {})",
                                       remotePath,
                                       application,
                                       NarrowResponseText(command.headerText),
                                       command.query ? "?" : "",
                                       command.command);
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
      m_builtIn(true)
{
    m_parts.name = std::move(name);
}

CApplication::CApplication(ApplicationParts parts)
    : m_table(parts.tree.pTable, parts.tree.pTable + parts.tree.iSize / sizeof(_CMD_SET_RECORD)),
      m_builtIn(false),
      m_parts(std::move(parts)),
      m_callees{std::exchange(m_parts.sink, nullptr),
                std::exchange(m_parts.deviceHandler, nullptr),
                std::exchange(m_parts.engines, nullptr)}
{
    m_parts.tree = {};
    const HRESULT result = CallDeviceHandler(kAllPaths, [this](IZOScpiDeviceHandler& handler) {
        return handler.GetFirmwareLevel(&m_firmwareLevel);
    });
    if (result != S_OK)
    {
        m_firmwareLevel.Empty();
    }
}

IZOScpiExecutionSink* CApplication::SinkLocked(long remotePath)
{
    if (m_callees.engines == nullptr)
    {
        return m_callees.sink;
    }
    {
        const CMutexLocker lock(m_enginesMutex);
        if (const auto found = m_engines.find(remotePath); found != m_engines.end())
        {
            return found->second.sink;
        }
    }
    Engine engine = MakeEngineLocked();
    const CMutexLocker lock(m_enginesMutex);
    return m_engines.emplace(remotePath, std::move(engine)).first->second.sink;
}

CApplication::Engine CApplication::MakeEngineLocked() const
{
    Engine engine;
    engine.maker = m_callees.engines;
    const HRESULT result = engine.maker->CreateClone(&engine.object);
    if (SUCCEEDED(result) && engine.object != nullptr && FAILED(engine.object.QueryInterface(&engine.sink)))
    {
        engine.sink = m_callees.sink; // an engine that keeps state alone
    }
    return engine;
}

HRESULT CApplication::RunBetweenCommands(const std::function<HRESULT()>& work)
{
    const CMutexLocker lock(m_mutex);
    return m_callees.sink == nullptr ? E_ABORT : GuardedEntry(work);
}

void CApplication::ReleaseEngine(long remotePath) noexcept
{
    // No command of the path is running any more, so nobody uses the engine.
    std::map<long, Engine>::node_type engine; // released without lock
    const CMutexLocker lock(m_enginesMutex);
    engine = m_engines.extract(remotePath);
    if (!engine.empty())
    {
        GiveBack(engine.mapped());
    }
}

void CApplication::GiveBack(Engine& engine) noexcept
{
    if (engine.object != nullptr)
    {
        static_cast<void>(
            GuardedEntry([&]() -> HRESULT { return engine.maker->ReleaseClone(engine.object); }));
    }
}

HRESULT CApplication::RunLocked(const ParsedCommand& command,
                                IUnknown* context,
                                long remotePath,
                                IZOScpiOutputBuffer* output) noexcept
{
    try
    {
        IZOScpiExecutionSink* const sink = SinkLocked(remotePath);
        return sink == nullptr ? E_FAIL
                               : sink->Execute(context,
                                               remotePath,
                                               command.command,
                                               ToVariantBool(command.query),
                                               command.numericSuffixes,
                                               command.argumentCount,
                                               command.arguments,
                                               command.headerText,
                                               output);
    }
    catch (...)
    {
        // Whatever result the exception carries, it is an internal error and no cancelled execution.
        static_cast<void>(ResultOfCurrentException());
        return E_FAIL;
    }
}

HRESULT CApplication::RunTracedLocked(const ParsedCommand& command,
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

void CApplication::TellLocked(const ApplicationNews& news) const noexcept
{
    IZOScpiDeviceHandler* const deviceHandler = m_callees.deviceHandler;
    if (deviceHandler == nullptr)
    {
        return;
    }
    if (news.remote)
    {
        static_cast<void>(GuardedEntry([&]() { return deviceHandler->GotoRemote(); }));
    }
    if (news.messageBegin)
    {
        static_cast<void>(GuardedEntry([&]() { return deviceHandler->ProgramMessageBegin(); }));
    }
}

bool CApplication::Execute(const ParsedCommand& command,
                           const ApplicationNews& news,
                           IUnknown* context,
                           long remotePath,
                           IZOScpiOutputBuffer* output,
                           HRESULT& result)
{
    const CMutexLocker lock(m_mutex);
    if (m_callees.sink == nullptr)
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
    CComPtr<IUnknown> registered;
    Callees callees;
    std::map<long, Engine> engines;
    {
        const CMutexLocker lock(m_mutex);
        std::swap(registered, m_parts.registered);
        std::swap(callees, m_callees);
    }
    const CMutexLocker lock(m_enginesMutex);
    std::swap(engines, m_engines);
    for (auto& [path, engine] : engines)
    {
        GiveBack(engine);
    }
}

} // namespace ZoVelkor::RemoteKernel
