#pragma once

/// Marks what a shared library of this project shows to the outside; everything else is hidden.
#define ZO_EXPORT __attribute__((visibility("default")))
