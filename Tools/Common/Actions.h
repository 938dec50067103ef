#pragma once

#include "CToolError.h"

#include <CLI/App.hpp>

#include <memory>
#include <span>
#include <utility>

namespace ZoVelkor::Tools
{

/// One action of a subcommand, as its table lists it.
///
/// @tparam TOptions  what the subcommand's command line is read into
template <class TOptions>
struct ToolAction
{
    const char* name;
    const char* description;
    unsigned takes; ///< bits of the subcommand's own: which options and arguments there are
    const char* examples;
    ExitCode (*run)(const TOptions& options);
};

/// Adds the actions of a subcommand.
///
/// @param actions     a table that lives for ever
/// @param options     what they share
/// @param addOptions  adds what an action takes: (command, takes, options)
/// @param run         runs the action that was chosen: (command, action, options), giving the exit code
/// @param result      where the exit code is left, while the command line is parsed
template <class TOptions, class TAddOptions, class TRun>
void AddActions(CLI::App& subcommand,
                std::span<const ToolAction<TOptions>> actions,
                const std::shared_ptr<TOptions>& options,
                TAddOptions addOptions,
                TRun run,
                ExitCode& result)
{
    for (const ToolAction<TOptions>& action : actions)
    {
        CLI::App& command = *subcommand.add_subcommand(action.name, action.description);
        command.footer(action.examples);
        addOptions(command, action.takes, *options);
        command.callback([=, &command, &action, &result] { result = run(command, action, *options); });
    }
}

/// The same for actions that need nothing around them.
template <class TOptions, class TAddOptions>
void AddActions(CLI::App& subcommand,
                std::span<const ToolAction<TOptions>> actions,
                const std::shared_ptr<TOptions>& options,
                TAddOptions addOptions,
                ExitCode& result)
{
    const auto run = [](const CLI::App&, const ToolAction<TOptions>& action, const TOptions& all) {
        return action.run(all);
    };
    AddActions(subcommand, actions, options, std::move(addOptions), run, result);
}

} // namespace ZoVelkor::Tools
