#include "CDemoInstrument.h"
#include "CShellError.h"
#include "CSignalWaiter.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <malloc.h>
#include <string>

namespace
{

using namespace ZoVelkor::Demo;

/// Exit code for options that make no sense; EXIT_FAILURE says that the instrument could not start.
constexpr int kExitUsage = 2;

constexpr const char* kAnalyzerProfile = "analyzer";
constexpr const char* kConformanceProfile = "conformance";
constexpr const char* kNoLxi = "off";

void SayReady(const CDemoInstrument& instrument)
{
    fmt::print("zo-demo-instrument ready on {} (raw SCPI)\n", instrument.Address());
    if (!instrument.LxiFault().empty())
    {
        fmt::print(stderr, "zo-demo-instrument: no LXI events: {}\n", instrument.LxiFault());
    }
    else if (instrument.LxiPort() != 0)
    {
        fmt::print("LXI events on port {}, multicast port {}\n",
                   instrument.LxiPort(),
                   instrument.LxiMulticastPort());
    }
    std::fflush(stdout);
}

/// Sets the port of LXI events from its option; false for what is none.
bool ReadLxiPort(const std::string& text, DemoOptions& options)
{
    if (text == kNoLxi)
    {
        options.lxiPort.reset();
        return true;
    }
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, port);
    options.lxiPort = port;
    return fault == std::errc() && stop == end;
}

void PrepareProcess() noexcept
{
    // Whoever reads the log may go; the instrument stays.
    std::signal(SIGPIPE, SIG_IGN);
    // Fixed, so that memory of a large message goes back to the system with the message. Left alone, the C
    // library raises the bound to the size of the message and keeps as much for every arena of its own.
    constexpr int kOwnPagesFromBytes = 128 << 10;
    mallopt(M_MMAP_THRESHOLD, kOwnPagesFromBytes);
}

int RunInstrument(const DemoOptions& options)
try
{
    const CSignalWaiter signals;
    const CDemoInstrument instrument(options);
    SayReady(instrument);
    signals.Wait();
    return EXIT_SUCCESS;
}
catch (const ZoVelkor::CShellError&)
{
    return EXIT_FAILURE; // whoever raised it has reported it in its line on stderr
}
catch (const std::exception& fault)
{
    fmt::print(stderr, "zo-demo-instrument: {}\n", fault.what());
    return EXIT_FAILURE;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): out of memory before there is an instrument, nothing is lost
int main(int argc, char** argv)
{
    DemoOptions options;
    CLI::App app("A small simulated instrument, controlled by SCPI over TCP.", "zo-demo-instrument");
    std::string profile = kAnalyzerProfile;
    app.add_option("--profile", profile, "Analyser and generator, or one command of every kind for tests")
        ->check(CLI::IsMember({kAnalyzerProfile, kConformanceProfile}))
        ->capture_default_str();
    app.add_option("--port", options.port, "TCP port; 0 takes a free one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--bind", options.bindAddress, "IP address to listen on; 0.0.0.0 for all")
        ->capture_default_str();
    app.add_option("--registry", options.registryFile, "Database file of what the instrument remembers");
    options.lxiPort = kDefaultLxiPort;
    app.add_option_function<std::string>(
           "--lxi-port",
           [&options](const std::string& text) {
               if (!ReadLxiPort(text, options))
               {
                   throw CLI::ValidationError("--lxi-port", "a port, or \"off\"");
               }
           },
           "UDP and TCP port of LXI events; 0 takes a free one, \"off\" has none. Multicast stays at 5044")
        ->default_str(std::to_string(kDefaultLxiPort));
    app.set_version_flag("--version", "zo-demo-instrument " ZO_DEMO_VERSION);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& fault)
    {
        return app.exit(fault) == 0 ? EXIT_SUCCESS : kExitUsage;
    }
    options.profile = profile == kConformanceProfile ? DemoProfile::Conformance : DemoProfile::Analyzer;
    PrepareProcess();
    return RunInstrument(options);
}
