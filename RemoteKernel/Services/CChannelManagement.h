#pragma once

#include "IZOScpiChannelManagement.h"
#include "Sessions/KernelParts.h"

namespace ZoVelkor::RemoteKernel
{

/// The channel of one remote path, or of all. Threads: any operation from any thread.
class CChannelManagement : public IZOScpiChannelManagement
{
public:
    /// @param path  null: all
    CChannelManagement(const KernelParts& parts, std::shared_ptr<CRemotePath> path)
        : m_paths(parts.paths),
          m_path(std::move(path))
    {}
    virtual ~CChannelManagement() = default;

    HRESULT get_ChannelCount(long* count) override;
    HRESULT GetChannel(long remotePath, IZOScpiChannel** channel) override;

private:
    const std::shared_ptr<CPathTable> m_paths;
    const std::shared_ptr<CRemotePath> m_path;
};

} // namespace ZoVelkor::RemoteKernel
