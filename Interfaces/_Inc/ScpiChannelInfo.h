#pragma once

#include "Bstr.h"

#include <cstdint>

namespace ZoVelkor
{

/// Kind of a connection, tag_ScpiChannelInfo::iKind.
enum tagEnumScpiChannelKind : std::int32_t
{
    ZO_CHANNEL_KIND_UNKNOWN = 0,
    ZO_CHANNEL_KIND_RAW_SOCKET = 1, ///< bytes over TCP, no side channel
    ZO_CHANNEL_KIND_BUS = 2         ///< a bus with END, device clear, trigger and serial poll
};

/// Properties of a channel: three strings and sixteen plain values.
///
/// The strings belong to the record; CSmartScpiChannelInfo has the rules for copying and freeing. A value
/// that a channel does not know is 0.
struct tag_ScpiChannelInfo
{
    BSTR bsName;          ///< names the connection in lists and to observers, "TCPIP 127.0.0.1:50412"
    BSTR bsLocalAddress;  ///< where the instrument listens
    BSTR bsRemoteAddress; ///< where the controller is

    std::int32_t iKind;             ///< tagEnumScpiChannelKind
    std::int32_t iRemotePath;       ///< path of the connection; -1: not connected
    std::int32_t iLocalPort;        ///< 0 to 65535
    std::int32_t iRemotePort;       ///< 0 to 65535
    std::int32_t iPrimaryAddress;   ///< of the instrument on a bus, 0 to 30
    std::int32_t iSecondaryAddress; ///< 0 to 30; -1: none
    std::int32_t iInputBuffer;      ///< bytes that the channel holds for the kernel
    std::int32_t iOutputBuffer;     ///< bytes that the channel holds for the controller
    std::int32_t iTimeoutMs;        ///< longest wait for the controller to take a response; 0: no limit
    std::int32_t iProtocol;         ///< tagEnumScpiProtocol
    std::int32_t bRemoteLocal;      ///< has remote and local states
    std::int32_t bStatus;           ///< has a serial poll
    std::int32_t bEnd;              ///< marks the end of a message beside the line feed
    std::int32_t iBytesReceived;    ///< modulo 2^32
    std::int32_t iBytesSent;        ///< modulo 2^32
    std::int32_t iMessages;         ///< program messages worked off, modulo 2^32
};

} // namespace ZoVelkor
