#pragma once

#include "PlatformTypes.h"
#include "ZoExport.h"

/// Names an object of the platform. 0 names nothing; values fit into 31 bits, and the value of a closed
/// handle does not come back for a long time.
using HANDLE = unsigned long;

/// A value that no object ever has, for those who need one beside 0.
inline constexpr HANDLE INVALID_HANDLE_VALUE = ~0UL;

/// Closes a handle; waits that are under way on its object go on undisturbed.
///
/// Threads: any.
/// @return TRUE; FALSE with the last error ERROR_INVALID_HANDLE when the handle is not open
ZO_EXPORT BOOL CloseHandle(HANDLE handle) noexcept;
