#pragma once

#include "Variant.h"

#include <cstdint>

namespace ZoVelkor
{

/// Which of a channel's buffers an operation is about; flags.
enum tagZO_SCPI_CHANNEL_TYPES : std::uint32_t
{
    ZO_CHANNEL_INPUT = 1,
    ZO_CHANNEL_OUTPUT = 2,
    ZO_CHANNEL_INPUT_AND_OUTPUT = 3
};

/// What a controller can see of the instrument without a query.
struct tagZO_SCPI_CHANNEL_STATUS
{
    VARIANT_BOOL vtbServiceRequest; ///< the instrument requests service; a serial poll ends the request
    VARIANT_BOOL vtbRemote;         ///< remote, or local
    VARIANT_BOOL vtbLocalLockout;   ///< the front panel cannot return to local
};

/// How messages travel on a connection.
enum tagEnumScpiProtocol : std::uint32_t
{
    ZO_PROTOCOL_PLAIN = 0,    ///< program messages and responses alone
    ZO_PROTOCOL_IEEE_1174 = 1 ///< lines that begin with '&' carry what a bus has wires for (IEEE 1174)
};

/// Argument of IZOScpiChannel::SetProtocolMode.
struct tagZO_SCPI_PROTOCOL_MODE
{
    tagEnumScpiProtocol eProtocol; ///< how messages travel
};

} // namespace ZoVelkor
