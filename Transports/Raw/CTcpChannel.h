#pragma once

#include "CBScpiChannel.h"
#include "CComObject.h"
#include "CUniqueHandle.h"
#include "IZOScpiWaitableChannel.h"

#include <asio/ip/tcp.hpp>

#include <atomic>
#include <functional>
#include <unistd.h>

namespace ZoVelkor::Transports
{

/// One client of a raw socket: bytes over TCP, without any side channel.
///
/// Threads: as the base says.
class CTcpChannel : public CBScpiChannel, public IZOScpiWaitableChannel
{
public:
    /// @param onEnd  called once, when the connection is over, by any thread; must not disconnect the channel
    CTcpChannel(asio::ip::tcp::socket socket, std::function<void()> onEnd);

    /// Tells whether the client is still served.
    bool IsServed() const noexcept { return !m_over.load(std::memory_order_acquire); }

    HRESULT GetWaitDescriptor(int* descriptor) override;

    HRESULT DoRead(unsigned long size, unsigned char* data, unsigned long* got) override;
    HRESULT DoDataAvailable(unsigned long* count) override;
    HRESULT DoWrite(unsigned long size, unsigned char* data, unsigned long* written) override;
    HRESULT DoWritePartial(unsigned long size, unsigned char* data, unsigned long* written) override;
    HRESULT DoProgramMessageEnd() override;
    HRESULT DoCloseChannel() override;
    /// Wakes a write that the client does not take, and ends the connection.
    HRESULT DoAbort() override;
    HRESULT do_get_ChannelProperties(tag_ScpiChannelInfo* info) override;

protected:
    ~CTcpChannel() override = default;

private:
    using CUniqueSocket = CUniqueHandle<&::close, int, -1>;

    const asio::ip::tcp::endpoint m_local; // as long as it is served a client goes by the same name
    const asio::ip::tcp::endpoint m_remote;
    const CUniqueSocket m_socket; // open until destruction, so that DoAbort may use it; no socket of Asio,
                                  // which must not outlive the server
    const std::function<void()> m_onEnd;
    std::atomic<bool> m_over{false};
    std::atomic<std::uint32_t> m_received{0};
    std::atomic<std::uint32_t> m_sent{0};
    std::atomic<std::uint32_t> m_messages{0};
};

using CTcpChannelObject = CComObject<CTcpChannel, IZOScpiChannel, IZOScpiWaitableChannel>;

} // namespace ZoVelkor::Transports
