#pragma once

#include "ScpiParameter.h"

namespace ZoVelkor::RemoteKernel
{

class CApplication;

/// One command as the parser has understood it; everything is lent until ExecuteCommand returns.
struct ParsedCommand
{
    CApplication* application = nullptr;  ///< owner of the command
    unsigned long command = 0;            ///< handler index from the table
    bool query = false;                   ///< the query form
    long* numericSuffixes = nullptr;      ///< one for each header node that takes a suffix, from the root
    unsigned long numericSuffixCount = 0; ///< number of suffixes
    unsigned long argumentCount = 0;      ///< number of parameters
    tagZO_SCPI_PARAMETER* arguments = nullptr; ///< the parameters; null when there are none
    wchar_t* headerText = nullptr; ///< long form of the header, a BSTR that the command index owns
};

} // namespace ZoVelkor::RemoteKernel
