// Common: what the subcommands of zo share.
//
// Exit codes and failures (CToolError), output and files (ToolFiles), time-outs, progress, hex dumps, and
// Ctrl-C as a flag that waits look at (CInterruptWatcher). A subcommand adds itself to the command line by an
// AddSubcommand and throws CToolError, which main turns into a message and an exit code.
// Locks: one in CInterruptWatcher, whose thread aborts the call in progress.

#pragma once

#include "CToolError.h"

#include <CLI/App.hpp>

namespace ZoVelkor::Tools
{

/// Adds one subcommand to the tool.
///
/// @param result  where its actions leave the exit code, while the command line is parsed
using AddSubcommand = void (*)(CLI::App& tool, ExitCode& result);

/// `zo table`: looks into command tables, merges them and writes them out.
void AddTableCommands(CLI::App& tool, ExitCode& result);

/// `zo scpi`: talks to an instrument.
void AddScpiCommands(CLI::App& tool, ExitCode& result);

/// `zo registry`: reads, writes and watches the registry.
void AddRegistryCommands(CLI::App& tool, ExitCode& result);

/// `zo lxi`: sends, receives and decodes LXI events.
void AddLxiCommands(CLI::App& tool, ExitCode& result);

} // namespace ZoVelkor::Tools
