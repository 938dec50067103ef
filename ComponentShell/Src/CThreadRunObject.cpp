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
    if (m_thread != nullptr)
    {
        m_thread->Forget();
    }
}
} // namespace ZoVelkor
