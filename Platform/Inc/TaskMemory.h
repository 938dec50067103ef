#pragma once

#include "ZoExport.h"

#include <cstddef>

/// Allocates memory that crosses interfaces and is freed by its receiver; null when memory is short.
///
/// A size of 0 gives a pointer that must be freed too.
[[nodiscard]] ZO_EXPORT void* CoTaskMemAlloc(std::size_t size) noexcept;

/// Frees task memory; null is allowed.
ZO_EXPORT void CoTaskMemFree(void* memory) noexcept;
