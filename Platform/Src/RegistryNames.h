#pragma once

#include "PlatformTypes.h"

#include <string>
#include <string_view>
#include <vector>

/// A name as the database holds it, UTF-8: as written, and in capitals for comparison.
struct RegistryName
{
    std::string written;
    std::string folded;
};

/// @return ERROR_SUCCESS; ERROR_NO_UNICODE_TRANSLATION for values that are not characters
DWORD ToUtf8(std::wstring_view text, std::string& bytes);

std::wstring FromUtf8(std::string_view bytes);

/// The name of a value; null is the empty name.
DWORD ToValueName(const wchar_t* text, RegistryName& name);

/// The keys of a path, none for null and the empty path; results as in Registry.h.
DWORD SplitKeyPath(const wchar_t* path, std::vector<RegistryName>& names);
