#include "CLxiReceiver.h"

#include "GuardedEntry.h"
#include "ThreadBasics.h"

#include <asio/ip/multicast.hpp>

#include <chrono>
#include <netinet/in.h>
#include <system_error>
#include <utility>

namespace ZoVelkor::RemoteKernel
{
namespace
{

using ReuseAddress = asio::socket_base::reuse_address;

/// A port that is free for TCP may be taken for UDP; so often another one is tried.
constexpr int kPortAttempts = 16;
/// Rest after a failure, which mostly means that the system is short of something.
constexpr std::chrono::milliseconds kRetry{100};

std::string Place(const std::string& address, std::uint16_t port)
{
    return "Cannot receive LXI events on " + address + " port " + std::to_string(port);
}

/// Linux hands a socket the messages of all groups that anybody on the machine has joined, unless told not
/// to.
void TakeOwnGroupsOnly(asio::ip::udp::socket& socket)
{
    constexpr int kOff = 0;
    if (setsockopt(socket.native_handle(), IPPROTO_IP, IP_MULTICAST_ALL, &kOff, sizeof kOff) != 0)
    {
        throw std::system_error(errno, std::generic_category());
    }
}

} // namespace

asio::ip::address_v4 LxiAddress(const std::string& text)
{
    asio::error_code error;
    const asio::ip::address_v4 address = asio::ip::make_address_v4(text, error);
    if (error)
    {
        throw std::system_error(error, "\"" + text + "\" is no IPv4 address");
    }
    return address;
}

CLxiReceiver::CLxiReceiver(const LxiEndpointSettings& settings, OnMessage onMessage)
    : m_onMessage(std::move(onMessage))
{
    const asio::ip::address_v4 address = LxiAddress(settings.address);
    Open(address, settings.port);
    OpenMulticast(address, settings.multicastPort != 0 ? settings.multicastPort : m_port);
    AcceptNext();
    ReadNext(m_unicast);
    ReadNext(m_multicast);
    m_thread = std::thread([this] {
        SetThreadName("lxi-events");
        // An exception is reported and does not end the thread; run returns normally once stopped.
        while (!m_context.stopped())
        {
            static_cast<void>(
                GuardedEntry([this]() -> HRESULT { return m_context.run() != 0 ? S_OK : S_FALSE; }));
        }
    });
}

CLxiReceiver::~CLxiReceiver()
{
    m_context.stop();
    m_thread.join();
}

void CLxiReceiver::Open(const asio::ip::address_v4& address, std::uint16_t port)
{
    for (int attempt = 1;; ++attempt)
    {
        try
        {
            m_acceptor = tcp::acceptor(m_context, {address, port});
            m_port = m_acceptor.local_endpoint().port();
            m_unicast.socket = udp::socket(m_context, udp::v4());
            // A socket for all addresses would meet those of the group, which everybody shares.
            m_unicast.socket.set_option(ReuseAddress(address.is_unspecified()));
            TakeOwnGroupsOnly(m_unicast.socket);
            m_unicast.socket.bind({address, m_port});
            return;
        }
        catch (const std::system_error& error)
        {
            if (port != 0 || error.code() != asio::error::address_in_use || attempt == kPortAttempts)
            {
                throw std::system_error(error.code(), Place(address.to_string(), port));
            }
        }
    }
}

void CLxiReceiver::OpenMulticast(const asio::ip::address_v4& address, std::uint16_t port)
{
    const asio::ip::address_v4 group = LxiAddress(kLxiMulticastGroup);
    udp::socket& socket = m_multicast.socket;
    try
    {
        socket.open(udp::v4());
        socket.set_option(ReuseAddress(true));
        TakeOwnGroupsOnly(socket);
        socket.bind({group, port});
        socket.set_option(asio::ip::multicast::join_group(group, address));
        if (address.is_unspecified())
        {
            // That was the interface of the system's choice; events of this machine come by loopback.
            asio::error_code ignored;
            socket.set_option(asio::ip::multicast::join_group(group, asio::ip::address_v4::loopback()),
                              ignored);
        }
    }
    catch (const std::system_error& error)
    {
        throw std::system_error(error.code(), Place(kLxiMulticastGroup, port));
    }
    m_multicastPort = port;
}

template <class TRetry>
void CLxiReceiver::RetryLater(asio::steady_timer& timer, TRetry retry)
{
    timer.expires_after(kRetry);
    timer.async_wait([retry](const asio::error_code& error) {
        if (!error)
        {
            retry();
        }
    });
}

void CLxiReceiver::HandOn(std::span<const std::uint8_t> message, const LxiPeer& peer)
{
    static_cast<void>(GuardedEntry([&]() -> HRESULT {
        m_onMessage(message, peer);
        return S_OK;
    }));
}

void CLxiReceiver::ReadNext(Datagrams& datagrams)
{
    datagrams.socket.async_receive_from(
        asio::buffer(datagrams.bytes),
        datagrams.sender,
        [this, &datagrams](const asio::error_code& error, std::size_t count) {
            if (error)
            {
                RetryLater(datagrams.retry, [this, &datagrams] { ReadNext(datagrams); });
                return;
            }
            HandOn(std::span(datagrams.bytes).first(count),
                   {datagrams.sender.address().to_v4().to_uint(), datagrams.sender.port(), false});
            ReadNext(datagrams);
        });
}

void CLxiReceiver::AcceptNext()
{
    m_acceptor.async_accept([this](const asio::error_code& error, tcp::socket socket) {
        if (error)
        {
            RetryLater(m_acceptRetry, [this] { AcceptNext(); });
            return;
        }
        // Without resources for it a connection is closed.
        static_cast<void>(GuardedEntry([&]() -> HRESULT {
            Serve(std::move(socket));
            return S_OK;
        }));
        AcceptNext();
    });
}

void CLxiReceiver::Serve(tcp::socket socket)
{
    asio::error_code error;
    const tcp::endpoint peer = socket.remote_endpoint(error);
    if (error || m_connections.size() == kMaxLxiConnections)
    {
        return;
    }
    socket.set_option(asio::socket_base::keep_alive(true), error);
    PeerConnection& connection = m_connections.emplace_back(std::move(socket));
    connection.peer = {peer.address().to_v4().to_uint(), peer.port(), true};
    ReadNext(std::prev(m_connections.end()));
}

void CLxiReceiver::ReadNext(Connection connection)
{
    connection->socket.async_read_some(asio::buffer(connection->bytes),
                                       [this, connection](const asio::error_code& error, std::size_t count) {
                                           if (!error && Take(*connection, count))
                                           {
                                               ReadNext(connection);
                                           }
                                           else
                                           {
                                               m_connections.erase(connection);
                                           }
                                       });
}

bool CLxiReceiver::Take(PeerConnection& connection, std::size_t count)
{
    return GuardedEntry([&]() -> HRESULT {
               const bool isStream =
                   connection.decoder.Feed(std::span(connection.bytes).first(count),
                                           [&](auto message) { HandOn(message, connection.peer); });
               return isStream ? S_OK : S_FALSE;
           }) == S_OK;
}

} // namespace ZoVelkor::RemoteKernel
