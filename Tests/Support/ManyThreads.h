#pragma once

#include <thread>
#include <vector>

/// Runs a body on four threads at once and waits for all.
template <class TBody>
void RunOnManyThreads(TBody body)
{
    std::vector<std::jthread> threads(4);
    for (auto& thread : threads)
    {
        thread = std::jthread(body);
    }
}
