#include "CTcpConnection.h"

#include "GuardedEntry.h"
#include "ThreadBasics.h"

#include <asio/buffer.hpp>
#include <asio/error.hpp>

#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
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

/// A client that has sent nothing for so long has its session give the memory of large messages back.
constexpr int kQuietMs = 1000;

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

/// A signal handler of the program ran in the connection's thread: the operation is to be repeated.
bool IsInterrupted(const asio::error_code& error) noexcept
{
    return error == asio::error::interrupted;
}

} // namespace

CTcpConnection::CTcpConnection(asio::ip::tcp::socket socket,
                               CRemoteKernel& kernel,
                               const tagSessionLimits& limits)
    : m_socket(Prepare(std::move(socket))),
      m_session(kernel, limits, m_socket.native_handle(), this)
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
        Run();
        // Should this fail for lack of memory, the connection is removed with the next one that ends.
        static_cast<void>(GuardedEntry([&onEnd]() -> HRESULT {
            onEnd();
            return S_OK;
        }));
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
    // After a failure this client loses its connection, the others go on.
    static_cast<void>(GuardedEntry([this]() -> HRESULT {
        SetThreadName(("scpi-tcp-" + std::to_string(m_session.RemotePath())).c_str());
        Serve();
        return S_OK;
    }));
    static_cast<void>(shutdown(m_socket.native_handle(), SHUT_RDWR));
    m_bOpen.store(false, std::memory_order_release);
}

void CTcpConnection::Serve()
{
    while (!m_session.IsCancelled())
    {
        if (m_session.HoldsMemory() && !WaitForInput())
        {
            m_session.ReleaseMemory();
        }
        const std::span<char> space = m_session.InputSpace();
        asio::error_code error;
        const std::size_t received = m_socket.read_some(asio::buffer(space.data(), space.size()), error);
        if (error && !IsInterrupted(error))
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

bool CTcpConnection::WaitForInput() noexcept
{
    pollfd descriptor{m_socket.native_handle(), POLLIN, 0};
    return poll(&descriptor, 1, kQuietMs) != 0;
}

tagReceived CTcpConnection::Receive(std::span<char> space, int timeoutMs, int cancelDescriptor) noexcept
{
    pollfd descriptors[] = {
        {m_socket.native_handle(), POLLIN, 0},
        {cancelDescriptor,         POLLIN, 0},
    };
    while (!m_session.IsCancelled())
    {
        const ssize_t received = recv(m_socket.native_handle(), space.data(), space.size(), MSG_DONTWAIT);
        if (received > 0)
        {
            return {tagReceiveStatus::Received, static_cast<std::size_t>(received)};
        }
        if (received == 0 || (errno != EAGAIN && errno != EINTR))
        {
            break;
        }
        if (poll(descriptors, std::size(descriptors), timeoutMs) == 0)
        {
            return {tagReceiveStatus::TimedOut, 0};
        }
    }
    return {};
}

bool CTcpConnection::Send(std::string_view response)
{
    while (!response.empty())
    {
        asio::error_code error;
        response.remove_prefix(m_socket.write_some(asio::buffer(response.data(), response.size()), error));
        if (error && !IsInterrupted(error))
        {
            return false;
        }
    }
    return true;
}

} // namespace ZoVelkor::RemoteKernel
