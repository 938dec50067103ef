#pragma once

#include "CCommandResult.h"
#include "CommandArguments.h"
#include "CommandDeclaration.h"
#include "CommandResponses.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace ZoVelkor::Commands
{

/// @cond machinery

/// Checks how many arguments came for a command whose parameters are all declared.
inline HRESULT CheckCount(CCommandCall& call, const CommandData& command)
{
    std::size_t required = 0;
    bool isOpen = false;
    for (std::size_t i = 0; i < command.parameterCount; ++i)
    {
        const std::uint32_t flags = command.parameters[i].flags;
        required += (flags & ARG_FLAG_OPT) == 0 ? 1U : 0U;
        isOpen = isOpen || (flags & ARG_FLAG_REP) != 0;
    }
    const std::size_t count = call.Arguments().size();
    if (count < required)
    {
        return call.Pool().ScpiErrorMissingParameter();
    }
    if (count > command.parameterCount && !isOpen)
    {
        return command.parameterCount == 0 ? call.Pool().SetScpiError_ParameterNotAllowed()
                                           : call.Pool().ScpiErrorUnexpectedParameter();
    }
    return S_OK;
}

inline HRESULT SetError(CCommandCall& call, const CCommandError& error)
{
    return call.Pool().SetScpiError(error.Code(), error.Detail(), true);
}

template <class T>
inline constexpr bool kIsCommandResult = false;
template <class T>
inline constexpr bool kIsCommandResult<CCommandResult<T>> = true;

/// Runs something that gives a handler's result, and delivers that.
template <class TRun>
HRESULT Deliver(CCommandCall& call, TRun&& run)
{
    using Result = std::remove_cvref_t<decltype(run())>;
    if constexpr (std::is_void_v<Result>)
    {
        run();
        return S_OK;
    }
    else if constexpr (kIsCommandResult<Result>)
    {
        const Result result = run();
        if (const CCommandError* const error = result.Error(); error != nullptr)
        {
            return SetError(call, *error);
        }
        if constexpr (std::same_as<Result, CCommandResult<void>>)
        {
            return S_OK;
        }
        else
        {
            return WriteResult(call, result.Value());
        }
    }
    else
    {
        return WriteResult(call, run());
    }
}

/// Makes a handler's leading argument: the call, or the next numeric suffix.
template <class T>
decltype(auto) LeadingArgument(CCommandCall& call, std::size_t& suffix)
{
    if constexpr (std::same_as<T, CCommandCall>)
    {
        return (call);
    }
    else
    {
        return T(call.Suffix(suffix++));
    }
}

/// Hands an argument on: a view of what is kept for it, else the thing itself.
template <class TArgument, class TStored>
decltype(auto) PassArgument(TStored& stored)
{
    if constexpr (std::same_as<TArgument, TStored>)
    {
        return std::move(stored);
    }
    else
    {
        return TArgument(stored);
    }
}

/// Reads a handler's arguments and calls it.
template <class THandler, class TInstrument>
HRESULT
Invoke(const THandler& handler, TInstrument& instrument, CCommandCall& call, const CommandData& command)
{
    using Arguments = typename HandlerTraits<THandler>::Arguments;
    constexpr std::size_t kLeading = LeadingArguments<Arguments>();
    constexpr std::size_t kCount = std::tuple_size_v<Arguments> - kLeading;
    return [&]<std::size_t... L, std::size_t... I>(std::index_sequence<L...>, std::index_sequence<I...>)
        ->HRESULT
    {
        std::tuple<StoredArgument<std::tuple_element_t<kLeading + I, Arguments>>...> stored{};
        HRESULT result = S_OK;
        static_cast<void>(((result = ReadArgument(call,
                                                  static_cast<long>(I),
                                                  ArgumentContext{command.parameters[I], command.header},
                                                  std::get<I>(stored)),
                            result == S_OK) &&
                           ...));
        if (result != S_OK)
        {
            return result;
        }
        return Deliver(call, [&]() -> decltype(auto) {
            [[maybe_unused]] std::size_t suffix = 0;
            // Braces, so that the suffixes are taken from left to right.
            std::tuple<decltype(LeadingArgument<std::tuple_element_t<L, Arguments>>(call, suffix))...>
                leading{LeadingArgument<std::tuple_element_t<L, Arguments>>(call, suffix)...};
            return std::invoke(
                handler,
                instrument,
                std::get<L>(leading)...,
                PassArgument<std::tuple_element_t<kLeading + I, Arguments>>(std::get<I>(stored))...);
        });
    }
    (std::make_index_sequence<kLeading>(), std::make_index_sequence<kCount>());
}

template <class T>
inline constexpr bool kIsArray = false;
template <class T, std::size_t TSize>
inline constexpr bool kIsArray<std::array<T, TSize>> = true;

/// The bound variable of a call: the member, or its element for the first numeric suffix.
template <class TMember, class TInstrument>
auto& VariableOf(const BoundVariable<TMember>& bound, TInstrument& instrument, CCommandCall& call)
{
    auto& member = instrument.*bound.member;
    if constexpr (kIsArray<std::remove_cvref_t<decltype(member)>>)
    {
        return member.at(static_cast<std::size_t>(call.Suffix(0) - 1));
    }
    else
    {
        return member;
    }
}

/// Sets a bound variable from the only argument.
template <class TVariable>
HRESULT SetVariable(TVariable& variable, CCommandCall& call, const CommandData& command)
{
    const ArgumentContext context{command.parameters[0], command.header};
    if constexpr (std::is_floating_point_v<TVariable>)
    {
        double value = 0;
        int step = 0;
        HRESULT result = ReadNumber(call, 0, context, value, step);
        if (result == S_OK && step != 0)
        {
            value = static_cast<double>(variable) + step * context.parameter.step;
            result = CheckRange(call, context, value);
        }
        if (result == S_OK)
        {
            variable = static_cast<TVariable>(value);
        }
        return result;
    }
    else
    {
        TVariable value{};
        const HRESULT result = ReadArgument(call, 0, context, value);
        if (result == S_OK)
        {
            variable = std::move(value);
        }
        return result;
    }
}

/// Answers MINimum, MAXimum or DEFault from a declaration.
inline HRESULT AnswerLimit(CCommandCall& call, const CommandData& command)
{
    double value = 0;
    int step = 0;
    const ArgumentContext context{command.parameters[0], command.header};
    if (call.Arguments()[0].iType != ZO_SCPI_PARAMTYPE_SPECIAL)
    {
        return call.Pool().SetScpiError_ParameterNotAllowed();
    }
    const HRESULT result = ReadNumber(call, 0, context, value, step);
    if (result != S_OK)
    {
        return result;
    }
    return step != 0 ? call.Pool().SetScpiError(kScpiIllegalParameterValue) : WriteResult(call, value);
}

/// Tells whether a query is one for a limit of its setting.
inline bool IsLimitQuery(const CCommandCall& call, const CommandData& command)
{
    return command.hasSetting && command.parameterCount == 1 && call.Arguments().size() == 1 &&
           (command.parameters[0].type & (ARG_MINMAX | ARG_DEFAULT)) != 0;
}

/// Runs the setting or event of a command.
template <class TCommand, class TInstrument>
HRESULT RunSetting(const TCommand& command, TInstrument& instrument, CCommandCall& call)
{
    using Handler = typename TCommand::Setting_t;
    if (const HRESULT result = CheckCount(call, command.data); result != S_OK)
    {
        return result;
    }
    if constexpr (requires { command.setting.member; })
    {
        return SetVariable(VariableOf(command.setting, instrument, call), call, command.data);
    }
    else
    {
        return Invoke<Handler>(command.setting, instrument, call, command.data);
    }
}

/// Runs the query of a command.
template <class TCommand, class TInstrument>
HRESULT RunQuery(const TCommand& command, TInstrument& instrument, CCommandCall& call)
{
    using Handler = typename TCommand::Query_t;
    if (IsLimitQuery(call, command.data))
    {
        return AnswerLimit(call, command.data);
    }
    // The parameters of a command with both forms belong to its setting.
    const bool takesNone = command.data.hasSetting && !call.Arguments().empty();
    const HRESULT counted = takesNone                  ? call.Pool().SetScpiError_ParameterNotAllowed()
                            : !command.data.hasSetting ? CheckCount(call, command.data)
                                                       : S_OK;
    if (counted != S_OK)
    {
        return counted;
    }
    if constexpr (requires { command.query.member; })
    {
        return WriteResult(call, VariableOf(command.query, instrument, call));
    }
    else
    {
        return Invoke<Handler>(command.query, instrument, call, command.data);
    }
}

/// @endcond

} // namespace ZoVelkor::Commands
