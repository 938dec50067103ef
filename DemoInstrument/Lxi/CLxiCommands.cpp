#include "CLxiCommands.h"

#include "Common/HeaderSuffix.h"
#include "Common/SettingHandlers.h"
#include "Common/SteppedSetting.h"
#include "LxiClock.h"
#include "LxiTable.h"
#include "ZoString.h"

#include <cmath>
#include <string>

namespace ZoVelkor::Demo
{
namespace
{

constexpr tagNumericLimits kDelayS{0, kMaxLxiDelayS, 0};

CLxiTime After(const CLxiTime& time, double seconds)
{
    constexpr double kNanoSecondsPerSecond = 1e9;
    CLxiTimeInterval interval;
    interval.SetNanoSeconds(std::llround(seconds * kNanoSecondsPerSecond));
    CLxiTime later = time;
    later.Add(interval);
    return later;
}

} // namespace

std::span<const HandlerRow<CLxiCommands>> CLxiCommands::Handlers()
{
    using Self = CLxiCommands;
    static constexpr HandlerRow<Self> kRows[] = {
        {LXI_LAN_ENABLED, &Self::Enabled},
        {LXI_LAN_DELAY, &Self::Delay},
        {LXI_IDENTIFY, &Self::Identify},
        {LXI_SEND, &Self::Send},
        {LXI_LOG_ALL, &Self::LogAll},
        {LXI_LOG_COUNT, &Self::LogCount},
        {LXI_LOG_CLEAR, &Self::LogClear},
        {LXI_ERROR_NEXT, &Self::Error},
    };
    static_assert(IsHandlerTable(kRows, LXI_HANDLER_COUNT));
    return kRows;
}

HRESULT CLxiCommands::Enabled(Record& record)
{
    const long lan = HeaderSuffix(record);
    LanSettings settings = m_trigger.Get(lan);
    const HRESULT result = HandleBoolean(record, settings.enabled);
    if (result == S_OK)
    {
        m_trigger.Put(lan, settings);
    }
    return result;
}

HRESULT CLxiCommands::Delay(Pool& pool)
{
    const long lan = HeaderSuffix(pool);
    LanSettings settings = m_trigger.Get(lan);
    const HRESULT result = HandleNumber(pool, kDelayS, settings.delayS);
    if (result == S_OK)
    {
        m_trigger.Put(lan, settings);
    }
    return result;
}

HRESULT CLxiCommands::Identify(Record& record)
{
    bool on = m_trigger.IsIdentified();
    const HRESULT result = HandleBoolean(record, on);
    m_trigger.Identify(on);
    return result;
}

HRESULT CLxiCommands::Send(Record& record)
{
    double leadS = 0;
    if (record.GetArgumentCount() != 0 && record.GetDoubleArgument(leadS, 0) != S_OK)
    {
        return S_FALSE;
    }
    if (!(leadS >= 0 && leadS <= kMaxLxiLeadS))
    {
        return record.SetScpiError(kScpiDataOutOfRange);
    }
    if (!m_trigger.IsOn())
    {
        return record.SetScpiErrorEx(kScpiHardwareMissing, "no LXI");
    }
    const HRESULT result =
        m_trigger.Endpoint().SendEvent(HeaderSuffix(record), After(RemoteKernel::LxiNow(), leadS));
    return SUCCEEDED(result) ? S_OK : record.SetScpiExecutionError("the network refuses the event");
}

HRESULT CLxiCommands::LogAll(Record& record)
{
    const std::vector<std::string> lines = m_trigger.Endpoint().Log().Lines();
    if (lines.empty())
    {
        // The client waits for an answer.
        return record.StringResponse("");
    }
    for (const std::string& line : lines)
    {
        if (record.StringResponse(line) != S_OK)
        {
            return S_FALSE;
        }
    }
    return S_OK;
}

HRESULT CLxiCommands::LogCount(Record& record)
{
    return record.IntegerResponse(static_cast<long>(m_trigger.Endpoint().Log().Count()));
}

HRESULT CLxiCommands::LogClear(Record&)
{
    m_trigger.Endpoint().Log().Clear();
    return S_OK;
}

HRESULT CLxiCommands::Error(Record& record)
{
    EnumLxiErrors code{};
    CComBSTR text;
    m_trigger.Endpoint().Errors().GetLastError(code, text);
    return record.IntegerResponse(static_cast<long>(code)) == S_OK
               ? record.StringResponse(CZoString(text).ToStdString())
               : S_FALSE;
}

} // namespace ZoVelkor::Demo
