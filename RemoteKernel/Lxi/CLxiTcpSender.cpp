#include "CLxiTcpSender.h"

#include "LxiEventFormat.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <span>
#include <sys/socket.h>
#include <sys/time.h>
#include <system_error>

namespace ZoVelkor::RemoteKernel
{
namespace
{

[[noreturn]] void Fail(const std::string& address, std::uint16_t port)
{
    // The limit of time shows up as what a socket that must not wait would report.
    const bool isTimeOut = errno == EINPROGRESS || errno == EAGAIN;
    throw std::system_error(isTimeOut ? ETIMEDOUT : errno,
                            std::generic_category(),
                            "Cannot send LXI events to " + address + " port " + std::to_string(port));
}

sockaddr_in AddressOf(const std::string& address, std::uint16_t port)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1)
    {
        errno = EINVAL;
        Fail(address, port);
    }
    return name;
}

} // namespace

CLxiTcpSender::CLxiTcpSender(const std::string& address, std::uint16_t port)
    : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_in name = AddressOf(address, port);
    constexpr timeval kLimit{kTimeOut.count(), 0};
    constexpr int kOn = 1;
    // Linux applies the limit for sending to connecting as well.
    if (!m_socket || setsockopt(m_socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &kLimit, sizeof kLimit) != 0 ||
        setsockopt(m_socket.Get(), IPPROTO_TCP, TCP_NODELAY, &kOn, sizeof kOn) != 0 ||
        connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0)
    {
        Fail(address, port);
    }
}

HRESULT CLxiTcpSender::Send(CLxiLanPacket& packet)
{
    const std::vector<std::uint8_t> message = EncodeLxiMessage(packet);
    return message.empty() ? E_INVALIDARG : Send(std::span(message));
}

HRESULT CLxiTcpSender::Send(std::span<const std::uint8_t> message)
{
    std::span<const std::uint8_t> rest = message;
    while (m_socket && !rest.empty())
    {
        const ssize_t sent = send(m_socket.Get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent >= 0)
        {
            rest = rest.subspan(static_cast<std::size_t>(sent));
        }
        else if (errno != EINTR)
        {
            // What went out of this message is no message; nothing may follow it.
            m_socket.Reset();
        }
    }
    return rest.empty() ? S_OK : E_FAIL;
}

} // namespace ZoVelkor::RemoteKernel
