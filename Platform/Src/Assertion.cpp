#include "Assertion.h"

#include <cstdio>
#include <cstdlib>

void ZoAssertionFailed(const char* condition, const char* file, int line, const char* function) noexcept
{
    static_cast<void>(
        std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", file, line, function, condition));
    std::abort();
}
