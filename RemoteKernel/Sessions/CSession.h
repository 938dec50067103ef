// Sessions: from a transport's bytes to response bytes, one session a remote path.
//
// A CConnection reads from its channel on a thread of its own into the CSession, which frames and parses,
// asks the CParserGate, runs each command by its application or itself, and gives the response back to be
// written. CRemotePath is what others know of a path, CPathTable finds it by number; CErrorManagement,
// CRemoteControl and their like are its services. KernelParts is what all sessions share. Transports call by
// IZOScpiChannelServiceProvider, from any thread.
// Lock order: connection or session list; then a session's break-off, or the gate. A path's lock is held
// while its channel is told of states, so that a channel must not call back then. No handler is waited for
// under any of them.

#pragma once

#include "CByteBuffer.h"
#include "CMutex.h"
#include "CRemotePathServices.h"
#include "Event.h"
#include "KernelParts.h"
#include "Parsing/CBlockStream.h"
#include "Parsing/CMessageFramer.h"
#include "Parsing/CProgramMessageParser.h"
#include "Parsing/ICommandExecutor.h"
#include "Responses/CFormatSubsystem.h"
#include "Responses/COutputQueue.h"
#include "SessionLimits.h"
#include "Status/CErrorQueue.h"
#include "Status/CSessionStatus.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

class CBuiltInCommands;

/// What a session may know of its transport; outlives the session.
struct SessionTransport
{
    int connection = -1;           ///< descriptor whose error or hang-up ends the waits of *OPC? and *WAI
    IByteSource* source = nullptr; ///< where large blocks are read from while their commands run; null: they
                                   ///< are collected
    IZOScpiChannel* channel = nullptr; ///< hears of states
};

/// One remote path: takes bytes of program messages, runs their commands, gives the response bytes.
///
/// A program message ends with a line feed. What a client may send and gets is described in
/// Docs/RemoteInterface.md. A query whose execution fails answers nothing; the answers of the other queries
/// of its message stay.
///
/// In process, without a transport:
/// @code
/// CSession session(kernel.Parts());
/// std::string_view response = session.Process(bytes);
/// @endcode
/// A transport reads into InputSpace() and sends after each message:
/// @code
/// session.CommitInput(received);
/// while (session.ExecuteNext()) { Send(session.Response()); session.ClearResponse(); }
/// @endcode
/// A message whose blocks are large is not collected first: its commands run as soon as the header of such a
/// block is there, and read on from the transport (IByteSource). Without one, as in process, it is collected.
///
/// Threads: one at a time, except where said.
class CSession final : private ICommandExecutor
{
public:
    /// Opens a session.
    ///
    /// @param parts  of a kernel that outlives the session
    /// @throws std::system_error when the system is short of descriptors or all remote paths are taken,
    ///         std::bad_alloc
    explicit CSession(const KernelParts& parts,
                      const SessionLimits& limits = {},
                      const SessionTransport& transport = {});
    CSession(const CSession&) = delete;
    CSession& operator=(const CSession&) = delete;
    /// Ends the session. Operations that it began and that go on are forgotten.
    ~CSession();

    /// Takes bytes and runs every message that is complete.
    ///
    /// A message that lies completely in these bytes is parsed in place; the bytes may be changed by that.
    /// @return the responses of these messages, each with its line feed; valid until the next call
    std::string_view Process(std::span<char> bytes);

    /// Room for bytes to be received: as much as the message at hand announces, in bounded steps.
    std::span<char> InputSpace();
    /// Takes bytes over that were received into InputSpace().
    void CommitInput(std::size_t count) noexcept { m_input.Commit(count); }
    /// Runs the next complete message of the input; waits while the path's parsing is stopped.
    ///
    /// @return false when there is none, or the session is broken off
    bool ExecuteNext();

    /// Response bytes that were not cleared; empty when the messages answered nothing.
    std::string_view Response() const noexcept { return m_output->View(); }
    void ClearResponse() noexcept
    {
        if (!m_output->IsEmpty())
        {
            m_output->Clear();
            m_status->StatusByte().SetMessageAvailable(false);
        }
    }

    /// Tells whether the session, with no message at hand, keeps memory of a large one for the next one.
    bool HoldsMemory() const noexcept
    {
        return m_input.IsEmpty() &&
               (m_input.Capacity() > kKeptInput || m_output->Capacity() > COutputQueue::kKeptCapacity);
    }
    /// Gives such memory back; for a transport whose client has become quiet.
    void ReleaseMemory() noexcept;

    /// Ends the session's waits, drops the rest of the message at hand and refuses further ones; does not
    /// wait. A handler that is running is not interrupted, its next write gives E_ABORT. Threads: any.
    void Cancel() noexcept;
    bool IsCancelled() const noexcept { return m_break.load(std::memory_order_relaxed) == kBreakForEver; }

