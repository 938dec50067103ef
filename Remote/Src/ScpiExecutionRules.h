#pragma once

#include "CComPtr.h"
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

struct IZOScpiBlockData;
struct IZOScpiOutputBuffer;
struct IZOScpiStatusManagement;
struct IZOScpiStatusRegister;

/// The rules that both handler styles follow; the classes add what differs.
namespace ScpiExecution
{

struct ScpiErrorValue
{
    short code = kScpiNoError;
    const char* detail = "";
};

constexpr ScpiErrorValue QueryOnlyError(bool isQuery)
{
    return isQuery ? ScpiErrorValue{} : ScpiErrorValue{kScpiCommandError, "query only"};
}

constexpr ScpiErrorValue NoQueryError(bool isQuery)
{
    return isQuery ? ScpiErrorValue{kScpiCommandError, "no query"} : ScpiErrorValue{};
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
struct Misuse
{
    const char* condition; ///< null: the face names its own argument array
    const char* message;
    HRESULT result;
};

extern const Misuse kNoArgumentArray;
extern const Misuse kNegativeIndex;

/// A parameter, or why there is none: an internal error, or else the SCPI error.
struct tagFoundArgument
{
    const tagZO_SCPI_PARAMETER* parameter = nullptr;
    const Misuse* misuse = nullptr;
    short error = kScpiNoError;
};

/// Checks the array, the index and the type, in this order.
inline tagFoundArgument FindArgument(const tagZO_SCPI_PARAMETER* arguments,
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
    const tagZO_SCPI_PARAMETER& parameter = arguments[index];
    const short error = acceptedType == kAnyType ? kScpiNoError : TypeError(parameter.iType, acceptedType);
    return error == kScpiNoError ? tagFoundArgument{&parameter} : tagFoundArgument{nullptr, nullptr, error};
}

/// Converts the leading number as strtod does in the C locale; nothing to convert gives 0.
///
/// @return false for a range error, with the overflowed or underflowed value stored
bool ConvertNumber(const char* text, double& value) noexcept;

/// The number that the whole text is.
std::optional<double> WholeNumber(const std::string& text) noexcept;

/// Cuts a number towards zero; -222, with the value left alone, when 32 bits do not hold it.
short TruncateNumber(double number, long& value) noexcept;

/// How one kind of argument is read: the type that it must have, and the conversion. The conversion gives the
/// SCPI error, 0 for none; on an error it leaves its outputs alone, unless said otherwise.
template <class... TOutputs>
struct ArgumentReader
{
    unsigned long acceptedType;
    short (*read)(const tagZO_SCPI_PARAMETER& parameter, TOutputs&... outputs);
};

/// On a range error the value is stored all the same.
short ReadDouble(const tagZO_SCPI_PARAMETER& parameter, double& value);
short ReadDoubleWithUnit(const tagZO_SCPI_PARAMETER& parameter, double& value, long& unit);
short ReadInteger(const tagZO_SCPI_PARAMETER& parameter, long& value);
short ReadBoolean(const tagZO_SCPI_PARAMETER& parameter, bool& value);
short ReadCode(const tagZO_SCPI_PARAMETER& parameter, long& value);
short ReadMnemonic(const tagZO_SCPI_PARAMETER& parameter, tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value);
short ReadCountedText(const tagZO_SCPI_PARAMETER& parameter, std::string& text);
short ReadType(const tagZO_SCPI_PARAMETER& parameter, tagZO_SCPI_PARAMTYPE& type);
/// Hands out the block with a new reference.
short ReadBlock(const tagZO_SCPI_PARAMETER& parameter, IZOScpiBlockData*& blockData, long& length);
short RefuseType(const tagZO_SCPI_PARAMETER& parameter);

inline constexpr ArgumentReader<double> kDoubleReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadDouble};
inline constexpr ArgumentReader<double, long> kDoubleWithUnitReader{ZO_SCPI_PARAMTYPE_NUMERIC,
                                                                    &ReadDoubleWithUnit};
inline constexpr ArgumentReader<long> kIntegerReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadInteger};
inline constexpr ArgumentReader<bool> kBooleanReader{kAnyType, &ReadBoolean};
inline constexpr ArgumentReader<long> kCharacterReader{ZO_SCPI_PARAMTYPE_CHARACTER, &ReadCode};
inline constexpr ArgumentReader<tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE> kMnemonicReader{
    ZO_SCPI_PARAMTYPE_SPECIAL, &ReadMnemonic};
inline constexpr ArgumentReader<std::string> kStringReader{ZO_SCPI_PARAMTYPE_STRING, &ReadCountedText};
inline constexpr ArgumentReader<std::string> kExpressionReader{ZO_SCPI_PARAMTYPE_EXPRESSION,
                                                               &ReadCountedText};
inline constexpr ArgumentReader<tagZO_SCPI_PARAMTYPE> kTypeReader{kAnyType, &ReadType};
inline constexpr ArgumentReader<IZOScpiBlockData*, long> kBlockReader{ZO_SCPI_PARAMTYPE_BLOCK, &ReadBlock};
inline constexpr ArgumentReader<> kTypeRefusal{kAnyType, &RefuseType};

/// Unit-suffix value, or kNone when none is to be reported.
template <long kNone>
short ReadUnitSuffix(const tagZO_SCPI_PARAMETER& parameter, long& unit)
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

/// The result of a write and, when it failed, the text that the output buffer gave.
struct BlockWrite
{
    HRESULT result = S_OK;
    std::string errorText;
};

/// Writes a definite-length block: the header, then the bytes.
BlockWrite WriteBlock(IZOScpiOutputBuffer& output, const char* data, long length);

/// True when `length` bytes at `data` can be read.
constexpr bool IsReadable(const void* data, long length) noexcept
{
    return length == 0 || (length > 0 && data != nullptr);
}

inline constexpr char kRegisterError[] = "Scpi status register command error";
inline constexpr char kInterfaceMissing[] = "Interface missing";

/// Finds a status register; null when there is none.
CComPtr<IZOScpiStatusRegister>
FindRegister(IZOScpiStatusManagement& management, long remotePath, const std::string& name);

/// Reads one word (tagScpiRegisterPart) of a register.
HRESULT ReadRegisterWord(IZOScpiStatusRegister& statusRegister, long part, long& value);

} // namespace ScpiExecution
} // namespace ZoVelkor
