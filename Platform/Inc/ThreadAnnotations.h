#pragma once

// Locking rules in a form that clang checks (-Wthread-safety); other compilers see nothing.
#if defined(__clang__)
/// An attribute of the check, by its name.
#define ZO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZO_THREAD_ANNOTATION(x)
#endif

/// The class is a lock.
#define ZO_CAPABILITY(name) ZO_THREAD_ANNOTATION(capability(name))
/// The class holds a lock for the length of a scope.
#define ZO_SCOPED_CAPABILITY ZO_THREAD_ANNOTATION(scoped_lockable)
/// The field may be touched only with the lock held.
#define ZO_GUARDED_BY(lock) ZO_THREAD_ANNOTATION(guarded_by(lock))
/// What the field points to may be touched only with the lock held.
#define ZO_PT_GUARDED_BY(lock) ZO_THREAD_ANNOTATION(pt_guarded_by(lock))
/// The function is called with the lock held.
#define ZO_REQUIRES(...) ZO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// The function is called with the lock held, maybe shared with others.
#define ZO_REQUIRES_SHARED(...) ZO_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
/// The function is called without the lock.
#define ZO_EXCLUDES(...) ZO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// The function takes the lock and returns with it.
#define ZO_ACQUIRE(...) ZO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
/// The function takes the lock, which others may share, and returns with it.
#define ZO_ACQUIRE_SHARED(...) ZO_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
/// The function gives the lock back.
#define ZO_RELEASE(...) ZO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// The function gives a shared lock back.
#define ZO_RELEASE_SHARED(...) ZO_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
/// The function takes the lock when it returns the given value.
#define ZO_TRY_ACQUIRE(...) ZO_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
/// From this call on the check takes the lock for held.
#define ZO_ASSERT_CAPABILITY(lock) ZO_THREAD_ANNOTATION(assert_capability(lock))
/// The function returns the lock.
#define ZO_RETURN_CAPABILITY(lock) ZO_THREAD_ANNOTATION(lock_returned(lock))
/// Whoever holds both locks has taken this one first.
#define ZO_ACQUIRED_BEFORE(...) ZO_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
/// The check is switched off for one function; say why beside it.
#define ZO_NO_THREAD_SAFETY_ANALYSIS ZO_THREAD_ANNOTATION(no_thread_safety_analysis)
