#include "ScpiExecutionRules.h"

#include "CComBSTR.h"
#include "ErrorReport.h"
#include "IZOScpiBlockData.h"
#include "IZOScpiOutputBuffer.h"
#include "IZOScpiStatusManagement.h"
#include "IZOScpiStatusRegister.h"
#include "ResponseData.h"
#include "ZoString.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace ZoVelkor::ScpiExecution
{

const Misuse kNoArgumentArray{nullptr, "Missing parameter", E_POINTER};
const Misuse kNegativeIndex{"iArgumentIndex >= 0", "Invalid argument index", ZO_E_SHELL};

namespace
{

using WordReader = HRESULT (IZOScpiStatusRegister::*)(wchar_t*);

/// In the order of tagScpiRegisterPart.
constexpr WordReader kWordReaders[] = {&IZOScpiStatusRegister::GetCondition,
                                       &IZOScpiStatusRegister::GetEvents,
                                       &IZOScpiStatusRegister::GetEnable,
                                       &IZOScpiStatusRegister::GetNegTrans,
                                       &IZOScpiStatusRegister::GetPosTrans};

double ConvertWithLibrary(const char* text, char** end) noexcept
{
    // What goes over the wire must not depend on the locale of the process.
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    errno = 0;
    return strtod_l(text, end, locale);
}

} // namespace

bool ConvertNumber(const char* text, double& value) noexcept
{
    double fast = 0;
    const auto parsed = std::from_chars(text, text + std::char_traits<char>::length(text), fast);
    const double magnitude = std::fabs(fast);
    // Plus signs, blanks, hexadecimal numbers (they begin with a zero) and everything near a limit are left
    // to the library; the comparison is false for not-a-number too.
    if (parsed.ec == std::errc() && magnitude > std::numeric_limits<double>::min() &&
        magnitude <= std::numeric_limits<double>::max())
    {
        value = fast;
        return true;
    }
    value = ConvertWithLibrary(text, nullptr);
    return errno != ERANGE;
}

std::optional<double> WholeNumber(const std::string& text) noexcept
{
    char* end = nullptr;
    const double value = ConvertWithLibrary(text.c_str(), &end);
    const bool isWhole = end != text.c_str() && end == text.c_str() + text.size();
    return isWhole ? std::optional(value) : std::nullopt;
}

short TruncateNumber(double number, long& value) noexcept
{
    // 2147483647.9 is in range, because it is cut to 2147483647. Not-a-number fails the comparison.
    if (!(number >= -2147483648.0 && number < 2147483648.0))
    {
        return kScpiDataOutOfRange;
    }
    value = static_cast<std::int32_t>(number);
    return kScpiNoError;
}

short ReadDouble(const tagZO_SCPI_PARAMETER& parameter, double& value)
{
    return ConvertNumber(parameter.szText, value) ? kScpiNoError : kScpiDataOutOfRange;
}

short ReadDoubleWithUnit(const tagZO_SCPI_PARAMETER& parameter, double& value, long& unit)
{
    const short error = ReadDouble(parameter, value);
    if (error == kScpiNoError)
    {
        unit = parameter.iUnit;
    }
    return error;
}

short ReadInteger(const tagZO_SCPI_PARAMETER& parameter, long& value)
{
    double number = 0;
    const short error = ReadDouble(parameter, number);
    return error == kScpiNoError ? TruncateNumber(number, value) : error;
}

short ReadBoolean(const tagZO_SCPI_PARAMETER& parameter, bool& value)
{
    if (parameter.iType == ZO_SCPI_PARAMTYPE_SPECIAL)
    {
        if (parameter.iSpecialCode != ZO_SCPI_SPECIAL_ON && parameter.iSpecialCode != ZO_SCPI_SPECIAL_OFF)
        {
            return kScpiInvalidCharacterData;
        }
        value = parameter.iSpecialCode == ZO_SCPI_SPECIAL_ON;
        return kScpiNoError;
    }
    long number = 0;
    short error = TypeError(parameter.iType, ZO_SCPI_PARAMTYPE_NUMERIC);
    error = error == kScpiNoError ? ReadInteger(parameter, number) : error;
    if (error == kScpiNoError)
    {
        value = number != 0;
    }
    return error;
}

short ReadCode(const tagZO_SCPI_PARAMETER& parameter, long& value)
{
    value = static_cast<std::int32_t>(parameter.iSpecialCode);
    return kScpiNoError;
}

short ReadMnemonic(const tagZO_SCPI_PARAMETER& parameter, tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value)
{
    value = static_cast<tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE>(parameter.iSpecialCode);
    return kScpiNoError;
}

short ReadCountedText(const tagZO_SCPI_PARAMETER& parameter, std::string& text)
{
    // Counted, because a string may hold NULs; the field bounds a count that is wrong.
    text.assign(parameter.szText, std::min<std::size_t>(parameter.iTextLength, sizeof(parameter.szText)));
    return kScpiNoError;
}

short ReadType(const tagZO_SCPI_PARAMETER& parameter, tagZO_SCPI_PARAMTYPE& type)
{
    type = static_cast<tagZO_SCPI_PARAMTYPE>(parameter.iType);
    return kScpiNoError;
}

short ReadBlock(const tagZO_SCPI_PARAMETER& parameter, IZOScpiBlockData*& blockData, long& length)
{
    blockData = CComPtr<IZOScpiBlockData>(parameter.pBlockData).Detach();
    length = static_cast<std::int32_t>(parameter.iBlockLength);
    return kScpiNoError;
}

short RefuseType(const tagZO_SCPI_PARAMETER& parameter)
{
    return UnexpectedTypeError(parameter.iType);
}

std::string_view FormatInteger(NumberBuffer& buffer, long value) noexcept
{
    char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

std::string_view FormatFixed(NumberBuffer& buffer, double value) noexcept
{
    constexpr int kDecimals = 6;
    char* const end =
        std::to_chars(
            buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, kDecimals)
            .ptr;
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

BlockWrite WriteBlock(IZOScpiOutputBuffer& output, const char* data, long length)
{
    const auto size = static_cast<unsigned long>(length);
    char header[kMaxBlockHeaderSize];
    const auto headerSize = static_cast<std::size_t>(WriteDefiniteBlockHeader(header, size) - header);
    // Written in two steps: a joined copy would double the memory of a large block.
    CComBSTR error;
    HRESULT result = output.Write(headerSize, header, &error);
    if (SUCCEEDED(result))
    {
        result = output.WriteBinary(size, reinterpret_cast<const unsigned char*>(data), &error);
    }
    return {result, SUCCEEDED(result) ? std::string() : CZoString(error).ToStdString()};
}

CComPtr<IZOScpiStatusRegister>
FindRegister(IZOScpiStatusManagement& management, long remotePath, const std::string& name)
{
    const CComBSTR wideName(name.c_str());
    CComPtr<IZOScpiStatusRegister> statusRegister;
    management.GetRegister(remotePath, wideName, &statusRegister);
    return statusRegister;
}

HRESULT ReadRegisterWord(IZOScpiStatusRegister& statusRegister, long part, long& value)
{
    if (part < 0 || part >= std::ssize(kWordReaders))
    {
        return E_INVALIDARG;
    }
    const WordReader reader = kWordReaders[part];
    wchar_t word = 0;
    const HRESULT result = (statusRegister.*reader)(&word);
    value = static_cast<std::int32_t>(word);
    return result;
}

} // namespace ZoVelkor::ScpiExecution
