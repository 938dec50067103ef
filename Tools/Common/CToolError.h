#pragma once

#include <stdexcept>
#include <string>

namespace ZoVelkor::Tools
{

/// Exit codes of all subcommands; with several files the highest one that applies.
enum class ExitCode
{
    Success = 0,
    Failed = 1,       ///< what was asked for failed: damaged table, instrument refused
    Usage = 2,        ///< options or arguments that make no sense
    NoAccess = 3,     ///< a file or an instrument cannot be read, written or reached
    Interrupted = 130 ///< Ctrl-C, as a shell reports it
};

/// Ends a subcommand with a message.
class CToolError : public std::runtime_error
{
public:
    CToolError(ExitCode code, const std::string& message) : std::runtime_error(message), m_code(code) {}

    ExitCode Code() const noexcept { return m_code; }

private:
    ExitCode m_code;
};

} // namespace ZoVelkor::Tools
