// LXI event packets beside a bare copy of the same bytes into a new block.
//
//   build      a packet from its parameters with one user data field of 16 or 1400 bytes, and its bytes
//   write      the bytes alone, of a packet that exists
//   receive    the header out of a datagram with the same field
//   readable   the log line of a packet with 16 bytes
//
// And the way from a datagram of 40 bytes on the loopback interface to a sweep that has started, beside a
// bare echo of the same datagram by a thread that does nothing else. Both wake one thread, which wakes the
// measuring one in turn; they are timed by the clock.
//
// items_per_second are packets.

#include "CLxiLanPacket.h"
#include "CRatioReporter.h"
#include "CRemoteKernel.h"
#include "CUniqueHandle.h"
#include "Lxi/CLxiTrigger.h"
#include "LxiEventFormat.h"

#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace
{

using ZoVelkor::CLxiLanPacket;

constexpr unsigned long long kTime = 0x684E'E180'0000'0007;
constexpr std::int64_t kShort = 16;
constexpr std::int64_t kLong = 1400;

struct Input
{
    explicit Input(const benchmark::State& state)
        : field{1, static_cast<std::uint32_t>(state.range(0)), data.data()}
    {
        data.fill(0x55);
    }

    std::array<std::uint8_t, kLong> data;
    ZoVelkor::tagLxiLanUserDataType field;
};

std::unique_ptr<unsigned char[]> Write(CLxiLanPacket& packet, unsigned long& length)
{
    unsigned char* data = nullptr;
    packet.getSerializedDataStream(length, data);
    return std::unique_ptr<unsigned char[]>(data);
}

CLxiLanPacket& WithField(const Input& input, CLxiLanPacket& packet)
{
    packet.appendUserData(input.field);
    return packet;
}

void Copy(benchmark::State& state)
{
    const Input input(state);
    CLxiLanPacket packet;
    unsigned long length = 0;
    const auto bytes = Write(WithField(input, packet), length);
    for (auto _ : state)
    {
        auto copy = std::make_unique_for_overwrite<unsigned char[]>(length);
        std::memcpy(copy.get(), bytes.get(), length);
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Copy)->Name("CopyShort")->Arg(kShort);
BENCHMARK(Copy)->Name("CopyLong")->Arg(kLong);

void Build(benchmark::State& state)
{
    const Input input(state);
    unsigned long length = 0;
    for (auto _ : state)
    {
        CLxiLanPacket packet(ZoVelkor::ZO_LXI_LAN3, nullptr, 0, nullptr, kTime, 0, 0, 0, -1, 1, &input.field);
        benchmark::DoNotOptimize(Write(packet, length).get());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Build)->Name("BuildShort")->Arg(kShort);
BENCHMARK(Build)->Name("BuildLong")->Arg(kLong);

void Write(benchmark::State& state)
{
    const Input input(state);
    CLxiLanPacket packet;
    WithField(input, packet);
    unsigned long length = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Write(packet, length).get());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Write)->Name("WriteShort")->Arg(kShort);
BENCHMARK(Write)->Name("WriteLong")->Arg(kLong);

void Receive(benchmark::State& state)
{
    const Input input(state);
    CLxiLanPacket sent;
    CLxiLanPacket packet;
    unsigned long length = 0;
    const auto bytes = Write(WithField(input, sent), length);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(packet.addSerializedData(length, bytes.get()));
    }
    if (packet.getSequenceNumber() != sent.getSequenceNumber())
    {
        state.SkipWithError("the header did not come in");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Receive)->Name("ReceiveShort")->Arg(kShort);
BENCHMARK(Receive)->Name("ReceiveLong")->Arg(kLong);

void Readable(benchmark::State& state)
{
    const Input input(state);
    CLxiLanPacket packet;
    WithField(input, packet);
    for (auto _ : state)
    {
        CComBSTR text;
        packet.getReadableLANData(text);
        benchmark::DoNotOptimize(static_cast<BSTR>(text));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Readable)->Name("ReadableShort")->Arg(kShort);

/// A UDP socket of the loopback interface.
class CLoopbackSocket
{
public:
    CLoopbackSocket() : m_socket(socket(AF_INET, SOCK_DGRAM, 0))
    {
        Use(&bind, 0);
        socklen_t size = sizeof m_name;
        getsockname(m_socket.Get(), Name(), &size);
        m_port = ntohs(m_name.sin_port);
    }

    std::uint16_t Port() const { return m_port; }
    void ConnectTo(std::uint16_t port) { Use(&connect, port); }
    void Send(std::span<const std::uint8_t> bytes) { send(m_socket.Get(), bytes.data(), bytes.size(), 0); }
    std::size_t Receive()
    {
        return static_cast<std::size_t>(recv(m_socket.Get(), m_bytes.data(), m_bytes.size(), 0));
    }
    std::span<const std::uint8_t> Bytes(std::size_t size) const { return std::span(m_bytes).first(size); }

private:
    sockaddr* Name() { return reinterpret_cast<sockaddr*>(&m_name); }
    void Use(int (*operation)(int, const sockaddr*, socklen_t), std::uint16_t port)
    {
        m_name.sin_family = AF_INET;
        m_name.sin_port = htons(port);
        m_name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        operation(m_socket.Get(), Name(), sizeof m_name);
    }

    CUniqueHandle<&::close, int, -1> m_socket;
    sockaddr_in m_name{};
    std::uint16_t m_port = 0;
    std::array<std::uint8_t, 64> m_bytes{};
};

/// Times one way there and back by the clock.
template <class TWork>
void Time(benchmark::State& state, TWork work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

std::vector<std::uint8_t> NextMessage()
{
    CLxiLanPacket packet;
    ZoVelkor::RemoteKernel::SetLxiEvent(packet, ZoVelkor::ZO_LXI_LAN0);
    return ZoVelkor::RemoteKernel::EncodeLxiMessage(packet);
}

void Echo(benchmark::State& state)
{
    CLoopbackSocket here;
    CLoopbackSocket there;
    here.ConnectTo(there.Port());
    there.ConnectTo(here.Port());
    std::thread echo([&there] {
        while (const std::size_t size = there.Receive())
        {
            there.Send(there.Bytes(size));
        }
    });
    for (auto _ : state)
    {
        const std::vector<std::uint8_t> message = NextMessage();
        Time(state, [&] {
            here.Send(message);
            here.Receive();
        });
    }
    here.Send({});
    echo.join();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Echo)->UseManualTime();

/// Hears of an event after the trigger has, when the sweep has begun.
class CStartedSignal : public ZoVelkor::RemoteKernel::ILxiEventObserver
{
public:
    virtual ~CStartedSignal() = default;
    void OnLxiEvent(const ZoVelkor::RemoteKernel::LxiEvent&) override { SetEvent(m_event.Get()); }
    void Wait() const { WaitForSingleObject(m_event.Get(), INFINITE); }

private:
    CUniqueEvent m_event{CreateEvent(false, false)};
};

void SweepStart(benchmark::State& state)
{
    using namespace ZoVelkor::Demo;
    ZoVelkor::RemoteKernel::CRemoteKernel kernel({"Zo", "Benchmark", "0", "0"});
    if (FAILED(kernel.Start()))
    {
        state.SkipWithError("no remote control");
        return;
    }
    CStartedSignal started;
    CTraceMemory traces;
    const CInstrumentStatus status;
    CSweepEngine sweeps(traces, status);
    AnalyzerSettings settings;
    settings.triggerSource = TriggerSource::Lxi;
    settings.sweepPoints = kMinSweepPoints;
    sweeps.SetSettings(settings);
    CLxiTrigger trigger(sweeps, ZoVelkor::RemoteKernel::LxiEndpointSettings{.port = 0, .multicastPort = 0});
    trigger.Put(0, {.enabled = true});
    trigger.Endpoint().AddObserver(0, &started);
    CLoopbackSocket here;
    here.ConnectTo(trigger.Endpoint().Port());
    for (auto _ : state)
    {
        sweeps.AbortSweep();
        sweeps.Initiate({});
        const std::vector<std::uint8_t> message = NextMessage();
        Time(state, [&] {
            here.Send(message);
            started.Wait();
        });
        if (sweeps.Trigger())
        {
            state.SkipWithError("the sweep has not begun");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(SweepStart)->UseManualTime();

} // namespace

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"BuildShort", "CopyShort", "build and write, 16 bytes / copy"},
            {"BuildLong", "CopyLong", "build and write, 1400 bytes / copy"},
            {"WriteShort", "CopyShort", "write, 16 bytes / copy"},
            {"WriteLong", "CopyLong", "write, 1400 bytes / copy"},
            {"ReceiveShort", "CopyShort", "receive, 16 bytes / copy"},
            {"ReceiveLong", "CopyLong", "receive, 1400 bytes / copy"},
            {"ReadableShort", "CopyShort", "log line, 16 bytes / copy"},
            {"SweepStart", "Echo", "datagram to sweep start / echo"},
        });
}
