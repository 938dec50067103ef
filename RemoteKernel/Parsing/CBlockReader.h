#pragma once

#include "CBScpiBlockData.h"
#include "CBlockStream.h"
#include "CComObject.h"

#include <cstddef>
#include <span>

namespace ZoVelkor::RemoteKernel
{

/// Reads one block parameter: out of the message in memory without copying it first, or out of the stream of
/// a block that is still arriving. In the latter case reads wait for the client, and Access gives E_PENDING.
///
/// The parser reuses readers for one command after the other; whoever still holds one afterwards gets
/// E_ABORT.
class CBlockReader : public CBScpiBlockData
{
public:
    /// Begins a new block; the bytes are lent until Invalidate.
    void Begin(std::span<unsigned char> block) noexcept;
    /// The same for a block that is still arriving.
    void Begin(CBlockStream& stream) noexcept;

    /// Ends the command: every operation gives E_ABORT from here on.
    void Invalidate() noexcept;

    HRESULT Read(unsigned long size, unsigned char* data, unsigned long* got) override;
    HRESULT Status(short* complete, long* length) override;
    HRESULT Discard() override;
    HRESULT
    GetStatusEx(short* complete, long* length, unsigned long* available, unsigned long* consumed) override;
    HRESULT ReadFromStream(IStream* target, unsigned long size, unsigned long* got) override;
    HRESULT ContinueRead(long timeoutMs) override;
    HRESULT InitReaderFormat(tagEnumFormatDataType type, long width, tagEnumFormatByteOrder order) override;
    HRESULT GetNextElement(VARIANT* value) override;
    HRESULT GetNextDouble(double* value) override;
    HRESULT GetNextInteger(long* value) override;
    HRESULT GetNextArray(unsigned long count, double* values, unsigned long* got) override;
    HRESULT GetNextScatteredArrays(unsigned long arrays,
                                   unsigned long count,
                                   double* const* values,
                                   unsigned long* got) override;
    HRESULT Access(unsigned char** data, unsigned long* length) override;

protected:
    ~CBlockReader() override = default;

private:
    /// Bytes that can be read without waiting.
    std::span<unsigned char> Rest() const noexcept
    {
        return m_stream != nullptr ? m_stream->Window() : m_block.subspan(m_consumed);
    }
    void Consume(std::size_t count) noexcept;
    HRESULT NextElement(VARIANT& value);
    HRESULT CopyRest(IStream& target, unsigned long size, unsigned long& got);
    HRESULT CollectStream();
    HRESULT CopyStream(IStream& target, unsigned long size, unsigned long& got);

    CBlockStream* m_stream = nullptr; ///< null: the block is in memory
    std::span<unsigned char> m_block;
    std::size_t m_consumed = 0;
    bool m_valid = false;
    std::size_t m_elementSize = 0; ///< bytes; 0: no format
    bool m_real = false;
    bool m_swapped = false;
};

using CBlockReaderObject = CComObject<CBlockReader, IZOScpiBlockData>;

} // namespace ZoVelkor::RemoteKernel
