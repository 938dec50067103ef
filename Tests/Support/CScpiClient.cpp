#include "CScpiClient.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <netdb.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZoVelkor::Testing
{

namespace
{
[[noreturn]] void Fail(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}
} // namespace

CScpiClient::CScpiClient(std::uint16_t port, const std::string& address)
{
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
    {
        throw std::runtime_error("no address: " + address);
    }
    m_socket = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int result = connect(m_socket, found->ai_addr, found->ai_addrlen);
    freeaddrinfo(found);
    if (result != 0)
    {
        Close();
        Fail("connect");
    }
    // Two messages in a row leave at once, without waiting for the acknowledgement of the first.
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const timeval timeout{120, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
}

CScpiClient::CScpiClient(CScpiClient&& other) noexcept
    : m_socket(std::exchange(other.m_socket, -1)),
      m_received(std::move(other.m_received))
{}

CScpiClient::~CScpiClient()
{
    Close();
}

void CScpiClient::Close() noexcept
{
    if (m_socket >= 0)
    {
        close(std::exchange(m_socket, -1));
    }
}

void CScpiClient::Send(std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0)
        {
            Fail("send");
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void CScpiClient::Write(std::string_view message)
{
    Send(std::string(message) + '\n');
}

void CScpiClient::Receive()
{
    char buffer[65536];
    const ssize_t count = recv(m_socket, buffer, sizeof buffer, 0);
    if (count < 0)
    {
        Fail("recv");
    }
    if (count == 0)
    {
        throw std::runtime_error("connection closed by the server after: " + m_received);
    }
    m_received.append(buffer, static_cast<std::size_t>(count));
}

std::string CScpiClient::ReadLine()
{
    std::size_t end = 0;
    while ((end = m_received.find('\n')) == std::string::npos)
    {
        Receive();
    }
    std::string line = m_received.substr(0, end);
    m_received.erase(0, end + 1);
    return line;
}

std::string CScpiClient::Read(std::size_t count)
{
    m_received.reserve(count + 1);
    while (m_received.size() < count)
    {
        Receive();
    }
    std::string bytes = m_received.substr(0, count);
    m_received.erase(0, count);
    return bytes;
}

std::string CScpiClient::ReadBlock()
{
    const std::string start = Read(2);
    if (start[0] != '#' || start[1] < '1' || start[1] > '9')
    {
        throw std::runtime_error("no definite-length block: " + start);
    }
    const std::string length = Read(static_cast<std::size_t>(start[1] - '0'));
    std::string contents = Read(std::stoul(length));
    if (const std::string end = Read(1); end != "\n")
    {
        throw std::runtime_error("no line feed behind the block: " + end);
    }
    return contents;
}

std::string CScpiClient::Query(std::string_view message)
{
    Write(message);
    return ReadLine();
}

void CScpiClient::FinishSending()
{
    shutdown(m_socket, SHUT_WR);
}

void CScpiClient::Reset()
{
    const linger abortive{1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &abortive, sizeof abortive);
    Close();
}

bool CScpiClient::IsClosedByServer()
{
    char byte = 0;
    const ssize_t count = recv(m_socket, &byte, 1, 0);
    return count == 0 || (count < 0 && errno == ECONNRESET);
}

void Converse(CScpiClient& client, std::string_view script)
{
    while (!script.empty())
    {
        const std::size_t end = script.find('\n');
        const std::string_view line = script.substr(0, end);
        script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
        if (line.starts_with("-> "))
        {
            client.Write(line.substr(3));
        }
        else if (line.starts_with("<- "))
        {
            ASSERT_EQ(client.ReadLine(), line.substr(3)) << "before: " << script.substr(0, 80);
        }
    }
}

} // namespace ZoVelkor::Testing
