// Raw: SCPI over bare TCP connections.
//
// CTcpServer accepts on a thread of its own and makes a CTcpChannel of each client, which connects to the
// kernel found at the root; from then on the kernel's thread of that connection reads and writes the socket.
// An ended channel is taken out of the list by the accepting thread. Whoever owns the server starts and stops
// it, from any thread.
// Lock order: start and stop before the list of channels; no channel is called under the latter.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace ZoVelkor::Transports
{

/// The port at which instruments offer SCPI over a bare TCP connection.
inline constexpr std::uint16_t kScpiRawPort = 5025;

/// Connections that one server serves at a time.
inline constexpr std::size_t kMaxTcpSessions = 128;

struct TcpServerSettings
{
    std::string address = "127.0.0.1"; ///< IPv4 or IPv6 address, the latter also in brackets; no host name
    std::uint16_t port = kScpiRawPort; ///< 0: a free one, see CTcpServer::Port
    std::size_t maxSessions = kMaxTcpSessions;
};

/// Raw SCPI over TCP: each connection is a channel, which connects to the remote kernel that it finds at the
/// root.
///
/// A client that comes while there is no remote kernel is disconnected, and an error is reported.
/// A client beyond the limit of sessions receives one line, an error -300 that says so, and is disconnected.
/// A client that closes its sending half still gets its answers. Since that looks the same as a client that
/// is gone, idle connections are probed: one whose peer has vanished ends within two minutes, also in the
/// middle of a wait. A message without line feed at the end of a connection is not run.
/// Threads: any operation from any thread.
class CTcpServer
{
public:
    explicit CTcpServer(TcpServerSettings settings = {});
    CTcpServer(const CTcpServer&) = delete;
    CTcpServer& operator=(const CTcpServer&) = delete;
    /// Stops.
    ~CTcpServer();

    /// Listens and returns; clients can connect from then on.
    ///
    /// @throws std::system_error with a message that names address and port
    void Start();

    /// Ends all connections, whatever they are doing, and waits for their threads; a handler that is running
    /// is waited for. The server can be started again. Calling it again does nothing.
    void Stop();

    /// The port that is really listened on; 0 before Start.
    std::uint16_t Port() const noexcept;

    /// Address and port as a client writes them: 127.0.0.1:5025, [::1]:5025.
    std::string Endpoint() const;

    /// Connections that are open.
    std::size_t SessionCount() const;

private:
    class CImplementation;
    std::unique_ptr<CImplementation> m_implementation;
};

} // namespace ZoVelkor::Transports
