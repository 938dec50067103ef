#pragma once

#include "CCommandError.h"
#include "CPendingOperation.h"
#include "CScpiFunctionExecutionDataPoolParser.h"

#include <span>
#include <utility>

namespace ZoVelkor::Commands
{

/// One call of a handler: who calls, and what else the remote path offers.
///
/// A handler that needs it takes it as its first argument. Valid until the handler returns. Threads: the one
/// that runs the handler.
class CCommandCall
{
public:
    /// @param pool, arguments, suffixes  of the command that runs; borrowed
    CCommandCall(CScpiFunctionExecutionDataPoolParser& pool,
                 std::span<const tagZO_SCPI_PARAMETER> arguments,
                 const long* suffixes) noexcept
        : m_pool(pool),
          m_arguments(arguments),
          m_suffixes(suffixes)
    {}

    /// Tells whether the command came with a question mark.
    bool IsQuery() const { return m_pool.IsQuery(); }
    /// The remote path that the command came from, 0 or more.
    long RemotePath() const { return m_pool.GetRemotePath(); }

    /// Begins an overlapped operation: *OPC, *OPC? and *WAI of this remote path wait until the token goes, on
    /// whatever thread.
    ///
    /// @throws CCommandError -200 when the remote path has no pending operations
    CPendingOperation BeginOverlapped()
    {
        CPendingOperation operation;
        if (FAILED(operation.Begin(m_pool.GetPendingOperations(), RemotePath())))
        {
            throw CCommandError(kScpiExecutionError);
        }
        return operation;
    }

    /// The arguments as they came; null-terminated texts, borrowed.
    std::span<const tagZO_SCPI_PARAMETER> Arguments() const noexcept { return m_arguments; }
    /// The numeric suffix of the header's node i of those that take one, counted from 0; checked already.
    long Suffix(std::size_t i) const noexcept { return m_suffixes[i]; }
    /// All that the level below offers.
    CScpiFunctionExecutionDataPoolParser& Pool() const noexcept { return m_pool; }

    /// Writes the separator that a list of numbers leaves to the item behind it.
    HRESULT BeginItem()
    {
        return std::exchange(m_separatorDue, false) ? m_pool.GetFormatSubsystem()->InsertDataSeparator()
                                                    : S_OK;
    }
    /// Says that a list of numbers was written, behind which the next item needs a separator.
    void EndNumbers() noexcept { m_separatorDue = true; }

private:
    CScpiFunctionExecutionDataPoolParser& m_pool;
    std::span<const tagZO_SCPI_PARAMETER> m_arguments;
    const long* m_suffixes;
    bool m_separatorDue = false;
};

} // namespace ZoVelkor::Commands
