#pragma once

#include "CCritSection.h"
#include "CLxiTime.h"
#include "LxiEventFormat.h"
#include "LxiPeer.h"
#include "ThreadAnnotations.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// What became of an event message.
enum class LxiLogKind
{
    Received,
    Duplicate,       ///< has come before and was dropped
    Acknowledgement, ///< answers another message and triggers nothing
    Sent
};

/// The last events that an instrument has received and sent, oldest first.
///
/// Threads: any operation from any thread.
class CLxiEventLog
{
public:
    /// Entries that it keeps; one more takes the place of the oldest.
    static constexpr std::size_t kCapacity = 256;

    /// Appends an entry with the present time.
    ///
    /// @param peer     who sent the message, or whom it was sent to
    /// @param message  a complete one
    /// @throws std::bad_alloc
    void Add(LxiLogKind kind, const LxiPeer& peer, std::span<const std::uint8_t> message);

    std::size_t Count() const;
    void Clear();

    /// The entries, one line each, without line feeds: local time, what became of the message, the peer, the
    /// header as CLxiLanPacket::getReadableLANData has it, and the bytes of the whole message. What is not
    /// printable ASCII in the event's name is a full stop.
    std::vector<std::string> Lines() const;

private:
    /// The header alone, since a packet is much larger.
    struct Entry
    {
        CLxiTime time;
        LxiLogKind kind;
        LxiPeer peer;
        std::array<std::uint8_t, kMinLxiMessageSize> header;
        std::size_t messageSize;
    };

    static std::string Line(const Entry& entry);

    mutable CCritSection m_section;
    std::deque<Entry> m_entries ZO_GUARDED_BY(m_section);
};

} // namespace ZoVelkor::RemoteKernel
