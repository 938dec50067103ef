// Hands received bytes to an LXI packet in chunks of fuzzed length, with and without the phase for user data,
// and sends on what came in.
#include "CLxiLanPacket.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace
{

using ZoVelkor::CLxiLanPacket;

class CReceiver : public CLxiLanPacket
{
public:
    using CLxiLanPacket::setReceivePhase;
};

void Require(bool isTrue)
{
    if (!isTrue)
    {
        std::abort();
    }
}

/// Written and received again, a header is the same.
void RoundTrip(CLxiLanPacket& packet)
{
    unsigned long length = 0;
    unsigned char* data = nullptr;
    packet.getSerializedDataStream(length, data);
    const std::unique_ptr<unsigned char[]> owner(data);
    CLxiLanPacket back;
    Require(back.addSerializedData(length, data) == 1);
    Require(back.getSequenceNumber() == packet.getSequenceNumber() &&
            back.getDomain() == packet.getDomain() && back.getTimestamp() == packet.getTimestamp() &&
            back.getEventId() == packet.getEventId() && back.getEpoch() == packet.getEpoch() &&
            back.getHWDetect() == packet.getHWDetect());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CReceiver packet;
    unsigned int phase = 0;
    while (size > 2)
    {
        // A block of its own for each chunk, so that every byte read beyond it is seen.
        const std::size_t length = std::min<std::size_t>(size - 2, data[0] + (data[1] & 0x7FU) * 256U);
        const auto chunk = std::make_unique<unsigned char[]>(length);
        std::copy_n(data + 2, length, chunk.get());
        const bool isFieldPhase = (data[1] & 0x80U) != 0;
        if (isFieldPhase != (phase != 0))
        {
            phase = isFieldPhase ? 1 : 0;
            packet.setReceivePhase(phase);
        }
        packet.addSerializedData(length, chunk.get());
        data += 2 + length;
        size -= 2 + length;
    }
    CComBSTR text;
    packet.getReadableLANData(text);
    CLxiLanPacket copy;
    copy.duplicatePacket(packet);
    Require(copy.getNumberOfUserDataFields() == packet.getNumberOfUserDataFields());
    RoundTrip(copy);
    return 0;
}
