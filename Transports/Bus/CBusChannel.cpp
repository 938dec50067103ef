#include "CBusChannel.h"

#include "Bstr.h"
#include "Common/ReplaceText.h"
#include "GuardedEntry.h"
#include "IZOScpiManager.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

CUniqueEvent MakeLine()
{
    CUniqueEvent event(CreateEvent(TRUE, FALSE));
    if (!event)
    {
        throw std::system_error(EMFILE, std::generic_category(), "No event for a bus channel");
    }
    return event;
}

} // namespace

CBusChannel::CBusChannel(const tagBusSettings& settings)
    : m_settings(settings),
      m_serviceRequest(MakeLine()),
      m_exchange(settings.iInputBuffer, settings.iOutputBuffer)
{}

CBusChannel::tagDeadline CBusChannel::After(DWORD timeoutMs)
{
    return timeoutMs == INFINITE
               ? tagDeadline()
               : tagDeadline(std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs));
}

HRESULT CBusChannel::Provider(CComPtr<IZOScpiChannelServiceProvider>& spProvider)
{
    const HRESULT result = GetExistingServiceProvider(&spProvider);
    return spProvider == nullptr ? E_UNEXPECTED : result;
}

void CBusChannel::Report(CLock& lock, short error)
{
    if (error == kScpiNoError)
    {
        return;
    }
    lock.unlock();
    m_changed.notify_all();
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    if (SUCCEEDED(Provider(spProvider)))
    {
        spProvider->ReportError(error, nullptr);
    }
    lock.lock();
}

template <class TCondition>
HRESULT CBusChannel::Wait(CLock& lock, const tagDeadline& deadline, TCondition condition)
{
    const auto bEnds = [&] { return m_bOver || condition(); };
    bool bInTime = true;
    if (deadline)
    {
        bInTime = m_changed.wait_until(lock, *deadline, bEnds);
    }
    else
    {
        m_changed.wait(lock, bEnds);
    }
    return m_bOver ? E_UNEXPECTED : (bInTime ? S_OK : E_PENDING);
}

template <class TCondition>
HRESULT CBusChannel::WaitUnlessCleared(CLock& lock,
                                       const tagDeadline& deadline,
                                       std::uint64_t clears,
                                       TCondition condition)
{
    const HRESULT result = Wait(lock, deadline, [&] { return m_clears != clears || condition(); });
    return SUCCEEDED(result) && m_clears != clears ? E_ABORT : result;
}

HRESULT CBusChannel::Connect()
{
    HRESULT result = Open();
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    result = FAILED(result) ? result : GetServiceProvider(&spProvider);
    return FAILED(result) ? result : spProvider->SignalConnected();
}

HRESULT CBusChannel::Disconnect()
{
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    if (FAILED(Provider(spProvider)))
    {
        return S_FALSE;
    }
    spProvider->SignalDisconnected();
    DoAbort();
    if (FAILED(GuardedEntry([this] { return DisconnectRemotePath(); })))
    {
        SetServiceProvider(nullptr); // the kernel has stopped, and let go before
    }
    return Close();
}

HRESULT CBusChannel::Send(std::string_view bytes, bool end, DWORD timeoutMs)
{
    const tagDeadline deadline = After(timeoutMs);
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    HRESULT result = Provider(spProvider);
    if (SUCCEEDED(result) && m_bRemoteEnable)
    {
        spProvider->SignalGotoRemote();
    }
    CLock lock(m_mutex);
    const std::uint64_t clears = m_clears;
    if (SUCCEEDED(result))
    {
        result = BeginElement(lock, deadline, m_exchange.Listen());
    }
    for (bool bMore = true; bMore && SUCCEEDED(result);)
    {
        const std::size_t count = m_exchange.Accept(bytes, end);
        m_received += static_cast<std::uint32_t>(count);
        bytes.remove_prefix(count);
        bMore = !bytes.empty();
        lock.unlock();
        spProvider->SignalDataAvailable();
        lock.lock();
        if (bMore)
        {
            Report(lock, m_exchange.WaitForRoom(true));
            result = WaitUnlessCleared(lock, deadline, clears, [this] { return m_exchange.HasRoom(); });
            static_cast<void>(m_exchange.WaitForRoom(false));
        }
    }
    return result;
}

HRESULT CBusChannel::BeginElement(CLock& lock, const tagDeadline& deadline, short error)
{
    const std::uint64_t clears = m_clears;
    Report(lock, error);
    // A response that was dropped is to be gone from the status byte, too.
    return WaitUnlessCleared(
        lock, deadline, clears, [this] { return !m_exchange.IsClearing() && !m_exchange.IsSettling(); });
}

