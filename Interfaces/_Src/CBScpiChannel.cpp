#include "CBScpiChannel.h"

#include "CCritSectionLocker.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"
#include "IZOScpiMultichannelAdministration.h"
#include "IZOScpiMultichannelFunctionality.h"
#include "RemoteDiagnoseControl.h"
#include "Root.h"
#include "Trace.h"

#include <fmt/format.h>

#include <cstdint>
#include <string_view>
#include <utility>

namespace ZoVelkor
{

namespace
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiChannel");

constexpr char kMissingInterface[] = "Missing interface";

/// A service of the kernel from the root.
///
/// @throws CShellError with this condition when it is not there
template <class TService>
CComPtr<TService> RequireService(const CObjectDataReference* object, const char* condition)
{
    CComPtr<TService> service;
    ZoGetRegisteredInterface(&TService::kInterfaceId, &service);
    if (service == nullptr)
    {
        ThrowError(ZO_ERROR(object, condition, kMissingInterface, ZO_E_SHELL));
    }
    return service;
}

CComPtr<IZOScpiMultichannelAdministration> RequireAdministration(const CObjectDataReference* object)
{
    return RequireService<IZOScpiMultichannelAdministration>(object, "pMultichannelAdmin != NULL");
}

constexpr bool IsExpected(HRESULT result) noexcept
{
    return result == S_OK || result == S_FALSE;
}

void TraceDisconnect(const IZOScpiChannel* channel)
{
    constexpr std::string_view kText = "Disconnect interface = ";
    std::array<char, kText.size() + 2 + 2 * sizeof(std::uintptr_t)> line{};
    const char* const end = fmt::format_to_n(line.data(), line.size(), "{}{}", kText, fmt::ptr(channel)).out;
    DebugPrint("Velkor", std::string_view(line.data(), end));
}

} // namespace

HRESULT CBScpiChannel::RefuseNull(const char* condition, int line) const noexcept
{
    return RefuseNullPointer(kSourceUnit, this, condition, line);
}

HRESULT CBScpiChannel::Transfer(TransferOperation operation,
                                unsigned long size,
                                unsigned char* data,
                                unsigned long* moved,
                                const char* movedCondition)
{
    if (data == nullptr)
    {
        return RefuseNull("data != NULL");
    }
    if (moved == nullptr)
    {
        return RefuseNull(movedCondition);
    }
    *moved = 0;
    return GuardedEntry([&] { return (this->*operation)(size, data, moved); });
}

HRESULT CBScpiChannel::GetCapabilities(short* remoteLocal, short* status)
{
    if (remoteLocal == nullptr)
    {
        return RefuseNull("remoteLocal != NULL");
    }
    if (status == nullptr)
    {
        return RefuseNull("status != NULL");
    }
    return GuardedEntry([&] {
        *remoteLocal = DoGetCapabilityRemoteLocal();
        *status = DoGetCapabilityStatus();
        return S_OK;
    });
}

HRESULT CBScpiChannel::Open()
{
    // A channel that is open answers without waiting for a disconnection that is under way.
    if (IsOpen())
    {
        return S_OK;
    }
    const CCritSectionLocker opening(m_connectionLock);
    if (IsOpen())
    {
        return S_OK;
    }
    const HRESULT result = GuardedEntry([this] { return DoOpenChannel(); });
    const CCritSectionLocker locker(m_lock);
    // Deliberate: open even after a failure, because what a half opened channel holds goes back in Close.
    m_vtbOpen = VARIANT_TRUE;
    return result;
}

HRESULT CBScpiChannel::Close()
{
    const HRESULT result = GuardedEntry([this] { return DoCloseChannel(); });
    const CCritSectionLocker locker(m_lock);
    m_vtbOpen = VARIANT_FALSE;
    return result;
}

HRESULT CBScpiChannel::Read(unsigned long size, unsigned char* data, unsigned long* got)
{
    return Transfer(&CBScpiChannel::DoRead, size, data, got, "got != NULL");
}

