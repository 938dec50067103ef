#pragma once

#include "Registry.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Tools
{

/// Says what is wrong with a text, but not where it stands.
class CTextFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// @throws CTextFault for what is not UTF-8
std::wstring WideText(std::string_view utf8);

/// What is no character becomes U+FFFD.
std::string Utf8Text(std::wstring_view text);

/// Whether a text consists of characters alone, so that UTF-8 can hold it.
bool IsText(std::wstring_view text) noexcept;

/// Whether a character cannot be seen, or moves others on a terminal; also for values that are no character.
bool IsHidden(wchar_t character) noexcept;

/// A text in quotes, on one line, from which TakeQuotedText makes the same text whatever is in it.
std::string QuotedText(std::wstring_view text);

/// Takes a text in quotes from the beginning of a line.
///
/// @throws CTextFault
std::wstring TakeQuotedText(std::wstring_view& line);

/// @throws CTextFault when a value cannot have this name
void CheckValueName(std::wstring_view name);

/// Names are compared in this form.
std::wstring Folded(std::wstring_view name);

/// A place in the registry.
struct RegistryPath
{
    HKEY root = 0;
    std::wstring keys; ///< below the root, as the registry functions take them; may be empty

    /// The key directly below with a name.
    RegistryPath Below(const std::wstring& name) const;
};

/// All roots, in the order of their handles.
std::vector<RegistryPath> AllRoots();

/// Takes a path apart: the name of a root, and keys behind backslashes. When the first separator is a slash,
/// slashes separate as well; otherwise they belong to the names. \u{HEX} is a character by its number.
///
/// @throws CTextFault
RegistryPath ParseRegistryPath(std::wstring_view text);

/// The path on one line, as ParseRegistryPath takes it.
std::string PathText(const RegistryPath& path);

/// The name of a key as it stands in a path.
std::string KeyNameText(std::wstring_view name);

} // namespace ZoVelkor::Tools
