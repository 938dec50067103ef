#pragma once

#include "CByteBuffer.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>

namespace ZoVelkor::Transports
{

/// The message exchange control of a device on a bus (IEEE 488.2 section 6.3): two bounded buffers between a
/// controller and the kernel that reads its messages, and the rules of asking and answering.
///
/// One response is read before the next message is sent, and nothing is read that was not asked for; what
/// breaks that is a query error:
/// - INTERRUPTED -410: a new message element (a byte, a trigger) comes while a response is not read to its
///   end, or was there before the response; the response is dropped.
/// - UNTERMINATED -420: the controller reads, but nothing was asked; what has come of a message is dropped.
/// - DEADLOCKED -430: both buffers are full and both sides want to go on; the response is dropped.
///
/// A message ends with a line feed, END, or both: END is handed to the kernel as a line feed where it has not
/// seen the message end by itself. END inside a block of definite length is an error of its own, -161.
/// Operations that find an error return its number, else 0; the owner reports it.
/// Threads: one at a time.
class CMessageExchange
{
public:
    /// Sizes are in bytes, at least 2.
    CMessageExchange(std::size_t inputSize, std::size_t outputSize) noexcept
        : m_inputSize(inputSize),
          m_outputSize(outputSize)
    {}

    /// The controller is about to send.
    ///
    /// @return -410 when that drops a response
    [[nodiscard]] short Listen() noexcept;
    /// Takes bytes of a message as far as there is room.
    ///
    /// @param end  END came with the last byte; counts when all bytes were taken
    /// @return bytes taken
    std::size_t Accept(std::string_view bytes, bool end);
    /// Notes whether the controller waits for room.
    ///
    /// @return -430 when the device waits for the controller, too
    [[nodiscard]] short WaitForRoom(bool waits) noexcept;
    bool HasRoom() const noexcept { return m_input.Size() < m_inputSize; }
    /// The controller triggers; the trigger stands behind what it has sent. EndTrigger when it is over.
    ///
    /// @return -410 as Listen
    [[nodiscard]] short BeginTrigger() noexcept;
    void EndTrigger() noexcept { m_triggerWaits = false; }
    /// The controller wants to read.
    ///
    /// @return -420 when nothing will come; see IsClearing then
    [[nodiscard]] short Talk() noexcept;
    /// Tells whether there is a response that is not read to its end.
    bool IsUnread() const noexcept
    {
        return m_response == Response::Open || m_response == Response::Complete;
    }
    /// Tells whether Take would give a byte.
    bool CanTake() const noexcept { return Takeable() != 0; }
    /// Appends response bytes to a text.
    ///
    /// @return true when END came with the last of them
    bool Take(std::size_t max, std::string& bytes);
    /// Tells whether the controller has read the whole response or lost it, and the kernel does not know yet.
    bool IsSettling() const noexcept { return m_response >= Response::Taken; }
    void DeviceClear() noexcept;

    struct Handed
    {
        std::size_t count;
        short error; ///< -161, see IsClearing then
    };
    /// Hands bytes to the kernel, up to the end of a message at most.
    Handed Hand(std::span<char> space);
    /// Bytes that wait for the kernel.
    std::size_t Available() const noexcept { return IsClearing() ? 0 : m_input.Size(); }
    /// Takes bytes of a response as far as there is room; none once the response is dropped.
    ///
    /// @param[out] taken  how many
    /// @return -410; -430
    [[nodiscard]] short Answer(std::string_view bytes, std::size_t& taken);
    bool HasOutputRoom() const noexcept { return m_output.Size() < m_outputSize; }
    /// The response ends with what was answered last.
    void EndAnswer() noexcept;
    /// Tells whether the controller has lost the response at hand.
    bool IsDropped() const noexcept { return IsClearing() || m_response == Response::Dropped; }
    /// Forgets the response at hand, if it is not read.
    void DropAnswer() noexcept;
    void DropInput() noexcept;
    /// The kernel has worked the message off.
    void EndMessage() noexcept;
    /// Tells whether the kernel is about to forget what it has read: after a device clear, and after the
    /// errors -420 and -161. Nothing is handed out until Acknowledge.
    bool IsClearing() const noexcept { return m_clearing; }
    void Acknowledge() noexcept;

private:
    enum class Response
    {
        None,
        Open,     ///< bytes have come, the end has not
        Complete, ///< the end has come
        Taken,    ///< all is read
        Dropped   ///< the rest will not be read
    };

    bool IsAtEnd() const noexcept { return !m_ends.empty() && m_ends.front() == m_handed; }
    /// The last byte of an unfinished response stays: END may have to go with it.
    std::size_t Takeable() const noexcept
    {
        const std::size_t kept = m_response == Response::Open && !m_output.IsEmpty() ? 1 : 0;
        return m_output.Size() - kept;
    }
    bool PassEnd(std::span<char> space, Handed& handed) noexcept;
    short Interrupt() noexcept;
    short CheckDeadlock() noexcept;

    const std::size_t m_inputSize;
    const std::size_t m_outputSize;
    CByteBuffer m_input;
    CByteBuffer m_output;
    std::uint64_t m_accepted = 0; // bytes so far, like the following
    std::uint64_t m_handed = 0;
    std::deque<std::uint64_t> m_ends; // values of m_accepted at END, as far as the kernel is not beyond them
    Response m_response = Response::None;
    bool m_lineFeedHanded = false; // the byte that was handed out last
    bool m_endHanded = false;      // the line feed that stands for the END in front
    bool m_messageOver = true;     // the kernel has worked off what was handed out
    bool m_hungry = false;         // and found nothing more
    bool m_triggerWaits = false;
    bool m_senderWaits = false;
    bool m_writerWaits = false;
    bool m_clearing = false;
};

} // namespace ZoVelkor::Transports
