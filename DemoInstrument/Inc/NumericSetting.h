#pragma once

#include "CScpiFunctionExecutionDataPool.h"

namespace ZoVelkor::Demo
{

/// A numeric setting as one command finds it, all in its base unit.
struct tagNumericState
{
    double value = 0.0;
    double minimum = 0.0;
    double maximum = 0.0;
    double reset = 0.0;     ///< DEFault
    double up = 0.0;        ///< the step above; may lie beyond the maximum
    double down = 0.0;      ///< the step below; may lie beyond the minimum
    bool isInteger = false; ///< numbers are rounded, answers are NR1
};

/// Reads the number that a setting command asks for: its only argument, a number or MINimum, MAXimum,
/// DEFault, UP or DOWN (SCPI-99 vol. 1, 7.2.1).
///
/// UP and DOWN stop at the limit; at the limit they are refused like every number beyond it.
/// @return 0; 1 with -222, or the error of an argument that is no number
HRESULT ReadNumber(CScpiFunctionExecutionDataPool& pool, const tagNumericState& state, double& value);

/// Answers a query: the value, or what its argument MINimum, MAXimum or DEFault stands for.
HRESULT AnswerNumber(CScpiFunctionExecutionDataPool& pool, const tagNumericState& state);

/// Reads the numeric suffix of a header node; -114 outside 1 to last.
///
/// @param index  counts the nodes that take a suffix, from the root
HRESULT ReadSuffix(CScpiFunctionExecutionDataPool& pool, long index, long last, long& suffix);

} // namespace ZoVelkor::Demo
