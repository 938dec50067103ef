#pragma once

#include "IZOScpiParserManagement.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// Parser management of one remote path or of the instrument. Threads: any operation from any thread.
class CParserManagement : public IZOScpiParserManagement
{
public:
    CParserManagement(const KernelParts& parts, long remotePath)
        : m_registry(parts.registry),
          m_gate(parts.gate),
          m_remotePath(remotePath)
    {}
    virtual ~CParserManagement() = default;

    HRESULT GetObjectRegistration(IZOScpiObjectRegistration** registration) override;
    HRESULT StartParser() override;
    HRESULT StopParser() override;
    HRESULT get_ParserStarted(short* started) override;

private:
    const CComPtr<IZOScpiObjectRegistration> m_registry;
    const std::shared_ptr<CParserGate> m_gate;
    const long m_remotePath;
};

} // namespace ZoVelkor::RemoteKernel
