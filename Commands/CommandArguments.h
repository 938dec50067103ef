#pragma once

#include "CBlockInput.h"
#include "CChannelList.h"
#include "CCommandCall.h"
#include "CommandParameter.h"
#include "ZoExport.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZoVelkor::Commands
{

/// @cond machinery

/// What a declaration says beside one parameter when an argument is read.
struct ArgumentContext
{
    const ParameterData& parameter;
    const HeaderPattern& header; ///< of the command, for messages
};

/// Reads a number or one of MINimum, MAXimum and DEFault.
///
/// @param[out] step  1 for UP, -1 for DOWN, else 0; the value is left alone for these
/// @return as the getters of the pool; -222 with a detail that names the limits
ZO_EXPORT HRESULT
ReadNumber(CCommandCall& call, long index, const ArgumentContext& context, double& value, int& step);

/// Checks a value against the limits.
///
/// @return 0, or 1 with -222 set
ZO_EXPORT HRESULT CheckRange(CCommandCall& call, const ArgumentContext& context, double value);

/// Refuses a value with a detail that names what is allowed.
///
/// @return 1, with -222 set
ZO_EXPORT HRESULT
RefuseValue(CCommandCall& call, const ArgumentContext& context, double value, double minimum, double maximum);

/// Reads the word of a parameter that has words of its own.
///
/// @param[out] place  counts from 1
ZO_EXPORT HRESULT ReadWord(CCommandCall& call, long index, long& place);

ZO_EXPORT HRESULT ReadText(CCommandCall& call, long index, const ArgumentContext& context, std::string& text);
ZO_EXPORT HRESULT ReadBlock(CCommandCall& call, long index, CBlockInput& block);
ZO_EXPORT HRESULT ReadExpression(CCommandCall& call, long index, CChannelList& list);

/// What is kept of an argument while its handler runs: a view needs the text behind it.
template <class T>
struct ArgumentStorage
{
    using Type = T;
};

template <>
struct ArgumentStorage<std::string_view>
{
    using Type = std::string;
};

template <class T>
using StoredArgument = typename ArgumentStorage<T>::Type;

template <class T>
requires std::is_arithmetic_v<T> &&(!std::same_as<T, bool>)HRESULT
    ReadArgument(CCommandCall& call, long index, const ArgumentContext& context, T& argument)
{
    double value = 0;
    int step = 0;
    const HRESULT result = ReadNumber(call, index, context, value, step);
    if (result == S_OK && step != 0)
    {
        return call.Pool().SetScpiError(kScpiIllegalParameterValue);
    }
    if constexpr (std::is_integral_v<T>)
    {
        value = std::round(value);
        // The largest 64-bit integers have no double of their own: the power of two behind them is outside.
        constexpr auto kMinimum = static_cast<double>(std::numeric_limits<T>::min());
        const bool isInside = value >= kMinimum && value < std::ldexp(1.0, std::numeric_limits<T>::digits);
        if (result == S_OK && !isInside)
        {
            constexpr auto kMaximum = static_cast<double>(std::numeric_limits<T>::max());
            return RefuseValue(call, context, value, kMinimum, kMaximum);
        }
    }
    if (result == S_OK)
    {
        argument = static_cast<T>(value);
    }
    return result;
}

inline HRESULT ReadArgument(CCommandCall& call, long index, const ArgumentContext&, bool& argument)
{
    return call.Pool().GetBooleanArgument(argument, index);
}

template <WordEnumeration T>
HRESULT ReadArgument(CCommandCall& call, long index, const ArgumentContext&, T& argument)
{
    long place = 0;
    const HRESULT result = ReadWord(call, index, place);
    const std::optional<T> value = result == S_OK ? WordAt<T>(place) : std::nullopt;
    argument = value.value_or(argument);
    return result == S_OK && !value ? call.Pool().SetScpiError(kScpiInvalidCharacterData) : result;
}

inline HRESULT
ReadArgument(CCommandCall& call, long index, const ArgumentContext& context, std::string& argument)
{
    return ReadText(call, index, context, argument);
}

inline HRESULT ReadArgument(CCommandCall& call, long index, const ArgumentContext&, CBlockInput& argument)
{
    return ReadBlock(call, index, argument);
}

inline HRESULT ReadArgument(CCommandCall& call, long index, const ArgumentContext&, CChannelList& argument)
{
    return ReadExpression(call, index, argument);
}

/// An argument that may be left out.
template <class T>
HRESULT
ReadArgument(CCommandCall& call, long index, const ArgumentContext& context, std::optional<T>& argument)
{
    const auto arguments = call.Arguments();
    const auto place = static_cast<std::size_t>(index);
    if (place >= arguments.size() || arguments[place].iType == ZO_SCPI_PARAMTYPE_NOVALUE)
    {
        argument.reset();
        return S_OK;
    }
    return ReadArgument(call, index, context, argument.emplace());
}

/// An argument that may be repeated: it takes all that follow.
template <class T>
HRESULT
ReadArgument(CCommandCall& call, long index, const ArgumentContext& context, std::vector<T>& arguments)
{
    const auto count = static_cast<long>(call.Arguments().size());
    arguments.clear();
    arguments.reserve(static_cast<std::size_t>(count > index ? count - index : 0));
    for (long i = index; i < count; ++i)
    {
        T argument{};
        if (const HRESULT result = ReadArgument(call, i, context, argument); result != S_OK)
        {
            return result;
        }
        arguments.push_back(std::move(argument));
    }
    return S_OK;
}

/// @endcond

} // namespace ZoVelkor::Commands
