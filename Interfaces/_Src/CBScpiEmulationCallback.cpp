#include "CBScpiEmulationCallback.h"

namespace ZoVelkor
{

HRESULT CBScpiEmulationCallback::MapEsrToStb(wchar_t /*esr*/, wchar_t /*stb*/)
{
    return E_NOTIMPL;
}

HRESULT CBScpiEmulationCallback::ProgramMessageEnd()
{
    return S_OK;
}

} // namespace ZoVelkor
