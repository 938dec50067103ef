// Instrument: the whole, and what concerns all of its applications.
//
// CDemoInstrument makes kernel, applications and server in this order and takes them down in the reverse;
// main reads the command line. The application "instrument" has saved states (CSavedStates, by way of
// CStateText and each application's CApplicationAccess), clock, identity and kept settings
// (CInstrumentRegistry, CPowerOnStore).
// Lock order: the lock of "instrument" before those of the other applications, never the other way round.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ZoVelkor::Demo
{

/// The port that raw SCPI over TCP is expected on.
inline constexpr std::uint16_t kDefaultPort = 5025;

/// The port that LXI events are expected on.
inline constexpr std::uint16_t kDefaultLxiPort = 5044;

/// What the instrument is.
enum class DemoProfile
{
    Analyzer,   ///< a signal analyser and a signal generator beside it
    Conformance ///< one command of every kind, to test controllers and the remote interface with
};

/// What the instrument is and where it listens.
struct DemoOptions
{
    std::string bindAddress = "127.0.0.1"; ///< an IP address
    std::uint16_t port = kDefaultPort;     ///< 0: a free one
    DemoProfile profile = DemoProfile::Analyzer;
    std::string registryFile{}; ///< database of the registry; empty: the one that the environment names. The
                                ///< conformance profile keeps nothing
    std::optional<std::uint16_t> lxiPort{}; ///< UDP and TCP port of LXI events, 0: a free one; null: there
                                            ///< are none, nor are there in the conformance profile
    std::uint16_t lxiMulticastPort = kDefaultLxiPort; ///< 0: the same as lxiPort
};

/// The whole instrument: remote control, its applications, and the server that clients connect to.
///
/// There is one at a time in a process. The destructor closes all connections and ends what is
/// pending.
class CDemoInstrument
{
public:
    /// Starts the instrument; when the constructor returns it answers.
    ///
    /// @throws CShellError or std::exception when the address is no good or the port is taken; the message
    /// says which
    explicit CDemoInstrument(const DemoOptions& options);
    CDemoInstrument(const CDemoInstrument&) = delete;
    CDemoInstrument& operator=(const CDemoInstrument&) = delete;
    ~CDemoInstrument();

    /// The port that it listens on.
    std::uint16_t Port() const;

    /// Address and port, as a client writes them.
    std::string Address() const;

    /// The ports of LXI events; 0 without.
    std::uint16_t LxiPort() const;
    std::uint16_t LxiMulticastPort() const;

    /// Why there are no LXI events though they were asked for; empty when all is well. The instrument works
    /// without them.
    std::string LxiFault() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace ZoVelkor::Demo