tagBusResponse CBusChannel::Receive(std::size_t max, DWORD timeoutMs)
{
    const tagDeadline deadline = After(timeoutMs);
    tagBusResponse response{S_OK, {}, false};
    CLock lock(m_mutex);
    const std::uint64_t clears = m_clears;
    while (response.result == S_OK && !response.bEnd && response.sBytes.size() < max)
    {
        response.result = ReceivePart(lock, response, max, deadline, clears);
    }
    // The status byte says that no message waits when the last byte has been read, or nothing was asked.
    static_cast<void>(WaitUnlessCleared(
        lock, deadline, clears, [this] { return !m_exchange.IsSettling() && !m_exchange.IsClearing(); }));
    return response;
}

HRESULT CBusChannel::ReceivePart(
    CLock& lock, tagBusResponse& response, std::size_t max, const tagDeadline& deadline, std::uint64_t clears)
{
    const bool bBegun = !response.sBytes.empty();
    short error = kScpiNoError;
    const HRESULT result = WaitUnlessCleared(lock, deadline, clears, [&] {
        error = m_exchange.Talk();
        return m_exchange.CanTake() || error != kScpiNoError || (bBegun && !m_exchange.IsUnread());
    });
    if (FAILED(result))
    {
        return result;
    }
    if (!m_exchange.CanTake())
    {
        Report(lock, error);
        return bBegun ? E_ABORT : S_FALSE;
    }
    const std::size_t before = response.sBytes.size();
    response.bEnd = m_exchange.Take(max - before, response.sBytes);
    m_sent += static_cast<std::uint32_t>(response.sBytes.size() - before);
    m_changed.notify_all();
    return S_OK;
}

HRESULT CBusChannel::DeviceClear(DWORD timeoutMs)
{
    const tagDeadline deadline = After(timeoutMs);
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    HRESULT result = Provider(spProvider);
    if (FAILED(result))
    {
        return result;
    }
    CLock lock(m_mutex);
    // Input that the kernel forgets after an error is acknowledged for itself.
    result = Wait(lock, deadline, [this] { return m_bDeviceClear || !m_exchange.IsClearing(); });
    if (SUCCEEDED(result) && !m_bDeviceClear)
    {
        m_bDeviceClear = true;
        ++m_clears;
        m_exchange.DeviceClear();
        lock.unlock();
        m_changed.notify_all();
        result = spProvider->SignalDeviceClear();
        lock.lock();
    }
    return SUCCEEDED(result) ? Wait(lock, deadline, [this] { return !m_bDeviceClear; }) : result;
}

HRESULT CBusChannel::GroupExecuteTrigger()
{
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    HRESULT result = Provider(spProvider);
    if (FAILED(result))
    {
        return result;
    }
    CLock lock(m_mutex);
    result = BeginElement(lock, {}, m_exchange.BeginTrigger());
    if (SUCCEEDED(result))
    {
        lock.unlock();
        result = spProvider->SignalTrigger();
        lock.lock();
    }
    m_exchange.EndTrigger();
    return result;
}

HRESULT CBusChannel::SerialPoll(unsigned char* stb)
{
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    CComPtr<IUnknown> spServices;
    CComPtr<IZOScpiManager> spManager;
    CComPtr<IZOScpiStatusManagement> spStatus;
    HRESULT result = Provider(spProvider);
    result = FAILED(result) ? result : spProvider->GetScpiManager(&spServices);
    result = FAILED(result) ? result : spServices.QueryInterface(&spManager);
    result = FAILED(result) ? result : spManager->GetStatusManagement(&spStatus);
    return FAILED(result) ? result : spStatus->SerialPoll(GetRemotePath(), stb);
}

HRESULT CBusChannel::SetRemoteEnable(bool on)
{
    m_bRemoteEnable = on;
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    const HRESULT result = Provider(spProvider);
    if (FAILED(result) || on)
    {
        return result;
    }
    spProvider->SignalLocalLockout(VARIANT_FALSE);
    return spProvider->SignalGotoLocal();
}

HRESULT CBusChannel::GotoRemote()
{
    m_bRemoteEnable = true;
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    const HRESULT result = Provider(spProvider);
    return FAILED(result) ? result : spProvider->SignalGotoRemote();
}

HRESULT CBusChannel::GotoLocal()
{
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    const HRESULT result = Provider(spProvider);
    return FAILED(result) ? result : spProvider->SignalGotoLocal();
}

HRESULT CBusChannel::LocalLockout()
{
    CComPtr<IZOScpiChannelServiceProvider> spProvider;
    const HRESULT result = Provider(spProvider);
    if (FAILED(result) || !m_bRemoteEnable)
    {
        return FAILED(result) ? result : S_FALSE;
    }
    return spProvider->SignalLocalLockout(VARIANT_TRUE);
}

