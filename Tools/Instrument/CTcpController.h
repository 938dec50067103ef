#pragma once

#include "CBScpiController.h"
#include "CMessageScanner.h"
#include "CThread.h"
#include "CThreadRunObject.h"
#include "CUniqueHandle.h"
#include "Deadline.h"
#include "InstrumentAddress.h"

#include <chrono>
#include <cstdint>
#include <mutex>
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
    using CLock = std::unique_lock<std::mutex>;
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

    // The thread's side. All take and leave the lock held; it is free while they wait.
    void Serve();
    void Stop();
    void Advance(CLock& lock);
    bool Wait(CLock& lock, short events, const Deadline& deadline = {});
    void Connect(CLock& lock);
    int ConnectToAny(CLock& lock, const addrinfo* candidates, unsigned serial);
    void StartOver();
    int TryConnect(CLock& lock, const addrinfo& candidate, const Deadline& deadline, unsigned serial);
    bool IsCurrent(unsigned serial) const noexcept;
    bool TryWrite();
    bool TryRead();
    bool Receive();
    void Gather();

    // Both sides, under the lock.
    void FinishWrite();
    void FinishRead(bool end);
    void FinishStatus();
    void NoteSent(std::string_view bytes);
    void TakeBack();
    void BeginRead();
    std::size_t UnreadBytes() const noexcept;
    void Fail(const std::string& what);
    void FailLink(const std::string& what);
    void Disconnect();

    const InstrumentAddress m_address;

    mutable std::mutex m_mutex; // guards all that follows up to the loop
    bool m_stop = false;
    unsigned m_serial = 0; ///< counts the requests
    Request m_request;
    CUniqueSocket m_socket; ///< closed by the thread alone, which waits on it without the lock
    bool m_isUp = false;    ///< the connection can be used
    std::string m_fault;
    CMessageScanner m_sendScanner;
    bool m_isAnswerDue = false;
    CMessageScanner m_readScanner;
    CMessageScanner m_scannerBeforeRead;
    std::string m_pending;         ///< came, and belongs to no read yet
    std::size_t m_pendingUsed = 0; ///< how much of its beginning does
    std::string m_data;            ///< what the read at hand has gathered, or the last one
    std::size_t m_received = 0;

    CUniqueEvent m_wake; ///< auto-reset: there is a request, or none any more
    CLoop m_loop{*this};
    CThread m_thread; ///< the last member, so that it ends before the others
};

} // namespace ZoVelkor::Tools
