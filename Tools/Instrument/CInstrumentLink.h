// Instrument: the way from a subcommand to an instrument.
//
// InstrumentAddress reads host and port; CTcpController is the controller over TCP, whose thread does the
// transfers; CMessageScanner tells where an answer ends; CInstrumentLink joins them for one thread and turns
// failures and Ctrl-C into CToolError. Bytes go in and out as they are.
// Locks: one in CTcpController.

#pragma once

#include "CComObject.h"
#include "CTransferController.h"
#include "Common/CInterruptWatcher.h"
#include "InstrumentAddress.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace ZoVelkor::Tools
{

/// A part of a response.
struct ResponsePart
{
    std::string bytes;
    bool isEnd = false; ///< the response ends with it
};

/// The connection of a subcommand to an instrument: a controller whose failures are CToolError.
///
/// Codes: NoAccess when the connection fails or the time-out passes, Interrupted after Ctrl-C. After either
/// the instrument may still answer to what was before; Connect begins anew. Threads: one at a time.
class CInstrumentLink
{
public:
    /// Does not connect.
    ///
    /// @param timeout  limit of each wait
    /// @param watcher  turns Ctrl-C into an abort; may be null
    CInstrumentLink(const InstrumentAddress& address,
                    std::chrono::milliseconds timeout,
                    CInterruptWatcher* watcher = nullptr);

    const std::string& Address() const noexcept { return m_address; }

    /// Opens the connection, instead of a former one; an earlier Ctrl-C is forgotten.
    void Connect();

    /// Sends bytes as they are, and an LF behind them when they end a message.
    void Send(std::string_view bytes, bool isEnd);

    /// Reads so many bytes of a response, fewer at its end.
    ResponsePart Read(std::size_t count);

    /// Reads a response, or what is left of one, in one piece.
    ///
    /// @throws CToolError (Failed) when it is longer than 64 KiB
    std::string ReadLine();

    /// Sends the content of a file and ends the message.
    ///
    /// @param size  its length
    /// @throws CToolError (NoAccess), also when the file has another length by now
    void SendFile(const std::string& name, std::size_t size);

    /// Reads so many bytes of a response into a file, which is made or overwritten.
    void FetchFile(const std::string& name, std::size_t size);

private:
    template <class TCall>
    HRESULT Call(TCall call);
    template <class TTransfer>
    void Transfer(const char* what, const std::string& name, std::size_t size, TTransfer transfer);
    [[noreturn]] void Fail(HRESULT result, const std::string& pending) const;
    [[noreturn]] void FailSend(HRESULT result) const;
    [[noreturn]] void FailRead(HRESULT result) const;

    const std::string m_address;
    const std::chrono::milliseconds m_timeout;
    CInterruptWatcher* const m_watcher;
    const CComPtr<CComObject<CTransferController, IZOScpiController>> m_controller;
};

} // namespace ZoVelkor::Tools
