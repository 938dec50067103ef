#include "Event.h"

#include "CEvent.h"
#include "CHandleTable.h"
#include "LastError.h"

#include <cerrno>
#include <memory>
#include <new>
#include <sys/eventfd.h>
#include <utility>

namespace
{
/// Applies an operation to an open event.
template <class TOperation>
BOOL WithEvent(HANDLE handle, TOperation operation) noexcept
{
    const std::shared_ptr<CEvent> event = CEventTable::Instance().Find(handle);
    if (event == nullptr)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    operation(*event);
    return TRUE;
}
} // namespace

HANDLE CreateEvent(BOOL manualReset, BOOL initialState) noexcept
try
{
    // Not blocking: of several waiters that poll wakes for one setting, all but one must come away with
    // nothing.
    CUniqueDescriptor descriptor(::eventfd(initialState != FALSE ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!descriptor)
    {
        const bool isTooMany = errno == EMFILE || errno == ENFILE;
        SetLastError(isTooMany ? ERROR_TOO_MANY_OPEN_FILES : ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    auto event = std::make_shared<CEvent>(std::move(descriptor), manualReset != FALSE);
    const HANDLE handle = CEventTable::Instance().Insert(std::move(event));
    if (handle == 0)
    {
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
    }
    return handle;
}
catch (const std::bad_alloc&)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}

BOOL SetEvent(HANDLE event) noexcept
{
    return WithEvent(event, [](CEvent& target) { target.Set(); });
}

BOOL ResetEvent(HANDLE event) noexcept
{
    return WithEvent(event, [](CEvent& target) { target.Reset(); });
}

int GetEventDescriptor(HANDLE event) noexcept
{
    int descriptor = -1;
    WithEvent(event, [&descriptor](const CEvent& target) { descriptor = target.Descriptor(); });
    return descriptor;
}

BOOL CloseHandle(HANDLE handle) noexcept
try
{
    if (CEventTable::Instance().Remove(handle) != nullptr)
    {
        return TRUE;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}
catch (const std::bad_alloc&)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}
