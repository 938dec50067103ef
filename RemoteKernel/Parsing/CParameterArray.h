#pragma once

#include "CBlockReader.h"
#include "CComPtr.h"
#include "ScpiParameter.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// The parameter records of one command and the readers of its blocks, both reused from command to command.
///
/// A record takes more than a kilobyte, so fresh memory is never cleared; Next sets every field but the text.
class CParameterArray
{
public:
    /// Starts the next record: kind 0, empty text, no unit, no block.
    tagZO_SCPI_PARAMETER& Next();

    /// Takes the latest record back.
    void DropLast() noexcept { --m_size; }

    tagZO_SCPI_PARAMETER* Data() noexcept { return m_size == 0 ? nullptr : m_records.get(); }
    std::size_t Size() const noexcept { return m_size; }

    /// Lends a reader for the block to the record.
    void SetBlock(tagZO_SCPI_PARAMETER& record, std::span<unsigned char> block);
    /// The same for a block that has not been taken from its stream.
    void SetBlock(tagZO_SCPI_PARAMETER& record, CBlockStream& stream);

    /// Ends the command: invalidates the readers and lets go of unusual amounts of memory.
    void Clear() noexcept;

private:
    static constexpr std::size_t kKept = 16; ///< records that stay allocated between commands

    void Grow();
    CBlockReaderObject& NextReader();

    std::unique_ptr<tagZO_SCPI_PARAMETER[]> m_records;
    std::size_t m_capacity = 0;
    std::size_t m_size = 0;
    std::vector<CComPtr<CBlockReaderObject>> m_readers;
    std::size_t m_readersUsed = 0;
};

} // namespace ZoVelkor::RemoteKernel
