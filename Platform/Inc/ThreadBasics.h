#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// Names the calling thread for debuggers and system tools, which show the first 15 bytes; null changes
/// nothing.
ZO_EXPORT void SetThreadName(const char* name) noexcept;

/// Rests for at least the given time on the monotonic clock; 0 gives way to other threads.
ZO_EXPORT void Sleep(DWORD timeoutMs) noexcept;
