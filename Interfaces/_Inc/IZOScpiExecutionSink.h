#pragma once

#include "IZOScpiOutputBuffer.h"
#include "ScpiParameter.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// Receives the parsed commands of one application.
///
/// Threads: commands for one application run one at a time, on the thread of the session that sent them; a
/// sink needs no lock of its own for them.
struct IZOScpiExecutionSink : IUnknown
{
    static constexpr IID kInterfaceId{
        0x06842610, 0xDD75, 0x4748, {0x97, 0xF2, 0xC9, 0x06, 0xB8, 0xC4, 0x7C, 0x4B}};

    /// Runs one command.
    ///
    /// Everything passed in is lent for the call.
    /// @param context  services of the remote path, see IZOScpiManager
    /// @param remotePath  the remote path that the command came from, 0 or more
    /// @param command  handler index from the command table: the nodata mode for queries and events, the data
    ///                 mode for settings
    /// @param isQuery  non-zero for the query form
    /// @param numericSuffixes  suffix of each header node that takes one, from the root; 1 where none was
    ///                         sent
    /// @param argumentCount  number of records at arguments
    /// @param arguments  the parameters; null when there are none
    /// @param header  the full long form of the command, without suffixes and without '?', as a BSTR
    /// @param output  receives the response
    /// @return 0 done; 1 a SCPI error was set; E_ABORT the execution was cancelled; any other failure queues
    ///         -200, unless the sink has queued an error for this command itself
    virtual HRESULT Execute(IUnknown* context,
                            long remotePath,
                            unsigned long command,
                            short isQuery,
                            long* numericSuffixes,
                            unsigned long argumentCount,
                            tagZO_SCPI_PARAMETER* arguments,
                            wchar_t* header,
                            IZOScpiOutputBuffer* output) = 0;

protected:
    ~IZOScpiExecutionSink() = default;
};

inline constexpr const IID& IID_IZOScpiExecutionSink = IZOScpiExecutionSink::kInterfaceId;

} // namespace ZoVelkor
