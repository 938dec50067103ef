#pragma once

#include "CNumericSuffix.h"
#include "CommandArguments.h"
#include "CommandParameter.h"
#include "CommandPattern.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace ZoVelkor::Commands
{

/// Parameters of one command.
inline constexpr std::size_t kMaxParameters = 16;

/// What the command table needs to know of one command.
struct CommandData
{
    std::string_view pattern;                               ///< as it was declared
    HeaderPattern header;                                   ///< the pattern, taken apart
    std::array<ParameterData, kMaxParameters> parameters{}; ///< in the order of the arguments
    std::size_t parameterCount = 0;                         ///< of them
    bool hasSetting = false;                                ///< a setting, or an event beside a query
    bool hasQuery = false;                                  ///< a query
    bool hasEvent = false;                                  ///< an event
    bool service = false;                                   ///< listed for service only
    std::string_view summary;                               ///< one sentence; may be empty
};

/// @cond machinery
/// Arguments of a handler, whatever kind of function it is.
template <class T>
struct HandlerTraits;

template <class TResult, class... TArguments>
struct HandlerSignature
{
    using Result = TResult;
    using Arguments = std::tuple<std::remove_cvref_t<TArguments>...>;
};

// Member functions of the instrument.
template <class TInstrument, class R, class... A>
struct HandlerTraits<R (TInstrument::*)(A...)> : HandlerSignature<R, A...>
{};
template <class TInstrument, class R, class... A>
struct HandlerTraits<R (TInstrument::*)(A...) const> : HandlerSignature<R, A...>
{};
template <class TInstrument, class R, class... A>
struct HandlerTraits<R (TInstrument::*)(A...) noexcept> : HandlerSignature<R, A...>
{};
template <class TInstrument, class R, class... A>
struct HandlerTraits<R (TInstrument::*)(A...) const noexcept> : HandlerSignature<R, A...>
{};

// Functions whose first argument is the instrument.
template <class R, class TInstrument, class... A>
struct HandlerTraits<R (*)(TInstrument&, A...)> : HandlerSignature<R, A...>
{};

// Lambdas without captures: the call operator less its first argument.
template <class T>
struct LambdaTraits;
template <class TLambda, class R, class TInstrument, class... A>
struct LambdaTraits<R (TLambda::*)(TInstrument&, A...) const> : HandlerSignature<R, A...>
{};
template <class T>
requires requires
{
    &T::operator();
}
struct HandlerTraits<T> : LambdaTraits<decltype(&T::operator())>
{};

/// The place of a tuple's first element that is neither a CCommandCall nor a numeric suffix.
template <class TTuple>
constexpr std::size_t LeadingArguments()
{
    return []<std::size_t... I>(std::index_sequence<I...>)
    {
        std::size_t count = 0;
        bool isLeading = true;
        static_cast<void>(
            ((isLeading = isLeading && (std::same_as<std::tuple_element_t<I, TTuple>, CCommandCall> ||
                                        kIsNumericSuffix<std::tuple_element_t<I, TTuple>>),
              count += isLeading ? 1U : 0U),
             ...));
        return count;
    }
    (std::make_index_sequence<std::tuple_size_v<TTuple>>());
}

template <class TTuple>
constexpr std::size_t SuffixArguments()
{
    return []<std::size_t... I>(std::index_sequence<I...>)
    {
        return (std::size_t{0} + ... + (kIsNumericSuffix<std::tuple_element_t<I, TTuple>> ? 1U : 0U));
    }
    (std::make_index_sequence<std::tuple_size_v<TTuple>>());
}

/// @endcond

/// No handler for a form.
struct NoHandler
{};

/// A member variable of the instrument that a command sets and answers; see CommandDeclaration::Variable.
template <class TMember>
struct BoundVariable
{
    TMember member; ///< of the instrument
};

/// One command: its header, its forms and their handlers.
template <class TSetting, class TQuery>
class CommandDeclaration
{
public:
    using Setting_t = TSetting; ///< handler of the form with data, or NoHandler
    using Query_t = TQuery;     ///< handler of the query, or NoHandler

    /// The form with data. What is not declared of a parameter follows from the handler's argument.
    ///
    /// @param handler  void (TInstrument::*)([CCommandCall&,] numeric suffixes..., arguments...), or a function or
    ///                 captureless lambda whose first argument is the instrument
    template <class THandler, class... TParameters>
    consteval auto Setting(THandler handler, const TParameters&... parameters) const
    {
        CommandDeclaration<THandler, TQuery> changed{data, handler, query};
        changed.data.hasSetting = true;
        AddParameters<THandler>(changed.data, parameters...);
        return changed;
    }

    /// The form with a question mark; what the handler returns is the response.
    template <class THandler, class... TParameters>
    consteval auto Query(THandler handler, const TParameters&... parameters) const
    {
        CommandDeclaration<TSetting, THandler> changed{data, setting, handler};
        changed.data.hasQuery = true;
        AddParameters<THandler>(changed.data, parameters...);
        return changed;
    }

    /// A command without data and without response.
    template <class THandler>
    consteval auto Event(THandler handler) const
    {
        CommandDeclaration<THandler, TQuery> changed{data, handler, query};
        changed.data.hasEvent = true;
        AddParameters<THandler>(changed.data);
        return changed;
    }

    /// Both forms of a setting that is a member variable: &TInstrument::m_level, or an array of one element for each
    /// numeric suffix. Its limits are checked, UP and DOWN are counted from its value.
    template <class TMember, class TParameter>
    consteval auto Variable(TMember member, const TParameter& parameter) const
    {
        using Bound = BoundVariable<TMember>;
        CommandDeclaration<Bound, Bound> changed{data, Bound{member}, Bound{member}};
        changed.data.hasSetting = true;
        changed.data.hasQuery = true;
        AddParameter(changed.data, parameter.data, 0);
        return changed;
    }

    /// The command is listed for service only.
    consteval CommandDeclaration Service() const
    {
        CommandDeclaration changed = *this;
        changed.data.service = true;
        return changed;
    }

    /// What the command does, in one sentence.
    consteval CommandDeclaration Summary(std::string_view text) const
    {
        CommandDeclaration changed = *this;
        changed.data.summary = text;
        return changed;
    }

    CommandData data; ///< what the table needs
    TSetting setting; ///< the handlers
    TQuery query;     ///< the handlers

private:
    static constexpr void AddParameter(CommandData& command, ParameterData parameter, std::uint32_t flags)
    {
        parameter.flags |= flags;
        if (command.parameterCount != 0)
        {
            const std::uint32_t former = command.parameters[command.parameterCount - 1].flags;
            if ((former & ARG_FLAG_REP) != 0)
            {
                ParameterBehindARepeatedOne();
            }
            if ((former & ARG_FLAG_OPT) != 0 && (parameter.flags & (ARG_FLAG_OPT | ARG_FLAG_REP)) == 0)
            {
                RequiredParameterBehindAnOptionalOne();
            }
        }
        command.parameters.at(command.parameterCount++) = parameter;
    }

    /// @param parameters  for the first arguments behind the suffixes; the others get what suits their type
    template <class THandler, class... TParameters>
    static constexpr void AddParameters(CommandData& command, const TParameters&... parameters)
    {
        using Arguments = typename HandlerTraits<THandler>::Arguments;
        constexpr std::size_t kLeading = LeadingArguments<Arguments>();
        constexpr std::size_t kCount = std::tuple_size_v<Arguments> - kLeading;
        static_assert(sizeof...(TParameters) <= kCount,
                      "more parameters are declared than the handler takes");
        if (SuffixArguments<Arguments>() > command.header.suffixCount)
        {
            HandlerDoesNotTakeTheNumericSuffixesOfThePattern();
        }
        if (kCount != 0 && command.parameterCount != 0)
        {
            SettingAndQueryHaveDifferentParameters();
        }
        [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            [[maybe_unused]] const std::tuple<const TParameters&...> declared(parameters...);
            (AddArgument<std::tuple_element_t<kLeading + I, Arguments>, I>(command, declared), ...);
        }
        (std::make_index_sequence<kCount>());
    }

    template <class TArgument, std::size_t I, class TDeclared>
    static constexpr void AddArgument(CommandData& command, const TDeclared& declared)
    {
        using Form = ArgumentForm<TArgument>;
        if constexpr (I < std::tuple_size_v<TDeclared>)
        {
            using Declared = std::remove_cvref_t<std::tuple_element_t<I, TDeclared>>;
            static_assert(Declared::template kFits<typename Form::Element>,
                          "the handler's argument has another type than the parameter declared for it");
            AddParameter(command, std::get<I>(declared).data, Form::kFlags);
        }
        else
        {
            AddParameter(command, typename ParameterFor<typename Form::Element>::Type().data, Form::kFlags);
        }
    }
};

/// Begins the declaration of a command: Command("[SOURce<1-3>]:VOLTage[:LEVel]").Setting(...).Query(...).
///
/// @param pattern  see HeaderPattern; a bad one does not compile
consteval CommandDeclaration<NoHandler, NoHandler> Command(std::string_view pattern)
{
    CommandDeclaration<NoHandler, NoHandler> command{};
    command.data.pattern = pattern;
    command.data.header = ReadHeaderPattern(pattern);
    return command;
}

} // namespace ZoVelkor::Commands
