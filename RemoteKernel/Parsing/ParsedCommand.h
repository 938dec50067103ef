#pragma once

#include "ScpiParameter.h"

namespace ZoVelkor::RemoteKernel
{

class CApplication;

/// One command as the parser has understood it; everything is lent until ExecuteCommand returns.
struct tagParsedCommand
{
    CApplication* pApplication = nullptr;  ///< owner of the command
    unsigned long iCommand = 0;            ///< handler index from the table
    bool bQuery = false;                   ///< the query form
    long* pNumericSuffixes = nullptr;      ///< one for each header node that takes a suffix, from the root
    unsigned long iNumericSuffixCount = 0; ///< number of suffixes
    unsigned long iArgumentCount = 0;      ///< number of parameters
    tagZO_SCPI_PARAMETER* pArguments = nullptr; ///< the parameters; null when there are none
    wchar_t* bsHeader = nullptr; ///< long form of the header, a BSTR that the command index owns
};

} // namespace ZoVelkor::RemoteKernel
