#include "CLxiListener.h"

#include "CLxiEventEndpoint.h"
#include "Common/CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <system_error>

namespace ZoVelkor::Tools
{

namespace
{

using RemoteKernel::kMaxLxiMessageSize;

/// A port that is free for UDP may be taken for TCP; so often another one is tried.
constexpr int kPortAttempts = 16;

/// Order of what Wait watches; connections follow.
enum Watched : std::size_t
{
    kSignals,
    kMulticast,
    kUnicast,
    kAcceptor,
    kConnections
};

std::string Place(in_addr address, std::uint16_t port)
{
    return fmt::format("{}:{}", AddressText(address), port);
}

[[noreturn]] void Fail(in_addr address, std::uint16_t port, int error)
{
    throw CToolError(ExitCode::NoAccess,
                     fmt::format("cannot listen on {}: {}", Place(address, port), std::strerror(error)));
}

std::uint16_t PortOf(const CSocket& socket)
{
    sockaddr_in name{};
    socklen_t size = sizeof name;
    getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&name), &size);
    return ntohs(name.sin_port);
}

void SetOption(const CSocket& socket, int level, int option, int value)
{
    if (setsockopt(socket.Get(), level, option, &value, sizeof value) != 0)
    {
        throw std::system_error(errno, std::generic_category());
    }
}

} // namespace

