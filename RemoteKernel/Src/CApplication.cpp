#include "CApplication.h"

#include "CDeviceExecutionTime.h"
#include "CPerformanceDiagnose.h"
#include "ResponseText.h"

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
    : m_sName(std::move(name)),
      m_id(GUID_NULL),
      m_table(table, table + count),
      m_bBuiltIn(true)
{}

CApplication::CApplication(std::string name,
                           const _CMD_SET_RECORD* table,
                           std::size_t count,
                           const GUID& id,
                           IZOScpiExecutionSink* pSink,
                           IZOScpiDeviceHandler* pDeviceHandler)
    : m_sName(std::move(name)),
      m_id(id),
      m_table(table, table + count),
      m_bBuiltIn(false),
      m_spSink(pSink),
      m_spDeviceHandler(pDeviceHandler)
{}

HRESULT CApplication::RunLocked(const tagParsedCommand& command,
                                IUnknown* context,
                                long remotePath,
                                IZOScpiOutputBuffer* output) noexcept
{
    try
    {
        return m_spSink->Execute(context,
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
    TraceCommand(command, m_sName, remotePath, time.GetExecutionTime());
    return result;
}

bool CApplication::Execute(const tagParsedCommand& command,
                           IUnknown* context,
                           long remotePath,
                           IZOScpiOutputBuffer* output,
                           HRESULT& result)
{
    const std::lock_guard lock(m_mutex);
    if (m_spSink == nullptr)
    {
        return false;
    }
    result = CPerformanceDiagnose::IsDebugTraceModeActive()
                 ? RunTracedLocked(command, context, remotePath, output)
                 : RunLocked(command, context, remotePath, output);
    return true;
}

void CApplication::Close()
{
    CComPtr<IZOScpiExecutionSink> spSink;
    CComPtr<IZOScpiDeviceHandler> spDeviceHandler;
    const std::lock_guard lock(m_mutex);
    std::swap(spSink, m_spSink);
    std::swap(spDeviceHandler, m_spDeviceHandler);
}

} // namespace ZoVelkor::RemoteKernel
