#pragma once

#include "CComPtr.h"
#include "CLazyScpiManager.h"
#include "PlatformTypes.h"
#include "ScpiErrorCodes.h"
#include "ScpiParameter.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ZoVelkor
{

class CObjectDataReference;
struct IZOScpiOutputBuffer;
struct IZOScpiStatusRegister;

/// The rules that both handler styles follow; the classes add what differs.
namespace ScpiExecution
{

struct tagScpiErrorValue
{
    short code = kScpiNoError;
    char const* detail = "";
};

constexpr tagScpiErrorValue QueryOnlyError(bool isQuery)
{
    return isQuery ? tagScpiErrorValue{} : tagScpiErrorValue{kScpiCommandError, "query only"};
}

constexpr tagScpiErrorValue NoQueryError(bool isQuery)
{
    return isQuery ? tagScpiErrorValue{kScpiCommandError, "no query"} : tagScpiErrorValue{};
}

/// The error for a parameter of this type where another was required.
constexpr short UnexpectedTypeError(unsigned long type)
{
    constexpr short kErrors[] = {
        kScpiCommandError,            // not classified
        kScpiMissingParameter,        // no value
        kScpiNumericDataNotAllowed,   // numeric
        kScpiCharacterDataNotAllowed, // character data
        kScpiStringDataNotAllowed,    // string
        kScpiBlockDataNotAllowed,     // block
        kScpiExpressionDataNotAllowed // expression
    };
    return type < std::size(kErrors) ? kErrors[type] : kScpiCommandError;
}

constexpr short TypeError(unsigned long actual, unsigned long expected)
{
    return actual == expected ? kScpiNoError : UnexpectedTypeError(actual);
}

// Deliberate: handlers name the index of the last argument that they need, not how many they need.
constexpr short CountError(std::int64_t count, std::int64_t last, bool exactCount)
{
    if (count <= last)
    {
        return kScpiMissingParameter;
    }
    return exactCount && count != last + 1 ? kScpiUnexpectedNumberOfParameters : kScpiNoError;
}

constexpr short NoArgumentError(std::int64_t count)
{
    return count == 0 ? kScpiNoError : kScpiParameterNotAllowed;
}

inline constexpr unsigned long kAnyType = ~0UL;

/// An internal error of the handler or the kernel, as the component shell reports it.
struct tagMisuse
{
    char const* condition; ///< null: the face names its own argument array
    char const* message;
    HRESULT result;
};

extern const tagMisuse kNoArgumentArray;
extern const tagMisuse kNegativeIndex;

/// A parameter, or why there is none: an internal error, or else the SCPI error.
struct tagFoundArgument
{
    tagZO_SCPI_PARAMETER const* pParameter = nullptr;
    tagMisuse const* pMisuse = nullptr;
    short error = kScpiNoError;
};

/// Checks the array, the index and the type, in this order.
inline tagFoundArgument FindArgument(tagZO_SCPI_PARAMETER const* arguments,
                                     std::int64_t count,
                                     long index,
                                     unsigned long acceptedType) noexcept
{
    if (arguments == nullptr)
    {
        return {nullptr, &kNoArgumentArray};
    }
    if (index < 0)
    {
        return {nullptr, &kNegativeIndex};
    }
    if (index >= count)
    {
        return {nullptr, nullptr, kScpiMissingParameter};
    }
    tagZO_SCPI_PARAMETER const& parameter = arguments[index];
    const short error = acceptedType == kAnyType ? kScpiNoError : TypeError(parameter.iType, acceptedType);
    return error == kScpiNoError ? tagFoundArgument{&parameter} : tagFoundArgument{nullptr, nullptr, error};
}

/// Converts the leading number as strtod does in the C locale; nothing to convert gives 0.
///
/// @return false for a range error, with the overflowed or underflowed value stored
bool ConvertNumber(char const* text, double& value) noexcept;

/// The number that the whole text is.
std::optional<double> WholeNumber(std::string const& text) noexcept;

/// Cuts a number towards zero; -222, with the value left alone, when 32 bits do not hold it.
short TruncateNumber(double number, long& value) noexcept;

/// How one kind of argument is read: the type that it must have, and the conversion. The conversion gives the
/// SCPI error, 0 for none; on an error it leaves its outputs alone, unless said otherwise.
template <class... TOutputs>
struct tagArgumentReader
{
    unsigned long acceptedType;
    short (*read)(tagZO_SCPI_PARAMETER const& parameter, TOutputs&... outputs);
};

/// On a range error the value is stored all the same.
short ReadDouble(tagZO_SCPI_PARAMETER const& parameter, double& value);
short ReadDoubleWithUnit(tagZO_SCPI_PARAMETER const& parameter, double& value, long& unit);
short ReadInteger(tagZO_SCPI_PARAMETER const& parameter, long& value);
short ReadBoolean(tagZO_SCPI_PARAMETER const& parameter, bool& value);
short ReadCode(tagZO_SCPI_PARAMETER const& parameter, long& value);
short ReadMnemonic(tagZO_SCPI_PARAMETER const& parameter, tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value);
short ReadCountedText(tagZO_SCPI_PARAMETER const& parameter, std::string& text);
short ReadType(tagZO_SCPI_PARAMETER const& parameter, tagZO_SCPI_PARAMTYPE& type);
/// Hands out the block with a new reference.
short ReadBlock(tagZO_SCPI_PARAMETER const& parameter, IZOScpiBlockData*& pBlockData, long& length);
short RefuseType(tagZO_SCPI_PARAMETER const& parameter);

inline constexpr tagArgumentReader<double> kDoubleReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadDouble};
inline constexpr tagArgumentReader<double, long> kDoubleWithUnitReader{ZO_SCPI_PARAMTYPE_NUMERIC,
                                                                       &ReadDoubleWithUnit};
inline constexpr tagArgumentReader<long> kIntegerReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadInteger};
inline constexpr tagArgumentReader<bool> kBooleanReader{kAnyType, &ReadBoolean};
inline constexpr tagArgumentReader<long> kCharacterReader{ZO_SCPI_PARAMTYPE_CHARACTER, &ReadCode};
inline constexpr tagArgumentReader<tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE> kMnemonicReader{
    ZO_SCPI_PARAMTYPE_SPECIAL, &ReadMnemonic};
