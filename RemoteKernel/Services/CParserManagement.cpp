#include "CParserManagement.h"

#include "GuardedEntry.h"
#include "Variant.h"

namespace ZoVelkor::RemoteKernel
{

HRESULT CParserManagement::GetObjectRegistration(IZOScpiObjectRegistration** registration)
{
    return m_registry.CopyTo(registration);
}

HRESULT CParserManagement::StartParser()
{
    return GuardedEntry([&]() -> HRESULT { return m_gate->Start(m_remotePath) ? S_OK : S_FALSE; });
}

HRESULT CParserManagement::StopParser()
{
    return GuardedEntry([&]() -> HRESULT { return m_gate->Stop(m_remotePath) ? S_OK : S_FALSE; });
}

HRESULT CParserManagement::get_ParserStarted(short* started)
{
    if (started == nullptr)
    {
        return E_POINTER;
    }
    *started = ToVariantBool(m_gate->IsStarted(m_remotePath));
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
