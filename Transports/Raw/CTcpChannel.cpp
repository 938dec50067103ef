#include "CTcpChannel.h"

#include "Bstr.h"
#include "Common/EndpointText.h"
#include "Common/ReplaceText.h"
#include "GuardedEntry.h"

#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <utility>

namespace ZoVelkor::Transports
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

int Prepare(asio::ip::tcp::socket socket)
{
    asio::error_code ignored;
    socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    const int descriptor = socket.release();
    SetTcpOption(descriptor, TCP_KEEPIDLE, kProbeAfterSeconds);
    SetTcpOption(descriptor, TCP_KEEPINTVL, kProbeIntervalSeconds);
    SetTcpOption(descriptor, TCP_KEEPCNT, kProbeCount);
    return descriptor;
}

// The ends are all zero when the connection is gone already.
asio::ip::tcp::endpoint LocalEnd(const asio::ip::tcp::socket& socket)
{
    asio::error_code ignored;
    return socket.local_endpoint(ignored);
}

asio::ip::tcp::endpoint RemoteEnd(const asio::ip::tcp::socket& socket)
{
    asio::error_code ignored;
    return socket.remote_endpoint(ignored);
}

bool WaitForRoom(int socket) noexcept
{
    pollfd descriptor{socket, POLLOUT, 0};
    return poll(&descriptor, 1, -1) > 0 || errno == EINTR;
}

} // namespace

CTcpChannel::CTcpChannel(asio::ip::tcp::socket socket, std::function<void()> onEnd)
    : m_local(LocalEnd(socket)),
      m_remote(RemoteEnd(socket)),
      m_socket(Prepare(std::move(socket))),
      m_onEnd(std::move(onEnd))
{}

HRESULT CTcpChannel::GetWaitDescriptor(int* descriptor)
{
    if (descriptor == nullptr)
    {
        return E_POINTER;
    }
    *descriptor = m_socket.Get();
    return S_OK;
}

HRESULT CTcpChannel::DoRead(unsigned long size, unsigned char* data, unsigned long* got)
{
    ssize_t received = 0;
    do
    {
        received = recv(m_socket.Get(), data, size, MSG_DONTWAIT);
    } while (received < 0 && errno == EINTR);
    if (received < 0)
    {
        return errno == EAGAIN ? S_OK : E_FAIL;
    }
    *got = static_cast<unsigned long>(received);
    m_received.fetch_add(static_cast<std::uint32_t>(received), std::memory_order_relaxed);
    return received == 0 && size != 0 ? S_FALSE : S_OK;
}

HRESULT CTcpChannel::DoDataAvailable(unsigned long* count)
{
    int available = 0;
    if (ioctl(m_socket.Get(), FIONREAD, &available) != 0)
    {
        return E_FAIL;
    }
    *count = static_cast<unsigned long>(available);
    return S_OK;
}

HRESULT CTcpChannel::DoWrite(unsigned long size, unsigned char* data, unsigned long* written)
{
    *written = 0;
    while (*written < size)
    {
        unsigned long part = 0;
        const HRESULT result = DoWritePartial(size - *written, data + *written, &part);
        *written += part;
        if (FAILED(result) || (part == 0 && !WaitForRoom(m_socket.Get())))
        {
            return E_FAIL;
        }
    }
    return S_OK;
}

HRESULT CTcpChannel::DoWritePartial(unsigned long size, unsigned char* data, unsigned long* written)
{
    const ssize_t sent = send(m_socket.Get(), data, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent < 0)
    {
        return errno == EAGAIN || errno == EINTR ? S_OK : E_FAIL;
    }
    *written = static_cast<unsigned long>(sent);
    m_sent.fetch_add(static_cast<std::uint32_t>(sent), std::memory_order_relaxed);
    return S_OK;
}

HRESULT CTcpChannel::DoProgramMessageEnd()
{
    m_messages.fetch_add(1, std::memory_order_relaxed);
    return S_OK;
}

HRESULT CTcpChannel::DoCloseChannel()
{
    return DoAbort();
}

HRESULT CTcpChannel::DoAbort()
{
    static_cast<void>(shutdown(m_socket.Get(), SHUT_RDWR));
    if (!m_over.exchange(true, std::memory_order_acq_rel))
    {
        m_onEnd();
    }
    return S_OK;
}

HRESULT CTcpChannel::do_get_ChannelProperties(tag_ScpiChannelInfo* info)
{
    Replace(info->bsName, "TCPIP " + EndpointText(m_remote));
    Replace(info->bsLocalAddress, m_local.address().to_string());
    Replace(info->bsRemoteAddress, m_remote.address().to_string());
    info->iKind = ZO_CHANNEL_KIND_RAW_SOCKET;
    info->iRemotePath = static_cast<std::int32_t>(GetRemotePath());
    info->iLocalPort = m_local.port();
    info->iRemotePort = m_remote.port();
    info->iSecondaryAddress = -1;
    info->iBytesReceived = static_cast<std::int32_t>(m_received.load());
    info->iBytesSent = static_cast<std::int32_t>(m_sent.load());
    info->iMessages = static_cast<std::int32_t>(m_messages.load());
    return S_OK;
}

} // namespace ZoVelkor::Transports
