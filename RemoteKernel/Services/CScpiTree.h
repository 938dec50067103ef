#pragma once

#include "IZOScpiTree.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// Plug-ins of the instrument's command tree. Threads: as the interface says.
class CScpiTree : public IZOScpiTree
{
public:
    explicit CScpiTree(const KernelParts& parts) : m_registry(parts.registry) {}
    virtual ~CScpiTree() = default;

    HRESULT RegisterPlugIn(IUnknown* plugIn) override
    {
        return plugIn == nullptr ? E_POINTER : m_registry->RegisterPlugIn(plugIn);
    }
    HRESULT UnregisterPlugIn(IUnknown* plugIn) override
    {
        return plugIn == nullptr ? E_POINTER : m_registry->Unregister(ApplicationKind::PlugIn, plugIn);
    }

private:
    const CComPtr<CApplicationRegistryObject> m_registry;
};

} // namespace ZoVelkor::RemoteKernel
