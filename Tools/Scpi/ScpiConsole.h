#pragma once

#include "Common/CToolError.h"
#include "Instrument/InstrumentAddress.h"

#include <chrono>

namespace ZoVelkor::Tools
{

/// Carries out the lines of the standard input; on a terminal with a prompt, history and completion.
///
/// Answers go to the standard output, the instrument's errors to the standard error. On a terminal a lost
/// connection is opened anew; otherwise it ends the lines.
/// @return Success; from a script Failed when the instrument reported an error
/// @throws CToolError, ReaderGone
ExitCode RunConsole(const InstrumentAddress& address, std::chrono::milliseconds timeout);

} // namespace ZoVelkor::Tools
