#pragma once

#include "LxiEventFormat.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// Cuts a byte stream, as TCP delivers it, into event messages. It never keeps more than one unfinished
/// message. Threads: one at a time.
class CLxiStreamDecoder
{
public:
    /// Takes the next bytes and hands on each message that is complete, as a span that ends with the call.
    ///
    /// @return false when the stream is no sequence of messages any more: no further bytes make sense
    /// @throws std::bad_alloc, and what onMessage throws
    template <class TOnMessage>
    bool Feed(std::span<const std::uint8_t> bytes, TOnMessage onMessage)
    {
        m_pending.insert(m_pending.end(), bytes.begin(), bytes.end());
        std::span<const std::uint8_t> rest = m_pending;
        LxiMessageExtent extent = MeasureLxiMessage(rest);
        while (extent.state == LxiMessageState::Complete)
        {
            onMessage(rest.first(extent.size));
            rest = rest.subspan(extent.size);
            extent = MeasureLxiMessage(rest);
        }
        m_pending.erase(m_pending.begin(), m_pending.end() - static_cast<std::ptrdiff_t>(rest.size()));
        return extent.state == LxiMessageState::Incomplete;
    }

    /// Whether bytes of an unfinished message have come.
    bool IsInMessage() const noexcept { return !m_pending.empty(); }

private:
    std::vector<std::uint8_t> m_pending;
};

} // namespace ZoVelkor::RemoteKernel
