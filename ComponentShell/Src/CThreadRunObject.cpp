#include "CThreadRunObject.h"

#include "CThread.h"

namespace ZoVelkor
{
CThreadRunObject::~CThreadRunObject()
{
    DetachFromThread();
}

void CThreadRunObject::DetachFromThread() noexcept
{
    if (m_pThread != nullptr)
    {
        m_pThread->Forget();
    }
}
} // namespace ZoVelkor
