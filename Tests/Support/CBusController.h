#pragma once

#include "Bus/CBusChannel.h"
#include "CBScpiMultichannelEventObserver.h"
#include "CMutexLocker.h"
#include "CTestApplication.h"
#include "Root.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace ZoVelkor::RemoteKernel::Testing
{

/// Waits until a condition holds, half a minute at most.
template <class TCondition>
bool Eventually(TCondition condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > deadline)
        {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

/// A controller with one instrument on its bus, connected and remote.
class CBusController
{
public:
    /// Enough for everything that is to happen at all.
    static constexpr DWORD kTimeoutMs = 30'000;

    explicit CBusController(const Transports::BusSettings& settings = {})
        : m_channel(Transports::CBusChannelObject::Create(settings))
    {
        m_channel->SetRemoteEnable(true);
        EXPECT_EQ(m_channel->Connect(), S_OK);
    }
    CBusController(const CBusController&) = delete;
    CBusController& operator=(const CBusController&) = delete;
    ~CBusController() { m_channel->Disconnect(); }

    Transports::CBusChannelObject* operator->() const { return m_channel; }
    Transports::CBusChannelObject& Channel() const { return *m_channel; }

    void Send(std::string_view text, bool end = true)
    {
        EXPECT_EQ(m_channel->Send(text, end, kTimeoutMs), S_OK) << text;
    }
    std::string Receive()
    {
        const Transports::BusResponse response = m_channel->Receive(SIZE_MAX, kTimeoutMs);
        EXPECT_EQ(response.result, S_OK);
        EXPECT_TRUE(response.end);
        return response.bytes.substr(0, response.bytes.size() - 1);
    }
    std::string Query(std::string_view text)
    {
        Send(text);
        return Receive();
    }
    unsigned Poll()
    {
        unsigned char stb = 0;
        EXPECT_EQ(m_channel->SerialPoll(&stb), S_OK);
        return stb;
    }

private:
    const CComPtr<Transports::CBusChannelObject> m_channel;
};

/// Notes the events of all paths as "Name path" or "Name(argument) path".
class CEventRecorder : public CBScpiMultichannelEventObserver
{
public:
    CEventRecorder()
    {
        GUID id{};
        CoCreateGuid(&id);
        put_EventClientId(id);
    }

    /// The events since the last call, joined by blanks.
    std::string Take()
    {
        const CMutexLocker lock(m_mutex);
        std::string all;
        for (const std::string& event : std::exchange(m_events, {}))
        {
            all += (all.empty() ? "" : " ") + event;
        }
        return all;
    }
    std::size_t Count(std::string_view name)
    {
        const CMutexLocker lock(m_mutex);
        return static_cast<std::size_t>(std::count_if(
            m_events.begin(), m_events.end(), [name](const auto& event) { return event.starts_with(name); }));
    }

protected:
    HRESULT DoConnectionAccepted(wchar_t*, long path) override { return Note("Accepted", path); }
    HRESULT DoConnectionBroken(wchar_t*, long path) override { return Note("Broken", path); }
    HRESULT DoGotoLocal(long path) override { return Note("Local", path); }
    HRESULT DoGotoRemote(long path) override { return Note("Remote", path); }
    HRESULT DoLocalLockout(short on, long path) override { return Note(on != 0 ? "Lock" : "Unlock", path); }
    HRESULT DoDeviceClear(long path) override { return Note("Clear", path); }
    HRESULT DoTrigger(long path) override { return Note("Trigger", path); }
    HRESULT DoReset(long path) override { return Note("Reset", path); }
    HRESULT DoSystemPreset(long path) override { return Note("Preset", path); }
    HRESULT DoProgramMessageBegin(long path) override { return Note("Begin", path); }
    HRESULT DoProgramMessageEnd(short aborted, long path) override
    {
        return Note(aborted != 0 ? "Aborted" : "End", path);
    }
    HRESULT DoOpcReset(long path, unsigned long count, GUID*) override
    {
        return Note("OpcReset(" + std::to_string(count) + ')', path);
    }

private:
    HRESULT Note(const std::string& name, long path)
    {
        const CMutexLocker lock(m_mutex);
        m_events.push_back(name + (m_paths ? std::to_string(path) : ""));
        return S_OK;
    }

    CMutex m_mutex;
    std::vector<std::string> m_events ZO_GUARDED_BY(m_mutex);

public:
    std::atomic<bool> m_paths{false}; ///< appends the path to each event
};

using CRecorderObject = CComObject<CEventRecorder, IZOScpiMultichannelEventObserver>;

/// A service that is found at the root.
template <class TService>
CComPtr<TService> AtRoot()
{
    CComPtr<TService> service;
    ZoGetRegisteredInterface(&TService::kInterfaceId, &service);
    return service;
}

} // namespace ZoVelkor::RemoteKernel::Testing
