#pragma once

#include "CCondition.h"
#include "CLxiEventEndpoint.h"
#include "CMutexLocker.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <memory>

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
        const CMutexLocker lock(m_mutex);
        m_heard.push_back(std::move(heard));
        m_changed.NotifyOne();
    }

    /// Waits for the next event; fails after half a minute.
    HeardEvent Take()
    {
        const auto deadline = CCondition::Clock::now() + std::chrono::seconds(30);
        const CMutexLocker lock(m_mutex);
        while (m_heard.empty())
        {
            if (!m_changed.WaitUntil(m_mutex, deadline))
            {
                ADD_FAILURE() << "no event";
                return {};
            }
        }
        HeardEvent heard = std::move(m_heard.front());
        m_heard.pop_front();
        return heard;
    }

private:
    CLxiEventEndpoint& m_endpoint;
    CMutex m_mutex;
    CCondition m_changed;
    std::deque<HeardEvent> m_heard ZO_GUARDED_BY(m_mutex);
};

} // namespace ZoVelkor::RemoteKernel::Testing