HRESULT CBScpiChannel::DataAvailable(unsigned long* count)
{
    if (count == nullptr)
    {
        return RefuseNull("count != NULL");
    }
    *count = 0;
    return GuardedEntry([&] { return DoDataAvailable(count); });
}

HRESULT CBScpiChannel::Write(unsigned long size, unsigned char* data, unsigned long* written)
{
    return Transfer(&CBScpiChannel::DoWrite, size, data, written, "written != NULL");
}

HRESULT CBScpiChannel::WritePartial(unsigned long size, unsigned char* data, unsigned long* written)
{
    return Transfer(&CBScpiChannel::DoWritePartial, size, data, written, "written != NULL");
}

HRESULT CBScpiChannel::Flush()
{
    return GuardedEntry([this] { return DoFlush(); });
}

HRESULT CBScpiChannel::Delete(tagZO_SCPI_CHANNEL_TYPES which)
{
    return GuardedEntry([&] { return DoDelete(which); });
}

HRESULT CBScpiChannel::SetProtocolMode(tagZO_SCPI_PROTOCOL_MODE mode)
{
    return GuardedEntry([&] { return DoSetProtocolMode(mode); });
}

HRESULT CBScpiChannel::ProgramMessageEnd()
{
    return GuardedEntry([this] { return DoProgramMessageEnd(); });
}

HRESULT CBScpiChannel::SetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* status)
{
    if (status == nullptr)
    {
        return RefuseNull("status != NULL");
    }
    {
        const CCritSectionLocker locker(m_lock);
        m_status = *status;
    }
    return GuardedEntry([&] { return DoSetChannelStatus(status); });
}

HRESULT CBScpiChannel::DeviceClearAcknowledge()
{
    return GuardedEntry([this] { return DoDeviceClearAcknowledge(); });
}

HRESULT CBScpiChannel::ReturnToLocal()
{
    return GuardedEntry([this] { return DoReturnToLocal(); });
}

HRESULT CBScpiChannel::Abort()
{
    return GuardedEntry([this] { return DoAbort(); });
}

HRESULT CBScpiChannel::get_ChannelProperties(tag_ScpiChannelInfo* info)
{
    if (info == nullptr)
    {
        return RefuseNull("info != NULL");
    }
    return GuardedEntry([&] {
        CSmartScpiChannelInfo current;
        {
            const CCritSectionLocker locker(m_lock);
            current = m_properties;
        }
        const HRESULT result = do_get_ChannelProperties(current.operator->());
        if (SUCCEEDED(result))
        {
            current.Detach(*info);
        }
        return result;
    });
}

HRESULT CBScpiChannel::put_ChannelProperties(tag_ScpiChannelInfo info)
{
    return GuardedEntry([&] {
        CSmartScpiChannelInfo copy(info);
        {
            const CCritSectionLocker locker(m_lock);
            std::swap(m_properties, copy);
        }
        return do_put_ChannelProperties(info);
    });
}

HRESULT CBScpiChannel::SetServiceProvider(IZOScpiChannelServiceProvider* provider)
{
    // Whoever goes away by the exchange does so outside the lock.
    CComPtr<IZOScpiChannelServiceProvider> application(provider);
    const CCritSectionLocker locker(m_lock);
    std::swap(m_serviceProvider, application);
    return S_OK;
}

HRESULT CBScpiChannel::GetExistingServiceProvider(IZOScpiChannelServiceProvider** provider)
{
    if (provider == nullptr)
    {
        return RefuseNull("provider != NULL");
    }
    CopyProvider(provider);
    return S_OK;
}

HRESULT CBScpiChannel::GetServiceProvider(IZOScpiChannelServiceProvider** provider)
{
    if (provider == nullptr)
    {
        return RefuseNull("provider != NULL");
    }
    return GuardedRaisingEntry([&] { return ConnectedProvider(provider); });
}

