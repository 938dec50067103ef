// Blocks over a loopback socket, against a bare socket copy of the same size in the same run.
//
//   bare       one thread sends 16 MiB, another receives them into one buffer; a byte comes back as
//              acknowledgement
//   upload     TRACe:DATA <block of 16 MiB>;*OPC? through server, session and parser up to the handler
//   download   MMEMory-like answer: a query whose handler writes a block of 16 MiB
//   roundtrip  a query of a few bytes, against a bare exchange of as many bytes

#include "CBenchmarkApplication.h"
#include "CComObject.h"
#include "CCommandTree.h"
#include "CRatioReporter.h"
#include "CRemoteKernel.h"
#include "CTcpServer.h"
#include "CUniqueHandle.h"

#include <arpa/inet.h>
#include <functional>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ZoVelkor::Benchmarks
{
namespace
{

constexpr std::size_t kBlockSize = kLargeBlockSize;
constexpr std::size_t kReceiveSize = std::size_t{1} << 20;

void Close(int descriptor)
{
    ::close(descriptor);
}

using CUniqueSocket = CUniqueHandle<&Close, int, -1>;

sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

CUniqueSocket Connect(std::uint16_t port)
{
    CUniqueSocket socket(::socket(AF_INET, SOCK_STREAM, 0));
    const sockaddr_in address = Loopback(port);
    const int on = 1;
    if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)) != 0)
    {
        throw std::runtime_error("cannot connect");
    }
    return socket;
}

