#include "CBusChannel.h"

#include "Bstr.h"
#include "CMutexLocker.h"
#include "CMutexUnlocker.h"
#include "Common/ReplaceText.h"
#include "GuardedEntry.h"
#include "IZOScpiManager.h"
#include "MakeEvent.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::Transports
{

namespace
{

} // namespace

CBusChannel::CBusChannel(const BusSettings& settings)
    : m_settings(settings),
      m_serviceRequest(MakeEvent(TRUE, "No event for a bus channel")),
      m_exchange(settings.inputBuffer, settings.outputBuffer)
{}

HRESULT CBusChannel::Provider(CComPtr<IZOScpiChannelServiceProvider>& provider)
{
    const HRESULT result = GetExistingServiceProvider(&provider);
    return provider == nullptr ? E_UNEXPECTED : result;
}

void CBusChannel::ReportLocked(short error)
{
    if (error == kScpiNoError)
    {
        return;
    }
    const CMutexUnlocker unlocker(m_mutex);
    m_changed.NotifyAll();
    CComPtr<IZOScpiChannelServiceProvider> provider;
    if (SUCCEEDED(Provider(provider)))
    {
        provider->ReportError(error, nullptr);
    }
}

template <class TCondition>
HRESULT CBusChannel::WaitLocked(const Deadline& deadline, TCondition condition)
{
    const auto ends = [&] {
        m_mutex.AssertHeld();
        return m_over || condition(m_exchange);
    };
    bool inTime = true;
    if (deadline)
    {
        inTime = m_changed.WaitUntil(m_mutex, *deadline, ends);
    }
    else
    {
        m_changed.Wait(m_mutex, ends);
    }
    return m_over ? E_UNEXPECTED : (inTime ? S_OK : E_PENDING);
}

template <class TCondition>
HRESULT
CBusChannel::WaitUnlessClearedLocked(const Deadline& deadline, std::uint64_t clears, TCondition condition)
{
    const HRESULT result = WaitLocked(deadline, [&](CMessageExchange& exchange) {
        m_mutex.AssertHeld();
        return m_clears != clears || condition(exchange);
    });
    return SUCCEEDED(result) && m_clears != clears ? E_ABORT : result;
}

HRESULT CBusChannel::Connect()
{
    HRESULT result = Open();
    CComPtr<IZOScpiChannelServiceProvider> provider;
    result = FAILED(result) ? result : GetServiceProvider(&provider);
    return FAILED(result) ? result : provider->SignalConnected();
}

HRESULT CBusChannel::Disconnect()
{
    CComPtr<IZOScpiChannelServiceProvider> provider;
    if (FAILED(Provider(provider)))
    {
        return S_FALSE;
    }
    provider->SignalDisconnected();
    DoAbort();
    if (FAILED(GuardedEntry([this] { return DisconnectRemotePath(); })))
    {
        SetServiceProvider(nullptr); // the kernel has stopped, and let go before
    }
    return Close();
}

HRESULT CBusChannel::Send(std::string_view bytes, bool end, DWORD timeoutMs)
{
    const Deadline deadline = DeadlineAfter(timeoutMs);
    CComPtr<IZOScpiChannelServiceProvider> provider;
    HRESULT result = Provider(provider);
    if (SUCCEEDED(result) && m_remoteEnable)
    {
        provider->SignalGotoRemote();
    }
    CMutexLocker lock(m_mutex);
    const std::uint64_t clears = m_clears;
    if (SUCCEEDED(result))
    {
        result = BeginElementLocked(deadline, m_exchange.Listen());
    }
    for (bool more = true; more && SUCCEEDED(result);)
    {
        const std::size_t count = m_exchange.Accept(bytes, end);
        m_received += static_cast<std::uint32_t>(count);
        bytes.remove_prefix(count);
        more = !bytes.empty();
        lock.Unlock();
        provider->SignalDataAvailable();
        lock.Lock();
        if (more)
        {
            ReportLocked(m_exchange.WaitForRoom(true));
            result = WaitUnlessClearedLocked(
                deadline, clears, [](const CMessageExchange& exchange) { return exchange.HasRoom(); });
            static_cast<void>(m_exchange.WaitForRoom(false));
        }
    }
    return result;
}

HRESULT CBusChannel::BeginElementLocked(const Deadline& deadline, short error)
{
    const std::uint64_t clears = m_clears;
    ReportLocked(error);
    // A response that was dropped is to be gone from the status byte, too.
    return WaitUnlessClearedLocked(deadline, clears, [](const CMessageExchange& exchange) {
        return !exchange.IsClearing() && !exchange.IsSettling();
    });
}

BusResponse CBusChannel::Receive(std::size_t max, DWORD timeoutMs)
{
    const Deadline deadline = DeadlineAfter(timeoutMs);
    BusResponse response{S_OK, {}, false};
    CMutexLocker lock(m_mutex);
    const std::uint64_t clears = m_clears;
    while (response.result == S_OK && !response.end && response.bytes.size() < max)
    {
        response.result = ReceivePartLocked(response, max, deadline, clears);
    }
    // The status byte says that no message waits when the last byte has been read, or nothing was asked.
    static_cast<void>(WaitUnlessClearedLocked(deadline, clears, [](const CMessageExchange& exchange) {
        return !exchange.IsSettling() && !exchange.IsClearing();
    }));
    return response;
}

HRESULT CBusChannel::ReceivePartLocked(BusResponse& response,
                                       std::size_t max,
                                       const Deadline& deadline,
                                       std::uint64_t clears)
{
    const bool begun = !response.bytes.empty();
    short error = kScpiNoError;
    const HRESULT result = WaitUnlessClearedLocked(deadline, clears, [&](CMessageExchange& exchange) {
        error = exchange.Talk();
        return exchange.CanTake() || error != kScpiNoError || (begun && !exchange.IsUnread());
    });
    if (FAILED(result))
    {
        return result;
    }
    if (!m_exchange.CanTake())
    {
        ReportLocked(error);
        return begun ? E_ABORT : S_FALSE;
    }
    const std::size_t before = response.bytes.size();
    response.end = m_exchange.Take(max - before, response.bytes);
    m_sent += static_cast<std::uint32_t>(response.bytes.size() - before);
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CBusChannel::DeviceClear(DWORD timeoutMs)
{
    const Deadline deadline = DeadlineAfter(timeoutMs);
    CComPtr<IZOScpiChannelServiceProvider> provider;
    HRESULT result = Provider(provider);
    if (FAILED(result))
    {
        return result;
    }
    CMutexLocker lock(m_mutex);
    // Input that the kernel forgets after an error is acknowledged for itself.
    result = WaitLocked(deadline, [this](const CMessageExchange& exchange) {
        m_mutex.AssertHeld();
        return m_deviceClear || !exchange.IsClearing();
    });
    if (SUCCEEDED(result) && !m_deviceClear)
    {
        m_deviceClear = true;
        ++m_clears;
        m_exchange.DeviceClear();
        lock.Unlock();
        m_changed.NotifyAll();
        result = provider->SignalDeviceClear();
        lock.Lock();
    }
    const auto acknowledged = [this](const CMessageExchange&) {
        m_mutex.AssertHeld();
        return !m_deviceClear;
    };
    return SUCCEEDED(result) ? WaitLocked(deadline, acknowledged) : result;
}

HRESULT CBusChannel::GroupExecuteTrigger()
{
    CComPtr<IZOScpiChannelServiceProvider> provider;
    HRESULT result = Provider(provider);
    if (FAILED(result))
    {
        return result;
    }
    CMutexLocker lock(m_mutex);
    result = BeginElementLocked({}, m_exchange.BeginTrigger());
    if (SUCCEEDED(result))
    {
        lock.Unlock();
        result = provider->SignalTrigger();
        lock.Lock();
    }
    m_exchange.EndTrigger();
    return result;
}

HRESULT CBusChannel::SerialPoll(unsigned char* stb)
{
    CComPtr<IZOScpiChannelServiceProvider> provider;
    CComPtr<IUnknown> services;
    CComPtr<IZOScpiManager> manager;
    CComPtr<IZOScpiStatusManagement> status;
    HRESULT result = Provider(provider);
    result = FAILED(result) ? result : provider->GetScpiManager(&services);
    result = FAILED(result) ? result : services.QueryInterface(&manager);
    result = FAILED(result) ? result : manager->GetStatusManagement(&status);
    return FAILED(result) ? result : status->SerialPoll(GetRemotePath(), stb);
}

HRESULT CBusChannel::SetRemoteEnable(bool on)
{
    m_remoteEnable = on;
    CComPtr<IZOScpiChannelServiceProvider> provider;
    const HRESULT result = Provider(provider);
    if (FAILED(result) || on)
    {
        return result;
    }
    provider->SignalLocalLockout(VARIANT_FALSE);
    return provider->SignalGotoLocal();
}

HRESULT CBusChannel::GotoRemote()
{
    m_remoteEnable = true;
    CComPtr<IZOScpiChannelServiceProvider> provider;
    const HRESULT result = Provider(provider);
    return FAILED(result) ? result : provider->SignalGotoRemote();
}

HRESULT CBusChannel::GotoLocal()
{
    CComPtr<IZOScpiChannelServiceProvider> provider;
    const HRESULT result = Provider(provider);
    return FAILED(result) ? result : provider->SignalGotoLocal();
}

HRESULT CBusChannel::LocalLockout()
{
    CComPtr<IZOScpiChannelServiceProvider> provider;
    const HRESULT result = Provider(provider);
    if (FAILED(result) || !m_remoteEnable)
    {
        return FAILED(result) ? result : S_FALSE;
    }
    return provider->SignalLocalLockout(VARIANT_TRUE);
}

HRESULT CBusChannel::DoOpenChannel()
{
    const CMutexLocker lock(m_mutex);
    m_exchange.DeviceClear();
    m_exchange.Acknowledge();
    m_deviceClear = false;
    m_over = false;
    return S_OK;
}

HRESULT CBusChannel::DoRead(unsigned long size, unsigned char* data, unsigned long* got)
{
    CMutexLocker lock(m_mutex);
    if (m_over)
    {
        return S_FALSE;
    }
    const CMessageExchange::Handed handed = m_exchange.Hand({reinterpret_cast<char*>(data), size});
    *got = handed.count;
    ReportLocked(handed.error);
    lock.Unlock();
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CBusChannel::DoDataAvailable(unsigned long* count)
{
    const CMutexLocker lock(m_mutex);
    *count = m_exchange.Available();
    return S_OK;
}

HRESULT
CBusChannel::WritePartLocked(unsigned long size, unsigned char* data, unsigned long* written)
{
    std::size_t taken = 0;
    const std::string_view rest(reinterpret_cast<const char*>(data) + *written, size - *written);
    const short error = m_exchange.Answer(rest, taken);
    *written += taken;
    m_changed.NotifyAll();
    ReportLocked(error);
    return m_over ? E_FAIL : (m_exchange.IsDropped() ? E_ABORT : S_OK);
}

HRESULT CBusChannel::DoWrite(unsigned long size, unsigned char* data, unsigned long* written)
{
    CMutexLocker lock(m_mutex);
    HRESULT result = S_OK;
    while (SUCCEEDED(result) && *written < size)
    {
        result = WritePartLocked(size, data, written);
        if (SUCCEEDED(result) && *written < size)
        {
            static_cast<void>(WaitLocked({}, [](const CMessageExchange& exchange) {
                return exchange.IsDropped() || exchange.HasOutputRoom();
            }));
        }
    }
    return result;
}

HRESULT CBusChannel::DoWritePartial(unsigned long size, unsigned char* data, unsigned long* written)
{
    CMutexLocker lock(m_mutex);
    return WritePartLocked(size, data, written);
}

HRESULT CBusChannel::DoFlush()
{
    CMutexLocker lock(m_mutex);
    m_exchange.EndAnswer();
    m_changed.NotifyAll();
    static_cast<void>(WaitLocked({}, [](const CMessageExchange& exchange) { return !exchange.IsUnread(); }));
    return m_over ? E_FAIL : (m_exchange.IsDropped() ? E_ABORT : S_OK);
}

HRESULT CBusChannel::DoDelete(tagZO_SCPI_CHANNEL_TYPES which)
{
    const CMutexLocker lock(m_mutex);
    if ((which & ZO_CHANNEL_INPUT) != 0)
    {
        m_exchange.DropInput();
    }
    if ((which & ZO_CHANNEL_OUTPUT) != 0)
    {
        m_exchange.DropAnswer();
    }
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CBusChannel::DoProgramMessageEnd()
{
    const CMutexLocker lock(m_mutex);
    ++m_messages;
    m_exchange.EndMessage();
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CBusChannel::DoSetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* status)
{
    status->vtbServiceRequest != VARIANT_FALSE ? SetEvent(m_serviceRequest.Get())
                                               : ResetEvent(m_serviceRequest.Get());
    return S_OK;
}

HRESULT CBusChannel::DoDeviceClearAcknowledge()
{
    const CMutexLocker lock(m_mutex);
    m_exchange.Acknowledge();
    m_deviceClear = false;
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CBusChannel::DoAbort()
{
    const CMutexLocker lock(m_mutex);
    m_over = true;
    ResetEvent(m_serviceRequest.Get());
    m_changed.NotifyAll();
    return S_OK;
}

HRESULT CBusChannel::do_get_ChannelProperties(tag_ScpiChannelInfo* info)
{
    const std::string secondary =
        m_settings.secondaryAddress < 0 ? "" : ',' + std::to_string(m_settings.secondaryAddress);
    Replace(info->bsName, "BUS " + std::to_string(m_settings.primaryAddress) + secondary);
    info->iKind = ZO_CHANNEL_KIND_BUS;
    info->iRemotePath = static_cast<std::int32_t>(GetRemotePath());
    info->iPrimaryAddress = m_settings.primaryAddress;
    info->iSecondaryAddress = m_settings.secondaryAddress;
    info->iInputBuffer = static_cast<std::int32_t>(m_settings.inputBuffer);
    info->iOutputBuffer = static_cast<std::int32_t>(m_settings.outputBuffer);
    info->bRemoteLocal = info->bStatus = info->bEnd = 1;
    const CMutexLocker lock(m_mutex);
    info->iBytesReceived = static_cast<std::int32_t>(m_received);
    info->iBytesSent = static_cast<std::int32_t>(m_sent);
    info->iMessages = static_cast<std::int32_t>(m_messages);
    return S_OK;
}

} // namespace ZoVelkor::Transports
