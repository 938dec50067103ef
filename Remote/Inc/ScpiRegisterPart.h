#pragma once

namespace ZoVelkor
{

/// Word of a status register (SCPI-99 vol. 1, 9.1), as CCommandExecutionData::OutputRegisterValue counts it.
enum tagScpiRegisterPart : long
{
    kScpiRegisterCondition = 0,
    kScpiRegisterEvent = 1, ///< reading clears it
    kScpiRegisterEnable = 2,
    kScpiRegisterNegativeTransition = 3,
    kScpiRegisterPositiveTransition = 4
};

} // namespace ZoVelkor
