#include "TaskMemory.h"

#include <cstdlib>

void* CoTaskMemAlloc(std::size_t size) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}

void* CoTaskMemRealloc(void* memory, std::size_t size) noexcept
{
    if (size == 0)
    {
        if (memory != nullptr)
        {
            std::free(memory);
            return nullptr;
        }
        return CoTaskMemAlloc(0);
    }
    return std::realloc(memory, size);
}

void CoTaskMemFree(void* memory) noexcept
{
    std::free(memory);
}
