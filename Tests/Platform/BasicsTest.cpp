#include "CUniqueHandle.h"
#include "Interlocked.h"
#include "LastError.h"
#include "ManyThreads.h"
#include "PerformanceCounter.h"
#include "ThreadBasics.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

namespace
{
TEST(ResultCodes, CarryWin32Errors)
{
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_SUCCESS), S_OK);
    EXPECT_EQ(HRESULT_FROM_WIN32(0x1000D), MakeResult(0x8007000D));
    EXPECT_TRUE(FAILED(HRESULT_FROM_WIN32(ERROR_INVALID_DATA)) && SUCCEEDED(S_FALSE));
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

TEST(Interlocked, LosesNoCountBetweenThreads)
{
    LONG value = 0;
    RunOnManyThreads([&value] {
        for (int i = 0; i < 10000; ++i)
        {
            InterlockedIncrement(&value);
        }
    });
    EXPECT_EQ(value, 40000);
}

TEST(PerformanceCounter, CountsTenMillionTicksASecond)
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER before{};
    LARGE_INTEGER after{};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&before);
    Sleep(20);
    QueryPerformanceCounter(&after);
    EXPECT_EQ(frequency.QuadPart, 10'000'000);
    EXPECT_GE(after.QuadPart - before.QuadPart, 199'999) << "20 ms, one tick lost to rounding at most";
    EXPECT_EQ(QueryPerformanceCounter(nullptr), FALSE);
}

int closedSum = 0;
void CloseNumber(int number)
{
    closedSum += number;
}

TEST(UniqueHandle, ClosesWhatItHoldsOnce)
{
    closedSum = 0;
    using CNumber = CUniqueHandle<&CloseNumber, int, -1>;
    {
        CNumber first(1);
        CNumber second(std::move(first));
        first = CNumber(10);
        first = std::move(second);
        EXPECT_EQ(closedSum, 10);
        first.Reset(100);
        EXPECT_EQ(CNumber(1000).Detach(), 1000);
    }
    EXPECT_EQ(closedSum, 111);
}
} // namespace
