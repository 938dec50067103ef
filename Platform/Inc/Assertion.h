#pragma once

#include "ZoExport.h"

/// Reports a broken precondition on stderr, in the wording of assert, and aborts the process (SIGABRT).
///
/// The way out of ZO_ASSERT. No destructor runs and nothing is written out: what is on its way to the
/// registry is a transaction that did not happen.
/// @param condition  the condition that does not hold, as text
/// @param file       where it was checked, with line and function
[[noreturn]] ZO_EXPORT void
ZoAssertionFailed(const char* condition, const char* file, int line, const char* function) noexcept;

/// Checks a precondition in every build, release builds included: what the caller did wrong would otherwise
/// corrupt memory or lose data.
///
/// The condition is evaluated exactly once; the macro is an expression of type void. It is for mistakes of
/// the program alone; what a user or a peer can cause is answered with a result.
#define ZO_ASSERT(condition)                                                                                 \
    ((condition) ? static_cast<void>(0)                                                                      \
                 : ZoAssertionFailed(#condition, __FILE__, __LINE__, static_cast<const char*>(__func__)))
