// Lxi: LXI event messages in and out.
//
// CLxiReceiver hears UDP and TCP on the endpoint's thread; what is a message (LxiEventFormat) and new by
// CLxiDuplicateFilter goes to the CLxiEventLog and, by its event's number, to the observers. What is sent
// gets its number, goes to the group or one receiver, and is logged too. CLxiTcpSender and CLxiStreamDecoder
// serve tools as well. An instrument owns an endpoint and calls it from any thread; the rest of the kernel
// does not know this room.
// Lock order: start and stop before sending; observers are called with the lock of their list held, and must
// not take one that is held while AddObserver or RemoveObserver is called.

#pragma once

#include "CLxiErrorStorage.h"
#include "CLxiEventLog.h"
#include "ILxiEventObserver.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace ZoVelkor::RemoteKernel
{

/// IANA's port and IPv4 multicast group of LXI events.
inline constexpr std::uint16_t kLxiPort = 5044;
inline constexpr const char* kLxiMulticastGroup = "224.0.23.159";

/// TCP connections that one endpoint takes at a time; a further one is closed at once.
inline constexpr std::size_t kMaxLxiConnections = 32;
/// Times that a multicast message may be sent again.
inline constexpr unsigned kMaxLxiRetransmissions = 8;

struct LxiEndpointSettings
{
    /// IPv4 address of the interface that events come and go by; 0.0.0.0 receives by all, multicast by
    /// the one that the system chooses and by loopback.
    std::string address = "127.0.0.1";
    std::uint16_t port = kLxiPort;          ///< UDP unicast and TCP; 0: a free one, see Port
    std::uint16_t multicastPort = kLxiPort; ///< 0: the same as Port
    std::uint8_t domain = 0;                ///< messages of other domains are dropped
    unsigned retransmissions = 0;           ///< of each multicast message, 0 to kMaxLxiRetransmissions
};

/// Sends and receives LXI event messages: UDP multicast, UDP and TCP (LXI Event Messaging Extended Function).
///
/// Messages that have come before are known by sender and sequence number, see CLxiDuplicateFilter; an event
/// is heard once, whether marked as sent again or not. What is no message changes nothing; a TCP connection
/// ends with it. The endpoint's own multicast messages are not heard. Several endpoints on one machine can
/// share the multicast port; UDP unicast and TCP belong to one of them.
/// Threads: any operation from any thread.
class CLxiEventEndpoint
{
public:
    explicit CLxiEventEndpoint(LxiEndpointSettings settings = {});
    CLxiEventEndpoint(const CLxiEventEndpoint&) = delete;
    CLxiEventEndpoint& operator=(const CLxiEventEndpoint&) = delete;
    /// Stops.
    ~CLxiEventEndpoint();

    /// Listens, on a thread of its own, and returns. Nothing happens when it has been started already.
    ///
    /// @throws std::system_error with a message that names address and port; the last error is then
    /// "connection of a capability"
    void Start();

    /// Closes all connections and waits for an observer at work; not called by observers. It can be started
    /// again.
    void Stop();

    /// The ports that are really listened on; 0 before Start.
    std::uint16_t Port() const;
    std::uint16_t MulticastPort() const;

    /// Lets an observer hear of an event.
    ///
    /// @param event     0 to 7, or ZO_LXI_ERROR
    /// @param observer  borrowed until RemoveObserver or the endpoint's end
    /// @return S_OK; E_INVALIDARG when there is no such event (last error "event not found") or it observes
    /// the event already (last error "event exists"); E_POINTER
    HRESULT AddObserver(long event, ILxiEventObserver* observer);

    /// The observer is not called any more; a call under way on another thread is waited for.
    ///
    /// @return S_OK; E_INVALIDARG when it does not observe the event (last error "event not found")
    HRESULT RemoveObserver(long event, ILxiEventObserver* observer);

    /// Sends a packet to the multicast group, with retransmissions, or to one receiver. The packet gets its
    /// sequence number; its length on the wire is the one that it announces.
    ///
    /// @param address  IPv4
    /// @return S_OK; E_UNEXPECTED when not started; E_INVALIDARG for a packet that no message can be made of
    /// or an address that is none; E_FAIL when the network refuses it (last error "connection of a
    /// capability")
    HRESULT Send(CLxiLanPacket& packet);
    HRESULT SendTo(CLxiLanPacket& packet, const std::string& address, std::uint16_t port);

    /// Makes an event of the endpoint's domain and sends it to the multicast group.
    ///
    /// @param event  0 to 7, or ZO_LXI_ERROR
    /// @return as Send; E_INVALIDARG when there is no such event (last error "event not found")
    HRESULT SendEvent(long event, const CLxiTime& time);

    CLxiEventLog& Log() noexcept;
    CLxiErrorStorage& Errors() noexcept;

private:
    class CImplementation;
    std::unique_ptr<CImplementation> m_implementation;
};

} // namespace ZoVelkor::RemoteKernel
