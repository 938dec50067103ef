#include "CSocketClient.h"

#include "CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace ZoVelkor::Tools
{

namespace
{

struct tagAddressFreer
{
    void operator()(addrinfo* list) const noexcept { freeaddrinfo(list); }
};

std::unique_ptr<addrinfo, tagAddressFreer> Resolve(const tagInstrumentAddress& address)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int fault = getaddrinfo(address.sHost.c_str(), address.sPort.c_str(), &hints, &found);
    if (fault != 0)
    {
        throw CToolError(tagExitCode::NoAccess,
                         fmt::format("cannot find host {}: {}", address.sHost, gai_strerror(fault)));
    }
    return std::unique_ptr<addrinfo, tagAddressFreer>(found);
}

int TakeSocketError(int socket)
{
    int fault = 0;
    socklen_t length = sizeof fault;
    return getsockopt(socket, SOL_SOCKET, SO_ERROR, &fault, &length) == 0 ? fault : errno;
}

bool IsTryAgain(int fault)
{
    return fault == EAGAIN || fault == EINTR;
}

} // namespace

CSocketClient::CSocketClient(const tagInstrumentAddress& address, std::chrono::milliseconds timeout)
    : m_sAddress(address.Text()),
      m_timeout(timeout)
{
    const CClock::time_point deadline = CClock::now() + m_timeout;
    const auto candidates = Resolve(address);
    const addrinfo* candidate = candidates.get();
    while (!TryConnect(*candidate, deadline))
    {
        const int fault = std::exchange(errno, 0);
        Close();
        candidate = candidate->ai_next;
        if (candidate == nullptr)
        {
            FailConnect(fault);
        }
    }
}

CSocketClient::~CSocketClient()
{
    Close();
}

void CSocketClient::Close() noexcept
{
    if (m_socket >= 0)
    {
        close(std::exchange(m_socket, -1));
    }
}

bool CSocketClient::TryConnect(const addrinfo& candidate, CClock::time_point deadline)
{
    m_socket = socket(candidate.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, candidate.ai_protocol);
    if (m_socket < 0)
    {
        return false;
    }
    // A short message leaves at once, without waiting for the acknowledgement of the one before.
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(m_socket, candidate.ai_addr, candidate.ai_addrlen) != 0)
    {
        if (errno != EINPROGRESS && errno != EINTR)
        {
            return false;
        }
        errno = WaitFor(POLLOUT, deadline) ? TakeSocketError(m_socket) : ETIMEDOUT;
        return errno == 0;
    }
    return true;
}

bool CSocketClient::WaitFor(short events, CClock::time_point deadline)
{
    for (;;)
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - CClock::now());
        pollfd descriptor{m_socket, events, 0};
        const int ready = poll(&descriptor, 1, static_cast<int>(std::max<long>(left.count(), 0)));
        if (ready >= 0 || errno != EINTR)
        {
            return ready > 0;
        }
    }
}

void CSocketClient::FailConnect(int fault) const
{
    throw CToolError(tagExitCode::NoAccess,
                     fmt::format("cannot connect to {}: {}", m_sAddress, std::strerror(fault)));
}

void CSocketClient::FailTransfer(const std::string& what) const
{
    throw CToolError(tagExitCode::NoAccess, fmt::format("{}: {}", m_sAddress, what));
}

void CSocketClient::Send(std::string_view bytes)
{
    const CClock::time_point deadline = CClock::now() + m_timeout;
    while (!bytes.empty())
    {
        const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0)
        {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
        else if (!IsTryAgain(errno))
        {
            FailTransfer(fmt::format("cannot send: {}", std::strerror(errno)));
        }
        else if (!WaitFor(POLLOUT, deadline))
        {
            FailTransfer(fmt::format("takes nothing within {} s", TimeoutSeconds()));
        }
    }
}

void CSocketClient::Receive(CClock::time_point deadline)
{
    if (!WaitFor(POLLIN, deadline))
    {
        FailTransfer(fmt::format(
            "no complete answer within {} s ({} bytes of it came)", TimeoutSeconds(), m_iReceived));
    }
    char buffer[65536];
    const ssize_t count = recv(m_socket, buffer, sizeof buffer, 0);
    if (count > 0)
    {
        m_received.append(buffer, static_cast<std::size_t>(count));
        m_iReceived += static_cast<std::size_t>(count);
    }
    else if (count == 0)
    {
        FailTransfer(fmt::format("closed the connection in the middle of an answer ({} bytes of it came)",
                                 m_iReceived));
    }
    else if (!IsTryAgain(errno))
    {
        FailTransfer(fmt::format("cannot receive: {}", std::strerror(errno)));
    }
}

std::string CSocketClient::TakeReceived(std::size_t count)
{
    std::string bytes = m_received.substr(0, count);
    m_received.erase(0, count);
    return bytes;
}

std::string CSocketClient::ReadUntil(std::string_view ends, std::size_t limit)
{
    const CClock::time_point deadline = CClock::now() + m_timeout;
    std::size_t end = 0;
    while ((end = m_received.find_first_of(ends)) == std::string::npos)
    {
        if (m_received.size() > limit)
        {
            FailTransfer(fmt::format("an answer of more than {} bytes", limit));
        }
        Receive(deadline);
    }
    return TakeReceived(end + 1);
}

std::string CSocketClient::Read(std::size_t count)
{
    const CClock::time_point deadline = CClock::now() + m_timeout;
    while (m_received.size() < count)
    {
        Receive(deadline);
    }
    return TakeReceived(count);
}

} // namespace ZoVelkor::Tools
