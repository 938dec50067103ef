#pragma once

#include "ScpiCommandTable.h"

#include <span>

namespace ZoVelkor::RemoteKernel
{

/// Handler indexes of the kernel's own commands.
enum tagBuiltInCommand : std::int32_t
{
    BUILTIN_CLS,
    BUILTIN_IDN_QUERY,
    BUILTIN_OPC,
    BUILTIN_OPC_QUERY,
    BUILTIN_OPT_QUERY,
    BUILTIN_RST,
    BUILTIN_TST_QUERY,
    BUILTIN_WAI,
    BUILTIN_ERROR_NEXT_QUERY,
    BUILTIN_ERROR_ALL_QUERY,
    BUILTIN_ERROR_COUNT_QUERY,
    BUILTIN_HELP_HEADERS_QUERY,
    BUILTIN_HELP_SYNTAX_QUERY,
    BUILTIN_VERSION_QUERY,
    BUILTIN_COUNT
};

/// The table of the kernel's own commands.
std::span<const _CMD_SET_RECORD> BuiltInTable() noexcept;

} // namespace ZoVelkor::RemoteKernel
