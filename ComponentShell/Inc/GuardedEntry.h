#pragma once

#include "CShellError.h"
#include "PlatformTypes.h"
#include "ZoExport.h"

#include <type_traits>
#include <utility>

namespace ZoVelkor
{
/// Maps the exception being handled to a result; call it from a catch clause only.
///
/// The one place where exceptions become results. Threads: any.
/// @return the result of a CShellError (E_FAIL where that is a success code), E_OUTOFMEMORY for
///         std::bad_alloc, else E_FAIL. What did not come from ThrowError is reported here, because nobody
///         else has.
ZO_EXPORT HRESULT ResultOfCurrentException() noexcept;

/// Runs the body of an interface operation; no exception gets out.
///
/// @param body  callable without arguments that returns an HRESULT
/// @return the body's result, or ResultOfCurrentException()
template <class TBody>
[[nodiscard]] HRESULT GuardedEntry(TBody&& body) noexcept
{
    static_assert(std::is_same_v<std::invoke_result_t<TBody>, HRESULT>, "the body returns an HRESULT");
    try
    {
        return std::forward<TBody>(body)();
    }
    catch (...)
    {
        return ResultOfCurrentException();
    }
}

/// The same for an operation whose documented outcome is a raised internal error.
///
/// @throws CShellError as the body threw it, and nothing else
template <class TBody>
[[nodiscard]] HRESULT GuardedRaisingEntry(TBody&& body)
{
    static_assert(std::is_same_v<std::invoke_result_t<TBody>, HRESULT>, "the body returns an HRESULT");
    try
    {
        return std::forward<TBody>(body)();
    }
    catch (const CShellError&)
    {
        throw;
    }
    catch (...)
    {
        return ResultOfCurrentException();
    }
}
} // namespace ZoVelkor
