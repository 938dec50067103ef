#pragma once

#include "CComPtr.h"
#include "CCritSection.h"
#include "CObjectDataReference.h"
#include "CSmartScpiChannelInfo.h"
#include "Handle.h"
#include "IZOScpiChannel.h"
#include "IZOScpiChannelServiceProvider.h"
#include "ThreadAnnotations.h"
#include "ZoExport.h"

#include <array>

namespace ZoVelkor
{

/// Base of channels: hands every call of the kernel on to a `Do...` operation of the concrete channel, keeps
/// the open state, the status and the properties, and manages the connection to the kernel.
///
/// A channel is made with CComObject<CMyChannel, IZOScpiChannel>: it finds itself as IZOScpiChannel through
/// QueryInterface. The `Do...` operations of the base succeed and do nothing; a channel that overrides none
/// is a silent sink.
///
/// Ownership: while connected, the kernel and the channel hold each other; DisconnectRemotePath or
/// ReleaseServiceProvider lets go of both sides, and nothing else does. The destructor calls nobody.
///
/// Results of the operations of IZOScpiChannel: that of the `Do...` operation; an exception in it becomes a
/// result. A null pointer gives E_POINTER and an error report, and counts are 0 until the concrete channel
/// sets them. The connection management throws CShellError where it says so.
///
/// Threads: any operation from any thread. Data calls take no lock. One lock is held while Open opens and
/// while the kernel is called to connect or disconnect; everything else that the base keeps has a lock of its
/// own, held for moments, so that a thread of the kernel gets at provider, events, path, status and
/// properties while RemoveConnection waits for it. Such a thread must not disconnect: its way is
/// SignalDisconnected.
class ZO_EXPORT CBScpiChannel : public IZOScpiChannel, public virtual CObjectDataReference
{
public:
    CBScpiChannel() = default;
    CBScpiChannel(const CBScpiChannel&) = delete;
    CBScpiChannel& operator=(const CBScpiChannel&) = delete;
    ~CBScpiChannel() override = default;

    /// Asks DoGetCapabilityRemoteLocal and DoGetCapabilityStatus.
    HRESULT GetCapabilities(short* remoteLocal, short* status) override;
    /// Opens unless open; a second caller waits for the first. Afterwards the channel counts as open whether
    /// or not the opening worked: Close takes back what it left behind, then Open tries again.
    ///
    /// @return S_OK, also when open already; the result of DoOpenChannel
    HRESULT Open() override;
    /// Closes, also when not open; afterwards the channel counts as closed whatever the result.
    HRESULT Close() override;
    /// Sets the count to 0 and calls DoRead.
    HRESULT Read(unsigned long size, unsigned char* data, unsigned long* got) override;
    /// Sets the count to 0 and calls DoDataAvailable.
    HRESULT DataAvailable(unsigned long* count) override;
    /// Sets the count to 0 and calls DoWrite.
    HRESULT Write(unsigned long size, unsigned char* data, unsigned long* written) override;
    /// Sets the count to 0 and calls DoWritePartial.
    HRESULT WritePartial(unsigned long size, unsigned char* data, unsigned long* written) override;
    HRESULT Flush() override;
    HRESULT Delete(tagZO_SCPI_CHANNEL_TYPES which) override;
    HRESULT SetProtocolMode(tagZO_SCPI_PROTOCOL_MODE mode) override;
    HRESULT ProgramMessageEnd() override;
    /// Stores the status, then tells the concrete channel, whose result does not change what is stored.
    HRESULT SetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* status) override;
    HRESULT DeviceClearAcknowledge() override;
    HRESULT ReturnToLocal() override;
    HRESULT Abort() override;
    /// Gives a copy of the stored record after do_get_ChannelProperties has brought it up to date.
    ///
    /// @param[out] info  left alone on failure
    HRESULT get_ChannelProperties(tag_ScpiChannelInfo* info) override;
    /// Stores a copy, then tells the concrete channel.
    HRESULT put_ChannelProperties(tag_ScpiChannelInfo info) override;

