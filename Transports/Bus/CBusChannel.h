// Bus: an instrument on a bus in the same process, with END, triggers, device clear and service request.
//
// The controller's thread sends and reads by CBusChannel; CMessageExchange between them has the two bounded
// buffers and the rules of IEEE 488.2 section 6 on who may speak; the kernel's thread of the connection reads
// and writes the other side. Its owner connects and disconnects it; one controller thread at a time.
// Locks: one, around the exchange; the kernel is not called under it.

#pragma once

#include "CBScpiChannel.h"
#include "CComObject.h"
#include "CCondition.h"
#include "CMessageExchange.h"
#include "CMutex.h"
#include "Deadline.h"
#include "Event.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace ZoVelkor::Transports
{

struct BusSettings
{
    std::int32_t primaryAddress = 20;                ///< 0 to 30
    std::int32_t secondaryAddress = -1;              ///< 0 to 30; -1: none
    std::size_t inputBuffer = std::size_t{1} << 16;  ///< bytes for the kernel, at least 2
    std::size_t outputBuffer = std::size_t{1} << 16; ///< bytes for the controller, at least 2
};

/// What a controller has read.
struct BusResponse
{
    HRESULT result;    ///< see CBusChannel::Receive
    std::string bytes; ///< also those that came before a failure
    bool end;          ///< END came with the last byte
};

/// The instrument on a bus like that of IEEE 488.1, as its controller in the same process sees it: messages
/// with END, device clear, trigger, serial poll with service request, remote and local states.
///
/// The rules of asking and answering are those of CMessageExchange. The instrument is local until the
/// controller has asserted remote enable and addresses it; see Docs/RemoteInterface.md.
///
/// Times are in milliseconds on the monotonic clock, INFINITE for no limit. Operations of the controller give
/// E_UNEXPECTED while there is no connection.
/// Threads: one controller thread at a time; DeviceClear, SerialPoll and the states also from others
/// meanwhile. Not from inside a call of the kernel.
class CBusChannel : public CBScpiChannel
{
public:
    explicit CBusChannel(const BusSettings& settings = {});

    /// Connects to the remote kernel that is found at the root.
    ///
    /// @throws CShellError as GetServiceProvider
    HRESULT Connect();
    /// Ends the connection; waits for a command that is running for it. Calls that wait end.
    ///
    /// @return S_OK, also when the kernel has stopped before; S_FALSE when there was no connection
    HRESULT Disconnect();

    /// Sends bytes of a program message; makes the instrument remote while remote enable is asserted.
    ///
    /// @param end  END goes with the last byte; without bytes: ends the message that was sent
    /// @return S_OK; E_PENDING when the instrument has not taken all in time; E_ABORT when a device clear
    /// came first
    HRESULT Send(std::string_view bytes, bool end = true, DWORD timeoutMs = INFINITE);
    /// Reads response bytes up to END, or as many as asked for.
    ///
    /// result is S_OK; S_FALSE when the instrument has nothing to say, on a real bus the read would time out
    /// (-420 is queued); E_PENDING when neither came in time; E_ABORT when a device clear came first.
    BusResponse Receive(std::size_t max = SIZE_MAX, DWORD timeoutMs = INFINITE);
    /// Selected device clear; waits until it is carried out.
    ///
    /// @return S_OK; E_PENDING when a handler is still running, the clear follows then
    HRESULT DeviceClear(DWORD timeoutMs = INFINITE);
    /// Group execute trigger; results as IZOScpiChannelServiceProvider::SignalTrigger.
    HRESULT GroupExecuteTrigger();
    /// Status byte with RQS in bit 6, which ends the request for service.
    HRESULT SerialPoll(unsigned char* stb);

    /// The REN line. Asserting it changes nothing until the instrument is addressed; releasing it makes it
    /// local and ends a lockout.
    HRESULT SetRemoteEnable(bool on);
    /// Asserts remote enable and addresses the instrument without sending.
    HRESULT GotoRemote();
    HRESULT GotoLocal();
    /// @return S_OK; S_FALSE when nothing changed, as while remote enable is not asserted
    HRESULT LocalLockout();

    /// The SRQ line: a manual-reset event, set while the instrument requests service. Borrowed.
    HANDLE ServiceRequestEvent() const noexcept { return m_serviceRequest.Get(); }
    /// The states that the instrument shows.
    tagZO_SCPI_CHANNEL_STATUS Status() const { return ChannelStatus(); }

    short DoGetCapabilityRemoteLocal() override { return VARIANT_TRUE; }
    short DoGetCapabilityStatus() override { return VARIANT_TRUE; }
    HRESULT DoOpenChannel() override;
    HRESULT DoCloseChannel() override { return DoAbort(); }
    HRESULT DoRead(unsigned long size, unsigned char* data, unsigned long* got) override;
    HRESULT DoDataAvailable(unsigned long* count) override;
    HRESULT DoWrite(unsigned long size, unsigned char* data, unsigned long* written) override;
    HRESULT DoWritePartial(unsigned long size, unsigned char* data, unsigned long* written) override;
    HRESULT DoFlush() override;
    HRESULT DoDelete(tagZO_SCPI_CHANNEL_TYPES which) override;
    HRESULT DoProgramMessageEnd() override;
    HRESULT DoSetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* status) override;
    HRESULT DoDeviceClearAcknowledge() override;
    HRESULT DoAbort() override;
    HRESULT do_get_ChannelProperties(tag_ScpiChannelInfo* info) override;

protected:
    ~CBusChannel() override = default;

private:
    /// @return E_UNEXPECTED without connection
    HRESULT Provider(CComPtr<IZOScpiChannelServiceProvider>& provider);
    /// Calls the kernel with an error, without the lock, which is held again afterwards.
    void ReportLocked(short error) ZO_REQUIRES(m_mutex);
    /// Waits until a condition of the exchange holds.
    ///
    /// @return S_OK; E_PENDING; E_UNEXPECTED when all is over
    template <class TCondition>
    HRESULT WaitLocked(const Deadline& deadline, TCondition condition) ZO_REQUIRES(m_mutex);
    /// The same; E_ABORT when there were more device clears.
    template <class TCondition>
    HRESULT WaitUnlessClearedLocked(const Deadline& deadline, std::uint64_t clears, TCondition condition)
        ZO_REQUIRES(m_mutex);
    HRESULT BeginElementLocked(const Deadline& deadline, short error) ZO_REQUIRES(m_mutex);
    HRESULT
    ReceivePartLocked(BusResponse& response, std::size_t max, const Deadline& deadline, std::uint64_t clears)
        ZO_REQUIRES(m_mutex);
    HRESULT WritePartLocked(unsigned long size, unsigned char* data, unsigned long* written)
        ZO_REQUIRES(m_mutex);

    const BusSettings m_settings;
    const CUniqueEvent m_serviceRequest;
    CMutex m_mutex; // the kernel is not called while it is held
    CCondition m_changed;
    CMessageExchange m_exchange ZO_GUARDED_BY(m_mutex);
    bool m_over ZO_GUARDED_BY(m_mutex) = true;           // before Open, after Abort
    bool m_deviceClear ZO_GUARDED_BY(m_mutex) = false;   // not acknowledged yet
    std::uint64_t m_clears ZO_GUARDED_BY(m_mutex) = 0;   // device clears so far
    std::uint32_t m_received ZO_GUARDED_BY(m_mutex) = 0; // bytes, messages: modulo 2^32
    std::uint32_t m_sent ZO_GUARDED_BY(m_mutex) = 0;
    std::uint32_t m_messages ZO_GUARDED_BY(m_mutex) = 0;
    std::atomic<bool> m_remoteEnable{false};
};

using CBusChannelObject = CComObject<CBusChannel, IZOScpiChannel>;

} // namespace ZoVelkor::Transports
