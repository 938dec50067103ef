#pragma once

#include <string>

/// Narrow text of the platform, in code page 0 where it is converted. It owns its characters and may hold
/// zeros.
using CAtlStringA = std::string;
