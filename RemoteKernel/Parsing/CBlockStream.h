#pragma once

#include "CByteBuffer.h"
#include "IByteSource.h"
#include "ICommandExecutor.h"
#include "PlatformTypes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ZoVelkor::RemoteKernel
{

/// A block that arrives while its command runs: takes the bytes at the start of the session's input and
/// fetches more of them, a piece at a time.
///
/// The last bytes are only handed on when what follows the block is known to be sound: the end of the message
/// or of its command. Anything else is reported once, and from then on every operation gives E_ABORT, as it
/// does when the client has gone, the session is cancelled, or no byte has come for too long.
/// Threads: the session's.
class CBlockStream
{
public:
    /// How a block has ended.
    enum class Progress
    {
        Open,    ///< not yet
        Checked, ///< what follows it is sound
        Refused, ///< what follows it is not; the rest of the message is to be dropped
        Stalled, ///< the client has paused for too long; the rest of the message is to be dropped
        Lost     ///< nothing more will come
    };

    /// @param input  the session's; outlives the stream, as the others do
    /// @param source  null when no block is ever begun
    /// @param stallMs  longest wait for the next byte while the command runs
    CBlockStream(CByteBuffer& input,
                 IByteSource* source,
                 int cancelDescriptor,
                 ICommandExecutor& errors,
                 int stallMs) noexcept
        : m_input(input),
          m_source(source),
          m_cancelDescriptor(cancelDescriptor),
          m_errors(errors),
          m_stallMs(stallMs)
    {}

    /// Begins a block whose data lies at the start of the input, as far as it has arrived.
    ///
    /// @param length  bytes, or -1: up to the next line feed
    void Begin(std::int64_t length) noexcept;

    /// Bytes of the block that can be taken without waiting; valid until the next operation.
    std::span<unsigned char> Window() noexcept
    {
        return {reinterpret_cast<unsigned char*>(m_input.Data()), WindowSize()};
    }
    /// Takes bytes at the start of the window.
    void Consume(std::size_t count) noexcept;

    /// Fetches until the window has so many bytes, or the rest of the block.
    ///
    /// @return S_OK; E_ABORT
    HRESULT Fill(std::size_t count);
    /// Copies the next bytes; fewer than asked for only at the end.
    ///
    /// @return S_OK; S_FALSE when the block had ended before; E_ABORT
    HRESULT Read(std::span<unsigned char> data, std::size_t& got);
    /// Waits until the window has a byte.
    ///
    /// @param timeoutMs  0 or more; -1: as long as a client may pause
    /// @return S_OK; S_FALSE at the end; E_PENDING; E_ABORT
    HRESULT Wait(long timeoutMs);
    /// Drops what has not been taken.
    ///
    /// @return S_OK; E_ABORT
    HRESULT Discard();
    /// The same when the command has ended: nobody waits for this client any more, so it may pause.
    HRESULT Finish();

    Progress State() const noexcept { return m_state; }
    /// Bytes of the whole block, -1 when not known yet.
    std::int64_t Length() const noexcept { return m_lengthKnown ? m_consumed + m_rest : -1; }
    /// Bytes that have been taken.
    std::int64_t Consumed() const noexcept { return m_consumed; }
    /// Bytes that have not been taken, -1 when not known yet.
    std::int64_t Rest() const noexcept { return m_lengthKnown ? m_rest : -1; }
    /// Tells whether the whole block has arrived.
    bool IsComplete() const noexcept
    {
        return m_lengthKnown && static_cast<std::int64_t>(m_input.Size()) >= m_rest;
    }

private:
    bool HasFailed() const noexcept { return m_state > Progress::Checked; }
    std::size_t WindowSize() const noexcept
    {
        return IsComplete() ? static_cast<std::size_t>(m_rest) : m_input.Size();
    }
    void FindEnd(std::size_t from) noexcept;
    HRESULT FetchInput(std::size_t room, long timeoutMs);
    HRESULT Receive(std::span<char> space, long timeoutMs, std::size_t& received);
    HRESULT CheckFollower();
    HRESULT Refuse(Progress state, short error, const char* detail);

    CByteBuffer& m_input;
    IByteSource* const m_source;
    const int m_cancelDescriptor;
    ICommandExecutor& m_errors;
    const int m_stallMs;
    int m_pauseMs = 0; ///< m_stallMs; -1: no limit
    Progress m_state = Progress::Lost;
    bool m_lengthKnown = true;
    std::int64_t m_rest = 0; ///< bytes not taken, when m_lengthKnown
    std::int64_t m_consumed = 0;
};

} // namespace ZoVelkor::RemoteKernel
