#include "CLxiEventEndpoint.h"

#include "CCritSectionLocker.h"
#include "CLxiDuplicateFilter.h"
#include "CLxiReceiver.h"
#include "CMutexLocker.h"
#include "GuardedEntry.h"
#include "LxiClock.h"

#include <asio/ip/multicast.hpp>

#include <algorithm>
#include <atomic>
#include <utility>

namespace ZoVelkor::RemoteKernel
{
namespace
{

using asio::ip::udp;

/// The socket that messages go out by. Each endpoint has a port of its own for it, so that receivers can tell
/// the endpoints of one machine apart.
class CLxiSender
{
public:
    explicit CLxiSender(const asio::ip::address_v4& address) : m_socket(m_context, udp::endpoint(address, 0))
    {
        m_socket.set_option(asio::ip::multicast::outbound_interface(address));
        m_socket.set_option(asio::ip::multicast::enable_loopback(true));
    }

    bool Send(std::span<const std::uint8_t> message, const udp::endpoint& receiver)
    {
        asio::error_code error;
        m_socket.send_to(asio::buffer(message.data(), message.size()), receiver, 0, error);
        return !error;
    }

    /// What receivers take it for.
    LxiPeer Self()
    {
        asio::ip::address address = m_socket.local_endpoint().address();
        if (address.is_unspecified())
        {
            // Connecting sends nothing; it finds the address of the interface that the group is reached by.
            udp::socket probe(m_context, udp::v4());
            asio::error_code ignored;
            probe.connect({LxiAddress(kLxiMulticastGroup), kLxiPort}, ignored);
            address = probe.local_endpoint(ignored).address();
        }
        return {address.to_v4().to_uint(), m_socket.local_endpoint().port(), false};
    }

private:
    asio::io_context m_context{1};
    udp::socket m_socket;
};

std::unique_ptr<CLxiSender> MakeSender(const std::string& address)
{
    const asio::ip::address_v4 parsed = LxiAddress(address);
    try
    {
        return std::make_unique<CLxiSender>(parsed);
    }
    catch (const std::system_error& error)
    {
        throw std::system_error(error.code(), "Cannot send LXI events by " + address);
    }
}

} // namespace

class CLxiEventEndpoint::CImplementation
{
public:
    explicit CImplementation(LxiEndpointSettings settings) : m_settings(std::move(settings))
    {
        m_settings.retransmissions = std::min(m_settings.retransmissions, kMaxLxiRetransmissions);
    }

    void Start();
    void Stop();
    HRESULT AddObserver(long event, ILxiEventObserver* observer);
    HRESULT RemoveObserver(long event, ILxiEventObserver* observer);
    HRESULT Send(CLxiLanPacket& packet, const udp::endpoint& receiver, unsigned retransmissions);

    const LxiEndpointSettings& Settings() const noexcept { return m_settings; }
    std::uint16_t Port() const noexcept { return m_port; }
    std::uint16_t MulticastPort() const noexcept { return m_multicastPort; }
    CLxiEventLog& Log() noexcept { return m_log; }
    CLxiErrorStorage& Errors() noexcept { return m_errors; }
    HRESULT Fail(EnumLxiErrors code, HRESULT result);

private:
    void OnMessage(std::span<const std::uint8_t> message, const LxiPeer& peer);
    void CallObservers(const LxiEvent& event);

    LxiEndpointSettings m_settings;
    CLxiEventLog m_log;
    CLxiErrorStorage m_errors;
    std::atomic<std::uint16_t> m_port{0};
    std::atomic<std::uint16_t> m_multicastPort{0};

    // Held around calls of observers, which may take locks of their own.
    CCritSection m_observerSection;
    std::vector<ILxiEventObserver*> m_observers[kLxiEventCount] ZO_GUARDED_BY(m_observerSection);

    CMutex m_sendMutex;
    std::unique_ptr<CLxiSender> m_sender ZO_GUARDED_BY(m_sendMutex);

    CLxiDuplicateFilter m_filter; // the receiving thread's, while it runs
    LxiPeer m_self;               // the same

