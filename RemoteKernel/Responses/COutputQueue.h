#pragma once

#include "CByteBuffer.h"
#include "IZOScpiOutputBuffer.h"

#include <atomic>
#include <cstddef>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// Collects the response message of one session (IEEE 488.2 sections 6.3.1.5 and 8.4).
///
/// The answers of several queries of one message are joined by ';', a message that answered anything ends
/// with a line feed. One buffer is reused for all messages; it stays as large as the largest of them until
/// ReleaseMemory. Threads: the session's, except Cancel.
class COutputQueue : public IZOScpiOutputBuffer
{
public:
    /// Memory that stays with an idle session.
    static constexpr std::size_t kKeptCapacity = std::size_t{32} << 10;

    /// @param limit  longest response message in bytes, line feed excluded
    explicit COutputQueue(std::size_t limit) noexcept : m_limit(limit) {}
    virtual ~COutputQueue() = default;

    HRESULT Write(unsigned long length, const char* text, wchar_t** error) override;
    HRESULT WriteBinary(unsigned long length, const unsigned char* data, wchar_t** error) override;

    /// Lends room for response bytes, which Commit takes over.
    ///
    /// @param[out] place  start of the room, valid until the next operation
    /// @return S_OK; E_ABORT, E_FAIL and E_OUTOFMEMORY as for Write
    HRESULT Prepare(std::size_t maxBytes, char** place) noexcept;
    void Commit(std::size_t count) noexcept { m_buffer.Commit(count); }

    /// Starts the response of the next command of the message.
    void BeginCommand() noexcept
    {
        m_indefinite = m_indefinite || IsIndefinite(m_buffer.View().substr(m_commandStart));
        m_commandStart = m_buffer.Size();
        m_separatorPending = m_commandStart != m_messageStart;
        m_refused = false;
    }
    /// Tells whether a command before the running one has answered a block of indefinite length, behind which
    /// nothing can be told apart from it (IEEE 488.2 section 8.7.10).
    bool HasIndefinite() const noexcept { return m_indefinite; }
    /// Forgets what the running command has answered.
    void DropCommand() noexcept { m_buffer.Truncate(m_commandStart); }
    /// Tells whether the running command has answered more than a message may.
    bool IsRefused() const noexcept { return m_refused; }
    /// Forgets what the message has answered and will answer.
    void DropMessage() noexcept
    {
        m_buffer.Truncate(m_messageStart);
        m_dropped = true;
    }
    /// Ends the response message.
    void EndMessage();

    /// Everything that was answered and not cleared.
    std::string_view View() const noexcept { return m_buffer.View(); }
    /// What the message at hand has answered so far.
    std::string_view Message() const noexcept { return m_buffer.View().substr(m_messageStart); }
    bool IsEmpty() const noexcept { return m_buffer.IsEmpty(); }
    void Clear() noexcept;
    /// Memory in use, for what was answered and for what will be.
    std::size_t Capacity() const noexcept { return m_buffer.Capacity(); }
    /// Gives large memory back; does nothing unless everything was cleared.
    void ReleaseMemory() noexcept { m_buffer.ReleaseMemory(kKeptCapacity); }

    /// Refuses all further writes with E_ABORT. Threads: any.
    void Cancel() noexcept { m_cancelled.store(true, std::memory_order_relaxed); }
    /// Accepts writes again.
    void Resume() noexcept { m_cancelled.store(false, std::memory_order_relaxed); }

private:
    /// @param answer  of one command, perhaps behind the separator
    static bool IsIndefinite(std::string_view answer) noexcept
    {
        return answer.starts_with("#0") || answer.starts_with(";#0");
    }
    HRESULT Append(std::size_t length, const void* bytes, wchar_t** error) noexcept;

    const std::size_t m_limit;
    CByteBuffer m_buffer;
    std::size_t m_messageStart = 0;
    std::size_t m_commandStart = 0;
    bool m_separatorPending = false;
    bool m_indefinite = false;
    bool m_refused = false; // the running command has passed the limit
    bool m_dropped = false; // nothing of the message at hand is answered
    std::atomic<bool> m_cancelled{false};
};

} // namespace ZoVelkor::RemoteKernel
