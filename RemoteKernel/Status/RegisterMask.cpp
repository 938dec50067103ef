#include "RegisterMask.h"

#include "ScpiErrorCodes.h"

#include <charconv>

namespace ZoVelkor::RemoteKernel
{

namespace
{

tagRegisterMask ReadNumber(const tagZO_SCPI_PARAMETER& argument)
{
    tagRegisterMask mask;
    const char* const end = argument.szText + argument.iTextLength;
    const auto [place, result] = std::from_chars(argument.szText, end, mask.iValue);
    if (result != std::errc() || place != end)
    {
        mask.iError = kScpiDataOutOfRange;
        mask.sDetail.assign(argument.szText, argument.iTextLength);
    }
    return mask;
}

tagRegisterMask ReadList(const tagZO_SCPI_PARAMETER& argument, const CScpiExpression::Trafo& names)
{
    const std::string list(argument.szText + 1, argument.iTextLength - 2); // without parentheses
    tagRegisterMask mask;
    long value = 0;
    const bool bEmpty = list.find_first_not_of(' ') == std::string::npos;
    if (!bEmpty && CScpiExpression::GetRegisterValueFromExpression(list, value, mask.sDetail, names))
    {
        mask.iValue = static_cast<std::uint32_t>(value);
    }
    else
    {
        mask.iError = kScpiInvalidExpression;
    }
    return mask;
}

tagRegisterMask ReadElement(const tagZO_SCPI_PARAMETER& argument, const CScpiExpression::Trafo& names)
{
    switch (argument.iType)
    {
    case ZO_SCPI_PARAMTYPE_CHARACTER:
        return {.iValue = argument.iSpecialCode, .sDetail = {}};
    case ZO_SCPI_PARAMTYPE_EXPRESSION:
        return ReadList(argument, names);
    default:
        return ReadNumber(argument);
    }
}

} // namespace

tagRegisterMask
ReadRegisterMask(const tagParsedCommand& command, const CScpiExpression::Trafo& names, std::uint32_t highest)
{
    tagRegisterMask all;
    for (unsigned long i = 0; i < command.iArgumentCount; ++i)
    {
        tagRegisterMask element = ReadElement(command.pArguments[i], names);
        if (element.iError == 0 && element.iValue > highest)
        {
            element.iError = kScpiDataOutOfRange;
            element.sDetail.assign(command.pArguments[i].szText, command.pArguments[i].iTextLength);
        }
        if (element.iError != 0)
        {
            element.sDetail = "parameter " + std::to_string(i + 1) + ": " + element.sDetail;
            return element;
        }
        all.iValue |= element.iValue;
    }
    return all;
}

} // namespace ZoVelkor::RemoteKernel