    CMutex m_runMutex ZO_ACQUIRED_BEFORE(m_sendMutex);                  // start and stop one at a time
    std::unique_ptr<CLxiReceiver> m_receiver ZO_GUARDED_BY(m_runMutex); // last: its thread uses the others
};

void CLxiEventEndpoint::CImplementation::Start()
{
    const CMutexLocker lock(m_runMutex);
    if (m_receiver != nullptr)
    {
        return;
    }
    try
    {
        auto sender = MakeSender(m_settings.address);
        m_self = sender->Self();
        m_filter = {};
        // Held, so that an observer of the very first event can send.
        const CMutexLocker sendLock(m_sendMutex);
        m_receiver = std::make_unique<CLxiReceiver>(
            m_settings, [this](auto message, const LxiPeer& peer) { OnMessage(message, peer); });
        m_port = m_receiver->Port();
        m_multicastPort = m_receiver->MulticastPort();
        m_sender = std::move(sender);
    }
    catch (...)
    {
        Fail(EnumLxiErrors::CapabilityConnection, E_FAIL);
        throw;
    }
}

void CLxiEventEndpoint::CImplementation::Stop()
{
    const CMutexLocker lock(m_runMutex);
    m_receiver.reset();
    m_port = 0;
    m_multicastPort = 0;
    const CMutexLocker sendLock(m_sendMutex);
    m_sender.reset();
}

HRESULT CLxiEventEndpoint::CImplementation::Fail(EnumLxiErrors code, HRESULT result)
{
    m_errors.SetError(code);
    return result;
}

HRESULT CLxiEventEndpoint::CImplementation::AddObserver(long event, ILxiEventObserver* observer)
{
    if (observer == nullptr)
    {
        return E_POINTER;
    }
    if (event < 0 || event >= kLxiEventCount)
    {
        return Fail(EnumLxiErrors::EventNotFound, E_INVALIDARG);
    }
    const CCritSectionLocker locker(m_observerSection);
    std::vector<ILxiEventObserver*>& observers = m_observers[event];
    if (std::ranges::count(observers, observer) != 0)
    {
        return Fail(EnumLxiErrors::EventExists, E_INVALIDARG);
    }
    observers.push_back(observer);
    return S_OK;
}

HRESULT CLxiEventEndpoint::CImplementation::RemoveObserver(long event, ILxiEventObserver* observer)
{
    const CCritSectionLocker locker(m_observerSection);
    const bool isEvent = event >= 0 && event < kLxiEventCount;
    const bool isRemoved = isEvent && std::erase(m_observers[event], observer) != 0;
    return isRemoved ? S_OK : Fail(EnumLxiErrors::EventNotFound, E_INVALIDARG);
}

HRESULT CLxiEventEndpoint::CImplementation::Send(CLxiLanPacket& packet,
                                                 const udp::endpoint& receiver,
                                                 unsigned retransmissions)
{
    const CMutexLocker lock(m_sendMutex);
    if (m_sender == nullptr)
    {
        return E_UNEXPECTED;
    }
    std::vector<std::uint8_t> message = EncodeLxiMessage(packet);
    if (message.empty())
    {
        return E_INVALIDARG;
    }
    if (!m_sender->Send(message, receiver))
    {
        return Fail(EnumLxiErrors::CapabilityConnection, E_FAIL);
    }
    m_log.Add(LxiLogKind::Sent, {receiver.address().to_v4().to_uint(), receiver.port(), false}, message);
    MarkLxiRetransmission(message);
    for (unsigned i = 0; i != retransmissions; ++i)
    {
        // The message is out; what becomes of a copy does not matter.
        static_cast<void>(m_sender->Send(message, receiver));
    }
    return S_OK;
}

void CLxiEventEndpoint::CImplementation::OnMessage(std::span<const std::uint8_t> message, const LxiPeer& peer)
{
    CLxiLanPacket packet;
    if (peer == m_self || !DecodeLxiMessage(message, packet) || packet.getDomain() != m_settings.domain)
    {
        return;
    }
    const bool isAcknowledgement = packet.getIsAcknowledgement() != 0;
    // An acknowledgement bears the number of what it answers, which is none of its sender's own.
    const bool isNew =
        isAcknowledgement || m_filter.Accept(peer,
                                             static_cast<std::uint32_t>(packet.getSequenceNumber()),
                                             packet.getIsRetransmission() != 0,
                                             CLxiDuplicateFilter::Clock::now());
    const LxiLogKind kind = isAcknowledgement ? LxiLogKind::Acknowledgement : LxiLogKind::Received;
    m_log.Add(isNew ? kind : LxiLogKind::Duplicate, peer, message);
    const long event = LxiEventNumber(packet);
    if (!isNew || isAcknowledgement || event == kUnknownLxiEvent)
    {
        return;
    }
    const CLxiTime stamp(static_cast<unsigned short>(packet.getEpoch()), packet.getTimestamp());
    // A stamp of 0 is that of a sender without a clock: the event is now.
    CallObservers({packet, event, stamp == CLxiTime() ? LxiNow() : stamp, peer});
}

void CLxiEventEndpoint::CImplementation::CallObservers(const LxiEvent& event)
{
    const CCritSectionLocker locker(m_observerSection);
    const std::vector<ILxiEventObserver*>& current = m_observers[event.event];
    // A copy: observers may remove themselves and others.
    for (ILxiEventObserver* const observer : std::vector(current))
    {
        if (std::ranges::count(current, observer) != 0)
        {
            static_cast<void>(GuardedEntry([&]() -> HRESULT {
                observer->OnLxiEvent(event);
                return S_OK;
            }));
        }
    }
}

CLxiEventEndpoint::CLxiEventEndpoint(LxiEndpointSettings settings)
    : m_implementation(std::make_unique<CImplementation>(std::move(settings)))
{}

CLxiEventEndpoint::~CLxiEventEndpoint()
{
    Stop();
}

void CLxiEventEndpoint::Start()
{
    m_implementation->Start();
}

void CLxiEventEndpoint::Stop()
{
    m_implementation->Stop();
}

std::uint16_t CLxiEventEndpoint::Port() const
{
    return m_implementation->Port();
}

std::uint16_t CLxiEventEndpoint::MulticastPort() const
{
    return m_implementation->MulticastPort();
}

HRESULT CLxiEventEndpoint::AddObserver(long event, ILxiEventObserver* observer)
{
    return m_implementation->AddObserver(event, observer);
}

HRESULT CLxiEventEndpoint::RemoveObserver(long event, ILxiEventObserver* observer)
{
    return m_implementation->RemoveObserver(event, observer);
}

HRESULT CLxiEventEndpoint::Send(CLxiLanPacket& packet)
{
    return m_implementation->Send(packet,
                                  {LxiAddress(kLxiMulticastGroup), MulticastPort()},
                                  m_implementation->Settings().retransmissions);
}

HRESULT CLxiEventEndpoint::SendTo(CLxiLanPacket& packet, const std::string& address, std::uint16_t port)
{
    asio::error_code error;
    const asio::ip::address_v4 receiver = asio::ip::make_address_v4(address, error);
    return error ? E_INVALIDARG : m_implementation->Send(packet, {receiver, port}, 0);
}

HRESULT CLxiEventEndpoint::SendEvent(long event, const CLxiTime& time)
{
    if (event < 0 || event >= kLxiEventCount)
    {
        return m_implementation->Fail(EnumLxiErrors::EventNotFound, E_INVALIDARG);
    }
    CLxiLanPacket packet;
    SetLxiEvent(packet, event);
    packet.setDomain(m_implementation->Settings().domain);
    packet.setEpoch(time.GetEpoch());
    packet.setTimestamp(time.GetSeconds(), time.GetNanoSeconds(), 0);
    return Send(packet);
}

CLxiEventLog& CLxiEventEndpoint::Log() noexcept
{
    return m_implementation->Log();
}

CLxiErrorStorage& CLxiEventEndpoint::Errors() noexcept
{
    return m_implementation->Errors();
}

} // namespace ZoVelkor::RemoteKernel
