// Services: the operations of the kernel that applications and transports look up by interface.
//
// CMultichannelAdministration takes channels and makes a connection of each; CMultichannelFunctionality hands
// out the services of one path; the others stand for one path or all: parsers, channels, device events,
// language, tree. Each holds the KernelParts that it needs and passes calls on to the rooms before. They are
// found at the root while the kernel runs, and may be called from any thread, also after it has stopped.
// Lock order: the administration's connections, under which a connection begins, before all locks of
// Sessions; a connection ends without it.

#pragma once

#include "IZOScpiMultichannelFunctionality.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// Finds the services of one remote path. Threads: any operation from any thread.
class CMultichannelFunctionality : public IZOScpiMultichannelFunctionality
{
public:
    explicit CMultichannelFunctionality(const KernelParts& parts) : m_parts(parts) {}
    virtual ~CMultichannelFunctionality() = default;

    HRESULT GetScpiStatusManagement(long remotePath, IZOScpiStatusManagement** service) override;
    HRESULT GetScpiParserManagement(long remotePath, IZOScpiParserManagement** service) override;
    HRESULT GetScpiErrorManagement(long remotePath, IZOScpiErrorManagement** service) override;
    HRESULT GetScpiRemoteManagement(long remotePath, IZOScpiRemoteControl** service) override;
    HRESULT GetScpiChannelManagement(long remotePath, IZOScpiChannelManagement** service) override;
    HRESULT GetScpiDeviceManagement(long remotePath, IZOScpiDeviceManagement** service) override;
    HRESULT GetScpiFormatManagement(long remotePath, IZOScpiSubsystemFormat** service) override;
    HRESULT GetScpiLanguageManagement(long remotePath, IZOScpiParserLanguage** service) override;
    HRESULT GetChannelEvents(long remotePath, HANDLE* deviceClear, HANDLE* shutdown) override;

private:
    const KernelParts m_parts;
};

} // namespace ZoVelkor::RemoteKernel
