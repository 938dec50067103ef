#pragma once

#include "ScpiParameter.h"
#include "Unknown.h"

#include <cstdint>

namespace ZoVelkor
{

struct IZOScpiOutputBuffer;

/// One parsed command as IZOScpiExecutionSink::Execute receives it; both handler styles are made from it.
///
/// Ownership: everything is borrowed from the caller of Execute and valid until Execute returns. Copying
/// copies no data.
struct tagZO_SCPI_PARSER_DATA
{
    IUnknown* m_pContext = nullptr;           ///< gives IZOScpiManager; may be null
    std::int32_t m_iRemotePath = -1;          ///< path of the command, 0 or more
    std::uint32_t m_iCommand = 0;             ///< handler index from the command table
    bool m_bQuery = false;                    ///< the form with '?'
    std::int32_t m_iArgumentCount = 0;        ///< records at m_pArguments
    const long* m_pNumericSuffixes = nullptr; ///< values of 32 bits; one per header node that takes a suffix
    const tagZO_SCPI_PARAMETER* m_pArguments = nullptr; ///< null when there are none
    const wchar_t* m_bsHeader = nullptr;                ///< long form of the command
    IZOScpiOutputBuffer* m_pOutputBuffer = nullptr;     ///< receives the response
};

/// Packs the arguments of IZOScpiExecutionSink::Execute, in their order.
///
/// `CCommandExecutionData data(MakeScpiParserData(context, remotePath, ...));`
inline tagZO_SCPI_PARSER_DATA MakeScpiParserData(IUnknown* context,
                                                 long remotePath,
                                                 unsigned long command,
                                                 short isQuery,
                                                 const long* numericSuffixes,
                                                 unsigned long argumentCount,
                                                 const tagZO_SCPI_PARAMETER* arguments,
                                                 const wchar_t* header,
                                                 IZOScpiOutputBuffer* output) noexcept
{
    return {context,
            static_cast<std::int32_t>(remotePath),
            static_cast<std::uint32_t>(command),
            isQuery != 0,
            static_cast<std::int32_t>(argumentCount),
            numericSuffixes,
            arguments,
            header,
            output};
}

} // namespace ZoVelkor
