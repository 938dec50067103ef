#pragma once

#include "CSession.h"
#include "IByteSource.h"

#include <asio/ip/tcp.hpp>

#include <atomic>
#include <functional>
#include <string_view>
#include <thread>

namespace ZoVelkor::RemoteKernel
{

/// One client: its socket, its session and the thread that serves both.
///
/// Threads: Start and destruction belong to the owner; Abort from any thread.
class CTcpConnection final : private IByteSource
{
public:
    /// @throws std::system_error, std::bad_alloc
    CTcpConnection(asio::ip::tcp::socket socket, CRemoteKernel& kernel, const tagSessionLimits& limits);
    CTcpConnection(const CTcpConnection&) = delete;
    CTcpConnection& operator=(const CTcpConnection&) = delete;
    /// Aborts and joins.
    ~CTcpConnection();

    /// @param onEnd  called by the connection's thread as its last action
    void Start(std::function<void()> onEnd);

    /// Ends whatever the connection is doing; does not wait.
    void Abort() noexcept;

    bool IsOpen() const noexcept { return m_bOpen.load(std::memory_order_acquire); }

private:
    void Run();
    void Serve();
    /// @return false when the client is quiet
    bool WaitForInput() noexcept;
    bool Send(std::string_view response);
    tagReceived Receive(std::span<char> space, int timeoutMs, int cancelDescriptor) noexcept override;

    asio::ip::tcp::socket m_socket; // open until destruction, so that Abort may use its descriptor
    CSession m_session;
    std::atomic<bool> m_bOpen{true};
    std::thread m_thread;
};

} // namespace ZoVelkor::RemoteKernel
