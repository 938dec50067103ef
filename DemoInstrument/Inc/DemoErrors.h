#pragma once

#include "ScpiErrorCodes.h"

namespace ZoVelkor::Demo
{

/// SCPI errors of this instrument beside those of ScpiErrorCodes.h (SCPI-99 vol. 2, 21.8.10).
enum tagDemoError : short
{
    kInvalidExpression = -171,
    kInitIgnored = -213,
    kDataCorruptOrStale = -230,
    kMediaFull = -254,
    kDirectoryFull = -255,
    kFileNameNotFound = -256,
    kFileNameError = -257
};

} // namespace ZoVelkor::Demo
