#include "CApplicationRegistration.h"

#include "CBScpiParser.h"
#include "CComObject.h"
#include "ErrorRaising.h"
#include "Root.h"

namespace ZoVelkor::Demo
{
namespace
{
ZO_SOURCE_UNIT("DemoInstrument/Src/CApplicationRegistration")
}

CApplicationRegistration::CApplicationRegistration(const wchar_t* name,
                                                   std::span<const _CMD_SET_RECORD> table,
                                                   IZOScpiExecutionSink* pSink,
                                                   IZOScpiDeviceHandler* pDeviceHandler)
{
    HRESULT hr = ZoGetRegisteredInterface(&IID_IZOScpiObjectRegistration, &m_spRegistration);
    if (FAILED(hr))
    {
        ThrowError(ZO_ERROR(nullptr, "pRegistration != NULL", "Remote control is missing", hr));
    }
    hr = CoCreateGuid(&m_objectId);
    if (SUCCEEDED(hr))
    {
        const auto spParser = CComObject<CBScpiParser, IZOScpiParser>::Create(pDeviceHandler);
        CComBSTR bsName(name);
        spParser->RegisterCommandTree(ZO_PARSER_TYPE_MEASUREMENT,
                                      bsName,
                                      {static_cast<std::uint32_t>(table.size_bytes()), table.data()},
                                      pSink);
        const tagZO_SCPI_PARSER_OBJECT object{name, ZO_PARSER_TYPE_MEASUREMENT, spParser, m_objectId};
        hr = m_spRegistration->RegisterObject(&object);
    }
    if (FAILED(hr))
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control refuses the application", hr));
    }
}

CApplicationRegistration::~CApplicationRegistration()
{
    static_cast<void>(m_spRegistration->UnregisterObject(m_objectId));
}

} // namespace ZoVelkor::Demo
