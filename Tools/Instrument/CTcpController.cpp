#include "CTcpController.h"

#include "Bstr.h"
#include "CMutexLocker.h"
#include "CMutexUnlocker.h"
#include "ErrorRaising.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <utility>

namespace ZoVelkor::Tools
{

namespace
{

/// The most that one call takes from the socket.
constexpr std::size_t kPieceBytes = 65536;

/// Buffers that grew beyond this are given back.
constexpr std::size_t kKeptBytes = std::size_t{1} << 20;

constexpr std::size_t kMaxStatusAnswer = 64;

/// Where connecting has no limit of its own.
constexpr long kMaxConnectMs = 600000;

constexpr std::string_view kEnd = "\n";
constexpr std::string_view kTrigger = "*TRG\n";
constexpr std::string_view kAskStatus = "*STB?\n";

struct AddressFreer
{
    void operator()(addrinfo* list) const noexcept { freeaddrinfo(list); }
};

using CAddressList = std::unique_ptr<addrinfo, AddressFreer>;

/// @param[out] fault  0, or what getaddrinfo says
CAddressList Resolve(const InstrumentAddress& address, int& fault)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    fault = getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found);
    return CAddressList(fault == 0 ? found : nullptr);
}

int TakeSocketError(int socket)
{
    int fault = 0;
    socklen_t length = sizeof fault;
    return getsockopt(socket, SOL_SOCKET, SO_ERROR, &fault, &length) == 0 ? fault : errno;
}

long CountOf(const addrinfo* list)
{
    long count = 0;
    for (; list != nullptr; list = list->ai_next)
    {
        ++count;
    }
    return count;
}

void Empty(std::string& buffer)
{
    buffer.clear();
    if (buffer.capacity() > kKeptBytes)
    {
        buffer.shrink_to_fit();
    }
}

} // namespace

CTcpController::CTcpController(InstrumentAddress address)
    : m_address(std::move(address)),
      m_fault(m_address.Text() + ": not connected"),
      m_wake(CreateEvent(FALSE, FALSE)),
      m_thread("ZoTcpController")
{
    if (!m_wake || FAILED(m_thread.Start(&m_loop)))
    {
        throw std::runtime_error("the system gives no thread or no event");
    }
}

std::string CTcpController::FaultText() const
{
    const CMutexLocker lock(m_mutex);
    return m_fault;
}

std::size_t CTcpController::ReceivedBytes() const
{
    const CMutexLocker lock(m_mutex);
    return UnreadBytesLocked();
}

std::size_t CTcpController::UnreadBytesLocked() const noexcept
{
    return (m_readScanner.IsInside() ? m_received : 0) + m_pending.size() - m_pendingUsed;
}

HRESULT CTcpController::Begin(Request request)
{
    const CMutexLocker lock(m_mutex);
    if (!m_isUp && request.kind != Kind::Connect)
    {
        return DoAcknowledgeError();
    }
    if (request.kind == Kind::AskStatus && (m_isAnswerDue || m_sendScanner.IsInside()))
    {
        FailLocked("the status byte cannot be asked for inside a message or before an answer");
        return S_OK;
    }
    BeginReadLocked();
    request.caller = std::this_thread::get_id();
    m_request = request;
    ++m_serial;
    SetEvent(m_wake.Get());
    return S_OK;
}

void CTcpController::BeginReadLocked()
{
    m_scannerBeforeRead = m_readScanner;
    Empty(m_data);
}

HRESULT CTcpController::DoClear()
{
    long timeoutMs = 0;
    CBScpiController::get_Timeout(&timeoutMs);
    const long limitMs = timeoutMs < 0 || timeoutMs > kMaxConnectMs ? kMaxConnectMs : timeoutMs;
    return Begin({.kind = Kind::Connect, .deadline = CClock::now() + std::chrono::milliseconds(limitMs)});
}

