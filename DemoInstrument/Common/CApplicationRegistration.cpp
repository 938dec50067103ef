#include "CApplicationRegistration.h"

#include "ErrorRaising.h"

namespace ZoVelkor::Demo
{
namespace
{
ZO_SOURCE_UNIT("DemoInstrument/Common/CApplicationRegistration");
}

CApplicationRegistration::CApplicationRegistration(const wchar_t* name,
                                                   std::span<const _CMD_SET_RECORD> table,
                                                   IUnknown* pParser)
{
    m_manager.Find();
    if (!m_manager.Available())
    {
        ThrowError(ZO_ERROR(nullptr, "m_manager.Available()", "Remote control is missing", E_NOINTERFACE));
    }
    m_parser.Attach(pParser);
    m_parser.RegisterCommandTree(static_cast<long>(table.size_bytes()),
                                 reinterpret_cast<const char*>(table.data()),
                                 ZO_PARSER_TYPE_MEASUREMENT,
                                 name);
    if (const HRESULT result = m_manager.RegisterParser(&m_parser); result != S_OK)
    {
        ThrowError(ZO_ERROR(nullptr, "hr == S_OK", "Remote control refuses the application", result));
    }
}

CApplicationRegistration::~CApplicationRegistration()
{
    m_manager.UnregisterParser(&m_parser);
}

} // namespace ZoVelkor::Demo
