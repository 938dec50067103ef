#pragma once

#include "IZOScpiTree.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// Plug-ins of the instrument's command tree. Threads: as the interface says.
class CScpiTree : public IZOScpiTree
{
public:
    explicit CScpiTree(const tagKernelParts& parts) : m_spRegistry(parts.spRegistry) {}
    virtual ~CScpiTree() = default;

    HRESULT RegisterPlugIn(IUnknown* plugIn) override
    {
        return plugIn == nullptr ? E_POINTER : m_spRegistry->RegisterPlugIn(plugIn);
    }
    HRESULT UnregisterPlugIn(IUnknown* plugIn) override
    {
        return plugIn == nullptr ? E_POINTER : m_spRegistry->Unregister(tagApplicationKind::PlugIn, plugIn);
    }

private:
    const CComPtr<CApplicationRegistryObject> m_spRegistry;
};

} // namespace ZoVelkor::RemoteKernel
