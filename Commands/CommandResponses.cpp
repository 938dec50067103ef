#include "CommandResponses.h"

#include "ErrorRaising.h"

#include <fmt/format.h>

#include <limits>

namespace ZoVelkor::Commands
{
namespace
{
ZO_SOURCE_UNIT("Commands/CommandResponses");
}

HRESULT WriteInteger(CCommandCall& call, std::int64_t value)
{
    if (value >= std::numeric_limits<std::int32_t>::min() &&
        value <= std::numeric_limits<std::int32_t>::max())
    {
        return call.Pool().IntegerResponse(static_cast<long>(value));
    }
    return call.Pool().NumericResponse(fmt::format("{}", value));
}

HRESULT WriteUnsigned(CCommandCall& call, std::uint64_t value)
{
    return value <= static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())
               ? call.Pool().IntegerResponse(static_cast<long>(value))
               : call.Pool().NumericResponse(fmt::format("{}", value));
}

HRESULT WriteString(CCommandCall& call, std::string_view text)
{
    if (text.find('\n') != std::string_view::npos)
    {
        RepairError(ZO_ERROR(call.Pool().GetObjectReference(),
                             "no line feed",
                             "A string response has a line feed",
                             ZO_E_SHELL));
        return call.Pool().SetScpiExecutionError("");
    }
    return call.Pool().StringResponse(std::string(text));
}

HRESULT WriteAscii(CCommandCall& call, std::string_view text)
{
    return call.Pool().ArbitraryResponse(text.data(), static_cast<long>(text.size()));
}

HRESULT WriteBlock(CCommandCall& call, std::span<const std::byte> bytes)
{
    return call.Pool().BlockResponse(reinterpret_cast<const char*>(bytes.data()),
                                     static_cast<long>(bytes.size()));
}

HRESULT WriteNumbers(CCommandCall& call, std::span<const double> values)
{
    IZOScpiSubsystemFormat* const format = call.Pool().GetFormatSubsystem();
    if (values.empty() || format == nullptr)
    {
        // The client would wait for an answer that has no item.
        return call.Pool().SetScpiExecutionError(values.empty() ? "No data" : "");
    }
    if (const HRESULT result = call.Pool().PendingDataSeparatorResponse(); result != S_OK)
    {
        return result;
    }
    call.EndNumbers();
    return SUCCEEDED(format->OutputDoubles(values.data(), values.size()))
               ? S_OK
               : call.Pool().SetScpiExecutionError("");
}

} // namespace ZoVelkor::Commands