CLxiListener::CLxiListener(const std::string& address,
                           std::uint16_t port,
                           OnMessage onMessage,
                           OnDamage onDamage)
    : m_address(TakeIpAddress(address)),
      m_onMessage(std::move(onMessage)),
      m_onDamage(std::move(onDamage))
{
    OpenPort(port);
    OpenMulticast();
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    m_signals.Reset(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    pthread_sigmask(SIG_BLOCK, &set, &m_formerMask);
}

CLxiListener::~CLxiListener()
{
    // A signal that is still there would do what it usually does.
    signalfd_siginfo info{};
    while (read(m_signals.Get(), &info, sizeof info) > 0)
    {}
    pthread_sigmask(SIG_SETMASK, &m_formerMask, nullptr);
}

std::string CLxiListener::Text() const
{
    const std::string multicast =
        "multicast " + Place(TakeIpAddress(RemoteKernel::kLxiMulticastGroup), m_port);
    const std::string own = Place(m_address, m_port);
    return m_unicast ? fmt::format("{}, udp and tcp {}", multicast, own)
                     : fmt::format("{} alone; another program has {}", multicast, own);
}

CSocket CLxiListener::Open(int type, in_addr address, std::uint16_t port)
{
    CSocket opened(socket(AF_INET, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (type == SOCK_DGRAM)
    {
        // Without it Linux hands on the messages of groups that others have joined.
        SetOption(opened, IPPROTO_IP, IP_MULTICAST_ALL, 0);
    }
    // A group is shared, and a socket for all addresses meets it. A TCP port can be taken up again at once.
    const bool isShared =
        type == SOCK_STREAM || address.s_addr != m_address.s_addr || address.s_addr == htonl(INADDR_ANY);
    SetOption(opened, SOL_SOCKET, SO_REUSEADDR, isShared ? 1 : 0);
    const sockaddr_in name = SocketName(address, port);
    if (bind(opened.Get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0 ||
        (type == SOCK_STREAM && listen(opened.Get(), SOMAXCONN) != 0))
    {
        throw std::system_error(errno, std::generic_category());
    }
    return opened;
}

/// @return false when another program has the port
bool CLxiListener::TryPort(std::uint16_t port)
{
    try
    {
        CSocket unicast = Open(SOCK_DGRAM, m_address, port);
        m_port = PortOf(unicast);
        m_acceptor = Open(SOCK_STREAM, m_address, m_port);
        m_unicast = std::move(unicast);
        return true;
    }
    catch (const std::system_error& error)
    {
        if (error.code() != std::errc::address_in_use)
        {
            Fail(m_address, port, error.code().value());
        }
        return false;
    }
}

void CLxiListener::OpenPort(std::uint16_t port)
{
    int attempts = port == 0 ? kPortAttempts : 1;
    while (!TryPort(port) && --attempts != 0)
    {}
    m_port = port != 0 ? port : m_port;
}

void CLxiListener::OpenMulticast()
{
    const in_addr group = TakeIpAddress(RemoteKernel::kLxiMulticastGroup);
    try
    {
        m_multicast = Open(SOCK_DGRAM, group, m_port);
        const ip_mreq membership{group, m_address};
        if (setsockopt(m_multicast.Get(), IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof membership) != 0)
        {
            throw std::system_error(errno, std::generic_category());
        }
        if (m_address.s_addr == htonl(INADDR_ANY))
        {
            // That was the interface of the system's choice; events of this machine come by loopback.
            const ip_mreq local{group, {htonl(INADDR_LOOPBACK)}};
            static_cast<void>(
                setsockopt(m_multicast.Get(), IPPROTO_IP, IP_ADD_MEMBERSHIP, &local, sizeof local));
        }
    }
    catch (const std::system_error& error)
    {
        Fail(group, m_port, error.code().value());
    }
}

std::vector<pollfd> CLxiListener::Watched() const
{
    // A descriptor of -1 is passed over.
    std::vector<pollfd> watched{
        {m_signals.Get(), POLLIN, 0},
        {m_multicast.Get(), POLLIN, 0},
        {m_unicast.Get(), POLLIN, 0},
        {m_acceptor.Get(), POLLIN, 0},
    };
    for (const PeerConnection& connection : m_connections)
    {
        watched.push_back({connection.socket.Get(), POLLIN, 0});
    }
    return watched;
}

LxiWait CLxiListener::Wait(const Deadline& deadline)
{
    std::vector<pollfd> watched = Watched();
    const int count = poll(watched.data(), watched.size(), PollTimeout(deadline));
    if (count == 0)
    {
        return LxiWait::TimeOut;
    }
    if (count < 0)
    {
        return LxiWait::Heard;
    }
    if (watched[kSignals].revents != 0)
    {
        return LxiWait::Interrupted;
    }
    std::size_t place = kConnections;
    std::erase_if(m_connections, [&](PeerConnection& connection) {
        return watched[place++].revents != 0 && !Read(connection);
    });
    if (watched[kMulticast].revents != 0)
    {
        ReadDatagram(m_multicast);
    }
    if (watched[kUnicast].revents != 0)
    {
        ReadDatagram(m_unicast);
    }
    if (watched[kAcceptor].revents != 0)
    {
        Accept();
    }
    return LxiWait::Heard;
}

void CLxiListener::ReadDatagram(const CSocket& socket)
{
    // One byte more than a message may have, to tell what is too long.
    std::array<std::uint8_t, kMaxLxiMessageSize + 1> bytes;
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t count =
        recvfrom(socket.Get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (count >= 0)
    {
        m_onMessage(std::span(bytes).first(static_cast<std::size_t>(count)), PeerOf(sender, false));
    }
}

void CLxiListener::Accept()
{
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    CSocket accepted(
        accept4(m_acceptor.Get(), reinterpret_cast<sockaddr*>(&peer), &size, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (accepted && m_connections.size() < RemoteKernel::kMaxLxiConnections)
    {
        m_connections.push_back({std::move(accepted), PeerOf(peer, true), {}});
    }
}

/// @return false when the connection is over
bool CLxiListener::Read(PeerConnection& connection)
{
    std::array<std::uint8_t, kMaxLxiMessageSize> bytes;
    const ssize_t count = recv(connection.socket.Get(), bytes.data(), bytes.size(), 0);
    if (count <= 0)
    {
        const bool isOpen = count < 0 && (errno == EAGAIN || errno == EINTR);
        if (!isOpen && connection.decoder.IsInMessage())
        {
            m_onDamage(connection.peer, "the connection ends within a message");
        }
        return isOpen;
    }
    const bool isStream =
        connection.decoder.Feed(std::span(bytes).first(static_cast<std::size_t>(count)),
                                [&](auto message) { m_onMessage(message, connection.peer); });
    if (!isStream)
    {
        m_onDamage(connection.peer, "what follows is no event message; the connection is closed");
    }
    return isStream;
}

} // namespace ZoVelkor::Tools