inline constexpr tagArgumentReader<std::string> kStringReader{ZO_SCPI_PARAMTYPE_STRING, &ReadCountedText};
inline constexpr tagArgumentReader<std::string> kExpressionReader{ZO_SCPI_PARAMTYPE_EXPRESSION,
                                                                  &ReadCountedText};
inline constexpr tagArgumentReader<tagZO_SCPI_PARAMTYPE> kTypeReader{kAnyType, &ReadType};
inline constexpr tagArgumentReader<IZOScpiBlockData*, long> kBlockReader{ZO_SCPI_PARAMTYPE_BLOCK, &ReadBlock};
inline constexpr tagArgumentReader<> kTypeRefusal{kAnyType, &RefuseType};

/// Unit-suffix value, or kNone when none is to be reported.
template <long kNone>
short ReadUnitSuffix(tagZO_SCPI_PARAMETER const& parameter, long& unit)
{
    unit = parameter.iNoSuffix == 0 ? long{parameter.iUnitSuffix} : kNone;
    return kScpiNoError;
}

/// The value, when it fits 32 bits.
constexpr std::optional<std::int32_t> Narrow(long value) noexcept
{
    const auto narrow = static_cast<std::int32_t>(value);
    return narrow == value ? std::optional(narrow) : std::nullopt;
}

inline constexpr char kIntegerTooLarge[] = "integer response exceeds 32 bits";

/// Text of one number, without allocation. Large enough for any double in fixed notation.
using NumberBuffer = std::array<char, 336>;

std::string_view FormatInteger(NumberBuffer& buffer, long value) noexcept;
/// As "%f".
std::string_view FormatFixed(NumberBuffer& buffer, double value) noexcept;
/// Definite-length block header; the count has two digits from ten digits of length on.
std::string_view FormatBlockHeader(NumberBuffer& buffer, unsigned long length) noexcept;

/// The result of a write and, when it failed, the text that the output buffer gave.
struct tagBlockWrite
{
    HRESULT result = S_OK;
    std::string errorText;
};

/// Writes a definite-length block: the header, then the bytes.
tagBlockWrite WriteBlock(IZOScpiOutputBuffer& output, char const* data, long length);

/// True when `length` bytes at `data` can be read.
constexpr bool IsReadable(void const* data, long length) noexcept
{
    return length == 0 || (length > 0 && data != nullptr);
}

inline constexpr char kRegisterError[] = "Scpi status register command error";
inline constexpr char kInterfaceMissing[] = "Interface missing";

/// Finds a status register; null when there is none.
CComPtr<IZOScpiStatusRegister>
FindRegister(IZOScpiStatusManagement& management, long remotePath, std::string const& name);

/// Reads one word (tagScpiRegisterPart) of a register.
HRESULT ReadRegisterWord(IZOScpiStatusRegister& statusRegister, long part, long& value);

/// What the delivery of an execution's error needs.
struct tagErrorDelivery
{
    CLazyScpiManager& services;
    long remotePath;
    short code;
    std::string const& detail;
    CObjectDataReference const* pObject;
};

/// Hands the error to the error management of the remote path.
///
/// @throws CShellError when it cannot be reached
HRESULT DeliverError(tagErrorDelivery const& delivery);

} // namespace ScpiExecution
} // namespace ZoVelkor
