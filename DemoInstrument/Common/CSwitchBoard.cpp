#include "CSwitchBoard.h"

#include "CChannelList.h"

#include <string>

namespace ZoVelkor::Demo
{
namespace
{

/// Channels that one channel list may name; a longer list is no sensible one.
constexpr std::size_t kMaxListedChannels = 256;

} // namespace

HRESULT CSwitchBoard::ReadSwitches(CCommandExecutionData& record, std::vector<std::size_t>& switches)
{
    std::string text;
    if (record.CheckArgumentCount(0, true) != S_OK || record.GetExprStringArgument(text, 0) != S_OK)
    {
        return S_FALSE;
    }
    const auto channels = Commands::ParseChannelList(text, kMaxListedChannels);
    if (!channels)
    {
        return record.SetScpiError(kScpiInvalidExpression);
    }
    for (const long channel : *channels)
    {
        if (channel < 1 || channel > static_cast<long>(kSwitchCount))
        {
            return record.SetScpiError(kScpiDataOutOfRange);
        }
        switches.push_back(static_cast<std::size_t>(channel - 1));
    }
    return channels->size() > kMaxListedChannels ? record.SetScpiError(kScpiTooMuchData) : S_OK;
}

HRESULT CSwitchBoard::HandleClose(CCommandExecutionData& record)
{
    std::vector<std::size_t> switches;
    if (ReadSwitches(record, switches) != S_OK)
    {
        return S_FALSE;
    }
    if (!record.IsQuery())
    {
        m_closed.reset();
        for (const std::size_t number : switches)
        {
            m_closed.set(number);
        }
        return S_OK;
    }
    if (switches.empty())
    {
        // The client would wait for an answer that has no item.
        return record.SetScpiError(kScpiIllegalParameterValue);
    }
    for (const std::size_t number : switches)
    {
        if (record.BooleanResponse(m_closed.test(number)) != S_OK)
        {
            return S_FALSE;
        }
    }
    return S_OK;
}

} // namespace ZoVelkor::Demo
