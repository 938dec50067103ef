#include "PcapFile.h"

#include "Common/CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace ZoVelkor::Tools
{

namespace
{

using Bytes = std::span<const std::uint8_t>;

enum class ByteOrder
{
    Big,
    Little
};

/// Reads numbers one after the other. What is not there is 0, and nothing is sound from then on.
class CByteCursor
{
public:
    explicit CByteCursor(Bytes bytes, ByteOrder order = ByteOrder::Big) noexcept
        : m_rest(bytes),
          m_order(order)
    {}

    bool IsSound() const noexcept { return m_isSound; }
    Bytes Rest() const noexcept { return m_rest; }

    Bytes Take(std::size_t size) noexcept
    {
        m_isSound = m_isSound && size <= m_rest.size();
        const Bytes taken = m_rest.first(m_isSound ? size : 0);
        m_rest = m_rest.subspan(taken.size());
        return taken;
    }

    std::uint32_t Number(std::size_t size) noexcept
    {
        std::uint32_t number = 0;
        unsigned shift = 0;
        for (const std::uint8_t byte : Take(size))
        {
            const bool isBig = m_order == ByteOrder::Big;
            number = isBig ? (number << 8U) | byte : number | (std::uint32_t{byte} << shift);
            shift += 8;
        }
        return number;
    }

    std::uint16_t Number16() noexcept { return static_cast<std::uint16_t>(Number(2)); }

private:
    Bytes m_rest;
    ByteOrder m_order;
    bool m_isSound = true;
};

struct Magic
{
    std::uint32_t number; ///< in big-endian order
    ByteOrder order;
};

/// Stamps in microseconds or nanoseconds.
constexpr Magic kMagics[] = {
    {0xA1B2C3D4, ByteOrder::Big},
    {0xA1B23C4D, ByteOrder::Big},
    {0xD4C3B2A1, ByteOrder::Little},
    {0x4D3CB2A1, ByteOrder::Little},
};
constexpr std::uint32_t kPcapNgMagic = 0x0A0D0D0A;

constexpr std::size_t kMagicSize = 4;
constexpr std::size_t kVersionToSnapshotSize = 16;
constexpr std::size_t kRecordTimeSize = 8;
constexpr std::uint32_t kLinkTypeMask = 0x0FFFFFFF;

constexpr std::size_t kNoProtocol = SIZE_MAX;

/// What stands before the IP header.
struct LinkType
{
    std::uint32_t number;
    std::size_t headerSize;
    std::size_t protocolOffset; ///< of the EtherType
};

constexpr std::uint32_t kEthernet = 1;

constexpr LinkType kLinkTypes[] = {
    {0, 4, kNoProtocol}, // loopback of BSD
    {kEthernet, 14, 12},
    {12, 0, kNoProtocol},  // raw IP
    {14, 0, kNoProtocol},  // raw IP
    {101, 0, kNoProtocol}, // raw IP
    {108, 4, kNoProtocol}, // loopback of OpenBSD
    {113, 16, 14},         // Linux cooked
    {228, 0, kNoProtocol}, // raw IPv4
    {276, 20, 0},          // Linux cooked, version 2
};

constexpr std::uint16_t kIpV4EtherType = 0x0800;
constexpr std::uint16_t kVlanEtherTypes[] = {0x8100, 0x88A8};
constexpr std::size_t kMinIpHeaderSize = 20;
constexpr std::size_t kUdpHeaderSize = 8;
constexpr std::uint32_t kUdpProtocol = 17;
constexpr std::uint16_t kFragmentOffsetMask = 0x1FFF;

/// Leaves the link's header behind; false when no IPv4 follows.
bool SkipLinkHeader(CByteCursor& frame, const LinkType& type)
{
    CByteCursor header(frame.Take(type.headerSize));
    if (type.protocolOffset == kNoProtocol)
    {
        return frame.IsSound();
    }
    header.Take(type.protocolOffset);
    std::uint16_t protocol = header.Number16();
    while (type.number == kEthernet && std::ranges::count(kVlanEtherTypes, protocol) != 0 && frame.IsSound())
    {
        frame.Take(2);
        protocol = frame.Number16();
    }
    return frame.IsSound() && protocol == kIpV4EtherType;
}

struct IpPacket
{
    std::uint32_t sender;
    std::uint32_t receiver;
    std::size_t payloadSize; ///< as the header has it
    Bytes payload;           ///< what there is of it
};

/// The packet, when it carries UDP and its beginning is there.
std::optional<IpPacket> ReadIpPacket(CByteCursor frame)
{
    const std::uint32_t versionAndSize = frame.Number(1);
    frame.Take(1);
    const std::size_t totalSize = frame.Number(2);
    frame.Take(2);
    const std::uint16_t fragment = frame.Number16();
    frame.Take(1);
    const std::uint32_t protocol = frame.Number(1);
    frame.Take(2);
    const std::uint32_t sender = frame.Number(4);
    const std::uint32_t receiver = frame.Number(4);
    const std::size_t headerSize = std::size_t{versionAndSize & 0xFU} * 4;
    frame.Take(std::max(headerSize, kMinIpHeaderSize) - kMinIpHeaderSize);
    const bool isUdp = versionAndSize >> 4U == 4 && headerSize >= kMinIpHeaderSize &&
                       totalSize >= headerSize && (fragment & kFragmentOffsetMask) == 0 &&
                       protocol == kUdpProtocol;
    if (!frame.IsSound() || !isUdp)
    {
        return std::nullopt;
    }
    const std::size_t size = totalSize - headerSize;
    return IpPacket{sender, receiver, size, frame.Rest().first(std::min(size, frame.Rest().size()))};
}

std::optional<CapturedDatagram> ReadDatagram(Bytes bytes, const LinkType& type)
{
    CByteCursor frame(bytes);
    const auto packet = SkipLinkHeader(frame, type) ? ReadIpPacket(frame) : std::nullopt;
    if (!packet)
    {
        return std::nullopt;
    }
    CByteCursor udp(packet->payload);
    const std::uint16_t senderPort = udp.Number16();
    const std::uint16_t receiverPort = udp.Number16();
    const std::size_t size = udp.Number(2);
    udp.Take(2);
    if (!udp.IsSound() || size < kUdpHeaderSize)
    {
        return std::nullopt;
    }
    const std::size_t payloadSize = size - kUdpHeaderSize;
    const std::size_t captured = std::min(payloadSize, udp.Rest().size());
    return CapturedDatagram{0,
                            {packet->sender, senderPort, false},
                            {packet->receiver, receiverPort, false},
                            udp.Rest().first(captured),
                            payloadSize - captured};
}

const LinkType& FindLinkType(std::uint32_t number)
{
    const auto* const row = std::ranges::find(kLinkTypes, number, &LinkType::number);
    if (row == std::end(kLinkTypes))
    {
        throw CToolError(
            ExitCode::Failed,
            fmt::format("frames of link type {}; known are Ethernet, Linux cooked, raw IP and loopback",
                        number));
    }
    return *row;
}

ByteOrder TakeMagic(CByteCursor& file)
{
    const std::uint32_t number = file.Number(kMagicSize);
    const auto* const row = std::ranges::find(kMagics, number, &Magic::number);
    if (row == std::end(kMagics))
    {
        throw CToolError(ExitCode::Failed, "a capture in the format pcapng; it must be saved as pcap");
    }
    return row->order;
}

} // namespace

bool IsCapture(Bytes file) noexcept
{
    const std::uint32_t number = CByteCursor(file).Number(kMagicSize);
    return number == kPcapNgMagic || std::ranges::count(kMagics, number, &Magic::number) != 0;
}

Capture ReadPcapFile(Bytes bytes)
{
    CByteCursor magic(bytes);
    const ByteOrder order = TakeMagic(magic);
    CByteCursor file(magic.Rest(), order);
    file.Take(kVersionToSnapshotSize);
    const std::uint32_t linkType = file.Number(4) & kLinkTypeMask;
    if (!file.IsSound())
    {
        throw CToolError(ExitCode::Failed, "the header of the capture is cut off");
    }
    const LinkType& type = FindLinkType(linkType);
    Capture capture;
    while (!file.Rest().empty())
    {
        const std::size_t place = bytes.size() - file.Rest().size();
        file.Take(kRecordTimeSize);
        const std::uint32_t size = file.Number(4);
        file.Take(4);
        const Bytes frame = file.Take(size);
        if (!file.IsSound())
        {
            capture.fault =
                fmt::format("frame {} at offset {} of the file is cut off", capture.frameCount + 1, place);
            break;
        }
        ++capture.frameCount;
        if (auto datagram = ReadDatagram(frame, type))
        {
            datagram->frame = capture.frameCount;
            capture.datagrams.push_back(*datagram);
        }
    }
    return capture;
}

} // namespace ZoVelkor::Tools
