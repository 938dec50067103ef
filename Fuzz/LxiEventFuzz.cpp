// Reads fuzzed datagrams as LXI event messages, and the same bytes as a TCP stream in pieces of fuzzed
// length: whatever is taken is written back to the same bytes, and the stream gives the same messages.
#include "CLxiStreamDecoder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace
{

using namespace ZoVelkor;
using namespace ZoVelkor::RemoteKernel;
using Bytes = std::vector<std::uint8_t>;

void Require(bool isTrue)
{
    if (!isTrue)
    {
        std::abort();
    }
}

void RoundTrip(const Bytes& message)
{
    constexpr std::ptrdiff_t kSequenceNumber = 20;
    constexpr std::ptrdiff_t kNumberSize = 4;
    constexpr std::ptrdiff_t kFlags = 36;
    CLxiLanPacket packet;
    Require(DecodeLxiMessage(message, packet));
    static_cast<void>(LxiEventNumber(packet));
    Bytes again = EncodeLxiMessage(packet);
    Require(again.size() == message.size());
    // The packet numbers itself.
    std::copy_n(message.begin() + kSequenceNumber, kNumberSize, again.begin() + kSequenceNumber);
    Require(again == message);
    MarkLxiRetransmission(again);
    Require(std::equal(again.begin(), again.begin() + kFlags, message.begin()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
    {
        return 0;
    }
    const std::size_t piece = std::size_t{data[0]} + 1;
    // A block of its own, so that every byte read beyond it is seen.
    const Bytes bytes(data + 1, data + size);
    std::size_t taken = 0;
    for (auto extent = MeasureLxiMessage(bytes); extent.state == LxiMessageState::Complete;)
    {
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(taken);
        RoundTrip(Bytes(begin, begin + static_cast<std::ptrdiff_t>(extent.size)));
        taken += extent.size;
        extent = MeasureLxiMessage(std::span(bytes).subspan(taken));
    }
    CLxiStreamDecoder decoder;
    std::size_t streamed = 0;
    bool isStream = true;
    for (std::size_t i = 0; isStream && i < bytes.size(); i += piece)
    {
        isStream =
            decoder.Feed(std::span(bytes).subspan(i, std::min(piece, bytes.size() - i)), [&](auto message) {
                Require(std::equal(
                    message.begin(), message.end(), bytes.begin() + static_cast<std::ptrdiff_t>(streamed)));
                streamed += message.size();
            });
    }
    Require(streamed == taken);
    return 0;
}
