#pragma once

#include "CMutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace ZoVelkor::RemoteKernel
{

/// Longest text of an error, standard text and detail together (SCPI-99 vol. 2, 21.8.2).
inline constexpr std::size_t kMaxErrorText = 255;

/// One entry of the error queue.
struct ErrorEntry // NOLINT(cppcoreguidelines-pro-type-member-init): only length characters are ever read
{
    short code = 0;
    std::uint16_t length = 0;
    char szText[kMaxErrorText]; ///< standard text, perhaps a semicolon and a detail; printable ASCII only

    std::string_view Text() const noexcept { return {szText, length}; }
};

/// Hears of what happens in an error queue. Called under the queue's lock: it must not call the queue.
/// Threads: whichever uses the queue.
class IErrorQueueObserver
{
public:
    virtual void ErrorQueued(short code) noexcept = 0;
    /// Called when the queue gets its first error and when it loses its last.
    virtual void ErrorsWaiting(bool waiting) noexcept = 0;

protected:
    ~IErrorQueueObserver() = default;
};

/// Errors of one remote path, oldest first (SCPI-99 vol. 2, 21.8).
///
/// When the queue is full, its last entry becomes -350 "Queue overflow" and later errors are lost until room
/// is made. Threads: any operation from any thread. Allocates nothing after construction.
class CErrorQueue
{
public:
    /// @param depth  entries, at least 2
    /// @param observer  may be null
    explicit CErrorQueue(std::size_t depth, std::shared_ptr<IErrorQueueObserver> observer = {});

    /// Adds an error.
    ///
    /// A detail is cut where the whole text reaches kMaxErrorText; what is not printable ASCII becomes '?'.
    void Push(short code, std::string_view detail) noexcept;

    /// Takes the oldest error.
    ///
    /// @return false, and entry is 0 "No error", when there is none
    bool Pop(ErrorEntry& entry) noexcept;

    void Clear() noexcept;
    std::size_t Count() const noexcept;

    /// Starts watching what the calling thread pushes, for the two questions below.
    void BeginCommand() noexcept;
    /// Tells whether this thread has pushed an error since BeginCommand.
    bool CommandRaisedError() const noexcept { return m_commandRaisedError; }
    /// Tells whether such an error means that the command was not carried out: a command or execution error
    /// other than -231 "Data questionable", which comes along with a valid answer.
    bool CommandFailed() const noexcept { return m_commandFailed; }

private:
    void NotifyLocked(short code, std::size_t countBefore) const noexcept ZO_REQUIRES(m_mutex);

    const std::size_t m_depth;
    const std::shared_ptr<IErrorQueueObserver> m_observer;
    std::atomic<std::thread::id> m_commandThread{};
    bool m_commandRaisedError = false; // only the thread in m_commandThread
    bool m_commandFailed = false;      // only the thread in m_commandThread
    mutable CMutex m_mutex;
    std::unique_ptr<ErrorEntry[]> m_entries ZO_GUARDED_BY(m_mutex); // a ring of m_depth entries
    std::size_t m_first ZO_GUARDED_BY(m_mutex) = 0;
    std::size_t m_count ZO_GUARDED_BY(m_mutex) = 0;
};

/// The entry as the queries of the error queue answer it: -113,"Undefined header;BOGus".
void AppendErrorResponse(std::string& response, const ErrorEntry& entry);

} // namespace ZoVelkor::RemoteKernel
