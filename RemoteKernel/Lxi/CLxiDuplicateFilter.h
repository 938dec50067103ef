#pragma once

#include "LxiPeer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// Tells event messages that have come before, by sender and sequence number.
///
/// Of each sender it knows the highest number and which of the kWindow numbers up to it have come; numbers
/// wrap at 32 bits. A lower number than those is a sender that has started anew, unless it is marked as sent
/// once more. Threads: one at a time.
class CLxiDuplicateFilter
{
public:
    using Clock = std::chrono::steady_clock;

    /// Senders that it knows at a time; one more takes the place of the one that has been silent longest.
    static constexpr std::size_t kMaxSenders = 64;
    static constexpr std::uint32_t kWindow = 64;
    /// A sender that has been silent longer is forgotten.
    static constexpr std::chrono::seconds kMemory{10};

    /// Notes a message.
    ///
    /// @return false when it has come before
    /// @throws std::bad_alloc
    bool
    Accept(const LxiPeer& sender, std::uint32_t sequenceNumber, bool isRetransmission, Clock::time_point now);

private:
    struct Sender
    {
        LxiPeer peer;
        std::uint32_t highest;
        std::uint64_t come; ///< bit n: the number n below the highest
        Clock::time_point lastHeard;
    };

    std::vector<Sender> m_senders;
};

} // namespace ZoVelkor::RemoteKernel
