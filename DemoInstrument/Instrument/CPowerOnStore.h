#pragma once

#include "CInstrumentRegistry.h"
#include "IPowerOnStore.h"

namespace ZoVelkor::Demo
{

/// Keeps the power-on status of IEEE 488.2 section 10.25 in the registry. Threads: any.
class CPowerOnStore final : public RemoteKernel::IPowerOnStore
{
public:
    /// @param registry  borrowed
    explicit CPowerOnStore(const CInstrumentRegistry& registry) : m_registry(registry) {}

    /// What was kept; that of the first start when there is nothing or it is damaged.
    RemoteKernel::PowerOnStatus Load() const;
    bool Keep(const RemoteKernel::PowerOnStatus& status) noexcept override;

private:
    const CInstrumentRegistry& m_registry;
};

} // namespace ZoVelkor::Demo
