#pragma once

#include "CBScpiController.h"
#include "CMessageScanner.h"
#include "CMutex.h"
#include "CThread.h"
#include "CThreadRunObject.h"
#include "CUniqueHandle.h"
#include "Deadline.h"
#include "InstrumentAddress.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>

struct addrinfo;

namespace ZoVelkor::Tools
{

/// The most that a read without a count keeps in memory, in bytes; a longer response is read in pieces.
inline constexpr std::size_t kMaxUncountedBytes = std::size_t{64} << 20;

/// A controller over a raw TCP connection: bytes out, responses in, nothing else.
///
/// It begins without a connection; Clear opens one. What a bus has beside bytes is made of them or refused:
///
/// - END of a write is an LF behind the last byte. END of a read is the LF of a response, which is part of
///   what is read; an LF inside a definite-length block is data.
/// - Trigger sends `*TRG`; it fails inside a message that has not ended.
/// - ReadStatusByte asks `*STB?`, so it fails while a query is unanswered or a message has not ended.
/// - Clear closes the connection and opens it anew: the instrument drops what it was doing for it.
/// - Remote, Local, LocalLockout: E_NOTIMPL, so the operations raise CShellError. The states read as false.
/// - EnableInterruptCallback and DisableInterruptCallback: E_NOTIMPL; there are no service requests, so
///   WaitInterrupt ends with the time-out.
///
/// A counted read takes no more from the socket than it was asked for. What a read that timed out or was
/// aborted had gathered is given to the next one. A write that ended so in the middle leaves a connection
/// that is of no use until Clear, as every failure of the connection does. FaultText says what was wrong.
///
/// Threads: as the base; an own thread waits for the socket and for requests. The destructor waits for a
/// look-up of the host's name under way, because the system has no way to end one.
class CTcpController : public CBScpiController
{
public:
    /// @throws std::runtime_error when the system gives no thread or no event
    explicit CTcpController(InstrumentAddress address);
    CTcpController(const CTcpController&) = delete;
    CTcpController& operator=(const CTcpController&) = delete;

    /// What was wrong when a request failed last, for people; begins with the address.
    std::string FaultText() const;
    /// Bytes that have come of responses that are not read to their end.
    std::size_t ReceivedBytes() const;

    HRESULT DoTrigger() override;
    HRESULT DoClear() override;
    HRESULT DoLocal() override { return E_NOTIMPL; }
    HRESULT DoRemote() override { return E_NOTIMPL; }
    HRESULT DoReadStatusByte() override;
    HRESULT DoLocalLockout(short) override { return E_NOTIMPL; }
    HRESULT DoRead(bool first, bool counted, long count) override;
    HRESULT DoWrite(unsigned char* data, long length, bool end) override;
    short DoGetRemoteState() override { return VARIANT_FALSE; }
    short DoGetLocalLockoutState() override { return VARIANT_FALSE; }
    HRESULT DoFetchData(unsigned char* buffer, long* length) override;
    HRESULT DoFetchString(wchar_t** text) override;
    /// Takes back the request that the calling thread no longer waits for.
    HRESULT CheckProtocolError() override;
    HRESULT DoEnableInterrupt() override { return E_NOTIMPL; }
    HRESULT DoDisableInterrupt() override { return E_NOTIMPL; }

private:
    using CClock = std::chrono::steady_clock;
    using CUniqueSocket = CUniqueHandle<&close, int, -1>;

    enum class Kind : std::uint8_t
    {
        None,
        Connect,
        Write,
        Read,
        AskStatus, ///< a write that goes on as ReadStatus
        ReadStatus
    };

    struct Request
    {
        Kind kind = Kind::None;
        std::string_view data{}; ///< to write; the caller's
        std::size_t sent = 0;
        bool isEnd = false;
        bool isCounted = false;
        std::size_t limit = 0; ///< most bytes to read
        CClock::time_point deadline{};
        std::thread::id caller{};
    };

