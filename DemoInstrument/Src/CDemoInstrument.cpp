#include "CDemoInstrument.h"

#include "CAnalyzerApplication.h"
#include "CConformanceCommands.h"
#include "CGeneratorCommands.h"
#include "CRemoteKernel.h"
#include "CTcpServer.h"
#include "ErrorRaising.h"

#include <optional>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Src/CDemoInstrument")

RemoteKernel::tagInstrumentIdentity Identity(tagDemoProfile profile)
{
    const char* const model = profile == tagDemoProfile::Analyzer ? "Demo Analyser" : "Demo Conformance";
    return {"Zo", model, "0", ZO_DEMO_VERSION};
}

RemoteKernel::tagTcpServerSettings ServerSettings(const tagDemoOptions& options)
{
    RemoteKernel::tagTcpServerSettings settings;
    settings.sAddress = options.sBindAddress;
    settings.iPort = options.iPort;
    return settings;
}

/// Remote control that applications can find from the moment it is made.
struct tagStartedKernel
{
    explicit tagStartedKernel(tagDemoProfile profile) : kernel(Identity(profile))
    {
        if (const HRESULT hr = kernel.Start(); FAILED(hr))
        {
            ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control does not start", hr));
        }
    }

    RemoteKernel::CRemoteKernel kernel;
};

} // namespace

/// In the order of the start; they go in the reverse one: clients, applications, remote control.
struct CDemoInstrument::tagParts
{
    explicit tagParts(const tagDemoOptions& options)
        : remoteControl(options.eProfile),
          server(ServerSettings(options))
    {
        if (options.eProfile == tagDemoProfile::Analyzer)
        {
            analyzer.emplace();
            generator.emplace();
        }
        else
        {
            conformance.emplace();
        }
        server.Start();
    }

    tagStartedKernel remoteControl;
    std::optional<CAnalyzerApplication> analyzer;
    std::optional<CGeneratorApplication> generator;
    std::optional<Conformance::CConformanceApplication> conformance;
    RemoteKernel::CTcpServer server;
};

CDemoInstrument::CDemoInstrument(const tagDemoOptions& options)
    : m_spParts(std::make_unique<tagParts>(options))
{}

CDemoInstrument::~CDemoInstrument() = default;

std::uint16_t CDemoInstrument::Port() const
{
    return m_spParts->server.Port();
}

std::string CDemoInstrument::Address() const
{
    return m_spParts->server.Endpoint();
}

} // namespace ZoVelkor::Demo
