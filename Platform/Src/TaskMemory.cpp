#include "TaskMemory.h"

#include <cstdlib>

void* CoTaskMemAlloc(std::size_t size) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}

void CoTaskMemFree(void* memory) noexcept
{
    std::free(memory);
}
