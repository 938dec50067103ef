#pragma once

#include "MessageLimits.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ZoVelkor::RemoteKernel
{

enum class FrameStatus
{
    Incomplete, ///< more bytes are needed
    Message,    ///< a program message is complete
    Block,      ///< the message up to its next block, which is to be streamed
    Error,      ///< a limit was passed; the rest of the message will be dropped as it arrives
    Dropped     ///< the last byte of a refused message is among the consumed ones: scan again
};

/// What the framer says about the bytes at the start of an input buffer.
struct Frame
{
    FrameStatus status = FrameStatus::Incomplete;
    std::size_t length = 0;       ///< Message: its bytes, terminator excluded; Block: with the block's header
    std::size_t consumed = 0;     ///< bytes to take out of the buffer after use, also when not a Message
    std::size_t bytesNeeded = 0;  ///< Incomplete: at least so many are still missing, 0: not known
    std::int64_t blockLength = 0; ///< Block: bytes of the data, -1: indefinite
    short error = 0;              ///< Error: SCPI error number
};

/// Finds the end of program messages in a stream of bytes: a line feed outside blocks.
///
/// A block begins with # and a digit at the start of a data element, outside quotes; the bytes of a definite
/// one are skipped whatever they are, an indefinite one ends at the next line feed. A carriage return before
/// the line feed stays in the message, where it is white space.
/// Every byte is looked at once, however the stream is cut into pieces. After an error the framer drops
/// the rest of the message as it arrives, blocks included.
///
/// Behind a block that is to be streamed the framer goes on where the caller has taken out the message up to
/// the block and the block itself, the line feed behind an indefinite one excluded.
/// Threads: one session's. Standard: IEEE 488.2 sections 7.5, 7.7.6.
class CMessageFramer
{
public:
    /// @param streams  blocks beyond maxHeld are to be streamed
    explicit CMessageFramer(const MessageLimits& limits = {}, bool streams = false) noexcept
        : m_limits(limits),
          m_streams(streams)
    {}

    /// Looks for the end of the first message.
    ///
    /// @param buffer  all bytes that have arrived and were not consumed; between two calls it may move in
    ///                memory and grow at its end, and loses exactly the consumed bytes at its start
    Frame Scan(std::span<const char> buffer) noexcept;

    /// Forgets the message that has begun (device clear); the buffer must be emptied as well.
    void Reset() noexcept;

    /// Looks at the rest of a message afresh, to collect it with all its blocks.
    void Hold() noexcept;

    /// Drops the rest of a message as it arrives.
    ///
    /// @param blockRest  bytes of a block that come first, -1: an indefinite block
    void Skip(std::int64_t blockRest) noexcept;
    /// Tells whether the message at hand is being dropped.
    bool IsSkipping() const noexcept { return m_skips; }

private:
    enum class Step
    {
        Continue,
        Done
    };

    Step ScanText(std::span<const char> buffer, Frame& frame) noexcept;
    Step ScanHash(std::span<const char> buffer, Frame& frame) noexcept;
    Step EnterBlock(std::size_t dataBegin, std::size_t length, Frame& frame) noexcept;
    Step ScanIndefinite(std::span<const char> buffer, Frame& frame) noexcept;
    bool IsElementStart(std::span<const char> buffer, std::size_t hash) noexcept;
    void FollowQuotes(std::span<const char> buffer, std::size_t end) noexcept;
    bool IsStreamed(std::size_t blockBytes) const noexcept;
    void FinishMessage(std::size_t lineFeed, Frame& frame) noexcept;
    void LeaveBlock(std::size_t dataBegin, std::int64_t length, Frame& frame) noexcept;
    void Fail(short error, Frame& frame) noexcept;
    void DropScanned(std::span<const char> buffer, Frame& frame) noexcept;

    MessageLimits m_limits;
    bool m_streams = false;
    bool m_holds = false;         ///< the message is collected whatever its blocks are
    bool m_skips = false;         ///< the message is dropped as it arrives
    bool m_indefinite = false;    ///< inside an indefinite block
    std::size_t m_scanned = 0;    ///< no message end and no open block before this place
    std::size_t m_lexed = 0;      ///< quotes have been followed up to here
    std::size_t m_blockEnd = 0;   ///< place behind the latest block, whose data separates nothing
    std::size_t m_blockBegin = 0; ///< place of the indefinite block
    std::size_t m_blockBytes = 0; ///< bytes of blocks before m_scanned
    char m_quote = 0;             ///< quote that is open at m_lexed
};

} // namespace ZoVelkor::RemoteKernel