HRESULT CBScpiChannel::ConnectedProvider(IZOScpiChannelServiceProvider** provider)
{
    // Without the connection lock: a thread of the kernel must get through while it is being disconnected.
    if (CopyProvider(provider))
    {
        return S_OK;
    }
    const CCritSectionLocker connecting(m_connectionLock);
    if (CopyProvider(provider))
    {
        return S_OK;
    }
    CComPtr<IZOScpiChannel> self;
    const HRESULT found = FindSelf(&self);
    if (FAILED(found))
    {
        return found;
    }
    RegisterNewClientChannel(self);
    CopyProvider(provider);
    return S_OK;
}

HRESULT CBScpiChannel::ReleaseServiceProvider(IZOScpiChannelServiceProvider* provider)
{
    return GuardedRaisingEntry([&] {
        const CCritSectionLocker disconnecting(m_connectionLock);
        if (provider == nullptr || !HoldsProvider(provider))
        {
            return S_OK;
        }
        CComPtr<IZOScpiChannel> self;
        const HRESULT found = FindSelf(&self);
        if (FAILED(found))
        {
            return found;
        }
        UnregisterNewClientChannel(self);
        return SetServiceProvider(nullptr);
    });
}

HRESULT CBScpiChannel::RegisterNewClientChannel(IZOScpiChannel* channel)
{
    if (channel == nullptr)
    {
        return RefuseNull("channel != NULL");
    }
    const CComPtr<IZOScpiMultichannelAdministration> administration = RequireAdministration(this);
    const CComPtr<IZOScpiMultichannelFunctionality> functionality =
        RequireService<IZOScpiMultichannelFunctionality>(this, "p_MultichannelFunc != NULL");
    const CCritSectionLocker connecting(m_connectionLock);
    long remotePath = -1;
    CComPtr<IZOScpiChannelServiceProvider> provider;
    const HRESULT added = administration->AddConnection(channel, &remotePath, &provider);
    if (!IsExpected(added))
    {
        ThrowError(ZO_ERROR(
            this, "stop on error", "Unexpected result adding new connection to remote kernel", ZO_E_SHELL));
    }
    HANDLE deviceClear = 0;
    HANDLE shutdown = 0;
    const HRESULT fetched = functionality->GetChannelEvents(remotePath, &deviceClear, &shutdown);
    const bool isFetched = SUCCEEDED(fetched);
    SetConnection(remotePath, isFetched ? deviceClear : 0, isFetched ? shutdown : 0);
    SetServiceProvider(provider);
    if (!isFetched)
    {
        RepairError(ZO_ERROR(this, "hr == S_OK", "No events for the connection", fetched));
    }
    return added;
}

HRESULT CBScpiChannel::UnregisterNewClientChannel(IZOScpiChannel* channel)
{
    if (channel == nullptr)
    {
        return RefuseNull("channel != NULL");
    }
    const CComPtr<IZOScpiMultichannelAdministration> administration = RequireAdministration(this);
    const CCritSectionLocker disconnecting(m_connectionLock);
    const HRESULT removed = administration->RemoveConnection(channel);
    if (!IsExpected(removed))
    {
        ThrowError(ZO_ERROR(
            this, "stop on error", "Unexpected result removing connection from remote kernel", ZO_E_SHELL));
    }
    SetConnection(-1, 0, 0);
    return removed;
}

HRESULT CBScpiChannel::DisconnectRemotePath()
{
    if (get_RemoteDiagnoseControl()->bRpcModeActive)
    {
        TraceDisconnect(this);
    }
    CComPtr<IZOScpiChannelServiceProvider> provider;
    CopyProvider(&provider);
    return ReleaseServiceProvider(provider);
}

HRESULT CBScpiChannel::GenericIeee1174PolResponse(unsigned char stb)
{
    auto reply = Ieee1174PolResponse(stb);
    unsigned long written = 0;
    return GuardedEntry([&] { return DoWrite(reply.size(), reply.data(), &written); });
}

std::array<unsigned char, 6> CBScpiChannel::Ieee1174PolResponse(unsigned char stb) noexcept
{
    const auto digit = [](unsigned value) { return static_cast<unsigned char>('0' + value % 10); };
    return {'&', digit(stb / 100U), digit(stb / 10U), digit(stb), '\r', '\n'};
}

