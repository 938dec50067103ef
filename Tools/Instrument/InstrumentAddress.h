#pragma once

#include <optional>
#include <string>

namespace ZoVelkor::Tools
{

/// Where an instrument answers raw SCPI over TCP.
struct InstrumentAddress
{
    std::string host; ///< name or IP address, without brackets
    std::string port; ///< 1 to 65535

    /// As messages name it.
    std::string Text() const;
};

/// Understands `TCPIP::host::port::SOCKET` (any case, a board number behind TCPIP), `host:port` and
/// `[IPv6 address]:port`.
///
/// @return nothing when the text is no address
/// @throws CToolError (Usage) for an address that begins like the first form and is not of that form
std::optional<InstrumentAddress> ParseInstrumentAddress(const std::string& text);

/// The same where nothing but an address can stand.
///
/// @param defaultPort  when the text has none; unless given, the usual one for raw SCPI
/// @throws CToolError (Usage)
InstrumentAddress TakeInstrumentAddress(const std::string& text, const std::string& defaultPort = "5025");

} // namespace ZoVelkor::Tools
