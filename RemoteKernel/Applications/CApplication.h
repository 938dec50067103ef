#pragma once

#include "AllPaths.h"
#include "CComBSTR.h"
#include "CComPtr.h"
#include "CMutexLocker.h"
#include "GuardedEntry.h"
#include "Guid.h"
#include "IRegisteredApplication.h"
#include "IZOScpiDeviceHandler.h"
#include "IZOScpiExecutionSink.h"
#include "IZOScpiMultichannelParser.h"
#include "Parsing/ParsedCommand.h"
#include "ScpiParserTree.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// How an application has come in; one object may come in several ways.
enum class ApplicationKind
{
    Object,
    Parser,
    PlugIn,
    DeviceHandler
};

/// What an application brings along when it is registered.
struct ApplicationParts
{
    std::string name;              ///< for messages and listings, as UTF-8
    tagZO_SCPI_PARSER_TREE tree{}; ///< lent until the application is made; without size for one without
                                   ///< commands, which hears device events alone
    GUID id = GUID_NULL;           ///< under which it is unregistered
    ApplicationKind kind = ApplicationKind::Object;
    CComPtr<IUnknown> registered; ///< the object that was registered, its identity
    CComPtr<IZOScpiExecutionSink> sink;
    CComPtr<IZOScpiDeviceHandler> deviceHandler;
    CComPtr<IZOScpiMultichannelParser> engines; ///< gives each path an engine that runs its commands
    long remotePath = kAllPaths;                ///< whose device events it hears
    bool activated = false;                     ///< runs a header that others define as well
};

/// What an application has not heard yet when one of its commands comes.
struct ApplicationNews
{
    bool remote = false;       ///< the path has become remote
    bool messageBegin = false; ///< it is the first of its commands in the program message
};

/// An application whose commands the kernel runs.
///
/// It has its own copy of the command table, so sessions that still hold an old command index never read
/// memory that the application has freed. Sink and device handler are called one at a time, under the
/// application's lock. Threads: any operation from any thread, but not from inside a handler.
class CApplication final : public IRegisteredApplication
{
public:
    /// The kernel's own commands, which only touch their session and run without lock.
    CApplication(std::string name, const _CMD_SET_RECORD* table, std::size_t count);

    /// Asks the device handler, if it hears of all paths, for its firmware level.
    explicit CApplication(ApplicationParts parts);

    const std::string& Name() const noexcept { return m_parts.name; }
    const ApplicationParts& Parts() const noexcept { return m_parts; }
    const std::vector<_CMD_SET_RECORD>& Table() const noexcept { return m_table; }
    /// Empty: that of the instrument holds.
    const CComBSTR& FirmwareLevel() const noexcept { return m_firmwareLevel; }
    bool IsBuiltIn() const noexcept { return m_builtIn; }

    /// Runs one command; no exception of the handler gets out, it gives E_FAIL.
    ///
    /// @param news  of which the device handler is told before
    /// @param[out] result  what the sink returned
    /// @return false, and nothing was run, when the application has left
    bool Execute(const ParsedCommand& command,
                 const ApplicationNews& news,
                 IUnknown* context,
                 long remotePath,
                 IZOScpiOutputBuffer* output,
                 HRESULT& result);

    /// Calls the device handler with a function of the form HRESULT(IZOScpiDeviceHandler&).
    ///
    /// @param remotePath  where the event comes from; kAllPaths: from the instrument itself
    /// @return its result; S_FALSE when there is no device handler for this path or the application has left
    template <class TCall>
    HRESULT CallDeviceHandler(long remotePath, TCall&& call)
    {
        const CMutexLocker lock(m_mutex);
        if (m_callees.deviceHandler == nullptr || !Hears(remotePath))
        {
            return S_FALSE;
        }
        IZOScpiDeviceHandler& deviceHandler = *m_callees.deviceHandler;
        return GuardedEntry([&]() -> HRESULT { return call(deviceHandler); });
    }

    HRESULT RunBetweenCommands(const std::function<HRESULT()>& work) override;

    /// Gives the engine of a remote path back that has ended. Does not wait for a command of another path.
    void ReleaseEngine(long remotePath) noexcept;

    /// Lets go of sink and device handler; when it returns, none of them is running or will be called.
    void Close();

private:
    /// Whom the application's lock lets be called by one at a time; null after Close.
    struct Callees
    {
        CComPtr<IZOScpiExecutionSink> sink;
        CComPtr<IZOScpiDeviceHandler> deviceHandler;
        CComPtr<IZOScpiMultichannelParser> engines;
    };

    void TellLocked(const ApplicationNews& news) const noexcept ZO_REQUIRES(m_mutex);

    struct Engine
    {
        CComPtr<IZOScpiMultichannelParser> maker;
        CComPtr<IUnknown> object;
        CComPtr<IZOScpiExecutionSink> sink; // null: it could not be made
    };

    bool Hears(long remotePath) const noexcept
    {
        return m_parts.remotePath == kAllPaths || m_parts.remotePath == remotePath;
    }
    /// @return borrowed, while the lock is held; null when the path's engine cannot be made
    IZOScpiExecutionSink* SinkLocked(long remotePath) ZO_REQUIRES(m_mutex);
    Engine MakeEngineLocked() const ZO_REQUIRES(m_mutex);
    static void GiveBack(Engine& engine) noexcept;
    HRESULT RunLocked(const ParsedCommand& command,
                      IUnknown* context,
                      long remotePath,
                      IZOScpiOutputBuffer* output) noexcept ZO_REQUIRES(m_mutex);
    HRESULT RunTracedLocked(const ParsedCommand& command,
                            IUnknown* context,
                            long remotePath,
                            IZOScpiOutputBuffer* output) noexcept ZO_REQUIRES(m_mutex);

    const std::vector<_CMD_SET_RECORD> m_table;
    const bool m_builtIn;
    CComBSTR m_firmwareLevel; // constant after construction
    ApplicationParts m_parts; // constant after construction, without the callees; Close takes registered out
    CMutex m_mutex ZO_ACQUIRED_BEFORE(m_enginesMutex);
    Callees m_callees ZO_GUARDED_BY(m_mutex);
    CMutex m_enginesMutex; // held while engines are given back
    std::map<long, Engine> m_engines ZO_GUARDED_BY(m_enginesMutex);
};

} // namespace ZoVelkor::RemoteKernel
