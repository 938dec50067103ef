#pragma once

#include "IZOScpiEmulationCallback.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of emulation callbacks: leaves the status byte to the kernel.
class ZO_EXPORT CBScpiEmulationCallback : public IZOScpiEmulationCallback
{
public:
    /// @return E_NOTIMPL
    HRESULT MapEsrToStb(wchar_t esr, wchar_t stb) override;
    HRESULT ProgramMessageEnd() override;

protected:
    virtual ~CBScpiEmulationCallback() = default;
};

} // namespace ZoVelkor