void SendAll(int socket, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
        {
            throw std::runtime_error("cannot send");
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

/// Receives exactly so many bytes, into a buffer that they overwrite again and again.
void ReceiveAll(int socket, std::size_t count, std::string& buffer)
{
    while (count != 0)
    {
        const ssize_t received = ::recv(socket, buffer.data(), std::min(count, buffer.size()), 0);
        if (received <= 0)
        {
            throw std::runtime_error("cannot receive");
        }
        count -= static_cast<std::size_t>(received);
    }
}

/// A peer without any protocol: runs an exchange on one accepted connection until that ends.
class CBarePeer
{
public:
    explicit CBarePeer(std::function<void(int)> exchange) : m_listener(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = Loopback(0);
        socklen_t length = sizeof(address);
        if (::bind(m_listener.Get(), reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
            ::listen(m_listener.Get(), 1) != 0 ||
            ::getsockname(m_listener.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        {
            throw std::runtime_error("cannot listen");
        }
        m_thread = std::jthread([exchange = std::move(exchange), listener = m_listener.Get()] {
            const CUniqueSocket peer(::accept(listener, nullptr, nullptr));
            const int on = 1;
            ::setsockopt(peer.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
            try
            {
                for (;;)
                {
                    exchange(peer.Get());
                }
            }
            catch (const std::runtime_error&)
            {
                return; // the client has gone
            }
        });
        m_client = Connect(ntohs(address.sin_port));
    }

    int Client() const { return m_client.Get(); }

private:
    CUniqueSocket m_listener;
    std::jthread m_thread;
    CUniqueSocket m_client; // closed first: that ends the thread
};

/// The kernel behind its server, and a client.
class CServed
{
public:
    CServed()
        : m_tree(ZO_TREE_DIR "/tree-100.txt"),
          m_kernel({.manufacturer = "Zo", .model = "Benchmark", .serialNumber = "1", .firmwareLevel = "1.0"}),
          m_sink(CComObject<CBenchmarkApplication, IZOScpiExecutionSink>::Create()),
          m_server({.port = 0})
    {
        RegisterBenchmarkApplication(m_kernel, m_tree, m_sink);
        m_kernel.Start();
        m_server.Start();
        m_client = Connect(m_server.Port());
    }

    int Client() const { return m_client.Get(); }

private:
    CCommandTree m_tree;
    RemoteKernel::CRemoteKernel m_kernel;
    CComPtr<CComObject<CBenchmarkApplication, IZOScpiExecutionSink>> m_sink;
    Transports::CTcpServer m_server;
    CUniqueSocket m_client;
};

void SetBlockBytes(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlockSize));
}

void BareCopyUp(benchmark::State& state)
{
    CBarePeer peer([buffer = std::string(kReceiveSize, '\0')](int socket) mutable {
        ReceiveAll(socket, kBlockSize, buffer);
        SendAll(socket, "1\n");
    });
    const std::string block(kBlockSize, 'x');
    std::string answer(2, '\0');
    for (auto _ : state)
    {
        SendAll(peer.Client(), block);
        ReceiveAll(peer.Client(), answer.size(), answer);
    }
    SetBlockBytes(state);
}
BENCHMARK(BareCopyUp)->UseRealTime();

void BlockUp(benchmark::State& state)
{
    CServed served;
    const std::string message =
        "TRAC1:DATA #8" + std::to_string(kBlockSize) + std::string(kBlockSize, 'x') + ";*OPC?\n";
    std::string answer(2, '\0');
    for (auto _ : state)
    {
        SendAll(served.Client(), message);
        ReceiveAll(served.Client(), answer.size(), answer);
    }
    SetBlockBytes(state);
}
BENCHMARK(BlockUp)->UseRealTime();

void BareCopyDown(benchmark::State& state)
{
    CBarePeer peer(
        [block = std::string(kBlockSize, 'x'), command = std::string(2, '\0')](int socket) mutable {
            ReceiveAll(socket, command.size(), command);
            SendAll(socket, block);
        });
    std::string buffer(kReceiveSize, '\0');
    for (auto _ : state)
    {
        SendAll(peer.Client(), "1\n");
        ReceiveAll(peer.Client(), kBlockSize, buffer);
    }
    SetBlockBytes(state);
}
BENCHMARK(BareCopyDown)->UseRealTime();

void BlockDown(benchmark::State& state)
{
    CServed served;
    std::string buffer(kReceiveSize, '\0');
    const std::size_t answerSize = std::string_view("#8").size() + 8 + kBlockSize + 1;
    for (auto _ : state)
    {
        SendAll(served.Client(), "TRAC2:DATA?\n");
        ReceiveAll(served.Client(), answerSize, buffer);
    }
    SetBlockBytes(state);
}
BENCHMARK(BlockDown)->UseRealTime();

/// Sends a query and takes its answer of two bytes, again and again; reports the median and the 99th
/// percentile of the round trips as counters.
void RoundTrips(benchmark::State& state, int client, std::string_view query)
{
    using Clock = std::chrono::steady_clock;
    std::vector<double> microseconds;
    std::string answer(2, '\0');
    for (auto _ : state)
    {
        const Clock::time_point begin = Clock::now();
        SendAll(client, query);
        ReceiveAll(client, answer.size(), answer);
        microseconds.push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
    }
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["p50_us"] = microseconds[microseconds.size() / 2];
    state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
}

void BareRoundTrip(benchmark::State& state)
{
    CBarePeer peer([message = std::string(16, '\0')](int socket) mutable {
        ReceiveAll(socket, message.size(), message);
        SendAll(socket, "0\n");
    });
    RoundTrips(state, peer.Client(), "SENS1:FREQ:CENT?");
}
BENCHMARK(BareRoundTrip)->UseRealTime();

void QueryRoundTrip(benchmark::State& state)
{
    CServed served;
    RoundTrips(state, served.Client(), "SENS1:FREQ:CENT?\n");
}
BENCHMARK(QueryRoundTrip)->UseRealTime();

} // namespace
} // namespace ZoVelkor::Benchmarks

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"BareCopyUp", "BlockUp", "upload: throughput / bare copy"},
            {"BareCopyDown", "BlockDown", "download: throughput / bare copy"},
            {"QueryRoundTrip", "BareRoundTrip", "query over socket / bare exchange"},
            {"QueryRoundTrip/p50_us", "BareRoundTrip/p50_us", "query over socket / bare exchange, median"},
            {"QueryRoundTrip/p99_us", "BareRoundTrip/p99_us", "query over socket / bare exchange, p99"},
        });
}
