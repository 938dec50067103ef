#include "CComponentShellThreadPool.h"
#include "CCritSectionLocker.h"
#include "CErrorRecorder.h"
#include "CThread.h"
#include "Event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <latch>
#include <stdexcept>
#include <thread>
#include <utility>

namespace ZoVelkor
{
namespace
{
std::atomic<int> g_works{0};

class CWork : public CThreadRunObject
{
public:
    explicit CWork(std::function<void()> body = [] {}) : m_body(std::move(body)) { ++g_works; }
    ~CWork() override { --g_works; }
    void Run() override { m_body(); }
    void Abort() override {}

private:
    const std::function<void()> m_body;
};

class CSelfDeletingWork final : public CWork
{
public:
    void Run() override
    {
        DetachFromThread();
        delete this;
    }
};

class CEndlessWork final : public CWork
{
public:
    void Run() override { m_aborted.wait(); }
    void Abort() override { m_aborted.count_down(); }

    std::latch m_aborted{1};
};

void RunToEnd(CThread& thread, std::function<void()> body)
{
    ASSERT_EQ(thread.Start(std::make_unique<CWork>(std::move(body))), S_OK);
    ASSERT_EQ(thread.WaitUntilIdle(INFINITE), S_OK);
    EXPECT_EQ(g_works, 0) << "the thread deletes what it owns";
}

TEST(Thread, RefusesWorkWhenBusyOrJoinedOrNull)
{
    CErrorRecorder recorder;
    CThread thread("Test");
    EXPECT_EQ(thread.Abort(), S_FALSE);
    EXPECT_EQ(thread.Start(nullptr), E_POINTER);
    CEndlessWork work;
    ASSERT_EQ(thread.Start(&work), S_OK);
    EXPECT_EQ(thread.Start(std::make_unique<CWork>()), E_PENDING);
    EXPECT_EQ(thread.WaitUntilIdle(1), S_FALSE);
    EXPECT_EQ(thread.Abort(), S_OK);
    EXPECT_EQ(thread.Join(), S_OK);
    EXPECT_EQ(thread.Start(std::make_unique<CWork>()), E_ABORT);
    EXPECT_EQ(g_works, 1) << "refused work that the thread would own is deleted";
}

TEST(Thread, AbortMeetsSelfDeletingWorkSafely)
{
    CThread thread("Test");
    for (int i = 0; i < 200; ++i)
    {
        ASSERT_EQ(thread.Start(new CSelfDeletingWork), S_OK);
        thread.Abort();
        ASSERT_EQ(thread.WaitUntilIdle(INFINITE), S_OK);
        ASSERT_EQ(g_works, 0);
    }
}

TEST(Thread, RunsOnAfterAnExceptionAndCannotJoinItself)
{
    CErrorRecorder recorder;
    CThread thread("LongerThanFifteenCharacters");
    std::thread::id ids[2];
    RunToEnd(thread, [&ids] {
        ids[0] = std::this_thread::get_id();
        throw std::runtime_error("escaped");
    });
    RunToEnd(thread, [&ids, &thread] {
        ids[1] = std::this_thread::get_id();
        EXPECT_EQ(thread.Join(), E_UNEXPECTED);
    });
    EXPECT_EQ(recorder.Take()[0].report.message, "escaped");
    EXPECT_NE(ids[0], std::this_thread::get_id());
    EXPECT_EQ(ids[0], ids[1]);
}

TEST(ThreadPool, ReusesIdleThreadsByNameAndMakesOthersUpToTheLimit)
{
    CErrorRecorder recorder;
    CComponentShellThreadPool pool;
    CThread* const first = pool.GetThread("SwplScpiManagerThread");
    EXPECT_NE(pool.GetThread("SwplScpiManagerThread"), first) << "the first is handed out";
    RunToEnd(*first, [] {});
    EXPECT_NE(pool.GetThread("Other"), first);
    EXPECT_EQ(pool.GetThread("SwplScpiManagerThread"), first);
    pool.ReturnThread(first);
    EXPECT_EQ(pool.GetThread("SwplScpiManagerThread"), first);
    EXPECT_EQ(first->Start(nullptr), E_POINTER);
    EXPECT_EQ(pool.GetThread("SwplScpiManagerThread"), first) << "a failed start gives the thread back";
    while (pool.ThreadCount() < CComponentShellThreadPool::kMaximumThreads)
    {
        ASSERT_NE(pool.GetThread("Other"), nullptr);
    }
    EXPECT_EQ(pool.GetThread("Other"), nullptr);
}

TEST(ThreadPool, ShutdownAbortsJoinsAndRefuses)
{
    CEndlessWork works[3];
    CComponentShellThreadPool pool;
    CThread* const reserved = pool.GetThread("Test");
    for (CEndlessWork& work : works)
    {
        ASSERT_EQ(pool.GetThread("Test")->Start(&work), S_OK);
    }
    EXPECT_EQ(pool.Shutdown(), S_OK);
    EXPECT_EQ(pool.GetThread("Test"), nullptr);
    EXPECT_EQ(reserved->Start(std::make_unique<CWork>()), E_ABORT);
}

TEST(ThreadPool, HandsEachThreadToOneCallerAtATime)
{
    CComponentShellThreadPool pool;
    CThread* const spare = pool.GetThread("Spare");
    constexpr int kRounds = 100;
    std::atomic<int> runs{0};
    const auto call = [&pool, &runs] {
        for (int n = 0; n < kRounds; ++n)
        {
            CThread* const pThread = pool.GetThread("Shared");
            EXPECT_EQ(pThread->Start(std::make_unique<CWork>([&runs] { ++runs; })), S_OK);
            EXPECT_EQ(pThread->WaitUntilIdle(INFINITE), S_OK);
        }
    };
    {
        const std::jthread first(call);
        const std::jthread second(call);
        const std::jthread third([&pool, spare] {
            for (int n = 0; n < kRounds; ++n)
            {
                pool.ReturnThread(spare);
            }
        });
    }
    EXPECT_EQ(runs, 2 * kRounds);
}

bool IsFree(CCritSection& section)
{
    bool entered = false;
    std::jthread([&section, &entered] {
        if (section.TryLock())
        {
            entered = true;
            section.Unlock();
        }
    }).join();
    return entered;
}

void EnterAndLeave(CCritSection& section)
{
    const CCritSectionLocker locker(section);
}

TEST(CritSection, IsLeftAsOftenAsEntered)
{
    CCritSection section;
    {
        CCritSectionLocker outer(section);
        EnterAndLeave(section);
        EXPECT_FALSE(IsFree(section));
        outer.Unlock();
        EXPECT_TRUE(IsFree(section));
        outer.Lock();
        EXPECT_FALSE(IsFree(section));
        outer.Unlock();
    }
    EXPECT_TRUE(IsFree(section)) << "a locker that stepped outside leaves nothing locked";
}
} // namespace
} // namespace ZoVelkor
