#include "Event.h"

#include "LastError.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
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

TEST(Event, StaysSetWithManualReset)
{
    const CUniqueEvent event = MakeEvent(true);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
    EXPECT_EQ(SetEvent(event.Get()), TRUE);
    EXPECT_EQ(SetEvent(event.Get()), TRUE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(ResetEvent(event.Get()), TRUE);
    EXPECT_EQ(ResetEvent(event.Get()), TRUE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
}

TEST(Event, ReleasesOneWaitWithAutoReset)
{
    const CUniqueEvent event = MakeEvent(false, true);
    EXPECT_EQ(SetEvent(event.Get()), TRUE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
}

TEST(Event, RefusesHandlesThatAreNotOpen)
{
    const HANDLE closed = MakeEvent(true).Get();
    const HANDLE handles[] = {0, INVALID_HANDLE_VALUE, closed, 0xFFFF, 0x7FFFFFFF, 1UL << 40, ~closed};
    const CUniqueEvent open = MakeEvent(true, true);
    for (const HANDLE handle : handles)
    {
        const HANDLE pair[] = {open.Get(), handle};
        const bool results[] = {
            SetEvent(handle) == FALSE && GetLastError() == ERROR_INVALID_HANDLE,
            ResetEvent(handle) == FALSE && GetLastError() == ERROR_INVALID_HANDLE,
            CloseHandle(handle) == FALSE && GetLastError() == ERROR_INVALID_HANDLE,
            GetEventDescriptor(handle) == -1 && GetLastError() == ERROR_INVALID_HANDLE,
            WaitForMultipleObjects(2, pair, FALSE, 0) == WAIT_FAILED &&
                GetLastError() == ERROR_INVALID_HANDLE,
        };
        for (const bool refused : results)
        {
            EXPECT_TRUE(refused) << handle;
            SetLastError(ERROR_SUCCESS);
        }
    }
}

TEST(Event, RecognisesStaleHandlesForALongTime)
{
    std::set<HANDLE> seen;
    for (int i = 0; i < 20000; ++i)
    {
        const CUniqueEvent event = MakeEvent(true);
        EXPECT_LE(event.Get(), 0x7FFFFFFFU);
        EXPECT_TRUE(seen.insert(event.Get()).second);
    }
}

TEST(Wait, RefusesWrongArguments)
{
    const CUniqueEvent event = MakeEvent(true, true);
    const std::vector<HANDLE> many(MAXIMUM_WAIT_OBJECTS + 1, event.Get());
    const HANDLE twice[] = {event.Get(), event.Get()};
    const struct
    {
        const char* name;
        DWORD count;
        const HANDLE* handles;
        BOOL waitAll;
        DWORD expected;
    } rows[] = {
        {"None",        0,                        many.data(), FALSE, WAIT_FAILED  },
        {"Null",        1,                        nullptr,     FALSE, WAIT_FAILED  },
        {"TooMany",     MAXIMUM_WAIT_OBJECTS + 1, many.data(), FALSE, WAIT_FAILED  },
        {"Most",        MAXIMUM_WAIT_OBJECTS,     many.data(), FALSE, WAIT_OBJECT_0},
        {"TwiceForAny", 2,                        twice,       FALSE, WAIT_OBJECT_0},
        {"TwiceForAll", 2,                        twice,       TRUE,  WAIT_FAILED  },
    };
    for (const auto& row : rows)
    {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(WaitForMultipleObjects(row.count, row.handles, row.waitAll, 0), row.expected) << row.name;
        EXPECT_EQ(GetLastError(), row.expected == WAIT_FAILED ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS);
    }
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

TEST(Wait, ReleasesExactlyOneWaiterForEachSetting)
{
    constexpr int kSettings = 500;
    const CUniqueEvent event = MakeEvent(false);
    const CUniqueEvent released = MakeEvent(false);
    const CUniqueEvent stop = MakeEvent(true);
    const HANDLE handles[] = {event.Get(), stop.Get()};
    std::atomic<int> releases{0};
    {
        std::vector<std::jthread> waiters(4);
        for (auto& waiter : waiters)
        {
            waiter = std::jthread([&] {
                while (WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0)
                {
                    ++releases;
                    SetEvent(released.Get());
                }
            });
        }
        for (int i = 0; i < kSettings; ++i)
        {
            SetEvent(event.Get());
            EXPECT_EQ(WaitForSingleObject(released.Get(), INFINITE), WAIT_OBJECT_0);
        }
        SetEvent(stop.Get());
    }
    EXPECT_EQ(releases, kSettings);
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
DWORD WaitUnderSignals(HANDLE handle, DWORD timeoutMs, int setAfterSignals)
{
    struct sigaction action = {};
    struct sigaction former = {};
    action.sa_handler = CountSignal;
    sigaction(SIGUSR1, &action, &former);
    signalsHandled = 0;
    std::atomic<bool> finished{false};
    DWORD result = WAIT_FAILED;
    std::thread waiter([&] {
        result = WaitForSingleObject(handle, timeoutMs);
        finished = true;
    });
    while (!finished)
    {
        const int handled = signalsHandled;
        pthread_kill(waiter.native_handle(), SIGUSR1);
        while (signalsHandled == handled && !finished)
        {
            std::this_thread::yield();
        }
        if (signalsHandled == setAfterSignals)
        {
            SetEvent(handle);
        }
    }
    waiter.join();
    sigaction(SIGUSR1, &former, nullptr);
    return result;
}

TEST(Wait, GoesOnAfterSignals)
{
    const CUniqueEvent event = MakeEvent(true);
    EXPECT_EQ(WaitUnderSignals(event.Get(), INFINITE, 100), WAIT_OBJECT_0);
    EXPECT_GE(signalsHandled, 100);
    ResetEvent(event.Get());
    EXPECT_EQ(WaitUnderSignals(event.Get(), 50, -1), WAIT_TIMEOUT);
}

TEST(Wait, IsNotDisturbedByClosingItsEvent)
{
    CUniqueEvent event = MakeEvent(true);
    const CUniqueEvent started = MakeEvent(false, true);
    const CUniqueEvent other = MakeEvent(false);
    const HANDLE handles[] = {started.Get(), event.Get(), other.Get()};
    DWORD result = WAIT_FAILED;
    std::jthread waiter([&] {
        while ((result = WaitForMultipleObjects(3, handles, FALSE, INFINITE)) == WAIT_OBJECT_0)
        {}
    });
    while (IsSet(started.Get()))
    {
        std::this_thread::yield();
    }
    event.Reset();
    SetEvent(other.Get());
    waiter.join();
    EXPECT_TRUE(result == WAIT_OBJECT_0 + 2 || result == WAIT_FAILED)
        << "the second wait may begin before or after the closing";
}

TEST(Handles, WorkFromManyThreads)
{
    std::atomic<int> faults{0};
    {
        std::vector<std::jthread> threads(4);
        for (auto& thread : threads)
        {
            thread = std::jthread([&faults] {
                for (int i = 0; i < 500; ++i)
                {
                    const HANDLE event = CreateEvent(FALSE, FALSE);
                    faults += SetEvent(event) == TRUE ? 0 : 1;
                    faults += WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0 ? 0 : 1;
                    faults += CloseHandle(event) == TRUE ? 0 : 1;
                    faults += SetEvent(event) == FALSE ? 0 : 1;
                }
            });
        }
    }
    EXPECT_EQ(faults, 0);
}
} // namespace
