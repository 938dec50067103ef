#pragma once

#include "CScpiExpression.h"
#include "Parsing/ParsedCommand.h"

#include <string>

namespace ZoVelkor::RemoteKernel
{

/// A value for a register word, or what is wrong with it.
struct RegisterMask
{
    std::uint32_t value = 0;
    short error = 0; ///< 0: none
    std::string detail;
};

/// Reads the parameters of a command that sets a register word: numbers, bit names and lists of both in
/// parentheses, all ORed.
///
/// @param names    bit names for the lists
/// @param highest  largest value of one number; more is -222
RegisterMask
ReadRegisterMask(const ParsedCommand& command, const CScpiExpression::Trafo& names, std::uint32_t highest);

} // namespace ZoVelkor::RemoteKernel