HRESULT CTcpController::DoTrigger()
{
    // Trigger does not wait when what was before it has succeeded, so nothing may be left to do later.
    const CMutexLocker lock(m_mutex);
    if (!m_isUp)
    {
        return DoAcknowledgeError();
    }
    if (m_sendScanner.IsInside())
    {
        FailLocked("*TRG cannot be sent inside a message");
        return S_OK;
    }
    const ssize_t sent = send(m_socket.Get(), kTrigger.data(), kTrigger.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent == static_cast<ssize_t>(kTrigger.size()))
    {
        return DoAcknowledgeTrigger();
    }
    FailLinkLocked(sent < 0 ? fmt::format("cannot send: {}", std::strerror(errno)) : "a message was cut off");
    return S_OK;
}

HRESULT CTcpController::DoReadStatusByte()
{
    return Begin({.kind = Kind::AskStatus, .data = kAskStatus, .limit = kMaxStatusAnswer});
}

HRESULT CTcpController::DoRead(bool, bool counted, long count)
{
    return Begin({.kind = Kind::Read,
                  .isCounted = counted,
                  .limit = counted ? static_cast<std::size_t>(count) : kMaxUncountedBytes});
}

HRESULT CTcpController::DoWrite(unsigned char* data, long length, bool end)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    return Begin({.kind = Kind::Write, .data = bytes, .isEnd = end});
}

HRESULT CTcpController::DoFetchData(unsigned char* buffer, long* length)
{
    const CMutexLocker lock(m_mutex);
    *length = std::min(*length, static_cast<long>(m_data.size()));
    std::copy_n(m_data.data(), *length, buffer);
    Empty(m_data);
    return S_OK;
}

