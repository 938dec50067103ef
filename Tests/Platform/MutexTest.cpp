#include "CCondition.h"
#include "CMutexLocker.h"
#include "CMutexUnlocker.h"
#include "CReadLocker.h"
#include "CWriteLocker.h"
#include "ManyThreads.h"

#include <gtest/gtest.h>

#include <barrier>
#include <chrono>
#include <thread>
#include <utility>

namespace ZoVelkor::Testing
{
namespace
{

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

/// Asks another thread, because the one that holds a mutex must not try to take it.
bool IsFree(CMutex& mutex)
{
    bool isFree = false;
    std::jthread([&] {
        if (mutex.TryLock())
        {
            isFree = true;
            mutex.Unlock();
        }
    }).join();
    return isFree;
}

TEST(Mutex, IsHeldByOneThreadAtATime)
{
    CMutex mutex;
    int count = 0;
    RunOnManyThreads([&] {
        for (int i = 0; i < kRounds; ++i)
        {
            const CMutexLocker lock(mutex);
            ++count;
        }
    });
    EXPECT_EQ(count, kThreads * kRounds);
}

TEST(Mutex, LockerHoldsItToTheEndOfTheScopeExceptBetweenUnlockAndLock)
{
    CMutex mutex;
    {
        CMutexLocker lock(mutex);
        EXPECT_FALSE(IsFree(mutex));
        lock.Unlock();
        EXPECT_TRUE(IsFree(mutex));
        lock.Lock();
        EXPECT_FALSE(IsFree(mutex));
    }
    EXPECT_TRUE(IsFree(mutex));
    {
        CMutexLocker lock(mutex);
        lock.Unlock();
    }
    EXPECT_TRUE(IsFree(mutex));
}

TEST(Mutex, UnlockerGivesItBackToTheEndOfTheScope)
{
    CMutex mutex;
    const CMutexLocker lock(mutex);
    {
        const CMutexUnlocker unlocker(mutex);
        EXPECT_TRUE(IsFree(mutex));
    }
    EXPECT_FALSE(IsFree(mutex));
}

TEST(Condition, WaitGivesTheMutexBackAndReturnsWithIt)
{
    CMutex mutex;
    CCondition changed;
    int turn = 0;
    std::jthread other([&] {
        const CMutexLocker lock(mutex);
        changed.Wait(mutex, [&] { return turn == 1; });
        turn = 2;
        changed.NotifyAll();
    });
    const CMutexLocker lock(mutex);
    turn = 1;
    changed.NotifyOne();
    while (turn != 2)
    {
        changed.Wait(mutex);
    }
    EXPECT_FALSE(IsFree(mutex));
}

TEST(Condition, WaitUntilEndsAtItsMomentAndSaysWhetherTheConditionHolds)
{
    CMutex mutex;
    CCondition changed;
    const auto past = CCondition::Clock::now() - std::chrono::seconds(1);
    const auto soon = CCondition::Clock::now() + std::chrono::milliseconds(20);
    const CMutexLocker lock(mutex);
    EXPECT_FALSE(changed.WaitUntil(mutex, past));
    EXPECT_FALSE(changed.WaitUntil(mutex, soon, [] { return false; }));
    EXPECT_GE(CCondition::Clock::now(), soon);
    EXPECT_TRUE(changed.WaitUntil(mutex, past, [] { return true; }));
    bool isFirstLook = true;
    EXPECT_TRUE(changed.WaitUntil(mutex, past, [&] { return !std::exchange(isFirstLook, false); }));
    EXPECT_FALSE(IsFree(mutex));
}

TEST(SharedMutex, IsSharedByReadersAndHeldByOneWriterAtATime)
{
    CSharedMutex mutex;
    std::barrier<> allRead(kThreads);
    int count = 0;
    RunOnManyThreads([&] {
        {
            const CReadLocker lock(mutex);
            allRead.arrive_and_wait(); // ends only when all of them share it
        }
        for (int i = 0; i < kRounds; ++i)
        {
            const CWriteLocker lock(mutex);
            ++count;
        }
    });
    EXPECT_EQ(count, kThreads * kRounds);
}

} // namespace
} // namespace ZoVelkor::Testing
