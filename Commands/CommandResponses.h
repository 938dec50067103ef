#pragma once

#include "CCommandCall.h"
#include "CommandWords.h"
#include "ZoExport.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZoVelkor::Commands
{

/// Bytes that a query answers as a definite-length block (IEEE 488.2 section 8.7.9), borrowed.
struct BlockResult
{
    std::span<const std::byte> bytes; ///< all of the block
};

/// Response data that is well formed already, such as an expression (IEEE 488.2 section 8.7.11).
struct AsciiResult
{
    std::string text; ///< as it is written
};

/// @cond machinery
ZO_EXPORT HRESULT WriteInteger(CCommandCall& call, std::int64_t value);
ZO_EXPORT HRESULT WriteUnsigned(CCommandCall& call, std::uint64_t value);
/// A string in quotes; -200 and a report for one with a line feed, which would end the response.
ZO_EXPORT HRESULT WriteString(CCommandCall& call, std::string_view text);
ZO_EXPORT HRESULT WriteAscii(CCommandCall& call, std::string_view text);
ZO_EXPORT HRESULT WriteBlock(CCommandCall& call, std::span<const std::byte> bytes);
/// Numbers in the data format of the remote path.
ZO_EXPORT HRESULT WriteNumbers(CCommandCall& call, std::span<const double> values);

template <class T>
inline constexpr bool kIsTuple = false;
template <class... T>
inline constexpr bool kIsTuple<std::tuple<T...>> = true;
template <class T, class U>
inline constexpr bool kIsTuple<std::pair<T, U>> = true;

/// A run of numbers in memory.
template <class T>
concept NumberRange = requires(const T& values)
{
    std::span(values);
}
&&!std::convertible_to<T, std::string_view> &&
    std::is_arithmetic_v<typename decltype(std::span(std::declval<const T&>()))::value_type>;

/// Writes a handler's result, formatted as its type demands.
template <class T>
HRESULT WriteResult(CCommandCall& call, const T& result)
{
    if constexpr (!kIsTuple<T>)
    {
        if (const HRESULT begun = call.BeginItem(); FAILED(begun))
        {
            return call.Pool().SetScpiExecutionError("");
        }
    }
    if constexpr (std::same_as<T, bool>)
    {
        return call.Pool().BooleanResponse(result);
    }
    else if constexpr (std::is_floating_point_v<T>)
    {
        return call.Pool().DoubleResponse(static_cast<double>(result));
    }
    else if constexpr (std::is_integral_v<T>)
    {
        return std::is_signed_v<T> ? WriteInteger(call, static_cast<std::int64_t>(result))
                                   : WriteUnsigned(call, static_cast<std::uint64_t>(result));
    }
    else if constexpr (WordEnumeration<T>)
    {
        return WriteAscii(call, WordOf(result));
    }
    else if constexpr (std::convertible_to<T, std::string_view>)
    {
        return WriteString(call, result);
    }
    else if constexpr (std::same_as<T, BlockResult>)
    {
        return WriteBlock(call, result.bytes);
    }
    else if constexpr (std::same_as<T, AsciiResult>)
    {
        return WriteAscii(call, result.text);
    }
    else if constexpr (kIsTuple<T>)
    {
        return std::apply(
            [&call](const auto&... items) {
                HRESULT written = S_OK;
                static_cast<void>(((written = WriteResult(call, items), written == S_OK) && ...));
                return written;
            },
            result);
    }
    else
    {
        static_assert(NumberRange<T>, "a query cannot answer with this type");
        const std::span values(result);
        if constexpr (std::same_as<typename decltype(values)::value_type, double>)
        {
            return WriteNumbers(call, values);
        }
        else
        {
            const std::vector<double> doubles(values.begin(), values.end());
            return WriteNumbers(call, doubles);
        }
    }
}

/// @endcond

} // namespace ZoVelkor::Commands
