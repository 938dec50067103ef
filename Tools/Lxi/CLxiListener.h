// Lxi: `zo lxi`, LXI events in the terminal.
//
// LxiCommands reads the command line; CLxiListener hears messages, CLxiTransmitter sends what LxiEventMaker
// makes, LxiCapture and PcapFile keep them in files, LxiEventText tells what is in them. Formats and streams
// are those of the kernel's face; the sockets are the tool's own, since it hears what an instrument would
// drop. One thread. Locks: none.

#pragma once

#include "CLxiStreamDecoder.h"
#include "Deadline.h"
#include "LxiSockets.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <list>
#include <poll.h>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

enum class LxiWait : std::uint8_t
{
    Heard, ///< something has come; it need not have been a whole message
    TimeOut,
    Interrupted ///< by Ctrl-C
};

/// Hears all event messages that reach a port: of all domains and names, by multicast, UDP and TCP, damaged
/// ones included.
///
/// An instrument can have the port of the same address at the same time; multicast is then all that is heard.
/// Ctrl-C does nothing but end Wait. One thread, and no other thread before it.
class CLxiListener
{
public:
    using Clock = std::chrono::steady_clock;

    /// Takes a datagram, or a message of a TCP stream.
    using OnMessage = std::function<void(std::span<const std::uint8_t>, const RemoteKernel::LxiPeer&)>;
    /// Takes what is wrong with a TCP stream, which is over.
    using OnDamage = std::function<void(const RemoteKernel::LxiPeer&, const char* fault)>;

    /// @param address  IPv4; 0.0.0.0 are all interfaces; multicast then comes by the system's choice and by
    /// loopback
    /// @param port     0: a free one
    /// @throws CToolError (Usage, NoAccess)
    CLxiListener(const std::string& address, std::uint16_t port, OnMessage onMessage, OnDamage onDamage);
    CLxiListener(const CLxiListener&) = delete;
    CLxiListener& operator=(const CLxiListener&) = delete;
    ~CLxiListener();

    /// Where it listens.
    std::string Text() const;

    /// Waits, and hands on all that has come.
    ///
    /// @param deadline  nothing: no time limit
    LxiWait Wait(const Deadline& deadline);

private:
    struct PeerConnection
    {
        CSocket socket;
        RemoteKernel::LxiPeer peer;
        RemoteKernel::CLxiStreamDecoder decoder;
    };

    void OpenPort(std::uint16_t port);
    void OpenMulticast();
    bool TryPort(std::uint16_t port);
    CSocket Open(int type, in_addr address, std::uint16_t port);
    std::vector<pollfd> Watched() const;
    void ReadDatagram(const CSocket& socket);
    void Accept();
    bool Read(PeerConnection& connection);

    const in_addr m_address;
    const OnMessage m_onMessage;
    const OnDamage m_onDamage;
    std::uint16_t m_port = 0;
    sigset_t m_formerMask{};
    CSocket m_signals;
    CSocket m_unicast;
    CSocket m_multicast;
    CSocket m_acceptor;
    std::list<PeerConnection> m_connections;
};

} // namespace ZoVelkor::Tools
