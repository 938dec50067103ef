#include "CDemoInstrument.h"

#include "Analyzer/CAnalyzerApplication.h"
#include "Analyzer/CAnalyzerProperties.h"
#include "CInstrumentApplication.h"
#include "CPowerOnStore.h"
#include "CRemoteKernel.h"
#include "CSwplScpiManager.h"
#include "CTcpServer.h"
#include "Common/CRootRegistration.h"
#include "Conformance/CConformanceCommands.h"
#include "ErrorRaising.h"
#include "Generator/CGeneratorCommands.h"
#include "KeptSettings.h"
#include "Lxi/CLxiApplication.h"

#include <optional>

namespace ZoVelkor::Demo
{
namespace
{

ZO_SOURCE_UNIT("DemoInstrument/Instrument/CDemoInstrument")

/// What the instrument remembers of its former starts.
struct tagMemory
{
    explicit tagMemory(const std::string& file) : registry(file)
    {
        clock.Load(registry);
        ApplyDiagnosis(registry);
    }

    CInstrumentClock clock; // first: nothing can set the machine's clock
    CInstrumentRegistry registry;
    CPowerOnStore powerOn{registry};
};

RemoteKernel::tagTcpServerSettings ServerSettings(const tagDemoOptions& options)
{
    RemoteKernel::tagTcpServerSettings settings;
    settings.sAddress = options.sBindAddress;
    settings.iPort = options.iPort;
    return settings;
}

std::optional<RemoteKernel::tagLxiEndpointSettings> LxiSettings(const tagDemoOptions& options)
{
    if (!options.lxiPort)
    {
        return std::nullopt;
    }
    RemoteKernel::tagLxiEndpointSettings settings;
    settings.sAddress = options.sBindAddress;
    settings.iPort = *options.lxiPort;
    settings.iMulticastPort = options.iLxiMulticastPort;
    return settings;
}

/// Remote control that applications can find from the moment it is made.
struct tagStartedKernel
{
    explicit tagStartedKernel(tagMemory* pMemory)
        : kernel(pMemory == nullptr
                     ? RemoteKernel::tagInstrumentIdentity{"Zo", "Demo Conformance", "0", ZO_DEMO_VERSION}
                     : ReadIdentity(pMemory->registry))
    {
        if (const HRESULT hr = kernel.Start(); FAILED(hr))
        {
            ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control does not start", hr));
        }
        if (pMemory != nullptr)
        {
            kernel.PowerOn(pMemory->powerOn.Load(), &pMemory->powerOn);
            ApplyDataFormat(pMemory->registry);
        }
    }

    RemoteKernel::CRemoteKernel kernel;
};

/// The applications of the measuring instrument and what gives access to their settings.
struct tagMeasuringInstrument
{
    tagMeasuringInstrument(const RemoteKernel::CRemoteKernel& kernel,
                           tagMemory& memory,
                           const std::optional<RemoteKernel::tagLxiEndpointSettings>& lxiSettings)
        : lxi(analyzer.Sweeps(), lxiSettings),
          instrument(
              memory.registry,
              memory.clock,
              {memory.registry, analyzer.Access(kernel), generator.Access(kernel), lxi.Access(kernel)}),
          properties(
              IID_IZOScalarPropertyAccess,
              CComObject<CAnalyzerProperties, IZOScalarPropertyAccess>::Create(analyzer.Access(kernel)))
    {}

    CAnalyzerApplication analyzer;
    CGeneratorApplication generator;
    CLxiApplication lxi;
    CInstrumentApplication instrument;
    CRootRegistration properties;
};

} // namespace

/// In the order of the start; they go in the reverse one: clients, applications, remote control.
struct CDemoInstrument::tagParts
{
    explicit tagParts(const tagDemoOptions& options)
        : memory(options.eProfile == tagDemoProfile::Conformance
                     ? nullptr
                     : std::make_unique<tagMemory>(options.sRegistryFile)),
          remoteControl(memory.get()),
          server(ServerSettings(options))
    {
        if (memory != nullptr)
        {
            measuring.emplace(remoteControl.kernel, *memory, LxiSettings(options));
        }
        else
        {
            conformance.emplace();
        }
        // Once, when all applications are there: none of them lifts a stop that somebody has made since.
        CSwplScpiManager manager;
        manager.Find();
        manager.StartParser(false);
        server.Start();
    }

    std::unique_ptr<tagMemory> memory; // null: nothing is kept
    tagStartedKernel remoteControl;
    std::optional<tagMeasuringInstrument> measuring;
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

std::uint16_t CDemoInstrument::LxiPort() const
{
    return m_spParts->measuring ? m_spParts->measuring->lxi.Trigger().Endpoint().Port() : std::uint16_t{0};
}

std::uint16_t CDemoInstrument::LxiMulticastPort() const
{
    return m_spParts->measuring ? m_spParts->measuring->lxi.Trigger().Endpoint().MulticastPort()
                                : std::uint16_t{0};
}

std::string CDemoInstrument::LxiFault() const
{
    return m_spParts->measuring ? m_spParts->measuring->lxi.Trigger().Fault() : std::string();
}

} // namespace ZoVelkor::Demo
