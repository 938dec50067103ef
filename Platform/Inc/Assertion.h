#pragma once

#include "ZoExport.h"

/// Reports a broken precondition on stderr, in the wording of assert, and aborts the process.
///
/// @param condition  the condition that does not hold, as text
[[noreturn]] ZO_EXPORT void
ZoAssertionFailed(const char* condition, const char* file, int line, const char* function) noexcept;

/// Checks a precondition in every build, release builds included: what the caller did wrong would otherwise
/// corrupt memory or lose data.
#define ZO_ASSERT(condition)                                                                                 \
    ((condition) ? static_cast<void>(0)                                                                      \
                 : ZoAssertionFailed(#condition, __FILE__, __LINE__, static_cast<const char*>(__func__)))
