#include "CScriptedServer.h"

#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZoVelkor::Tools::Testing
{

namespace
{

/// Long enough for a machine under load, and short enough for a test that would hang.
constexpr timeval kPatience{30, 0};

template <class TNumber>
TNumber Check(TNumber result)
{
    if (result < 0)
    {
        throw std::system_error(errno, std::generic_category());
    }
    return result;
}

} // namespace

CPeer::CPeer(CPeer&& other) noexcept : m_socket(std::exchange(other.m_socket, -1))
{}

CPeer::~CPeer()
{
    close(m_socket);
}

void CPeer::Send(std::string_view bytes)
{
    Check(send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

void CPeer::Drip(std::string_view bytes)
{
    for (const char& byte : bytes)
    {
        Send({&byte, 1});
    }
}

std::string CPeer::ReadTo(std::string_view text)
{
    std::string all;
    while (all.find(text) == std::string::npos)
    {
        char buffer[4096];
        const ssize_t count = Check(recv(m_socket, buffer, sizeof buffer, 0));
        if (count == 0)
        {
            throw std::runtime_error("the connection ended");
        }
        all.append(buffer, static_cast<std::size_t>(count));
    }
    return all;
}

void CPeer::FinishSending()
{
    Check(shutdown(m_socket, SHUT_WR));
}

void CPeer::Reset()
{
    const linger hard{1, 0};
    Check(setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard));
    close(std::exchange(m_socket, -1));
}

CScriptedServer::CScriptedServer(int backlog)
    : m_listener(Check(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)))
{
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof place;
    auto* const generic = reinterpret_cast<sockaddr*>(&place);
    Check(bind(m_listener, generic, length));
    Check(listen(m_listener, backlog));
    Check(getsockname(m_listener, generic, &length));
    Check(setsockopt(m_listener, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience));
    m_address = {"127.0.0.1", std::to_string(ntohs(place.sin_port))};
}

CScriptedServer::~CScriptedServer()
{
    close(m_listener);
}

CPeer CScriptedServer::Accept()
{
    const int connection = Check(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
    const int on = 1;
    Check(setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on));
    Check(setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience));
    return CPeer(connection);
}

} // namespace ZoVelkor::Tools::Testing
