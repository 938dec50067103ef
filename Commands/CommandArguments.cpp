#include "CommandArguments.h"

#include <fmt/format.h>

#include <span>

namespace ZoVelkor::Commands
{
namespace
{

std::string WithUnit(double value, std::string_view unit)
{
    return unit.empty() ? fmt::format("{}", value) : fmt::format("{} {}", value, unit);
}

/// The C++ value of INFinity, NINFinity and NAN.
double SpecialNumber(std::uint32_t code)
{
    switch (code)
    {
    case ZO_SCPI_SPECIAL_INFINITY:
        return std::numeric_limits<double>::infinity();
    case ZO_SCPI_SPECIAL_NEGATIVE_INFINITY:
        return -std::numeric_limits<double>::infinity();
    default:
        return std::numeric_limits<double>::quiet_NaN();
    }
}

HRESULT ReadLimit(CCommandCall& call, long index, const ParameterData& parameter, double& value, int& step)
{
    tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE word = ZO_SCPI_SPECIAL_NONE;
    const HRESULT result = call.Pool().GetMnemonicArgument(word, index);
    if (result != S_OK)
    {
        return result;
    }
    switch (word)
    {
    case ZO_SCPI_SPECIAL_MINIMUM:
        value = parameter.minimum;
        return S_OK;
    case ZO_SCPI_SPECIAL_MAXIMUM:
        value = parameter.maximum;
        return S_OK;
    case ZO_SCPI_SPECIAL_DEFAULT:
        value = parameter.defaultValue;
        return S_OK;
    case ZO_SCPI_SPECIAL_UP:
    case ZO_SCPI_SPECIAL_DOWN:
        step = word == ZO_SCPI_SPECIAL_UP ? 1 : -1;
        return S_OK;
    default:
        return call.Pool().SetScpiError(kScpiIllegalParameterValue);
    }
}

} // namespace

HRESULT
RefuseValue(CCommandCall& call, const ArgumentContext& context, double value, double minimum, double maximum)
{
    const std::string_view unit = context.parameter.unit;
    const std::string detail = fmt::format("{} {}, allowed {} to {}",
                                           CommandName(context.header),
                                           WithUnit(value, unit),
                                           WithUnit(minimum, unit),
                                           WithUnit(maximum, unit));
    return call.Pool().SetScpiError(kScpiDataOutOfRange, detail, true);
}

HRESULT CheckRange(CCommandCall& call, const ArgumentContext& context, double value)
{
    const ParameterData& parameter = context.parameter;
    // Not a number is outside of any range, and inside where there is none.
    const bool hasRange = (parameter.type & ARG_MINMAX) != 0;
    if (!hasRange || (value >= parameter.minimum && value <= parameter.maximum))
    {
        return S_OK;
    }
    return RefuseValue(call, context, value, parameter.minimum, parameter.maximum);
}

HRESULT ReadNumber(CCommandCall& call, long index, const ArgumentContext& context, double& value, int& step)
{
    const std::span<const tagZO_SCPI_PARAMETER> arguments = call.Arguments();
    const auto place = static_cast<std::size_t>(index);
    if (place < arguments.size() && arguments[place].iType == ZO_SCPI_PARAMTYPE_SPECIAL)
    {
        return ReadLimit(call, index, context.parameter, value, step);
    }
    if (const HRESULT result = call.Pool().GetDoubleArgument(value, index); result != S_OK)
    {
        return result;
    }
    if (const std::uint32_t code = arguments[place].iSpecialCode; code != ZO_SCPI_SPECIAL_NONE)
    {
        if (!context.parameter.takesInfinity)
        {
            return call.Pool().SetScpiError(kScpiIllegalParameterValue);
        }
        value = SpecialNumber(code);
        return S_OK;
    }
    return CheckRange(call, context, value);
}

HRESULT ReadWord(CCommandCall& call, long index, long& place)
{
    return call.Pool().GetCharacterArgument(place, index);
}

HRESULT ReadText(CCommandCall& call, long index, const ArgumentContext& context, std::string& text)
{
    const HRESULT result = call.Pool().GetStringArgument(text, index);
    if (result == S_OK && static_cast<double>(text.size()) > context.parameter.maximum)
    {
        return call.Pool().SetScpiError(kScpiTooMuchData);
    }
    return result;
}

HRESULT ReadBlock(CCommandCall& call, long index, CBlockInput& block)
{
    CComPtr<IZOScpiBlockData> data;
    long length = 0;
    const HRESULT result = call.Pool().GetBlockArgument(&data, length, index);
    if (result == S_OK)
    {
        block = CBlockInput(std::move(data), length);
    }
    return result;
}

HRESULT ReadExpression(CCommandCall& call, long index, CChannelList& list)
{
    std::string text;
    const HRESULT result = call.Pool().GetExprStringArgument(text, index);
    if (result == S_OK)
    {
        list = CChannelList(std::move(text));
    }
    return result;
}

} // namespace ZoVelkor::Commands
