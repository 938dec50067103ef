#pragma once

#include "RegistryTree.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

enum class RegistryEvent : std::uint8_t
{
    KeyMade,
    KeyDeleted, ///< with all that it held
    ValueSet,
    ValueDeleted
};

/// What is different between two readings of a tree.
struct RegistryDifference
{
    RegistryEvent event;
    RegistryPath path;
    RegistryValue value; ///< of events of values
};

/// The differences of two readings of the same trees, keys before what they hold.
std::vector<RegistryDifference> FindDifferences(std::span<const RegistryTree> former,
                                                std::span<const RegistryTree> now);

/// One difference on a line of its own, as text or as a JSON object.
std::string DifferenceText(const RegistryDifference& difference);
std::string JsonDifference(const RegistryDifference& difference);

} // namespace ZoVelkor::Tools
