#pragma once

#include "CComPtr.h"
#include "GuardedEntry.h"
#include "Guid.h"
#include "IZOScpiDeviceHandler.h"
#include "IZOScpiExecutionSink.h"
#include "ParsedCommand.h"
#include "ScpiCommandTable.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// An application whose commands the kernel runs.
///
/// It has its own copy of the command table, so sessions that still hold an old command index never read
/// memory that the application has freed. Sink and device handler are called one at a time, under the
/// application's lock. Threads: any operation from any thread, but not from inside a handler.
class CApplication
{
public:
    /// The kernel's own commands, which only touch their session and run without lock.
    CApplication(std::string name, const _CMD_SET_RECORD* table, std::size_t count);

    /// @param pDeviceHandler  may be null
    CApplication(std::string name,
                 const _CMD_SET_RECORD* table,
                 std::size_t count,
                 const GUID& id,
                 IZOScpiExecutionSink* pSink,
                 IZOScpiDeviceHandler* pDeviceHandler);

    const std::string& Name() const noexcept { return m_sName; }
    const GUID& ObjectId() const noexcept { return m_id; }
    const std::vector<_CMD_SET_RECORD>& Table() const noexcept { return m_table; }
    bool IsBuiltIn() const noexcept { return m_bBuiltIn; }

    /// Runs one command; no exception of the handler gets out, it gives E_FAIL.
    ///
    /// @param[out] result  what the sink returned
    /// @return false, and nothing was run, when the application has left
    bool Execute(const tagParsedCommand& command,
                 IUnknown* context,
                 long remotePath,
                 IZOScpiOutputBuffer* output,
                 HRESULT& result);

    /// Calls the device handler with a function of the form HRESULT(IZOScpiDeviceHandler&).
    ///
    /// @return its result; S_FALSE when there is no device handler or the application has left
    template <class TCall>
    HRESULT CallDeviceHandler(TCall&& call)
    {
        const std::lock_guard lock(m_mutex);
        if (m_spDeviceHandler == nullptr)
        {
            return S_FALSE;
        }
        return GuardedEntry([&]() -> HRESULT { return call(*m_spDeviceHandler); });
    }

    /// Lets go of sink and device handler; when it returns, none of them is running or will be called.
    void Close();

private:
    HRESULT RunLocked(const tagParsedCommand& command,
                      IUnknown* context,
                      long remotePath,
                      IZOScpiOutputBuffer* output) noexcept;
    HRESULT RunTracedLocked(const tagParsedCommand& command,
                            IUnknown* context,
                            long remotePath,
                            IZOScpiOutputBuffer* output) noexcept;

    const std::string m_sName;
    const GUID m_id;
    const std::vector<_CMD_SET_RECORD> m_table;
    const bool m_bBuiltIn;
    std::mutex m_mutex;
    CComPtr<IZOScpiExecutionSink> m_spSink;          // guarded by m_mutex
    CComPtr<IZOScpiDeviceHandler> m_spDeviceHandler; // guarded by m_mutex
};

} // namespace ZoVelkor::RemoteKernel
