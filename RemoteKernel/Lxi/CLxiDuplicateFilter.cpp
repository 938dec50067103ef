#include "CLxiDuplicateFilter.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

bool CLxiDuplicateFilter::Accept(const LxiPeer& sender,
                                 std::uint32_t sequenceNumber,
                                 bool isRetransmission,
                                 Clock::time_point now)
{
    const Sender fresh{sender, sequenceNumber, 1, now};
    auto known = std::ranges::find(m_senders, sender, &Sender::peer);
    if (known == m_senders.end())
    {
        if (m_senders.size() < kMaxSenders)
        {
            m_senders.push_back(fresh);
        }
        else
        {
            *std::ranges::min_element(m_senders, {}, &Sender::lastHeard) = fresh;
        }
        return true;
    }
    const bool isForgotten = now - known->lastHeard > kMemory;
    known->lastHeard = now;
    const std::uint32_t above = sequenceNumber - known->highest;
    const std::uint32_t below = known->highest - sequenceNumber;
    if (isForgotten || (below >= kWindow && static_cast<std::int32_t>(above) < 0))
    {
        const bool isAccepted = isForgotten || !isRetransmission;
        *known = isAccepted ? fresh : *known;
        return isAccepted;
    }
    if (static_cast<std::int32_t>(above) > 0)
    {
        known->come = (above < kWindow ? known->come << above : 0) | 1U;
        known->highest = sequenceNumber;
        return true;
    }
    const std::uint64_t bit = std::uint64_t{1} << below;
    const bool isNew = (known->come & bit) == 0;
    known->come |= bit;
    return isNew;
}

} // namespace ZoVelkor::RemoteKernel