    /// Makes another provider the channel's; does not connect or disconnect.
    ///
    /// @param provider  counted; null: none
    HRESULT SetServiceProvider(IZOScpiChannelServiceProvider* provider);
    /// Gives the provider without connecting.
    ///
    /// @param[out] provider  a new reference; null when there is none, which is S_OK too
    /// @return S_OK; E_POINTER, reported
    HRESULT GetExistingServiceProvider(IZOScpiChannelServiceProvider** provider);
    /// Gives the provider and connects first when there is none; threads that come meanwhile wait for it.
    ///
    /// @param[out] provider  a new reference; null on failure
    /// @return S_OK; E_POINTER, and E_NOINTERFACE when the object is no IZOScpiChannel, both reported;
    ///         E_OUTOFMEMORY
    /// @throws CShellError as RegisterNewClientChannel
    HRESULT GetServiceProvider(IZOScpiChannelServiceProvider** provider);
    /// Disconnects and lets go of the provider; does nothing when it is null or not the one held.
    ///
    /// @param provider  borrowed, compared by address
    /// @return S_OK, also when nothing was done; E_NOINTERFACE, reported, as GetServiceProvider
    /// @throws CShellError as UnregisterNewClientChannel; the provider is kept then
    HRESULT ReleaseServiceProvider(IZOScpiChannelServiceProvider* provider);
    /// Connects a channel to the kernel; provider, path and events of the connection become this object's.
    /// The kernel's events that cannot be had are reported and stay 0.
    ///
    /// @param channel  this object in general; the kernel keeps a reference
    /// @return S_OK; S_FALSE when it was connected already; E_POINTER, reported
    /// @throws CShellError "Missing interface" when the kernel's multichannel administration or
    ///         functionality is not at the root; "Unexpected result adding new connection to remote kernel"
    ///         with the kernel's result when it refuses; nothing has changed then
    HRESULT RegisterNewClientChannel(IZOScpiChannel* channel);
    /// Ends the connection of a channel; the path becomes -1 and the events 0, the provider stays.
    ///
    /// @return S_OK; S_FALSE when it was not connected; E_POINTER, reported
    /// @throws CShellError "Missing interface" without multichannel administration; "Unexpected result
    ///         removing connection from remote kernel" with the kernel's result; nothing has changed then
    HRESULT UnregisterNewClientChannel(IZOScpiChannel* channel);
    /// Ends the connection, if there is one; traced when remote calls are diagnosed.
    ///
    /// @return, @throws as ReleaseServiceProvider
    HRESULT DisconnectRemotePath();

    /// Sends the reply to a serial poll (IEEE 1174) through DoWrite, whose result it returns.
    ///
    /// DoWrite can then run in two threads at once: that of the poll and the kernel's.
    HRESULT GenericIeee1174PolResponse(unsigned char stb);
    /// The reply's bytes: '&', the status byte as three decimal digits, CR and LF.
    [[nodiscard]] static std::array<unsigned char, 6> Ieee1174PolResponse(unsigned char stb) noexcept;

    /// Event that is set while a device clear is carried out; the kernel's, do not close. 0: not connected.
    [[nodiscard]] HANDLE GetCurrentDeviceClearHandle() const;
    /// Event that is set when the kernel ends the connection; the kernel's, do not close. 0: not connected.
    [[nodiscard]] HANDLE GetCurrentShutdownEventHandle() const;
    /// Path of the connection; -1: not connected.
    [[nodiscard]] long GetRemotePath() const;

    /// @name What the concrete channel overrides
    /// Each stands behind the operation of its name, in that operation's thread. Pointers are not null,
    /// counts begin with 0, and an exception becomes a result. The base does nothing: S_OK, and no bytes.
    /// @{

