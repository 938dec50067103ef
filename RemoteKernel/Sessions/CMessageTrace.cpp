#include "CMessageTrace.h"

#include "Trace.h"
#include "Variant.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <iterator>

namespace ZoVelkor::RemoteKernel
{
namespace
{

/// What of a message a line shows.
constexpr std::size_t kShownBytes = 200;

} // namespace

HRESULT CMessageTrace::put_MessageTraceActive(short active)
{
    get_RemoteDiagnoseControl()->bMessageTraceActive.store(active != 0);
    return S_OK;
}

HRESULT CMessageTrace::get_MessageTraceActive(short* active)
{
    if (active == nullptr)
    {
        return E_POINTER;
    }
    *active = ToVariantBool(get_RemoteDiagnoseControl()->bMessageTraceActive.load());
    return S_OK;
}

void CMessageTrace::PrintLine(long remotePath, char direction, std::string_view message) noexcept
{
    try
    {
        std::string line = fmt::format("path {} {} ", remotePath, direction);
        const std::string_view text = message.substr(0, message.find_last_not_of("\r\n") + 1);
        const std::string_view shown = text.substr(0, kShownBytes);
        std::transform(shown.begin(), shown.end(), std::back_inserter(line), [](char c) {
            return c >= ' ' && c <= '~' ? c : '.';
        });
        if (shown.size() != text.size())
        {
            line += fmt::format("... ({} bytes)", text.size());
        }
        DebugPrint("Velkor", line);
    }
    catch (const std::exception&) // no memory: the line is dropped, the message runs
    {
        return;
    }
}

} // namespace ZoVelkor::RemoteKernel
