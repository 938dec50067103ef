#pragma once

#include "ScpiChannelInfo.h"
#include "ScpiChannelStatus.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// One remote-control connection (a socket, a bus interface, an emulation) as the kernel drives it.
///
/// The kernel reads and writes on a thread of its own; the channel tells what happens on the connection
/// through the service provider that it gets when it connects. Threads: Read, DataAvailable, Write,
/// WritePartial, Flush, ProgramMessageEnd and DeviceClearAcknowledge: the kernel's thread of this connection.
/// SetChannelStatus: whichever thread changed the status, under locks of the kernel, so it must neither wait
/// nor call the kernel. Abort and the others: any.
struct IZOScpiChannel : IUnknown
{
    static constexpr IID kInterfaceId{
        0x2FC0DDEB, 0xE4F5, 0x4749, {0xB1, 0x69, 0x75, 0xAF, 0x62, 0xD3, 0xAD, 0x0C}};

    /// What the connection can do beside exchanging messages.
    ///
    /// @param[out] remoteLocal  non-zero: its controller says when the instrument is remote or local
    /// @param[out] status  non-zero: it wants SetChannelStatus
    virtual HRESULT GetCapabilities(short* remoteLocal, short* status) = 0;

    /// Makes the channel ready to read and write.
    ///
    /// @return S_OK, also when open; a failure when there is nothing to read from
    virtual HRESULT Open() = 0;
    /// Gives back what Open has taken; may be called without it.
    virtual HRESULT Close() = 0;

    /// Takes what has arrived, without waiting.
    ///
    /// @param[out] got  bytes written to data, at most size
    /// @return S_OK, with 0 bytes when there is nothing at the moment; S_FALSE when nothing will come any
    ///         more; a failure when the connection is lost
    virtual HRESULT Read(unsigned long size, unsigned char* data, unsigned long* got) = 0;

    /// Tells what a Read would get now.
    ///
    /// @param[out] count  bytes
    virtual HRESULT DataAvailable(unsigned long* count) = 0;

    /// Sends bytes of a response and waits until the connection has taken all.
    ///
    /// @param[out] written  bytes taken, also on failure
    /// @return S_OK; E_ABORT when the rest of the response is to be dropped (device clear, query error);
    ///         another failure when the connection is lost
    virtual HRESULT Write(unsigned long size, unsigned char* data, unsigned long* written) = 0;

    /// As Write, but returns after what the connection takes without waiting.
    virtual HRESULT WritePartial(unsigned long size, unsigned char* data, unsigned long* written) = 0;

    /// Ends a response: everything written goes to the controller, with END where the connection knows one,
    /// and a connection whose controller asks for the bytes waits until it has them. Results as Write.
    virtual HRESULT Flush() = 0;

    /// Drops what the channel holds, arrived or not yet sent.
    ///
    /// @param which  buffers that are emptied
    virtual HRESULT Delete(tagZO_SCPI_CHANNEL_TYPES which) = 0;

    /// How messages travel on the connection; set before the connection is used.
    virtual HRESULT SetProtocolMode(tagZO_SCPI_PROTOCOL_MODE mode) = 0;

    /// A program message, with all its responses, has been worked off.
    virtual HRESULT ProgramMessageEnd() = 0;

    /// The status that a controller can see has changed.
    ///
    /// @param status  lent for the call
    virtual HRESULT SetChannelStatus(tagZO_SCPI_CHANNEL_STATUS* status) = 0;

    /// A device clear has been carried out; from SignalDeviceClear until here Read gives nothing. The same
    /// for input that is dropped, see ReportError of the service provider. It must not wait.
    virtual HRESULT DeviceClearAcknowledge() = 0;

    /// The instrument went to local by itself, as by its front panel.
    virtual HRESULT ReturnToLocal() = 0;

    /// Ends calls that wait; the connection is over.
    virtual HRESULT Abort() = 0;

    /// Gives the properties as they are now.
    ///
    /// @param[out] info  an initialised record; what it held is freed, the strings are the caller's
    virtual HRESULT get_ChannelProperties(tag_ScpiChannelInfo* info) = 0;

    /// Sets the properties that can be set; the channel takes a copy.
    ///
    /// @param info  lent for the call
    virtual HRESULT put_ChannelProperties(tag_ScpiChannelInfo info) = 0;

protected:
    ~IZOScpiChannel() = default;
};

inline constexpr const IID& IID_IZOScpiChannel = IZOScpiChannel::kInterfaceId;

} // namespace ZoVelkor
