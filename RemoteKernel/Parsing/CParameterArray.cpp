#include "CParameterArray.h"

#include <algorithm>
#include <cstring>

namespace ZoVelkor::RemoteKernel
{

tagZO_SCPI_PARAMETER& CParameterArray::Next()
{
    if (m_size == m_capacity)
    {
        Grow();
    }
    tagZO_SCPI_PARAMETER& record = m_records[m_size++];
    // Field by field: clearing the whole record would write a kilobyte for each parameter.
    record.iType = ZO_SCPI_PARAMTYPE_UNDEFINED;
    record.iSpecialCode = ZO_SCPI_SPECIAL_NONE;
    record.szText[0] = '\0';
    record.iUnit = -1;
    record.iUnitSuffix = -1;
    record.iNoSuffix = -1;
    record.iTextLength = 0;
    record.iBlockLength = 0;
    record.pBlockData = nullptr;
    return record;
}

void CParameterArray::Grow()
{
    const std::size_t capacity = std::max(kKept, 2 * m_capacity);
    auto records = std::make_unique_for_overwrite<tagZO_SCPI_PARAMETER[]>(capacity);
    if (m_size != 0)
    {
        std::memcpy(records.get(), m_records.get(), m_size * sizeof(tagZO_SCPI_PARAMETER));
    }
    m_records = std::move(records);
    m_capacity = capacity;
}

CBlockReaderObject& CParameterArray::NextReader()
{
    if (m_readersUsed == m_readers.size())
    {
        m_readers.push_back(CBlockReaderObject::Create());
    }
    return *m_readers[m_readersUsed++];
}

void CParameterArray::SetBlock(tagZO_SCPI_PARAMETER& record, std::span<unsigned char> block)
{
    CBlockReaderObject& reader = NextReader();
    reader.Begin(block);
    record.iBlockLength = static_cast<std::uint32_t>(block.size());
    record.pBlockData = &reader;
}

void CParameterArray::SetBlock(tagZO_SCPI_PARAMETER& record, CBlockStream& stream)
{
    CBlockReaderObject& reader = NextReader();
    reader.Begin(stream);
    record.iBlockLength = static_cast<std::uint32_t>(stream.Length());
    record.pBlockData = &reader;
}

void CParameterArray::Clear() noexcept
{
    for (std::size_t i = m_readersUsed; i-- > 0;)
    {
        m_readers[i]->Invalidate();
        // Someone kept a reference: that reader stays dead for ever, and the next command gets another one.
        m_readers[i]->AddRef();
        if (m_readers[i]->Release() > 1)
        {
            m_readers.erase(m_readers.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    m_readersUsed = 0;
    m_size = 0;
    // One message with very many parameters does not keep its memory for the session's life.
    if (m_capacity > kKept)
    {
        m_records.reset();
        m_capacity = 0;
        m_readers.clear();
    }
}

} // namespace ZoVelkor::RemoteKernel