HANDLE CBScpiChannel::GetCurrentDeviceClearHandle() const
{
    const CCritSectionLocker locker(m_lock);
    return m_deviceClear;
}

HANDLE CBScpiChannel::GetCurrentShutdownEventHandle() const
{
    const CCritSectionLocker locker(m_lock);
    return m_shutdown;
}

long CBScpiChannel::GetRemotePath() const
{
    const CCritSectionLocker locker(m_lock);
    return m_iRemotePath;
}

bool CBScpiChannel::IsOpen() const
{
    const CCritSectionLocker locker(m_lock);
    return m_vtbOpen != VARIANT_FALSE;
}

tagZO_SCPI_CHANNEL_STATUS CBScpiChannel::ChannelStatus() const
{
    const CCritSectionLocker locker(m_lock);
    return m_status;
}

HRESULT CBScpiChannel::FindSelf(IZOScpiChannel** self)
{
    void* found = nullptr;
    const HRESULT result = QueryInterface(IID_IZOScpiChannel, &found);
    if (FAILED(result))
    {
        return RepairError(ZO_ERROR(this, "hr == S_OK", "The object is no IZOScpiChannel", result));
    }
    *self = static_cast<IZOScpiChannel*>(found);
    return S_OK;
}

bool CBScpiChannel::CopyProvider(IZOScpiChannelServiceProvider** provider) const
{
    const CCritSectionLocker locker(m_lock);
    m_serviceProvider.CopyTo(provider);
    return *provider != nullptr;
}

bool CBScpiChannel::HoldsProvider(const IZOScpiChannelServiceProvider* provider) const
{
    const CCritSectionLocker locker(m_lock);
    return m_serviceProvider.Get() == provider;
}

void CBScpiChannel::SetConnection(long remotePath, HANDLE deviceClear, HANDLE shutdown)
{
    const CCritSectionLocker locker(m_lock);
    m_iRemotePath = remotePath;
    m_deviceClear = deviceClear;
    m_shutdown = shutdown;
}

short CBScpiChannel::DoGetCapabilityRemoteLocal()
{
    return VARIANT_FALSE;
}

short CBScpiChannel::DoGetCapabilityStatus()
{
    return VARIANT_FALSE;
}

HRESULT CBScpiChannel::DoOpenChannel()
{
    return S_OK;
}

HRESULT CBScpiChannel::DoCloseChannel()
{
    return S_OK;
}

HRESULT CBScpiChannel::DoRead(unsigned long /*size*/, unsigned char* /*data*/, unsigned long* /*got*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::DoDataAvailable(unsigned long* /*count*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::DoWrite(unsigned long /*size*/, unsigned char* /*data*/, unsigned long* /*written*/)
{
    return S_OK;
}

HRESULT
CBScpiChannel::DoWritePartial(unsigned long /*size*/, unsigned char* /*data*/, unsigned long* /*written*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::DoFlush()
{
    return S_OK;
}

HRESULT CBScpiChannel::DoDelete(tagZO_SCPI_CHANNEL_TYPES /*which*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::DoSetProtocolMode(tagZO_SCPI_PROTOCOL_MODE /*mode*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::DoProgramMessageEnd()
{
    return S_OK;
}

HRESULT CBScpiChannel::DoSetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* /*status*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::DoDeviceClearAcknowledge()
{
    return S_OK;
}

HRESULT CBScpiChannel::DoReturnToLocal()
{
    return S_OK;
}

HRESULT CBScpiChannel::DoAbort()
{
    return S_OK;
}

HRESULT CBScpiChannel::do_get_ChannelProperties(tag_ScpiChannelInfo* /*info*/)
{
    return S_OK;
}

HRESULT CBScpiChannel::do_put_ChannelProperties(const tag_ScpiChannelInfo& /*info*/)
{
    return S_OK;
}

} // namespace ZoVelkor
