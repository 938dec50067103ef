#pragma once

#include "IZOScpiChannelManagement.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// The channel of one remote path, or of all. Threads: any operation from any thread.
class CChannelManagement : public IZOScpiChannelManagement
{
public:
    /// @param spPath  null: all
    CChannelManagement(const tagKernelParts& parts, std::shared_ptr<CRemotePath> spPath)
        : m_spPaths(parts.spPaths),
          m_spPath(std::move(spPath))
    {}
    virtual ~CChannelManagement() = default;

    HRESULT get_ChannelCount(long* count) override;
    HRESULT GetChannel(long remotePath, IZOScpiChannel** channel) override;

private:
    const std::shared_ptr<CPathTable> m_spPaths;
    const std::shared_ptr<CRemotePath> m_spPath;
};

} // namespace ZoVelkor::RemoteKernel
