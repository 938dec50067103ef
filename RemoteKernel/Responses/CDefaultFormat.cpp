#include "CDefaultFormat.h"

#include "CMutexLocker.h"

namespace ZoVelkor::RemoteKernel
{

namespace
{

CComPtr<CSessionOutput> NoOutput()
{
    CComPtr<CSessionOutput> output = CSessionOutput::Create(0U);
    output->Cancel();
    return output;
}

} // namespace

CDefaultFormat::CDefaultFormat() : CFormatSubsystem(NoOutput())
{}

HRESULT CDefaultFormat::get_DataFormat(tagEnumFormatDataType* type, long* width)
{
    const CMutexLocker lock(m_mutex);
    return CFormatSubsystem::get_DataFormat(type, width);
}

HRESULT CDefaultFormat::put_DataFormat(tagEnumFormatDataType type, long width)
{
    const CMutexLocker lock(m_mutex);
    return CFormatSubsystem::put_DataFormat(type, width);
}

HRESULT CDefaultFormat::get_ByteOrder(tagEnumFormatByteOrder* order)
{
    const CMutexLocker lock(m_mutex);
    return CFormatSubsystem::get_ByteOrder(order);
}

HRESULT CDefaultFormat::put_ByteOrder(tagEnumFormatByteOrder order)
{
    const CMutexLocker lock(m_mutex);
    return CFormatSubsystem::put_ByteOrder(order);
}

HRESULT CDefaultFormat::GetDataFormatText(wchar_t** text)
{
    const CMutexLocker lock(m_mutex);
    return CFormatSubsystem::GetDataFormatText(text);
}

HRESULT CDefaultFormat::Reset()
{
    const CMutexLocker lock(m_mutex);
    return CFormatSubsystem::Reset();
}

void CDefaultFormat::CopySettingsTo(IZOScpiSubsystemFormat& format)
{
    const CMutexLocker lock(m_mutex);
    tagEnumFormatDataType type = ZO_FORMAT_ASCII;
    tagEnumFormatByteOrder order = ZO_BYTE_ORDER_NORMAL;
    long width = 0;
    CFormatSubsystem::get_DataFormat(&type, &width);
    CFormatSubsystem::get_ByteOrder(&order);
    format.put_DataFormat(type, width);
    format.put_ByteOrder(order);
}

} // namespace ZoVelkor::RemoteKernel
