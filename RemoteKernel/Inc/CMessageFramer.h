#pragma once

#include <cstddef>
#include <span>

namespace ZoVelkor::RemoteKernel
{

/// Bounds of one program message. The defaults are the instrument's.
struct tagMessageLimits
{
    std::size_t iMaxText = std::size_t{1} << 22;  ///< bytes outside blocks; beyond: -363
    std::size_t iMaxBlock = std::size_t{1} << 29; ///< block bytes of one message; beyond: -223
};

enum class tagFrameStatus
{
    Incomplete, ///< more bytes are needed
    Message,    ///< a program message is complete
    Error,      ///< a limit was passed; the rest of the message will be dropped as it arrives
    Dropped     ///< the last byte of a refused message is among the consumed ones: scan again
};

/// What the framer says about the bytes at the start of an input buffer.
struct tagFrame
{
    tagFrameStatus eStatus = tagFrameStatus::Incomplete;
    std::size_t iLength = 0;      ///< Message: bytes of the message, terminator excluded
    std::size_t iConsumed = 0;    ///< bytes to take out of the buffer after use, also when not a Message
    std::size_t iBytesNeeded = 0; ///< Incomplete: at least so many are still missing, 0: not known
    short iError = 0;             ///< Error: SCPI error number
};

/// Finds the end of program messages in a stream of bytes: a line feed outside blocks.
///
/// A block begins with # and a digit at the start of a data element, outside quotes; the bytes of a definite
/// one are skipped whatever they are, an indefinite one ends at the next line feed. A carriage return before
/// the line feed stays in the message, where it is white space.
/// Every byte is looked at once, however the stream is cut into pieces. After an error the framer drops
/// bytes up to the end of the message: behind the block that was too large, then up to the line feed.
/// Threads: one session's. Standard: IEEE 488.2 sections 7.5, 7.7.6.
class CMessageFramer
{
public:
    explicit CMessageFramer(const tagMessageLimits& limits = {}) noexcept : m_limits(limits) {}

    /// Looks for the end of the first message.
    ///
    /// @param buffer  all bytes that have arrived and were not consumed; between two calls it may move in
    ///                memory and grow at its end, and loses exactly the consumed bytes at its start
    tagFrame Scan(std::span<const char> buffer) noexcept;

    /// Forgets the message that has begun (device clear); the buffer must be emptied as well.
    void Reset() noexcept;

private:
    enum class tagState
    {
        Text,
        IndefiniteBlock,
        DropBlock,
        DropLine
    };

    enum class tagStep
    {
        Continue,
        Done
    };

    tagStep ScanText(std::span<const char> buffer, tagFrame& frame) noexcept;
    tagStep ScanHash(std::span<const char> buffer, tagFrame& frame) noexcept;
    tagStep EnterBlock(std::size_t dataBegin, std::size_t length, std::size_t size, tagFrame& frame) noexcept;
    tagStep ScanIndefinite(std::span<const char> buffer, tagFrame& frame) noexcept;
    void Drop(std::span<const char> buffer, tagFrame& frame) noexcept;
    bool IsElementStart(std::span<const char> buffer, std::size_t hash) noexcept;
    void FollowQuotes(std::span<const char> buffer, std::size_t end) noexcept;
    void FinishMessage(std::size_t lineFeed, tagFrame& frame) noexcept;
    void Fail(short error, tagState next, std::size_t consumed, tagFrame& frame) noexcept;

    tagMessageLimits m_limits;
    tagState m_state = tagState::Text;
    std::size_t m_scanned = 0;    ///< no message end and no open block before this place
    std::size_t m_lexed = 0;      ///< quotes have been followed up to here
    std::size_t m_blockBytes = 0; ///< bytes of blocks before m_scanned
    std::size_t m_toDrop = 0;     ///< bytes of the refused block that are still to come
    char m_quote = 0;             ///< quote that is open at m_lexed
};

} // namespace ZoVelkor::RemoteKernel
