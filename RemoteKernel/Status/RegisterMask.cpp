#include "RegisterMask.h"

#include "ScpiErrorCodes.h"

#include <charconv>

namespace ZoVelkor::RemoteKernel
{

namespace
{

RegisterMask ReadNumber(const tagZO_SCPI_PARAMETER& argument)
{
    RegisterMask mask;
    const char* const end = argument.szText + argument.iTextLength;
    const auto [place, result] = std::from_chars(argument.szText, end, mask.value);
    if (result != std::errc() || place != end)
    {
        mask.error = kScpiDataOutOfRange;
        mask.detail.assign(argument.szText, argument.iTextLength);
    }
    return mask;
}

RegisterMask ReadList(const tagZO_SCPI_PARAMETER& argument, const CScpiExpression::Trafo& names)
{
    const std::string list(argument.szText + 1, argument.iTextLength - 2); // without parentheses
    RegisterMask mask;
    long value = 0;
    const bool empty = list.find_first_not_of(' ') == std::string::npos;
    if (!empty && CScpiExpression::GetRegisterValueFromExpression(list, value, mask.detail, names))
    {
        mask.value = static_cast<std::uint32_t>(value);
    }
    else
    {
        mask.error = kScpiInvalidExpression;
    }
    return mask;
}

RegisterMask ReadElement(const tagZO_SCPI_PARAMETER& argument, const CScpiExpression::Trafo& names)
{
    switch (argument.iType)
    {
    case ZO_SCPI_PARAMTYPE_CHARACTER:
        return {.value = argument.iSpecialCode, .detail = {}};
    case ZO_SCPI_PARAMTYPE_EXPRESSION:
        return ReadList(argument, names);
    default:
        return ReadNumber(argument);
    }
}

} // namespace

RegisterMask
ReadRegisterMask(const ParsedCommand& command, const CScpiExpression::Trafo& names, std::uint32_t highest)
{
    RegisterMask all;
    for (unsigned long i = 0; i < command.argumentCount; ++i)
    {
        RegisterMask element = ReadElement(command.arguments[i], names);
        if (element.error == 0 && element.value > highest)
        {
            element.error = kScpiDataOutOfRange;
            element.detail.assign(command.arguments[i].szText, command.arguments[i].iTextLength);
        }
        if (element.error != 0)
        {
            element.detail = "parameter " + std::to_string(i + 1) + ": " + element.detail;
            return element;
        }
        all.value |= element.value;
    }
    return all;
}

} // namespace ZoVelkor::RemoteKernel
