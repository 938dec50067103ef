#pragma once

#include <asio/ip/tcp.hpp>

#include <string>

namespace ZoVelkor::Transports
{

/// An address with its port, as clients are given it: 127.0.0.1:5025 or [::1]:5025.
inline std::string EndpointText(const asio::ip::tcp::endpoint& endpoint)
{
    const std::string address = endpoint.address().to_string();
    return (endpoint.address().is_v6() ? '[' + address + ']' : address) + ':' +
           std::to_string(endpoint.port());
}

} // namespace ZoVelkor::Transports
