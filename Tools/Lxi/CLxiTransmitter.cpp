#include "CLxiTransmitter.h"

#include "CLxiEventEndpoint.h"
#include "Common/CToolError.h"
#include "Instrument/InstrumentAddress.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>
#include <system_error>

namespace ZoVelkor::Tools
{

namespace
{

/// The first IPv4 address of a host.
sockaddr_in FindHost(const InstrumentAddress& address)
{
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    const int fault = getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found);
    if (fault != 0)
    {
        throw CToolError(ExitCode::NoAccess,
                         fmt::format("cannot find host {}: {}", address.host, gai_strerror(fault)));
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
    sockaddr_in name{};
    std::memcpy(&name, found->ai_addr, sizeof name);
    return name;
}

sockaddr_in FindReceiver(const LxiReceiver& receiver)
{
    if (receiver.address.empty())
    {
        return SocketName(TakeIpAddress(RemoteKernel::kLxiMulticastGroup), receiver.port);
    }
    return FindHost(TakeInstrumentAddress(receiver.address, std::to_string(receiver.port)));
}

} // namespace

CLxiTransmitter::CLxiTransmitter(const LxiReceiver& receiver) : m_name(FindReceiver(receiver))
{
    if (!receiver.isTcp)
    {
        OpenUdp(receiver);
        return;
    }
    try
    {
        m_tcp.emplace(AddressText(m_name.sin_addr), ntohs(m_name.sin_port));
    }
    catch (const std::system_error& error)
    {
        throw CToolError(ExitCode::NoAccess, error.what());
    }
}

void CLxiTransmitter::OpenUdp(const LxiReceiver& receiver)
{
    m_udp.Reset(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    constexpr int kOn = 1;
    if (!m_udp || setsockopt(m_udp.Get(), SOL_SOCKET, SO_BROADCAST, &kOn, sizeof kOn) != 0)
    {
        Fail(errno);
    }
    if (receiver.address.empty())
    {
        const sockaddr_in source = SocketName(TakeIpAddress(receiver.interface), 0);
        const auto* const name = reinterpret_cast<const sockaddr*>(&source);
        if (setsockopt(m_udp.Get(), IPPROTO_IP, IP_MULTICAST_IF, &source.sin_addr, sizeof source.sin_addr) !=
                0 ||
            bind(m_udp.Get(), name, sizeof source) != 0)
        {
            Fail(errno);
        }
    }
}

void CLxiTransmitter::Send(std::span<const std::uint8_t> message)
{
    if (m_tcp)
    {
        if (FAILED(m_tcp->Send(message)))
        {
            Fail(errno);
        }
        return;
    }
    const auto* const name = reinterpret_cast<const sockaddr*>(&m_name);
    if (sendto(m_udp.Get(), message.data(), message.size(), 0, name, sizeof m_name) < 0)
    {
        Fail(errno);
    }
}

void CLxiTransmitter::Fail(int error) const
{
    throw CToolError(ExitCode::NoAccess,
                     fmt::format("cannot send to {}: {}", Receiver().Text(), std::strerror(error)));
}

} // namespace ZoVelkor::Tools
