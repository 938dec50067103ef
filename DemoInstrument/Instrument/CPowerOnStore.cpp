#include "CPowerOnStore.h"

#include "CStateText.h"
#include "GuardedEntry.h"

namespace ZoVelkor::Demo
{
namespace
{

constexpr const wchar_t* kPowerOnValue = L"PowerOn";

constexpr double kHighestStandardMask = 0xFF;
constexpr double kHighestPollMask = 0xFFFF;

void Describe(CStateText& text, RemoteKernel::PowerOnStatus& status)
{
    text.Flag("psc", status.clear);
    text.Value("ese", status.masks.event, 0, kHighestStandardMask);
    text.Value("sre", status.masks.service, 0, kHighestStandardMask);
    text.Value("pre", status.masks.poll, 0, kHighestPollMask);
}

} // namespace

RemoteKernel::PowerOnStatus CPowerOnStore::Load() const
{
    RemoteKernel::PowerOnStatus status;
    std::string kept;
    if (m_registry.Read(kStatusKey, kPowerOnValue, kept) == S_OK)
    {
        CStateText text{kept};
        Describe(text, status);
        status = text.Fault().empty() ? status : RemoteKernel::PowerOnStatus{};
    }
    return status;
}

bool CPowerOnStore::Keep(const RemoteKernel::PowerOnStatus& status) noexcept
{
    return SUCCEEDED(GuardedEntry([&]() -> HRESULT {
        CStateText text;
        RemoteKernel::PowerOnStatus kept = status;
        Describe(text, kept);
        return m_registry.Write(kStatusKey, kPowerOnValue, text.Collected());
    }));
}

} // namespace ZoVelkor::Demo
