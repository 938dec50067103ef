#pragma once

#include "CErrorQueue.h"
#include "IZOScpiErrorManagement.h"

#include <map>
#include <memory>
#include <mutex>

namespace ZoVelkor::RemoteKernel
{

/// Finds the error queues of a kernel by remote path. Threads: any operation from any thread.
class CErrorManagement : public IZOScpiErrorManagement
{
public:
    virtual ~CErrorManagement() = default;

    HRESULT SetError(long remotePath, short code, const wchar_t* detail) override;
    HRESULT GetNextError(long remotePath, short* code, wchar_t** text) override;
    HRESULT GetErrorCount(long remotePath, unsigned long* count) override;
    HRESULT ClearErrors(long remotePath) override;

    void AddPath(long remotePath, std::shared_ptr<CErrorQueue> queue);
    void RemovePath(long remotePath) noexcept;

private:
    std::shared_ptr<CErrorQueue> Find(long remotePath);

    std::mutex m_mutex;
    std::map<long, std::shared_ptr<CErrorQueue>> m_queues; // guarded by m_mutex
};

} // namespace ZoVelkor::RemoteKernel