HRESULT CTcpController::DoFetchString(wchar_t** text)
{
    const CMutexLocker lock(m_mutex);
    *text = A2WBSTR(m_data.data(), static_cast<int>(m_data.size()));
    Empty(m_data);
    return *text != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT CTcpController::CheckProtocolError()
{
    const CMutexLocker lock(m_mutex);
    // Abort comes here too, from another thread, and by then the request may be a new one.
    if (m_request.kind != Kind::None && m_request.caller == std::this_thread::get_id())
    {
        TakeBackLocked();
    }
    return S_OK;
}

void CTcpController::TakeBackLocked()
{
    switch (m_request.kind)
    {
    case Kind::Read:
    case Kind::ReadStatus:
        m_pending = m_data + m_pending.substr(m_pendingUsed);
        m_pendingUsed = 0;
        m_received -= std::min(m_received, m_data.size());
        m_readScanner = m_scannerBeforeRead;
        Empty(m_data);
        break;
    case Kind::Write:
    case Kind::AskStatus:
        if (m_request.sent > 0)
        {
            DisconnectLocked();
            m_fault = m_address.Text() + ": a message was cut off in the middle";
        }
        break;
    case Kind::Connect:
        m_fault = m_address.Text() + ": not connected";
        break;
    case Kind::None:
        break;
    }
    m_request = {};
    ++m_serial;
    SetEvent(m_wake.Get());
}

void CTcpController::Serve()
{
    const CMutexLocker lock(m_mutex);
    while (!m_stop)
    {
        AdvanceLocked();
    }
}

void CTcpController::Stop()
{
    const CMutexLocker lock(m_mutex);
    m_stop = true;
    SetEvent(m_wake.Get());
}

void CTcpController::AdvanceLocked()
{
    if (!m_isUp)
    {
        m_socket.Reset();
    }
    switch (m_request.kind)
    {
    case Kind::None:
        WaitLocked(0);
        break;
    case Kind::Connect:
        ConnectLocked();
        break;
    case Kind::Write:
    case Kind::AskStatus:
        if (!TryWriteLocked())
        {
            WaitLocked(POLLOUT);
        }
        break;
    case Kind::Read:
    case Kind::ReadStatus:
        if (!TryReadLocked())
        {
            WaitLocked(POLLIN);
        }
        break;
    }
}

/// @param events  of the socket; 0 when only requests are waited for
/// @return the socket has something to say
bool CTcpController::WaitLocked(short events, const Deadline& deadline)
{
    pollfd descriptors[] = {{GetEventDescriptor(m_wake.Get()), POLLIN, 0}, {m_socket.Get(), events, 0}};
    int ready = 0;
    {
        const CMutexUnlocker unlocker(m_mutex);
        ready = poll(descriptors, events != 0 ? 2 : 1, PollTimeout(deadline));
    }
    WaitForSingleObject(m_wake.Get(), 0);
    return ready > 0 && descriptors[1].revents != 0;
}

void CTcpController::StartOverLocked()
{
    DisconnectLocked();
    m_socket.Reset();
    m_sendScanner = {};
    m_readScanner = {};
    m_isAnswerDue = false;
    m_received = 0;
    m_pendingUsed = 0;
    Empty(m_pending);
    Empty(m_data);
}

void CTcpController::ConnectLocked()
{
    StartOverLocked();
    const unsigned serial = m_serial;
    int fault = 0;
    CAddressList candidates;
    {
        const CMutexUnlocker unlocker(m_mutex);
        candidates = Resolve(m_address, fault);
    }
    if (!IsCurrentLocked(serial))
    {
        return;
    }
    if (candidates == nullptr)
    {
        m_fault = fmt::format("cannot find host {}: {}", m_address.host, gai_strerror(fault));
    }
    else
    {
        fault = ConnectToAnyLocked(candidates.get(), serial);
        if (!IsCurrentLocked(serial))
        {
            return;
        }
        m_isUp = fault == 0;
        m_fault = fmt::format("cannot connect to {}: {}", m_address.Text(), std::strerror(fault));
    }
    m_request = {};
    static_cast<void>(m_isUp ? DoAcknowledgeClear() : DoAcknowledgeError());
}

/// @return 0, or the error number of the last address
int CTcpController::ConnectToAnyLocked(const addrinfo* candidates, unsigned serial)
{
    int fault = 0;
    for (long left = CountOf(candidates); left > 0; --left, candidates = candidates->ai_next)
    {
        // An address that does not answer leaves time for the others; the last one has as long as the caller.
        const CClock::time_point now = CClock::now();
        const Deadline end = left > 1 ? Deadline(now + (m_request.deadline - now) / left) : Deadline();
        fault = TryConnectLocked(*candidates, end, serial);
        if (fault == 0 || !IsCurrentLocked(serial))
        {
            break;
        }
        m_socket.Reset();
    }
    return fault;
}

int CTcpController::TryConnectLocked(const addrinfo& candidate, const Deadline& deadline, unsigned serial)
{
    m_socket.Reset(
        socket(candidate.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, candidate.ai_protocol));
    if (!m_socket)
    {
        return errno;
    }
    // A short message leaves at once, without waiting for the acknowledgement of the one before.
    const int on = 1;
    setsockopt(m_socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(m_socket.Get(), candidate.ai_addr, candidate.ai_addrlen) == 0)
    {
        return 0;
    }
    if (errno != EINPROGRESS && errno != EINTR)
    {
        return errno;
    }
    while (IsCurrentLocked(serial) && (!deadline || CClock::now() < *deadline))
    {
        if (WaitLocked(POLLOUT, deadline))
        {
            return TakeSocketError(m_socket.Get());
        }
    }
    return ETIMEDOUT;
}

/// What is done at length without the lock was not taken back meanwhile.
bool CTcpController::IsCurrentLocked(unsigned serial) const noexcept
{
    return !m_stop && m_serial == serial;
}

/// @return false when the socket takes nothing at present
bool CTcpController::TryWriteLocked()
{
    const std::size_t size = m_request.data.size();
    if (m_request.sent < size + (m_request.isEnd ? kEnd.size() : 0))
    {
        const bool isEnd = m_request.sent >= size;
        const std::string_view piece = isEnd ? kEnd : m_request.data.substr(m_request.sent);
        const int more = m_request.isEnd && !isEnd ? MSG_MORE : 0;
        const ssize_t sent = send(m_socket.Get(), piece.data(), piece.size(), MSG_NOSIGNAL | more);
        if (sent < 0)
        {
            if (errno == EAGAIN)
            {
                return false;
            }
            if (errno != EINTR)
            {
                FailLinkLocked(fmt::format("cannot send: {}", std::strerror(errno)));
            }
            return true;
        }
        m_request.sent += static_cast<std::size_t>(sent);
        return true;
    }
    FinishWriteLocked();
    return true;
}

void CTcpController::FinishWriteLocked()
{
    NoteSentLocked(m_request.data);
    if (m_request.isEnd)
    {
        NoteSentLocked(kEnd);
    }
    if (m_request.kind == Kind::AskStatus)
    {
        m_request.kind = Kind::ReadStatus;
        return;
    }
    m_request = {};
    DoAcknowledgeWrite();
}

void CTcpController::NoteSentLocked(std::string_view bytes)
{
    while (!bytes.empty())
    {
        bytes.remove_prefix(m_sendScanner.Take(bytes));
        m_isAnswerDue = m_isAnswerDue || (m_sendScanner.IsEnd() && m_sendScanner.HasQuestion());
    }
}

/// @return false when nothing is there at present
bool CTcpController::TryReadLocked()
{
    GatherLocked();
    if (!m_data.empty() && m_readScanner.IsEnd())
    {
        FinishReadLocked(true);
        return true;
    }
    if (m_data.size() < m_request.limit)
    {
        return ReceiveLocked();
    }
    if (m_request.isCounted)
    {
        FinishReadLocked(false);
    }
    else
    {
        FailLinkLocked(fmt::format("an answer of more than {} bytes", m_request.limit));
    }
    return true;
}

/// Moves what belongs to the read at hand from what has come.
void CTcpController::GatherLocked()
{
    const std::string_view fresh = std::string_view(m_pending).substr(
        m_pendingUsed, m_request.limit - std::min(m_request.limit, m_data.size()));
    if (fresh.empty())
    {
        return;
    }
    if (!m_readScanner.IsInside())
    {
        m_received = 0;
    }
    const std::size_t taken = m_readScanner.Take(fresh);
    m_data.append(fresh.substr(0, taken));
    m_pendingUsed += taken;
    m_received += taken;
}

bool CTcpController::ReceiveLocked()
{
    const std::size_t room =
        m_request.isCounted ? std::min(kPieceBytes, m_request.limit - m_data.size()) : kPieceBytes;
    m_pending.resize(room);
    m_pendingUsed = 0;
    const ssize_t count = recv(m_socket.Get(), m_pending.data(), room, 0);
    const int fault = count < 0 ? errno : 0;
    m_pending.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (fault == EAGAIN)
    {
        return false;
    }
    if (count == 0)
    {
        FailLinkLocked(fmt::format("closed the connection in the middle of an answer ({} bytes of it came)",
                                   UnreadBytesLocked()));
    }
    else if (count < 0 && fault != EINTR)
    {
        FailLinkLocked(fmt::format("cannot receive: {}", std::strerror(fault)));
    }
    return true;
}

void CTcpController::FinishReadLocked(bool end)
{
    if (end)
    {
        m_isAnswerDue = false;
    }
    if (m_request.kind == Kind::ReadStatus)
    {
        FinishStatusLocked();
        return;
    }
    m_request = {};
    DoAcknowledgeRead(end, false, static_cast<long>(m_data.size()));
}

void CTcpController::FinishStatusLocked()
{
    unsigned char status = 0;
    const char* const end = m_data.data() + m_data.size();
    const char* const begin = m_data.data() + (m_data.starts_with('+') ? 1 : 0);
    const auto [rest, fault] = std::from_chars(begin, end, status);
    if (fault != std::errc() || (*rest != '\n' && *rest != '\r'))
    {
        FailLocked("answered *STB? with something else than a status byte");
        return;
    }
    m_request = {};
    DoAcknowledgeStatus(static_cast<char>(status));
}

void CTcpController::FailLocked(const std::string& what)
{
    m_fault = fmt::format("{}: {}", m_address.Text(), what);
    m_request = {};
    DoAcknowledgeError();
}

void CTcpController::FailLinkLocked(const std::string& what)
{
    DisconnectLocked();
    FailLocked(what);
}

/// The other end learns it at once; the thread closes the socket when it does not wait on it any more.
void CTcpController::DisconnectLocked()
{
    m_isUp = false;
    if (m_socket)
    {
        shutdown(m_socket.Get(), SHUT_RDWR);
    }
}

} // namespace ZoVelkor::Tools
