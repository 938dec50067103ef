#pragma once

#include "CComBSTR.h"
#include "IZODatabaseTransaction.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// What the data base's verdict on a written value means to a remote controller. Threads: any.
class ZO_EXPORT CScpiTransaction
{
public:
    /// Maps a verdict to a SCPI error.
    ///
    /// @param acceptance  null counts as accepted
    /// @param[out] code  0 for no error; else -220, -222 or -231
    /// @param[out] text  detail that goes along with the code; empty for no error
    static void GetScpiErrorFromAcceptance(const Acceptance* acceptance, long& code, CComBSTR& text);
};

} // namespace ZoVelkor
