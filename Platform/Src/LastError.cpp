#include "LastError.h"

namespace
{
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD GetLastError() noexcept
{
    return lastError;
}

void SetLastError(DWORD error) noexcept
{
    lastError = error;
}
