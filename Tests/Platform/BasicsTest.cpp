#include "CUniqueHandle.h"
#include "Interlocked.h"
#include "LastError.h"
#include "PerformanceCounter.h"
#include "TaskMemory.h"
#include "ThreadBasics.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{
TEST(ResultCodes, FollowThePlatformsNumbering)
{
    const std::pair<HRESULT, std::uint32_t> rows[] = {
        {E_NOTIMPL,           0x80000001},
        {E_OUTOFMEMORY,       0x80000002},
        {E_INVALIDARG,        0x80000003},
        {E_NOINTERFACE,       0x80000004},
        {E_POINTER,           0x80000005},
        {E_HANDLE,            0x80000006},
        {E_ABORT,             0x80000007},
        {E_FAIL,              0x80000008},
        {E_ACCESSDENIED,      0x80000009},
        {E_PENDING,           0x8000000A},
        {E_UNEXPECTED,        0x8000FFFF},
        {DISP_E_TYPEMISMATCH, 0x80020005},
        {DISP_E_OVERFLOW,     0x8002000A},
    };
    for (const auto& [result, pattern] : rows)
    {
        EXPECT_EQ(static_cast<std::uint32_t>(result), pattern);
        EXPECT_TRUE(FAILED(result));
    }
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_SUCCESS), S_OK);
    EXPECT_EQ(static_cast<std::uint32_t>(HRESULT_FROM_WIN32(0x1000D)), 0x8007000DU);
}

TEST(LastError, BelongsToItsThread)
{
    SetLastError(ERROR_INVALID_HANDLE);
    std::jthread([] {
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        SetLastError(ERROR_BUSY);
    }).join();
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Interlocked, GivesNewOrFormerValue)
{
    LONG value = std::numeric_limits<LONG>::max();
    EXPECT_EQ(InterlockedIncrement(&value), std::numeric_limits<LONG>::min());
    EXPECT_EQ(InterlockedDecrement(&value), std::numeric_limits<LONG>::max());
    EXPECT_EQ(InterlockedExchange(&value, 5), std::numeric_limits<LONG>::max());
    EXPECT_EQ(InterlockedExchangeAdd(&value, 3), 5);
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 7), 8);
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 8), 8);
    EXPECT_EQ(value, 1);
}

TEST(Interlocked, LosesNoCountBetweenThreads)
{
    LONG value = 0;
    {
        std::vector<std::jthread> threads(4);
        for (auto& thread : threads)
        {
            thread = std::jthread([&value] {
                for (int i = 0; i < 10000; ++i)
                {
                    InterlockedIncrement(&value);
                }
            });
        }
    }
    EXPECT_EQ(value, 40000);
}

TEST(PerformanceCounter, CountsTenMillionTicksASecond)
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER before{};
    LARGE_INTEGER after{};
    EXPECT_EQ(QueryPerformanceFrequency(&frequency), TRUE);
    EXPECT_EQ(frequency.QuadPart, 10'000'000);
    EXPECT_EQ(QueryPerformanceCounter(&before), TRUE);
    Sleep(20);
    EXPECT_EQ(QueryPerformanceCounter(&after), TRUE);
    EXPECT_GE(after.QuadPart - before.QuadPart, 199'999) << "20 ms, one tick lost to rounding at most";
    EXPECT_EQ(QueryPerformanceCounter(nullptr), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(TaskMemory, GrowsAndFrees)
{
    auto* memory = static_cast<char*>(CoTaskMemAlloc(4));
    std::memcpy(memory, "abc", 4);
    memory = static_cast<char*>(CoTaskMemRealloc(memory, 4096));
    EXPECT_STREQ(memory, "abc");
    EXPECT_EQ(CoTaskMemRealloc(memory, 0), nullptr);
    void* nothing = CoTaskMemAlloc(0);
    EXPECT_NE(nothing, nullptr);
    CoTaskMemFree(nothing);
    CoTaskMemFree(nullptr);
}

TEST(Thread, HasANumberAndAName)
{
    DWORD other = 0;
    std::array<char, 16> name{};
    std::jthread([&] {
        other = GetCurrentThreadId();
        SetThreadName("AVeryLongThreadName");
        SetThreadName(nullptr);
        pthread_getname_np(pthread_self(), name.data(), name.size());
    }).join();
    EXPECT_NE(other, GetCurrentThreadId());
    EXPECT_STREQ(name.data(), "AVeryLongThread");
}

int closedSum = 0;
void CloseNumber(int number)
{
    closedSum += number;
}

TEST(UniqueHandle, ClosesWhatItHoldsOnce)
{
    using CNumber = CUniqueHandle<&CloseNumber, int, -1>;
    {
        CNumber first(1);
        CNumber second(std::move(first));
        EXPECT_FALSE(first);
        first = CNumber(10);
        first = std::move(second);
        EXPECT_EQ(closedSum, 10);
        first.Reset(100);
        EXPECT_EQ(closedSum, 11);
        EXPECT_EQ(CNumber(1000).Detach(), 1000);
    }
    EXPECT_EQ(closedSum, 111);
}
} // namespace
