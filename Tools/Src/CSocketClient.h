#pragma once

#include "InstrumentAddress.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

struct addrinfo;

namespace ZoVelkor::Tools
{

/// A connection to an instrument: bytes out, answers in.
///
/// Every operation ends within the time-out given at construction, the look-up of a host name excepted. All
/// errors are CToolError (NoAccess) with the address and what was wrong; the object is of no use after one.
/// Threads: one at a time.
class CSocketClient
{
public:
    /// Connects, trying all addresses of a host name.
    CSocketClient(const tagInstrumentAddress& address, std::chrono::milliseconds timeout);
    CSocketClient(const CSocketClient&) = delete;
    CSocketClient& operator=(const CSocketClient&) = delete;
    ~CSocketClient();

    /// Sends all bytes as they are.
    void Send(std::string_view bytes);

    /// Reads up to the first of some characters, which ends the result.
    ///
    /// @param limit  an error beyond so many bytes
    std::string ReadUntil(std::string_view ends, std::size_t limit);

    /// Reads exactly so many bytes.
    std::string Read(std::size_t count);

private:
    using CClock = std::chrono::steady_clock;

    bool TryConnect(const addrinfo& candidate, CClock::time_point deadline);
    bool WaitFor(short events, CClock::time_point deadline);
    void Receive(CClock::time_point deadline);
    [[noreturn]] void FailConnect(int fault) const;
    double TimeoutSeconds() const { return static_cast<double>(m_timeout.count()) / 1000.0; }
    [[noreturn]] void FailTransfer(const std::string& what) const;
    std::string TakeReceived(std::size_t count);
    void Close() noexcept;

    const std::string m_sAddress;
    const std::chrono::milliseconds m_timeout;
    int m_socket = -1;
    std::string m_received;
    std::size_t m_iReceived = 0; ///< bytes that came since the connection was made
};

} // namespace ZoVelkor::Tools
