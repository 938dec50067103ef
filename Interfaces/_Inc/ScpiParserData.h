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
    IUnknown* m_pContext = nullptr; ///< gives IZOScpiManager; may be null
    std::int32_t m_iRemotePath = -1;
    std::uint32_t m_iCommand = 0; ///< handler index from the command table
    bool m_bQuery = false;
    std::int32_t m_iArgumentCount = 0;
    long const* m_pNumericSuffixes = nullptr; ///< values of 32 bits; one per header node that takes a suffix
    tagZO_SCPI_PARAMETER const* m_pArguments = nullptr; ///< null when there are none
    wchar_t const* m_bsHeader = nullptr;                ///< long form of the command
    IZOScpiOutputBuffer* m_pOutputBuffer = nullptr;     ///< receives the response
};

/// Packs the arguments of IZOScpiExecutionSink::Execute, in their order.
///
/// `CCommandExecutionData data(MakeScpiParserData(context, remotePath, ...));`
inline tagZO_SCPI_PARSER_DATA MakeScpiParserData(IUnknown* context,
                                                 long remotePath,
                                                 unsigned long command,
                                                 short isQuery,
                                                 long const* numericSuffixes,
                                                 unsigned long argumentCount,
                                                 tagZO_SCPI_PARAMETER const* arguments,
                                                 wchar_t const* header,
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
