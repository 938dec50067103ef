// The checksum over 64 bytes and over 64 KiB, beside the same polynomial taken bit by bit.
//
//   table    CCrc16Handling, four bits at a time
//   bitwise  one bit at a time, without a table

#include "CCrc16Handling.h"
#include "CRatioReporter.h"

#include <cstdint>
#include <vector>

namespace
{

std::uint16_t BitwiseCrc(const unsigned char* data, unsigned int length)
{
    std::uint32_t crc = 0xFFFF;
    for (unsigned int index = 0; index < length; ++index)
    {
        crc ^= data[index];
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ (0x8408U & (0U - (crc & 1U)));
        }
    }
    return static_cast<std::uint16_t>(~crc);
}

template <auto crc>
void Checksum(benchmark::State& state)
{
    const std::vector<unsigned char> data(static_cast<std::size_t>(state.range(0)), 0x55);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(crc(data.data(), static_cast<unsigned int>(data.size())));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK(Checksum<&ZoVelkor::CCrc16Handling::Calculate>)->Name("Table")->Arg(64)->Arg(65536);
BENCHMARK(Checksum<&BitwiseCrc>)->Name("Bitwise")->Arg(64)->Arg(65536);

} // namespace

int main(int argc, char** argv)
{
    return ZoVelkor::Benchmarks::RunWithRatios(
        argc,
        argv,
        {
            {"Table/64", "Bitwise/64", "64 bytes: table / bitwise"},
            {"Table/65536", "Bitwise/65536", "64 KiB: table / bitwise"},
        });
}
