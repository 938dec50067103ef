#pragma once

#include "CLxiEventEndpoint.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace ZoVelkor::RemoteKernel::Testing
{

/// An event as an observer heard it.
struct HeardEvent
{
    std::unique_ptr<CLxiLanPacket> packet = std::make_unique<CLxiLanPacket>();
    long event = kUnknownLxiEvent;
    CLxiTime time;
    LxiPeer sender;
};

/// Keeps all events that it hears of until they are taken; goes before its endpoint.
class CLxiEventRecorder : public ILxiEventObserver
{
public:
    explicit CLxiEventRecorder(CLxiEventEndpoint& endpoint) : m_endpoint(endpoint)
    {
        for (long event = 0; event != kLxiEventCount; ++event)
        {
            EXPECT_EQ(endpoint.AddObserver(event, this), S_OK);
        }
    }
    CLxiEventRecorder(const CLxiEventRecorder&) = delete;
    CLxiEventRecorder& operator=(const CLxiEventRecorder&) = delete;
    virtual ~CLxiEventRecorder()
    {
        for (long event = 0; event != kLxiEventCount; ++event)
        {
            m_endpoint.RemoveObserver(event, this);
        }
    }

    void OnLxiEvent(const LxiEvent& event) override
    {
        HeardEvent heard{.event = event.event, .time = event.time, .sender = event.sender};
        heard.packet->duplicatePacket(event.packet);
        const std::lock_guard lock(m_mutex);
        m_heard.push_back(std::move(heard));
        m_changed.notify_one();
    }

    /// Waits for the next event; fails after half a minute.
    HeardEvent Take()
    {
        std::unique_lock lock(m_mutex);
        if (!m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return !m_heard.empty(); }))
        {
            ADD_FAILURE() << "no event";
            return {};
        }
        HeardEvent heard = std::move(m_heard.front());
        m_heard.pop_front();
        return heard;
    }

private:
    CLxiEventEndpoint& m_endpoint;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<HeardEvent> m_heard; // guarded by m_mutex
};

} // namespace ZoVelkor::RemoteKernel::Testing
