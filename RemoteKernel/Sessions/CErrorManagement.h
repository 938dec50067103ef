#pragma once

#include "CServedPaths.h"
#include "IZOScpiErrorManagement.h"
#include "Status/CErrorQueue.h"

#include <memory>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

/// The error queue of one remote path, or those of all. Threads: any operation from any thread.
class CErrorManagement : public IZOScpiErrorManagement
{
public:
    explicit CErrorManagement(CServedPaths paths) noexcept : m_paths(std::move(paths)) {}
    virtual ~CErrorManagement() = default;

    HRESULT SetError(long remotePath, short code, const wchar_t* detail) override;
    HRESULT GetNextError(long remotePath, short* code, wchar_t** text) override;
    HRESULT GetErrorCount(long remotePath, unsigned long* count) override;
    HRESULT ClearErrors(long remotePath) override;

private:
    /// @return null when there is no such path
    std::shared_ptr<CErrorQueue> Find(long remotePath) const;

    const CServedPaths m_paths;
};

} // namespace ZoVelkor::RemoteKernel
