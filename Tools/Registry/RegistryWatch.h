#pragma once

#include "RegistryTree.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

enum class tagRegistryEvent : std::uint8_t
{
    KeyMade,
    KeyDeleted, ///< with all that it held
    ValueSet,
    ValueDeleted
};

/// What is different between two readings of a tree.
struct tagRegistryDifference
{
    tagRegistryEvent event;
    tagRegistryPath path;
    tagRegistryValue value; ///< of events of values
};

/// The differences of two readings of the same trees, keys before what they hold.
std::vector<tagRegistryDifference> FindDifferences(std::span<const tagRegistryTree> former,
                                                   std::span<const tagRegistryTree> now);

/// One difference on a line of its own, as text or as a JSON object.
std::string DifferenceText(const tagRegistryDifference& difference);
std::string JsonDifference(const tagRegistryDifference& difference);

} // namespace ZoVelkor::Tools
