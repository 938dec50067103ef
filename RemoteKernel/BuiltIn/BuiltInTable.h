#pragma once

#include "CScpiExpression.h"
#include "ScpiCommandTable.h"
#include "Status/CStatusManagement.h"

#include <span>

namespace ZoVelkor::RemoteKernel
{

/// The commands of one SCPI status register.
enum RegisterForm : std::int32_t
{
    REGISTER_EVENT_QUERY,
    REGISTER_CONDITION_QUERY,
    REGISTER_ENABLE,
    REGISTER_ENABLE_QUERY,
    REGISTER_POSITIVE,
    REGISTER_POSITIVE_QUERY,
    REGISTER_NEGATIVE,
    REGISTER_NEGATIVE_QUERY,
    REGISTER_FORM_COUNT
};

/// Handler indexes of the kernel's own commands.
enum BuiltInCommand : std::int32_t
{
    BUILTIN_CLS,
    BUILTIN_IDN_QUERY,
    BUILTIN_OPC,
    BUILTIN_OPC_QUERY,
    BUILTIN_OPT_QUERY,
    BUILTIN_RST,
    BUILTIN_TRG,
    BUILTIN_TST_QUERY,
    BUILTIN_WAI,
    BUILTIN_ERROR_NEXT_QUERY,
    BUILTIN_ERROR_ALL_QUERY,
    BUILTIN_ERROR_COUNT_QUERY,
    BUILTIN_HELP_HEADERS_QUERY,
    BUILTIN_HELP_SYNTAX_QUERY,
    BUILTIN_HELP_TABLE_QUERY,
    BUILTIN_VERSION_QUERY,
    BUILTIN_STATUS_FIRST, ///< from here on those of CStatusCommands
    BUILTIN_ESE = BUILTIN_STATUS_FIRST,
    BUILTIN_ESE_QUERY,
    BUILTIN_ESR_QUERY,
    BUILTIN_SRE,
    BUILTIN_SRE_QUERY,
    BUILTIN_STB_QUERY,
    BUILTIN_PSC,
    BUILTIN_PSC_QUERY,
    BUILTIN_PRE,
    BUILTIN_PRE_QUERY,
    BUILTIN_IST_QUERY,
    BUILTIN_STATUS_PRESET,
    BUILTIN_REGISTER_FIRST ///< REGISTER_FORM_COUNT for each of InstrumentRegister
};

/// Bit names of a register; empty when its bits have no names.
const CScpiExpression::Trafo& RegisterBitNames(InstrumentRegister index);

/// The table of the kernel's own commands.
std::span<const _CMD_SET_RECORD> BuiltInTable();

} // namespace ZoVelkor::RemoteKernel
