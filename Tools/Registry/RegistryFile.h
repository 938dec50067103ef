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
struct FileValue
{
    RegistryValue value;
    std::size_t line;
};

/// A key and the line of the file where it stands.
struct FileKey
{
    RegistryPath path;
    std::size_t line;
    std::vector<FileValue> values;
};

/// The text form of trees: the same trees always give the same text.
std::string FormatRegistryFile(std::span<const RegistryTree> trees);

/// Takes the text form apart.
///
/// @param name  of the file, for messages
/// @throws CToolError (Failed) with the line when anything is wrong with the file
std::vector<FileKey> ParseRegistryFile(std::string_view bytes, const std::string& name);

} // namespace ZoVelkor::Tools
