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

void Describe(CStateText& text, RemoteKernel::tagPowerOnStatus& status)
{
    text.Flag("psc", status.bClear);
    text.Value("ese", status.masks.event, 0, kHighestStandardMask);
    text.Value("sre", status.masks.service, 0, kHighestStandardMask);
    text.Value("pre", status.masks.poll, 0, kHighestPollMask);
}

} // namespace

RemoteKernel::tagPowerOnStatus CPowerOnStore::Load() const
{
    RemoteKernel::tagPowerOnStatus status;
    std::string kept;
    if (m_registry.Read(kStatusKey, kPowerOnValue, kept) == S_OK)
    {
        CStateText text{kept};
        Describe(text, status);
        status = text.Fault().empty() ? status : RemoteKernel::tagPowerOnStatus{};
    }
    return status;
}

bool CPowerOnStore::Keep(const RemoteKernel::tagPowerOnStatus& status) noexcept
{
    return SUCCEEDED(GuardedEntry([&]() -> HRESULT {
        CStateText text;
        RemoteKernel::tagPowerOnStatus kept = status;
        Describe(text, kept);
        return m_registry.Write(kStatusKey, kPowerOnValue, text.Collected());
    }));
}

} // namespace ZoVelkor::Demo
