#pragma once

#include <cstdint>

namespace ZoVelkor::Benchmarks
{

/// Heap allocations of this thread since it started, whoever asked for them.
std::uint64_t AllocationCount() noexcept;

} // namespace ZoVelkor::Benchmarks