    /// Device clear: ends the session's waits and drops the rest of the message at hand, its responses and
    /// all input; does not wait. The session does nothing more until FinishClear. Threads: any.
    void DeviceClear() noexcept { Break(kBreakForDeviceClear); }
    /// Drops input and message in the same way, and nothing else: what has arrived has no end. Threads: any.
    void DropInput() noexcept { Break(kBreakForInput); }
    /// Tells whether one of the two waits for FinishClear.
    bool IsClearPending() const noexcept
    {
        const int reason = m_break.load(std::memory_order_relaxed);
        return reason == kBreakForInput || reason == kBreakForDeviceClear;
    }
    /// Carries it out. After a device clear (IEEE 488.2 section 5.8) *OPC is forgotten, too, and the device
    /// handlers and observers are told; settings, status and errors stay. When another clear has come
    /// meanwhile that one is pending.
    void FinishClear();
    /// Tells those who have heard of the message at hand that it is over; for a session that is cancelled.
    void Abandon();
    /// Group execute trigger; inside a message it is refused with -105, which drops that message.
    ///
    /// @return S_OK; S_FALSE when nothing took it (an error is queued)
    HRESULT Trigger();
    /// Refuses a trigger with -105.
    void RefuseTrigger();

    /// Serial poll: the status byte with RQS, which ends the request for service (IEEE 488.2
    /// section 11.2.2.1). Threads: any.
    unsigned char SerialPoll() noexcept
    {
        return static_cast<unsigned char>(m_status->StatusByte().SerialPoll());
    }
    /// @param pObserver  borrowed until another one is set or the session has ended; null: none. Threads:
    /// any.
    void SetServiceRequestObserver(IServiceRequestObserver* pObserver) noexcept
    {
        m_status->StatusByte().SetObserver(pObserver);
    }

    /// The number by which services know this session.
    long RemotePath() const noexcept { return m_path->Number(); }
    const std::shared_ptr<CRemotePath>& Path() const noexcept { return m_path; }
    /// Services of the path, the context of its commands; borrowed.
    IUnknown* Context() const noexcept { return m_context; }
    /// Readable while the session is broken off: cancelled, or a clear is pending.
    int BreakDescriptor() const noexcept { return GetEventDescriptor(m_breakEvent->Get()); }

private:
    /// Memory that stays with an idle session.
    static constexpr std::size_t kKeptInput = std::size_t{16} << 10;
    /// Smallest room for a receive when nothing is announced.
    static constexpr std::size_t kMinInputSpace = std::size_t{4} << 10;
    // States of m_break; a higher one is not replaced by a lower one.
    static constexpr int kRuns = 0;
    static constexpr int kBreakForInput = 1;
    static constexpr int kBreakForDeviceClear = 2;
    static constexpr int kBreakForEver = 3;

    bool ExecuteCommand(const ParsedCommand& command) override;
    void ReportError(short code, std::string_view detail) override;
    /// @return true when the message at the start of the input is incomplete
    bool HandleFrame(const Frame& frame);
    void ExecuteMessage(std::span<char> message);
    void ExecuteUpToBlock(const Frame& frame);
    void CollectFrom(std::size_t place);
    void FinishBlock(bool goOn);
    /// Tells whether a message is dropped as the rest of the string that the one before it left open.
    bool IsRest(std::string_view text, char quote) const;
    void BeginMessage();
    void EndMessage();
    void TellMessageEnd();
    void TellDeviceClear();
    bool CloseCommand(HRESULT result);
    bool RunApplication(const ParsedCommand& command, HRESULT& result);
    bool IsBroken() const noexcept { return m_break.load(std::memory_order_relaxed) != kRuns; }
    void Break(int reason) noexcept;
    void GoOn() noexcept;
    void AddPath(const SessionTransport& transport);
    void RefreshApplications();
    void RemovePath() noexcept;

    const KernelParts m_parts;
    const CComPtr<CSessionOutput> m_output;
    const CComPtr<CComObject<CFormatSubsystem, IZOScpiSubsystemFormat>> m_format;
    const SharedEvent m_breakEvent;
    const std::shared_ptr<CSessionStatus> m_status;
    const std::shared_ptr<CErrorQueue> m_errors;
    const std::shared_ptr<CRemotePath> m_path;
    const CComPtr<CComObject<CRemotePathServices, IZOScpiManager>> m_services;
    IUnknown* const m_context; // m_services
    std::shared_ptr<const ApplicationSet> m_applications;
    std::uint64_t m_generation = 0;
    std::unique_ptr<CBuiltInCommands> m_builtIns;
    CProgramMessageParser m_parser;
    CMessageFramer m_framer;
    CByteBuffer m_input;
    CByteBuffer m_piece; // the message up to the block that is being read
    CBlockStream m_stream;
    const bool m_streams;
    bool m_begun = false;                    // observers and handlers have heard of the message at hand
    bool m_inMessage = false;                // commands of the message at hand have run
    char m_openQuote = '\0';                 // of the string in which a line feed has ended a message
    std::size_t m_bytesAnnounced = 0;        // still missing of the message at hand, as far as known
    std::vector<CApplication*> m_involved;   // whose commands the message at hand has run
    std::vector<CApplication*> m_remoteTold; // who know that the path is remote
    bool m_tellsRemote = false;              // those who do not are to be told
    CMutex m_breakMutex;
    std::atomic<int> m_break{kRuns};                     // changed under m_breakMutex
    int m_breakNext ZO_GUARDED_BY(m_breakMutex) = kRuns; // what has come since FinishClear began
};

} // namespace ZoVelkor::RemoteKernel
