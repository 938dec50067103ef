// LXI event packets beside a bare copy of the same bytes into a new block.
//
//   build      a packet from its parameters with one user data field of 16 or 1400 bytes, and its bytes: what
//              the instrument does for each event it sends
//   write      the bytes alone, of a packet that exists
//   receive    the header out of a datagram with the same field: what it does for each event it gets
//   readable   the log line of a packet with 16 bytes
//
// items_per_second are packets.

#include "CLxiLanPacket.h"
#include "CRatioReporter.h"

#include <array>
#include <cstring>
#include <memory>

namespace
{

using ZoVelkor::CLxiLanPacket;

constexpr unsigned long long kTime = 0x684E'E180'0000'0007;
constexpr std::int64_t kShort = 16;
constexpr std::int64_t kLong = 1400;

struct tagInput
{
    explicit tagInput(const benchmark::State& state)
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

CLxiLanPacket& WithField(const tagInput& input, CLxiLanPacket& packet)
{
    packet.appendUserData(input.field);
    return packet;
}

void Copy(benchmark::State& state)
{
    const tagInput input(state);
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
    const tagInput input(state);
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
    const tagInput input(state);
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
    const tagInput input(state);
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
    const tagInput input(state);
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

} // namespace

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"BuildShort",    "CopyShort", "build and write, 16 bytes / copy"  },
            {"BuildLong",     "CopyLong",  "build and write, 1400 bytes / copy"},
            {"WriteShort",    "CopyShort", "write, 16 bytes / copy"            },
            {"WriteLong",     "CopyLong",  "write, 1400 bytes / copy"          },
            {"ReceiveShort",  "CopyShort", "receive, 16 bytes / copy"          },
            {"ReceiveLong",   "CopyLong",  "receive, 1400 bytes / copy"        },
            {"ReadableShort", "CopyShort", "log line, 16 bytes / copy"         },
    });
}
