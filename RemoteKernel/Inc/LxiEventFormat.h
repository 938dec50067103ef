#pragma once

#include "CLxiLanPacket.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

// The LXI event message as it travels (LXI Event Messaging Extended Function, event message format): a header
// of 38 bytes, data fields of length (2), identifier (1) and data each, and a length of 0 behind the last.

/// Longest message that is sent or accepted, in bytes.
inline constexpr std::size_t kMaxLxiMessageSize = 8192;
/// Header and end mark.
inline constexpr std::size_t kMinLxiMessageSize = 40;

/// Number of an event that is none of LAN0 to LAN7 (0 to 7) and no error (ZO_LXI_ERROR).
inline constexpr long kUnknownLxiEvent = 9;
/// Numbers of events that somebody can wait for.
inline constexpr long kLxiEventCount = kUnknownLxiEvent;

enum class LxiMessageState
{
    Complete,
    Incomplete, ///< right so far
    Malformed   ///< whatever may follow
};

struct LxiMessageExtent
{
    LxiMessageState state = LxiMessageState::Malformed;
    std::size_t size = 0;       ///< of the message, when it is complete
    const char* fault = "";     ///< what is wrong or missing, when it is not
    std::size_t faultPlace = 0; ///< offset of the fault
};

/// Finds the end of the message that bytes begin with. Nanoseconds of a second or more, or a length above
/// kMaxLxiMessageSize, make it malformed.
LxiMessageExtent MeasureLxiMessage(std::span<const std::uint8_t> bytes) noexcept;

/// Reads one whole message, neither a byte more nor less.
///
/// @param packet  a new one; left alone when the message is refused
/// @return false when the message is refused
/// @throws std::bad_alloc
bool DecodeLxiMessage(std::span<const std::uint8_t> bytes, CLxiLanPacket& packet);

/// Writes a packet by the standard's layout, as long as the packet announces. It gets the next sequence
/// number of the process.
///
/// @return empty, and no sequence number is taken, when the message would be too long, a data field holds
/// nothing, which would end the message, or the nanoseconds are a second or more
/// @throws std::bad_alloc
std::vector<std::uint8_t> EncodeLxiMessage(CLxiLanPacket& packet);

/// Gives a written message another sequence number.
void SetLxiSequenceNumber(std::span<std::uint8_t> message, std::uint32_t number) noexcept;

/// Marks a written message as sent once more.
void MarkLxiRetransmission(std::span<std::uint8_t> message) noexcept;

/// Number of a packet's event by its whole name, which is case sensitive; "LXIERROR" and "ERROR" are errors,
/// and so is whatever carries the error flag.
long LxiEventNumber(const CLxiLanPacket& packet) noexcept;

/// Gives a packet the name of an event, and the error flag to errors alone.
///
/// @param event  0 to 8; any other leaves the packet alone
void SetLxiEvent(CLxiLanPacket& packet, long event) noexcept;

} // namespace ZoVelkor::RemoteKernel
