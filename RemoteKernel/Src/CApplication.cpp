#include "CApplication.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

CApplication::CApplication(std::string name, const _CMD_SET_RECORD* table, std::size_t count)
    : m_sName(std::move(name)),
      m_id(GUID_NULL),
      m_table(table, table + count),
      m_bBuiltIn(true)
{}

CApplication::CApplication(std::string name,
                           const _CMD_SET_RECORD* table,
                           std::size_t count,
                           const GUID& id,
                           IZOScpiExecutionSink* pSink,
                           IZOScpiDeviceHandler* pDeviceHandler)
    : m_sName(std::move(name)),
      m_id(id),
      m_table(table, table + count),
      m_bBuiltIn(false),
      m_spSink(pSink),
      m_spDeviceHandler(pDeviceHandler)
{}

bool CApplication::Execute(const tagParsedCommand& command,
                           IUnknown* context,
                           long remotePath,
                           IZOScpiOutputBuffer* output,
                           HRESULT& result)
{
    const std::lock_guard lock(m_mutex);
    if (m_spSink == nullptr)
    {
        return false;
    }
    try
    {
        result = m_spSink->Execute(context,
                                   remotePath,
                                   command.iCommand,
                                   command.bQuery ? VARIANT_TRUE : VARIANT_FALSE,
                                   command.pNumericSuffixes,
                                   command.iArgumentCount,
                                   command.pArguments,
                                   command.bsHeader,
                                   output);
    }
    catch (...)
    {
        // Whatever result the exception carries, it is an internal error and no cancelled execution.
        static_cast<void>(ResultOfCurrentException());
        result = E_FAIL;
    }
    return true;
}

void CApplication::Close()
{
    CComPtr<IZOScpiExecutionSink> spSink;
    CComPtr<IZOScpiDeviceHandler> spDeviceHandler;
    const std::lock_guard lock(m_mutex);
    std::swap(spSink, m_spSink);
    std::swap(spDeviceHandler, m_spDeviceHandler);
}

} // namespace ZoVelkor::RemoteKernel