HRESULT CBusChannel::DoOpenChannel()
{
    const CLock lock(m_mutex);
    m_exchange.DeviceClear();
    m_exchange.Acknowledge();
    m_bDeviceClear = false;
    m_bOver = false;
    return S_OK;
}

HRESULT CBusChannel::DoRead(unsigned long size, unsigned char* data, unsigned long* got)
{
    CLock lock(m_mutex);
    if (m_bOver)
    {
        return S_FALSE;
    }
    const CMessageExchange::tagHanded handed = m_exchange.Hand({reinterpret_cast<char*>(data), size});
    *got = handed.iCount;
    Report(lock, handed.iError);
    lock.unlock();
    m_changed.notify_all();
    return S_OK;
}

HRESULT CBusChannel::DoDataAvailable(unsigned long* count)
{
    const CLock lock(m_mutex);
    *count = m_exchange.Available();
    return S_OK;
}

HRESULT
CBusChannel::WritePart(CLock& lock, unsigned long size, unsigned char* data, unsigned long* written)
{
    std::size_t taken = 0;
    const std::string_view rest(reinterpret_cast<const char*>(data) + *written, size - *written);
    const short error = m_exchange.Answer(rest, taken);
    *written += taken;
    m_changed.notify_all();
    Report(lock, error);
    return m_bOver ? E_FAIL : (m_exchange.IsDropped() ? E_ABORT : S_OK);
}

HRESULT CBusChannel::DoWrite(unsigned long size, unsigned char* data, unsigned long* written)
{
    CLock lock(m_mutex);
    HRESULT result = S_OK;
    while (SUCCEEDED(result) && *written < size)
    {
        result = WritePart(lock, size, data, written);
        if (SUCCEEDED(result) && *written < size)
        {
            m_changed.wait(
                lock, [this] { return m_bOver || m_exchange.IsDropped() || m_exchange.HasOutputRoom(); });
        }
    }
    return result;
}

HRESULT CBusChannel::DoWritePartial(unsigned long size, unsigned char* data, unsigned long* written)
{
    CLock lock(m_mutex);
    return WritePart(lock, size, data, written);
}

HRESULT CBusChannel::DoFlush()
{
    CLock lock(m_mutex);
    m_exchange.EndAnswer();
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_bOver || !m_exchange.IsUnread(); });
    return m_bOver ? E_FAIL : (m_exchange.IsDropped() ? E_ABORT : S_OK);
}

HRESULT CBusChannel::DoDelete(tagZO_SCPI_CHANNEL_TYPES which)
{
    const CLock lock(m_mutex);
    if ((which & ZO_CHANNEL_INPUT) != 0)
    {
        m_exchange.DropInput();
    }
    if ((which & ZO_CHANNEL_OUTPUT) != 0)
    {
        m_exchange.DropAnswer();
    }
    m_changed.notify_all();
    return S_OK;
}

HRESULT CBusChannel::DoProgramMessageEnd()
{
    const CLock lock(m_mutex);
    ++m_messages;
    m_exchange.EndMessage();
    m_changed.notify_all();
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
    const CLock lock(m_mutex);
    m_exchange.Acknowledge();
    m_bDeviceClear = false;
    m_changed.notify_all();
    return S_OK;
}

HRESULT CBusChannel::DoAbort()
{
    const CLock lock(m_mutex);
    m_bOver = true;
    ResetEvent(m_serviceRequest.Get());
    m_changed.notify_all();
    return S_OK;
}

HRESULT CBusChannel::do_get_ChannelProperties(tag_ScpiChannelInfo* info)
{
    const std::string secondary =
        m_settings.iSecondaryAddress < 0 ? "" : ',' + std::to_string(m_settings.iSecondaryAddress);
    Replace(info->bsName, "BUS " + std::to_string(m_settings.iPrimaryAddress) + secondary);
    info->iKind = ZO_CHANNEL_KIND_BUS;
    info->iRemotePath = static_cast<std::int32_t>(GetRemotePath());
    info->iPrimaryAddress = m_settings.iPrimaryAddress;
    info->iSecondaryAddress = m_settings.iSecondaryAddress;
    info->iInputBuffer = static_cast<std::int32_t>(m_settings.iInputBuffer);
    info->iOutputBuffer = static_cast<std::int32_t>(m_settings.iOutputBuffer);
    info->bRemoteLocal = info->bStatus = info->bEnd = 1;
    const CLock lock(m_mutex);
    info->iBytesReceived = static_cast<std::int32_t>(m_received);
    info->iBytesSent = static_cast<std::int32_t>(m_sent);
    info->iMessages = static_cast<std::int32_t>(m_messages);
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