    /// Non-zero: the controller says when the instrument is remote or local. The base: VARIANT_FALSE.
    virtual short DoGetCapabilityRemoteLocal();
    /// Non-zero: the channel wants the status. The base: VARIANT_FALSE.
    virtual short DoGetCapabilityStatus();
    /// Called by Open, by one thread at a time.
    virtual HRESULT DoOpenChannel();
    /// Called by Close, open or not.
    virtual HRESULT DoCloseChannel();
    /// Takes what has arrived, without waiting.
    virtual HRESULT DoRead(unsigned long size, unsigned char* data, unsigned long* got);
    /// Counts what DoRead would get.
    virtual HRESULT DoDataAvailable(unsigned long* count);
    /// Sends and waits until all is taken; may run in two threads, see GenericIeee1174PolResponse.
    virtual HRESULT DoWrite(unsigned long size, unsigned char* data, unsigned long* written);
    /// Sends what is taken without waiting.
    virtual HRESULT DoWritePartial(unsigned long size, unsigned char* data, unsigned long* written);
    /// Ends a response.
    virtual HRESULT DoFlush();
    /// Drops what the channel holds.
    virtual HRESULT DoDelete(tagZO_SCPI_CHANNEL_TYPES which);
    /// Learns how messages travel.
    virtual HRESULT DoSetProtocolMode(tagZO_SCPI_PROTOCOL_MODE mode);
    /// A program message has been worked off.
    virtual HRESULT DoProgramMessageEnd();
    /// Learns the status, which is stored already; under locks of the kernel, so it neither waits nor calls
    /// it.
    virtual HRESULT DoSetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* status);
    /// A device clear has been carried out; must not wait.
    virtual HRESULT DoDeviceClearAcknowledge();
    /// The instrument went to local by itself.
    virtual HRESULT DoReturnToLocal();
    /// Ends calls that wait; from any thread.
    virtual HRESULT DoAbort();
    /// Brings a copy of the stored properties up to date; strings put into it come into its possession, those
    /// that they replace are to be freed.
    virtual HRESULT do_get_ChannelProperties(tag_ScpiChannelInfo* info);
    /// Called when new properties are stored.
    ///
    /// @param info  lent for the call
    virtual HRESULT do_put_ChannelProperties(const tag_ScpiChannelInfo& info);
    /// @}

protected:
    /// Whether Open came after the last Close, successful or not.
    [[nodiscard]] bool IsOpen() const;
    /// What SetChannelStatus has stored last; all 0 before.
    [[nodiscard]] tagZO_SCPI_CHANNEL_STATUS ChannelStatus() const;

private:
    using TransferOperation = HRESULT (CBScpiChannel::*)(unsigned long, unsigned char*, unsigned long*);

    HRESULT RefuseNull(const char* condition, int line = __builtin_LINE()) const noexcept;
    HRESULT Transfer(TransferOperation operation,
                     unsigned long size,
                     unsigned char* data,
                     unsigned long* moved,
                     const char* movedCondition);
    HRESULT FindSelf(IZOScpiChannel** self);
    HRESULT ConnectedProvider(IZOScpiChannelServiceProvider** provider);
    bool CopyProvider(IZOScpiChannelServiceProvider** provider) const;
    bool HoldsProvider(const IZOScpiChannelServiceProvider* provider) const;
    void SetConnection(long remotePath, HANDLE deviceClear, HANDLE shutdown);

    /// Held across DoOpenChannel and the kernel's AddConnection and RemoveConnection; taken before m_lock and
    /// before any lock of the kernel.
    CCritSection m_connectionLock;
    /// Nothing is called while it is held.
    mutable CCritSection m_lock;
    VARIANT_BOOL m_vtbOpen ZO_GUARDED_BY(m_lock) = VARIANT_FALSE;
    HANDLE m_deviceClear ZO_GUARDED_BY(m_lock) = 0;
    HANDLE m_shutdown ZO_GUARDED_BY(m_lock) = 0;
    tagZO_SCPI_CHANNEL_STATUS m_status ZO_GUARDED_BY(m_lock){};
    CComPtr<IZOScpiChannelServiceProvider> m_serviceProvider ZO_GUARDED_BY(m_lock);
    CSmartScpiChannelInfo m_properties ZO_GUARDED_BY(m_lock);
    long m_iRemotePath ZO_GUARDED_BY(m_lock) = -1;
};

} // namespace ZoVelkor
