#include "Event.h"

#include "LastError.h"
#include "ManyThreads.h"

#include <climits>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <poll.h>
#include <pthread.h>
#include <set>
#include <thread>
#include <vector>

namespace
{
using Clock = std::chrono::steady_clock;

bool IsSet(HANDLE event)
{
    pollfd poll{GetEventDescriptor(event), POLLIN, 0};
    return ::poll(&poll, 1, 0) == 1;
}

CUniqueEvent MakeEvent(bool manualReset, bool initialState = false)
{
    CUniqueEvent event(CreateEvent(manualReset, initialState));
    EXPECT_TRUE(event);
    return event;
}

TEST(Event, StaysSetWithManualResetAndReleasesOneWaitWithAutoReset)
{
    for (const bool manualReset : {true, false})
    {
        const CUniqueEvent event = MakeEvent(manualReset);
        EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
        EXPECT_EQ(SetEvent(event.Get()), TRUE);
        EXPECT_EQ(SetEvent(event.Get()), TRUE);
        EXPECT_EQ(WaitForSingleObject(event.Get(), INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(event.Get(), 0), manualReset ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
        EXPECT_EQ(ResetEvent(event.Get()), TRUE);
        EXPECT_EQ(ResetEvent(event.Get()), TRUE);
        EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
    }
}

TEST(Event, RefusesHandlesThatAreNotOpen)
{
    const HANDLE closed = MakeEvent(true).Get();
    const HANDLE handles[] = {0, INVALID_HANDLE_VALUE, closed, 0xFFFF, 0x7FFFFFFF, 1UL << 40, ~closed};
    const CUniqueEvent open = MakeEvent(true, true);
    for (const HANDLE handle : handles)
    {
        const HANDLE pair[] = {open.Get(), handle};
        const std::function<bool()> refusals[] = {
            [&] { return SetEvent(handle) == FALSE; },
            [&] { return ResetEvent(handle) == FALSE; },
            [&] { return CloseHandle(handle) == FALSE; },
            [&] { return GetEventDescriptor(handle) == -1; },
            [&] { return WaitForMultipleObjects(2, pair, FALSE, 0) == WAIT_FAILED; },
        };
        for (const auto& isRefused : refusals)
        {
            SetLastError(ERROR_SUCCESS);
            EXPECT_TRUE(isRefused() && GetLastError() == ERROR_INVALID_HANDLE) << handle;
        }
    }
}

TEST(Event, RecognisesStaleHandlesForALongTime)
{
    std::set<HANDLE> stale;
    for (int i = 0; i < 40000; ++i)
    {
        const CUniqueEvent event = MakeEvent(true);
        EXPECT_LE(event.Get(), 0x7FFFFFFFU);
        EXPECT_TRUE(stale.insert(event.Get()).second);
    }
    std::vector<CUniqueEvent> inTheirSlots(500);
    std::ranges::generate(inTheirSlots, [] { return MakeEvent(true); });
    EXPECT_TRUE(std::ranges::all_of(stale, [](HANDLE handle) { return SetEvent(handle) == FALSE; }));
}

TEST(Wait, RefusesWrongArguments)
{
    const CUniqueEvent event = MakeEvent(true, true);
    const std::vector<HANDLE> many(MAXIMUM_WAIT_OBJECTS + 1, event.Get());
    const auto look = [](DWORD count, const HANDLE* handles, BOOL waitAll) {
        SetLastError(ERROR_SUCCESS);
        const DWORD result = WaitForMultipleObjects(count, handles, waitAll, 0);
        return result == WAIT_FAILED ? GetLastError() : result;
    };
    EXPECT_EQ(look(0, many.data(), FALSE), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(look(1, nullptr, FALSE), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(look(MAXIMUM_WAIT_OBJECTS + 1, many.data(), FALSE), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(look(MAXIMUM_WAIT_OBJECTS, many.data(), FALSE), WAIT_OBJECT_0);
    EXPECT_EQ(look(2, many.data(), TRUE), ERROR_INVALID_PARAMETER) << "the same event twice";
}

TEST(Wait, GivesTheLowestSetIndexAndTakesNoOther)
{
    const CUniqueEvent events[] = {MakeEvent(false), MakeEvent(false, true), MakeEvent(false, true)};
    const HANDLE handles[] = {events[0].Get(), events[1].Get(), events[2].Get()};
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, INFINITE), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, 0), WAIT_TIMEOUT);
}

TEST(Wait, ForAllTakesEverythingOrNothing)
{
    std::vector<CUniqueEvent> events;
    std::vector<HANDLE> handles;
    for (DWORD i = 0; i < MAXIMUM_WAIT_OBJECTS; ++i)
    {
        events.push_back(MakeEvent(i % 2 == 0, i != 7));
        handles.push_back(events.back().Get());
    }
    EXPECT_EQ(WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS, handles.data(), TRUE, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(IsSet(handles[1])) << "an incomplete wait leaves auto-reset events set";
    EXPECT_EQ(SetEvent(handles[7]), TRUE);
    EXPECT_EQ(WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS, handles.data(), TRUE, INFINITE), WAIT_OBJECT_0);
    for (DWORD i = 0; i < MAXIMUM_WAIT_OBJECTS; ++i)
    {
        EXPECT_EQ(IsSet(handles[i]), i % 2 == 0) << i;
    }
}

TEST(Wait, ForAllSleepsUntilTheLastEventComesThoughOthersGoAndReturn)
{
    const CUniqueEvent first = MakeEvent(false, true);
    const CUniqueEvent second = MakeEvent(false);
    const HANDLE handles[] = {first.Get(), second.Get()};
    DWORD result = WAIT_FAILED;
    std::jthread waiter([&] { result = WaitForMultipleObjects(2, handles, TRUE, INFINITE); });
    EXPECT_EQ(WaitForSingleObject(first.Get(), INFINITE), WAIT_OBJECT_0) << "the waiter has not taken it";
    SetEvent(second.Get());
    SetEvent(first.Get());
    waiter.join();
    EXPECT_EQ(result, WAIT_OBJECT_0);
    EXPECT_FALSE(IsSet(first.Get()) || IsSet(second.Get()));
}

TEST(Wait, CarriesWhatTheSetterWrote)
{
    for (const bool manualReset : {true, false})
    {
        const CUniqueEvent event = MakeEvent(manualReset);
        int message = 0;
        std::jthread setter([&] {
            message = 42;
            SetEvent(event.Get());
        });
        EXPECT_EQ(WaitForSingleObject(event.Get(), INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(message, 42);
    }
}

TEST(Wait, ReleasesExactlyOneOfManyWaitersForEachSetting)
{
    constexpr int kSettings = 5000;
    const CUniqueEvent event = MakeEvent(false);
    const CUniqueEvent stop = MakeEvent(true);
    const HANDLE handles[] = {event.Get(), stop.Get()};
    std::atomic<int> released{0};
    std::jthread setter([&] {
        for (int i = 0; i < kSettings; ++i)
        {
            SetEvent(event.Get());
            while (IsSet(event.Get()))
            {
                std::this_thread::yield();
            }
        }
        SetEvent(stop.Get());
    });
    RunOnManyThreads([&] {
        while (WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0)
        {
            ++released;
        }
    });
    EXPECT_EQ(released, kSettings);
}

TEST(Wait, EndsAtItsDeadline)
{
    const CUniqueEvent event = MakeEvent(true);
    const HANDLE handle = event.Get();
    for (const BOOL waitAll : {FALSE, TRUE})
    {
        const auto start = Clock::now();
        EXPECT_EQ(WaitForMultipleObjects(1, &handle, waitAll, 20), WAIT_TIMEOUT);
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(20));
    }
}

std::atomic<int> signalsHandled{0};
void CountSignal(int /*number*/)
{
    ++signalsHandled;
}

/// Interrupts the waiter until it has finished: a wait that began again after each signal would never end.
DWORD WaitUnderSignals(HANDLE handle, DWORD timeoutMs, int setAfterSignals = INT_MAX)
{
    std::signal(SIGUSR1, CountSignal);
    signalsHandled = 0;
    std::atomic<bool> finished{false};
    DWORD result = WAIT_FAILED;
    std::thread waiter([&] {
        result = WaitForSingleObject(handle, timeoutMs);
        finished = true;
    });
    while (!finished)
    {
        pthread_kill(waiter.native_handle(), SIGUSR1);
        std::this_thread::yield();
        if (signalsHandled >= setAfterSignals)
        {
            SetEvent(handle);
        }
    }
    waiter.join();
    std::signal(SIGUSR1, SIG_DFL);
    return result;
}

TEST(Wait, GoesOnAfterSignals)
{
    const CUniqueEvent event = MakeEvent(false);
    EXPECT_EQ(WaitUnderSignals(event.Get(), INFINITE, 100), WAIT_OBJECT_0);
    ResetEvent(event.Get());
    EXPECT_EQ(WaitUnderSignals(event.Get(), 50), WAIT_TIMEOUT);
}

TEST(Wait, OutlivesTheClosingOfItsEvent)
{
    for (int round = 0; round < 100; ++round)
    {
        CUniqueEvent closed = MakeEvent(true);
        const CUniqueEvent other = MakeEvent(true);
        const HANDLE handles[] = {closed.Get(), other.Get()};
        DWORD result = WAIT_TIMEOUT;
        std::jthread waiter([&] { result = WaitForMultipleObjects(2, handles, FALSE, INFINITE); });
        closed.Reset();
        SetEvent(other.Get());
        waiter.join();
        EXPECT_TRUE(result == WAIT_OBJECT_0 + 1 || result == WAIT_FAILED) << "begun before or after";
    }
}

TEST(Handles, WorkFromManyThreads)
{
    std::atomic<int> faults{0};
    RunOnManyThreads([&faults] {
        for (int i = 0; i < 500; ++i)
        {
            const HANDLE event = CreateEvent(FALSE, FALSE);
            faults += SetEvent(event) == TRUE ? 0 : 1;
            faults += WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0 ? 0 : 1;
            faults += CloseHandle(event) == TRUE ? 0 : 1;
            faults += SetEvent(event) == FALSE ? 0 : 1;
        }
    });
    EXPECT_EQ(faults, 0);
}
} // namespace
