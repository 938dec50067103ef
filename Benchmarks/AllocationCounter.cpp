#include "AllocationCounter.h"

#include <cstddef>

namespace
{

thread_local std::uint64_t allocations = 0;

}

// The program's own definitions take the place of the C library's, also for the shared libraries that it
// loads.
extern "C"
{
    void* __libc_malloc(std::size_t size);
    void* __libc_calloc(std::size_t count, std::size_t size);
    void* __libc_realloc(void* memory, std::size_t size);

    void* malloc(std::size_t size)
    {
        ++allocations;
        return __libc_malloc(size);
    }

    void* calloc(std::size_t count, std::size_t size)
    {
        ++allocations;
        return __libc_calloc(count, size);
    }

    void* realloc(void* memory, std::size_t size)
    {
        ++allocations;
        return __libc_realloc(memory, size);
    }
}

namespace ZoVelkor::Benchmarks
{

std::uint64_t AllocationCount() noexcept
{
    return allocations;
}

} // namespace ZoVelkor::Benchmarks
