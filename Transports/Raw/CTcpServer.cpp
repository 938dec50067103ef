#include "CTcpServer.h"

#include "CMutexLocker.h"
#include "CTcpChannel.h"
#include "Common/EndpointText.h"
#include "GuardedEntry.h"
#include "ThreadBasics.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <algorithm>
#include <chrono>
#include <list>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace ZoVelkor::Transports
{

namespace
{

using asio::ip::tcp;

/// Rest after a failed accept, which mostly means that the system is short of descriptors.
constexpr std::chrono::milliseconds kAcceptRetry{100};

tcp::endpoint MakeEndpoint(const TcpServerSettings& settings)
{
    std::string text = settings.address;
    if (text.size() > 2 && text.front() == '[' && text.back() == ']')
    {
        text = text.substr(1, text.size() - 2);
    }
    asio::error_code error;
    const asio::ip::address address = asio::ip::make_address(text, error);
    if (error)
    {
        throw std::system_error(error, "\"" + settings.address + "\" is no IP address");
    }
    return {address, settings.port};
}

tcp::acceptor Listen(asio::io_context& context, const TcpServerSettings& settings)
{
    const tcp::endpoint endpoint = MakeEndpoint(settings);
    try
    {
        return {context, endpoint};
    }
    catch (const std::system_error& error)
    {
        throw std::system_error(
            error.code(), "Cannot listen on " + settings.address + " port " + std::to_string(settings.port));
    }
}

/// Ends what the kernel does for a client; does not wait.
void BreakOff(CTcpChannelObject& channel)
{
    CComPtr<IZOScpiChannelServiceProvider> provider;
    channel.GetExistingServiceProvider(&provider);
    if (provider != nullptr)
    {
        provider->SignalDisconnected();
    }
    channel.Abort();
}

/// Lets go of a client; waits for a handler that is running for it.
void Disconnect(CTcpChannelObject& channel) noexcept
{
    // The kernel may be gone already; then it has let go before.
    static_cast<void>(GuardedEntry([&channel] { return channel.DisconnectRemotePath(); }));
}

} // namespace

class CTcpServer::CImplementation
{
public:
    explicit CImplementation(TcpServerSettings settings) : m_settings(std::move(settings)) {}

    void Start();
    void Stop();
    tcp::endpoint LocalEndpoint() const;
    std::size_t SessionCount() const;

private:
    void StopAcceptingLocked() ZO_REQUIRES(m_runMutex);
    void AcceptNext();
    void OnAccept(const asio::error_code& error, tcp::socket socket);
    void Serve(tcp::socket socket);
    void Refuse(tcp::socket socket) const;
    void RemoveEnded();

    const TcpServerSettings m_settings;

    CMutex m_runMutex ZO_ACQUIRED_BEFORE(m_mutex); // start and stop one at a time
    std::thread m_acceptThread ZO_GUARDED_BY(m_runMutex);

    // Changed under m_runMutex while the accepting thread does not run, which uses them without lock.
    std::shared_ptr<asio::io_context> m_context; // set while the server runs
    std::optional<tcp::acceptor> m_acceptor;
    std::optional<asio::steady_timer> m_retry;

    mutable CMutex m_mutex;
    tcp::endpoint m_endpoint ZO_GUARDED_BY(m_mutex);
    std::list<CComPtr<CTcpChannelObject>> m_channels ZO_GUARDED_BY(m_mutex);
};

void CTcpServer::CImplementation::Start()
{
    const CMutexLocker lock(m_runMutex);
    if (m_context != nullptr)
    {
        return;
    }
    m_context = std::make_shared<asio::io_context>(1);
    try
    {
        m_acceptor.emplace(Listen(*m_context, m_settings));
        m_retry.emplace(*m_context);
        {
            const CMutexLocker endpointLock(m_mutex);
            m_endpoint = m_acceptor->local_endpoint();
        }
        AcceptNext();
        m_acceptThread = std::thread([&context = *m_context] {
            SetThreadName("scpi-tcp-accept");
            // An exception is reported and does not end the thread; run returns normally once stopped.
            while (!context.stopped())
            {
                static_cast<void>(
                    GuardedEntry([&]() -> HRESULT { return context.run() != 0 ? S_OK : S_FALSE; }));
            }
        });
    }
    catch (...)
    {
        StopAcceptingLocked();
        m_context.reset();
        throw;
    }
}

void CTcpServer::CImplementation::StopAcceptingLocked()
{
    m_context->stop();
    if (m_acceptThread.joinable())
    {
        m_acceptThread.join();
    }
    m_acceptor.reset();
    m_retry.reset();
}

void CTcpServer::CImplementation::Stop()
{
    const CMutexLocker lock(m_runMutex);
    if (m_context == nullptr)
    {
        return;
    }
    StopAcceptingLocked();

    std::list<CComPtr<CTcpChannelObject>> channels;
    {
        const CMutexLocker channelsLock(m_mutex);
        channels.swap(m_channels);
    }
    // All are woken first, so that they end side by side.
    for (const auto& channel : channels)
    {
        BreakOff(*channel);
    }
    for (const auto& channel : channels)
    {
        Disconnect(*channel);
    }
    m_context.reset();
}

void CTcpServer::CImplementation::AcceptNext()
{
    m_acceptor->async_accept(
        [this](const asio::error_code& error, tcp::socket socket) { OnAccept(error, std::move(socket)); });
}

void CTcpServer::CImplementation::OnAccept(const asio::error_code& error, tcp::socket socket)
{
    if (error == asio::error::operation_aborted)
    {
        return;
    }
    if (error)
    {
        m_retry->expires_after(kAcceptRetry);
        m_retry->async_wait([this](const asio::error_code& retryError) {
            if (!retryError)
            {
                AcceptNext();
            }
        });
        return;
    }
    try
    {
        SessionCount() < m_settings.maxSessions ? Serve(std::move(socket)) : Refuse(std::move(socket));
    }
    catch (...)
    {
        // No resources for this client; it is disconnected.
        static_cast<void>(ResultOfCurrentException());
    }
    AcceptNext();
}

void CTcpServer::CImplementation::Serve(tcp::socket socket)
{
    std::list<CComPtr<CTcpChannelObject>> added;
    // A kernel that stops at the same time may still be ending a channel when the server has stopped.
    added.push_back(CTcpChannelObject::Create(
        std::move(socket), [this, context = m_context] { asio::post(*context, [this] { RemoveEnded(); }); }));
    CTcpChannelObject& channel = *added.front();
    channel.Open();
    CComPtr<IZOScpiChannelServiceProvider> provider;
    if (FAILED(channel.GetServiceProvider(&provider)))
    {
        return;
    }
    {
        const CMutexLocker lock(m_mutex);
        m_channels.splice(m_channels.end(), added);
    }
    if (FAILED(provider->SignalConnected()))
    {
        channel.Abort();
    }
}

void CTcpServer::CImplementation::Refuse(tcp::socket socket) const
{
    const std::string line = "-300,\"Device specific error;Too many connections, limit " +
                             std::to_string(m_settings.maxSessions) + "\"\n";
    asio::error_code ignored;
    socket.write_some(asio::buffer(line), ignored);
    socket.shutdown(tcp::socket::shutdown_send, ignored);
}

void CTcpServer::CImplementation::RemoveEnded()
{
    std::list<CComPtr<CTcpChannelObject>> ended;
    {
        const CMutexLocker lock(m_mutex);
        for (auto channel = m_channels.begin(); channel != m_channels.end();)
        {
            const auto current = channel++;
            if (!(*current)->IsServed())
            {
                ended.splice(ended.end(), m_channels, current);
            }
        }
    }
    for (const auto& channel : ended)
    {
        Disconnect(*channel);
    }
}

tcp::endpoint CTcpServer::CImplementation::LocalEndpoint() const
{
    const CMutexLocker lock(m_mutex);
    return m_endpoint;
}

std::size_t CTcpServer::CImplementation::SessionCount() const
{
    const CMutexLocker lock(m_mutex);
    return static_cast<std::size_t>(std::count_if(
        m_channels.begin(), m_channels.end(), [](const auto& channel) { return channel->IsServed(); }));
}

CTcpServer::CTcpServer(TcpServerSettings settings)
    : m_implementation(std::make_unique<CImplementation>(std::move(settings)))
{}

CTcpServer::~CTcpServer()
{
    Stop();
}

void CTcpServer::Start()
{
    m_implementation->Start();
}

void CTcpServer::Stop()
{
    m_implementation->Stop();
}

std::uint16_t CTcpServer::Port() const noexcept
{
    return m_implementation->LocalEndpoint().port();
}

std::string CTcpServer::Endpoint() const
{
    return EndpointText(m_implementation->LocalEndpoint());
}

std::size_t CTcpServer::SessionCount() const
{
    return m_implementation->SessionCount();
}

} // namespace ZoVelkor::Transports
