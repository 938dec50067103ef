#pragma once

#include "RegistryTree.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// A value and the line of the file where it stands.
struct tagFileValue
{
    tagRegistryValue value;
    std::size_t line;
};

/// A key and the line of the file where it stands.
struct tagFileKey
{
    tagRegistryPath path;
    std::size_t line;
    std::vector<tagFileValue> values;
};

/// The text form of trees: the same trees always give the same text.
std::string FormatRegistryFile(std::span<const tagRegistryTree> trees);

/// Takes the text form apart.
///
/// @param name  of the file, for messages
/// @throws CToolError (Failed) with the line when anything is wrong with the file
std::vector<tagFileKey> ParseRegistryFile(std::string_view bytes, const std::string& name);

} // namespace ZoVelkor::Tools
