#include "CTcpConnection.h"

#include "GuardedEntry.h"
#include "ThreadBasics.h"

#include <asio/write.hpp>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

// A peer that has vanished is noticed after idle + count * interval.
constexpr int kProbeAfterSeconds = 30;
constexpr int kProbeIntervalSeconds = 10;
constexpr int kProbeCount = 3;

void SetTcpOption(int socket, int option, int value) noexcept
{
    // A system without the option still serves the client.
    static_cast<void>(setsockopt(socket, IPPROTO_TCP, option, &value, sizeof value));
}

asio::ip::tcp::socket Prepare(asio::ip::tcp::socket socket)
{
    asio::error_code ignored;
    socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    SetTcpOption(socket.native_handle(), TCP_KEEPIDLE, kProbeAfterSeconds);
    SetTcpOption(socket.native_handle(), TCP_KEEPINTVL, kProbeIntervalSeconds);
    SetTcpOption(socket.native_handle(), TCP_KEEPCNT, kProbeCount);
    return socket;
}

} // namespace

CTcpConnection::CTcpConnection(asio::ip::tcp::socket socket,
                               CRemoteKernel& kernel,
                               const tagSessionLimits& limits)
    : m_socket(Prepare(std::move(socket))),
      m_session(kernel, limits, m_socket.native_handle())
{}

CTcpConnection::~CTcpConnection()
{
    Abort();
    if (m_thread.joinable())
    {
        m_thread.join();
    }
}

void CTcpConnection::Start(std::function<void()> onEnd)
{
    m_thread = std::thread([this, onEnd = std::move(onEnd)] {
        SetThreadName(("scpi-tcp-" + std::to_string(m_session.RemotePath())).c_str());
        Run();
        onEnd();
    });
}

void CTcpConnection::Abort() noexcept
{
    m_session.Cancel();
    // Wakes the thread from a read as well as from a write that the client does not take.
    static_cast<void>(shutdown(m_socket.native_handle(), SHUT_RDWR));
}

void CTcpConnection::Run()
{
    try
    {
        Serve();
    }
    catch (...)
    {
        // This client loses its connection, the others go on.
        static_cast<void>(ResultOfCurrentException());
    }
    static_cast<void>(shutdown(m_socket.native_handle(), SHUT_RDWR));
    m_bOpen.store(false, std::memory_order_release);
}

void CTcpConnection::Serve()
{
    while (!m_session.IsCancelled())
    {
        const std::span<char> space = m_session.InputSpace();
        asio::error_code error;
        const std::size_t received = m_socket.read_some(asio::buffer(space.data(), space.size()), error);
        if (error)
        {
            return;
        }
        m_session.CommitInput(received);
        while (m_session.ExecuteNext())
        {
            if (!Send(m_session.Response()))
            {
                return;
            }
            m_session.ClearResponse();
        }
    }
}

bool CTcpConnection::Send(std::string_view response)
{
    asio::error_code error;
    asio::write(m_socket, asio::buffer(response.data(), response.size()), error);
    return !error;
}

} // namespace ZoVelkor::RemoteKernel
