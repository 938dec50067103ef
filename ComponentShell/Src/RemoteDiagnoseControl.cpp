#include "RemoteDiagnoseControl.h"

#include "PerformanceCounter.h"

namespace ZoVelkor
{
namespace
{
struct tagProcessControl : public tagRemoteDiagnoseControl
{
    tagProcessControl() noexcept
    {
        LARGE_INTEGER frequency{};
        if (QueryPerformanceFrequency(&frequency) != 0)
        {
            iCounterFrequency = frequency.QuadPart;
        }
    }
};
} // namespace

tagRemoteDiagnoseControl* get_RemoteDiagnoseControl() noexcept
{
    static tagProcessControl control;
    return &control;
}
} // namespace ZoVelkor
