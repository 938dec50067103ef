#pragma once

#include <cstddef>
#include <span>

namespace ZoVelkor::RemoteKernel
{

enum class ReceiveStatus
{
    Received,
    TimedOut,
    Ended ///< the client has gone or has finished sending, or the wait was cancelled: nothing will come
};

struct Received
{
    ReceiveStatus status = ReceiveStatus::Ended;
    std::size_t count = 0; ///< bytes received
};

/// Where a session gets further bytes of a message from while a command of it runs.
///
/// Threads: the session's.
class IByteSource
{
public:
    /// Waits for bytes.
    ///
    /// @param space  takes what has arrived; not empty
    /// @param timeoutMs  0 or more; -1 waits without limit
    /// @param cancelDescriptor  ends the wait when it becomes readable
    virtual Received Receive(std::span<char> space, int timeoutMs, int cancelDescriptor) noexcept = 0;

protected:
    ~IByteSource() = default;
};

} // namespace ZoVelkor::RemoteKernel
