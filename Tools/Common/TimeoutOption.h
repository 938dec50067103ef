#pragma once

#include <CLI/App.hpp>

#include <chrono>

namespace ZoVelkor::Tools
{

inline constexpr double kDefaultTimeoutSeconds = 10.0;

/// Adds `--timeout SECONDS` to a command that talks to an instrument.
CLI::Option& AddTimeoutOption(CLI::App& command, double& seconds);

std::chrono::milliseconds Milliseconds(double seconds);

} // namespace ZoVelkor::Tools
