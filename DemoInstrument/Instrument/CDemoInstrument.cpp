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

ZO_SOURCE_UNIT("DemoInstrument/Instrument/CDemoInstrument");

/// What the instrument remembers of its former starts.
struct Memory
{
    explicit Memory(const std::string& file) : registry(file)
    {
        clock.Load(registry);
        ApplyDiagnosis(registry);
    }

    CInstrumentClock clock; // first: nothing can set the machine's clock
    CInstrumentRegistry registry;
    CPowerOnStore powerOn{registry};
};

Transports::TcpServerSettings ServerSettings(const DemoOptions& options)
{
    Transports::TcpServerSettings settings;
    settings.address = options.bindAddress;
    settings.port = options.port;
    return settings;
}

std::optional<RemoteKernel::LxiEndpointSettings> LxiSettings(const DemoOptions& options)
{
    if (!options.lxiPort)
    {
        return std::nullopt;
    }
    RemoteKernel::LxiEndpointSettings settings;
    settings.address = options.bindAddress;
    settings.port = *options.lxiPort;
    settings.multicastPort = options.lxiMulticastPort;
    return settings;
}

/// Remote control that applications can find from the moment it is made.
struct StartedKernel
{
    explicit StartedKernel(Memory* memory)
        : kernel(memory == nullptr
                     ? RemoteKernel::InstrumentIdentity{"Zo", "Demo Conformance", "0", ZO_DEMO_VERSION}
                     : ReadIdentity(memory->registry))
    {
        if (const HRESULT result = kernel.Start(); FAILED(result))
        {
            ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control does not start", result));
        }
        if (memory != nullptr)
        {
            kernel.PowerOn(memory->powerOn.Load(), &memory->powerOn);
            ApplyDataFormat(memory->registry);
        }
    }

    RemoteKernel::CRemoteKernel kernel;
};

/// The applications of the measuring instrument and what gives access to their settings.
struct MeasuringInstrument
{
    MeasuringInstrument(const RemoteKernel::CRemoteKernel& kernel,
                        Memory& memory,
                        const std::optional<RemoteKernel::LxiEndpointSettings>& lxiSettings)
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
struct CDemoInstrument::Parts
{
    explicit Parts(const DemoOptions& options)
        : memory(options.profile == DemoProfile::Conformance
                     ? nullptr
                     : std::make_unique<Memory>(options.registryFile)),
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

    std::unique_ptr<Memory> memory; // null: nothing is kept
    StartedKernel remoteControl;
    std::optional<MeasuringInstrument> measuring;
    std::optional<Conformance::CConformanceApplication> conformance;
    Transports::CTcpServer server;
};

CDemoInstrument::CDemoInstrument(const DemoOptions& options) : m_parts(std::make_unique<Parts>(options))
{}

CDemoInstrument::~CDemoInstrument() = default;

std::uint16_t CDemoInstrument::Port() const
{
    return m_parts->server.Port();
}

std::string CDemoInstrument::Address() const
{
    return m_parts->server.Endpoint();
}

std::uint16_t CDemoInstrument::LxiPort() const
{
    return m_parts->measuring ? m_parts->measuring->lxi.Trigger().Endpoint().Port() : std::uint16_t{0};
}

std::uint16_t CDemoInstrument::LxiMulticastPort() const
{
    return m_parts->measuring ? m_parts->measuring->lxi.Trigger().Endpoint().MulticastPort()
                              : std::uint16_t{0};
}

std::string CDemoInstrument::LxiFault() const
{
    return m_parts->measuring ? m_parts->measuring->lxi.Trigger().Fault() : std::string();
}

} // namespace ZoVelkor::Demo