    /// What the thread runs.
    class CLoop final : public CThreadRunObject
    {
    public:
        explicit CLoop(CTcpController& owner) : m_owner(owner) {}
        void Run() override { m_owner.Serve(); }
        void Abort() override { m_owner.Stop(); }

    private:
        CTcpController& m_owner;
    };

    // The caller's side.
    HRESULT Begin(Request request);

    // The thread's side.
    void Serve();
    void Stop();
    // The lock is free while these wait.
    void AdvanceLocked() ZO_REQUIRES(m_mutex);
    bool WaitLocked(short events, const Deadline& deadline = {}) ZO_REQUIRES(m_mutex);
    void ConnectLocked() ZO_REQUIRES(m_mutex);
    int ConnectToAnyLocked(const addrinfo* candidates, unsigned serial) ZO_REQUIRES(m_mutex);
    int TryConnectLocked(const addrinfo& candidate, const Deadline& deadline, unsigned serial)
        ZO_REQUIRES(m_mutex);
    void StartOverLocked() ZO_REQUIRES(m_mutex);
    bool IsCurrentLocked(unsigned serial) const noexcept ZO_REQUIRES(m_mutex);
    bool TryWriteLocked() ZO_REQUIRES(m_mutex);
    bool TryReadLocked() ZO_REQUIRES(m_mutex);
    bool ReceiveLocked() ZO_REQUIRES(m_mutex);
    void GatherLocked() ZO_REQUIRES(m_mutex);

    // Both sides.
    void FinishWriteLocked() ZO_REQUIRES(m_mutex);
    void FinishReadLocked(bool end) ZO_REQUIRES(m_mutex);
    void FinishStatusLocked() ZO_REQUIRES(m_mutex);
    void NoteSentLocked(std::string_view bytes) ZO_REQUIRES(m_mutex);
    void TakeBackLocked() ZO_REQUIRES(m_mutex);
    void BeginReadLocked() ZO_REQUIRES(m_mutex);
    std::size_t UnreadBytesLocked() const noexcept ZO_REQUIRES(m_mutex);
    void FailLocked(const std::string& what) ZO_REQUIRES(m_mutex);
    void FailLinkLocked(const std::string& what) ZO_REQUIRES(m_mutex);
    void DisconnectLocked() ZO_REQUIRES(m_mutex);

    const InstrumentAddress m_address;

    mutable CMutex m_mutex;
    bool m_stop ZO_GUARDED_BY(m_mutex) = false;
    unsigned m_serial ZO_GUARDED_BY(m_mutex) = 0; ///< counts the requests
    Request m_request ZO_GUARDED_BY(m_mutex);
    /// Closed by the thread alone, which waits on it without the lock.
    CUniqueSocket m_socket ZO_GUARDED_BY(m_mutex);
    bool m_isUp ZO_GUARDED_BY(m_mutex) = false; ///< the connection can be used
    std::string m_fault ZO_GUARDED_BY(m_mutex);
    CMessageScanner m_sendScanner ZO_GUARDED_BY(m_mutex);
    bool m_isAnswerDue ZO_GUARDED_BY(m_mutex) = false;
    CMessageScanner m_readScanner ZO_GUARDED_BY(m_mutex);
    CMessageScanner m_scannerBeforeRead ZO_GUARDED_BY(m_mutex);
    std::string m_pending ZO_GUARDED_BY(m_mutex);         ///< came, and belongs to no read yet
    std::size_t m_pendingUsed ZO_GUARDED_BY(m_mutex) = 0; ///< how much of its beginning does
    std::string m_data ZO_GUARDED_BY(m_mutex); ///< what the read at hand has gathered, or the last one
    std::size_t m_received ZO_GUARDED_BY(m_mutex) = 0;

    CUniqueEvent m_wake; ///< auto-reset: there is a request, or none any more
    CLoop m_loop{*this};
    CThread m_thread; ///< the last member, so that it ends before the others
};

} // namespace ZoVelkor::Tools
