#pragma once

#include "CScpiExpression.h"
#include "Parsing/ParsedCommand.h"

#include <string>

namespace ZoVelkor::RemoteKernel
{

/// A value for a register word, or what is wrong with it.
struct tagRegisterMask
{
    std::uint32_t iValue = 0;
    short iError = 0; ///< 0: none
    std::string sDetail;
};

/// Reads the parameters of a command that sets a register word: numbers, bit names and lists of both in
/// parentheses, all ORed.
///
/// @param names    bit names for the lists
/// @param highest  largest value of one number; more is -222
tagRegisterMask
ReadRegisterMask(const tagParsedCommand& command, const CScpiExpression::Trafo& names, std::uint32_t highest);

} // namespace ZoVelkor::RemoteKernel
