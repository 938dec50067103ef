#include "ThreadBasics.h"

#include <array>
#include <chrono>
#include <cstring>
#include <pthread.h>
#include <thread>

void SetThreadName(const char* name) noexcept
{
    if (name == nullptr)
    {
        return;
    }
    std::array<char, 16> shown{};
    std::strncpy(shown.data(), name, shown.size() - 1);
    ::pthread_setname_np(::pthread_self(), shown.data());
}

void Sleep(DWORD timeoutMs) noexcept
{
    if (timeoutMs == 0)
    {
        std::this_thread::yield();
        return;
    }
    std::this_thread::sleep_until(std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs));
}
