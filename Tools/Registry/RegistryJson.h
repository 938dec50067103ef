#pragma once

#include "RegistryTree.h"

#include <string>

namespace ZoVelkor::Tools
{

/// A text as a JSON string.
///
/// @param text  characters only
std::string JsonText(std::wstring_view text);

/// The members "type" and "data" of a value, or "type" and "hex" when its data are bytes or have not the form
/// of the type. A type without a name is a number.
std::string JsonMembers(const RegistryValue& value);

/// A value with its name as a JSON object.
std::string JsonValue(const RegistryValue& value);

/// A tree of keys as nested JSON objects; "unread" counts keys that were too deep.
std::string JsonTree(const RegistryPath& path, const RegistryKey& key);

} // namespace ZoVelkor::Tools
