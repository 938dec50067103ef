#pragma once

#include "CLxiEventEndpoint.h"
#include "CLxiStreamDecoder.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/steady_timer.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <span>
#include <thread>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

/// Address out of its text; throws std::system_error that names it.
asio::ip::address_v4 LxiAddress(const std::string& text);

/// The sockets that LXI event messages come in by, and the thread that reads them, for as long as it lives.
class CLxiReceiver
{
public:
    /// Takes a datagram, or a message of a TCP stream.
    using OnMessage = std::function<void(std::span<const std::uint8_t>, const LxiPeer&)>;

    /// @param onMessage  called on the thread of the receiver
    /// @throws std::system_error with a message that names address and port
    CLxiReceiver(const LxiEndpointSettings& settings, OnMessage onMessage);
    CLxiReceiver(const CLxiReceiver&) = delete;
    CLxiReceiver& operator=(const CLxiReceiver&) = delete;
    ~CLxiReceiver();

    std::uint16_t Port() const noexcept { return m_port; }
    std::uint16_t MulticastPort() const noexcept { return m_multicastPort; }

private:
    using tcp = asio::ip::tcp;
    using udp = asio::ip::udp;

    struct Datagrams
    {
        explicit Datagrams(asio::io_context& context) : socket(context), retry(context) {}

        udp::socket socket;
        asio::steady_timer retry;
        udp::endpoint sender;
        std::array<std::uint8_t, kMaxLxiMessageSize + 1> bytes; ///< one more, to tell what is too long
    };
    struct PeerConnection
    {
        explicit PeerConnection(tcp::socket connected) : socket(std::move(connected)) {}

        tcp::socket socket;
        LxiPeer peer;
        CLxiStreamDecoder decoder;
        std::array<std::uint8_t, kMaxLxiMessageSize> bytes;
    };
    using Connection = std::list<PeerConnection>::iterator;

    void Open(const asio::ip::address_v4& address, std::uint16_t port);
    void OpenMulticast(const asio::ip::address_v4& address, std::uint16_t port);
    void ReadNext(Datagrams& datagrams);
    void AcceptNext();
    void Serve(tcp::socket socket);
    void ReadNext(Connection connection);
    bool Take(PeerConnection& connection, std::size_t count);
    void HandOn(std::span<const std::uint8_t> message, const LxiPeer& peer);
    template <class TRetry>
    static void RetryLater(asio::steady_timer& timer, TRetry retry);

    const OnMessage m_onMessage;
    asio::io_context m_context{1};
    tcp::acceptor m_acceptor{m_context};
    asio::steady_timer m_acceptRetry{m_context};
    Datagrams m_unicast{m_context};
    Datagrams m_multicast{m_context};
    std::list<PeerConnection> m_connections;
    std::uint16_t m_port = 0;
    std::uint16_t m_multicastPort = 0;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace ZoVelkor::RemoteKernel
