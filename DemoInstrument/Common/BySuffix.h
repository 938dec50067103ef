#pragma once

#include <cstddef>

namespace ZoVelkor::Demo
{

/// An element of an array by a numeric suffix, which counts from 1; throws for one outside.
template <class TArray>
auto& BySuffix(TArray& elements, long suffix)
{
    return elements.at(static_cast<std::size_t>(suffix) - 1);
}

} // namespace ZoVelkor::Demo
