#pragma once

#include "IZOScpiChannelManagement.h"
#include "Sessions/CServedPaths.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

/// The channel of one remote path, or of all. Threads: any operation from any thread.
class CChannelManagement : public IZOScpiChannelManagement
{
public:
    explicit CChannelManagement(CServedPaths paths) noexcept : m_paths(std::move(paths)) {}
    virtual ~CChannelManagement() = default;

    HRESULT get_ChannelCount(long* count) override;
    HRESULT GetChannel(long remotePath, IZOScpiChannel** channel) override;

private:
    const CServedPaths m_paths;
};

} // namespace ZoVelkor::RemoteKernel
