#pragma once

#include "CUniqueHandle.h"
#include "Handle.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

/// Wait without a time limit.
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
/// A wait ended by the object with index result - WAIT_OBJECT_0.
inline constexpr DWORD WAIT_OBJECT_0 = 0;
/// A wait ended by its time limit.
inline constexpr DWORD WAIT_TIMEOUT = 258;
/// A wait could not be done; the last error says why.
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
/// Highest number of objects in one wait.
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

/// Owner of an event.
using CUniqueEvent = CUniqueHandle<&CloseHandle, HANDLE, HANDLE{0}>;

/// Makes an event. Threads: all event functions may be called from any thread.
///
/// @param manualReset   nonzero: the event stays set until ResetEvent; 0: it releases one
///                      waiter and resets itself
/// @param initialState  nonzero: the event starts set
/// @return its handle, closed with CloseHandle; 0 on failure with the last error ERROR_TOO_MANY_OPEN_FILES or
///         ERROR_NOT_ENOUGH_MEMORY
[[nodiscard]] ZO_EXPORT HANDLE CreateEvent(BOOL manualReset, BOOL initialState) noexcept;

/// Sets an event; setting a set one changes nothing.
///
/// What the calling thread wrote before is visible to whoever is released.
/// @return TRUE; FALSE with the last error ERROR_INVALID_HANDLE
ZO_EXPORT BOOL SetEvent(HANDLE event) noexcept;

/// Resets an event; resetting a reset one changes nothing. Results as SetEvent.
ZO_EXPORT BOOL ResetEvent(HANDLE event) noexcept;

/// Waits for one event; results as WaitForMultipleObjects.
///
/// A handle that another thread closes meanwhile does not disturb the wait.
/// @param timeoutMs  on the monotonic clock; INFINITE for no limit; 0 only looks, and takes a set
///                   auto-reset event
ZO_EXPORT DWORD WaitForSingleObject(HANDLE event, DWORD timeoutMs) noexcept;

/// Waits for one or for all of several events.
///
/// An auto-reset event that ends a wait is reset by it. A wait for all takes the events in one step and
/// leaves every one as it is until all are set.
/// @param events     count handles; a wait for all refuses the same event twice
/// @param count      1 to MAXIMUM_WAIT_OBJECTS
/// @param waitAll    nonzero: wait until all are set
/// @param timeoutMs  on the monotonic clock, INFINITE for no limit, 0 only looks
/// @return WAIT_OBJECT_0 plus the index of the event, of several set events the lowest (WAIT_OBJECT_0 for a
///         wait for all); WAIT_TIMEOUT; WAIT_FAILED with the last error ERROR_INVALID_HANDLE,
///         ERROR_INVALID_PARAMETER or ERROR_NOT_ENOUGH_MEMORY
ZO_EXPORT DWORD WaitForMultipleObjects(DWORD count,
                                       const HANDLE* events,
                                       BOOL waitAll,
                                       DWORD timeoutMs) noexcept;

/// Gives the descriptor that is readable (POLLIN) while the event is set, for waits on events and sockets
/// together.
///
/// It may be polled until the event is closed, but neither read, written nor closed: an auto-reset event is
/// taken with WaitForSingleObject and time limit 0.
/// @return the descriptor; -1 with the last error ERROR_INVALID_HANDLE
[[nodiscard]] ZO_EXPORT int GetEventDescriptor(HANDLE event) noexcept;
