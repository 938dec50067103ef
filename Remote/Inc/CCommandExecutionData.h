#pragma once

#include "CLazyScpiManager.h"
#include "IZOScpiBlockData.h"
#include "IZOScpiOutputBuffer.h"
#include "ScpiErrorCodes.h"
#include "ScpiParserData.h"
#include "ScpiRegisterPart.h"
#include "ZoExport.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ZoVelkor
{

class CObjectDataReference;

namespace ScpiExecution
{
struct tagFoundArgument;
}

/// One command as a table-driven handler sees it: parsed parameters, numeric suffixes, response and error.
///
/// Results: 0 (S_OK) for success; 1 (S_FALSE) when a SCPI error has been set and the handler must return.
/// Indexes count from 0. A getter that fails leaves its output as it was. The rules are those of
/// CScpiFunctionExecutionDataPool with these differences: misuse (no argument array, a negative index, a null
/// pointer) is thrown as CShellError, which CScpiSinkFramework::RunCommand turns into -200; responses are
/// formatted here and go straight to the output buffer, unless said otherwise; GetSuffix gives 0 where the
/// pool gives -1.
///
/// Making one allocates nothing and asks no interface:
/// `CCommandExecutionData data(MakeScpiParserData(context, remotePath, ...), this);`
///
/// Ownership: borrows the command's data; used within one Execute call and not kept. Threads: only the thread
/// that executes the command; no locks.
class ZO_EXPORT CCommandExecutionData
{
public:
    /// @param data  copied; what it points to is borrowed until Execute returns
    /// @param pObject  the component named in reports of internal errors; may be null
    explicit CCommandExecutionData(const tagZO_SCPI_PARSER_DATA& data,
                                   const CObjectDataReference* pObject = nullptr) noexcept;
    CCommandExecutionData(const CCommandExecutionData&) = delete;
    CCommandExecutionData& operator=(const CCommandExecutionData&) = delete;
    ~CCommandExecutionData();

    /// Gives the command's character-data choices for GetCharacterString.
    ///
    /// @param pp_Enums  borrowed; as many texts as the command's table has values from 1 on, then a null
    void SetEnumerationTexts(const char* const* pp_Enums) noexcept { m_pp_Enums = pp_Enums; }

    /// Whether the command came with '?'.
    bool IsQuery() const noexcept { return m_query; }
    /// The remote path that the command came from.
    long GetRemotePath() const noexcept { return m_iRemotePath; }
    /// Number of arguments, those left out between two separators included.
    unsigned long GetArgumentCount() const noexcept { return m_argumentCount; }
    /// The component named in reports of internal errors; may be null.
    const CObjectDataReference* GetObjectReference() const noexcept { return m_object; }
    /// Services of the remote path.
    CLazyScpiManager& GetServices() noexcept { return m_pScpiManager; }

    /// @name Errors
    /// The error goes to the error queue when the command is finished; a later one replaces an earlier one.
    /// Result: 1 when an error was set, else 0.
    /// @{

    /// Sets the code alone: a detail text that was set before stays and goes along with it.
    ///
    /// @param code  of ScpiErrorCodes.h or the instrument's own; 0 takes an error back
    HRESULT SetScpiError(short code);
    /// Sets the error with a detail, which follows the standard text of the code.
    HRESULT SetScpiErrorEx(short code, const std::string& text);
    /// -200 "Execution error" with a detail; the empty one gives none.
    HRESULT SetScpiExecutionError(const std::string& text);
    /// -100 with the detail "query only", unless the command is a query.
    HRESULT SetScpiError_QueryOnly();
    /// -100 with the detail "no query" when the command is a query.
    HRESULT SetScpiError_NoQuery();
    /// -108: the command takes no parameter.
    HRESULT SetScpiError_ParameterNotAllowed();
    /// -109: a parameter is missing.
    HRESULT ScpiErrorMissingParameter();
    /// -115: there are too many.
    HRESULT ScpiErrorUnexpectedParameter();
    /// Sets the error of the type that the argument has; always 1.
    HRESULT ScpiErrorUnexpectedParameterType(long index);
    /// 0 while no error is set.
    short GetScpiError() const noexcept { return m_scpiError; }
    /// The detail; empty without one.
    const std::string& GetScpiErrorText() const noexcept { return m_detail; }
    /// Hands the error, when one is set, to the error management of the remote path; once.
    ///
    /// @return S_OK; S_FALSE when the hand-over failed, the error is then -200
    /// @throws CShellError without SCPI manager or error management, or with a negative remote path
    HRESULT FinishCommandExecution();
    /// @}

    /// @name Argument checks
    /// @{

    /// Checks how many arguments there are: -109 for too few, -115 for too many.
    ///
    /// @param last  index of the last required argument, not a count: (0, true) demands exactly one argument
    /// @param exactCount  further arguments are refused
    HRESULT CheckArgumentCount(unsigned long last, bool exactCount);
    /// -108 when there is any argument.
    HRESULT CheckArgumentNotAllowed();
    /// Sets the error of `actual` (values of tagZO_SCPI_PARAMTYPE) when it is not the expected type.
    HRESULT CheckArgumentType(long actual, long expected);
    /// -109 when there is no such argument, the error of its type when it is not `type`.
    HRESULT CheckParamType(long index, long type);
    /// CheckParamType for a string.
    HRESULT CheckStringParamType(long index) { return CheckParamType(index, ZO_SCPI_PARAMTYPE_STRING); }
    /// CheckParamType for a number.
    HRESULT CheckNumericParamType(long index) { return CheckParamType(index, ZO_SCPI_PARAMTYPE_NUMERIC); }
    /// CheckParamType for a block.
    HRESULT CheckBlockParamType(long index) { return CheckParamType(index, ZO_SCPI_PARAMTYPE_BLOCK); }
    /// CheckParamType for a word of the command's own list.
    HRESULT CheckCharParamType(long index) { return CheckParamType(index, ZO_SCPI_PARAMTYPE_CHARACTER); }
    /// CheckParamType for an expression.
    HRESULT CheckExpressionParamType(long index)
    {
        return CheckParamType(index, ZO_SCPI_PARAMTYPE_EXPRESSION);
    }
    /// @}

    /// @name Suffixes and arguments
    /// @{

    /// The numeric suffix of a header node; 1 where the message has none.
    ///
    /// @param index  counts the nodes of the header that take a suffix, from the root; not checked
    HRESULT GetNumericSuffix(long& value, long index);
    /// As GetNumericSuffix; -114, with the value stored, outside min to max.
    HRESULT GetNumericSuffixWithRangeCheck(long& value, long index, long min, long max);
    /// The kind of an argument, whatever it is.
    HRESULT GetArgumentType(tagZO_SCPI_PARAMTYPE& type, long index);
    /// Leading number; out of a double's range: -222, with the overflowed (infinite) value stored.
    HRESULT GetDoubleArgument(double& value, long index);
    /// As GetDoubleArgument, and the unit value of the table; -1 without unit.
    HRESULT GetDoubleArgumentWithUnit(double& value, long& unit, long index);
    /// Number truncated towards zero; -222 outside -2147483648 to 2147483647.
    HRESULT GetIntegerArgument(long& value, long index);
    /// ON, OFF or a number, which is true unless it truncates to 0; -141 for another special word.
    HRESULT GetBooleanArgument(bool& value, long index);
    /// Value of a character-data argument in the command table.
    ///
    /// @param[out] value  what the table's mnemonic record has, see _CS_CHR
    HRESULT GetCharacterArgument(long& value, long index);
    /// Text of a character-data argument out of the enumeration texts; -141 for a value without text.
    HRESULT GetCharacterString(std::string& text, long index);
    /// A special word such as MINimum; another kind of argument sets the error of its type.
    HRESULT GetMnemonicArgument(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value, long index);
    /// Contents of a string argument, embedded NULs included.
    HRESULT GetStringArgument(std::string& text, long index);
    /// An expression, parentheses included.
    HRESULT GetExprStringArgument(std::string& text, long index);
    /// @param[out] ppBlockData  a new reference; null when the argument has no block object
    /// @param[out] length  bytes; -1 when not known in advance
    HRESULT GetBlockArgument(IZOScpiBlockData** ppBlockData, long& length, long index);
    /// Unit-suffix value of a numeric argument; 0 when none is to be reported.
    HRESULT GetSuffix(long& unit, long index);
    /// @}

    /// @name Response
    /// Every item is preceded by "," when an item was written before; a refusal of the output buffer sets
    /// -200.
    /// @{

    /// Answers 1 or 0 (SCPI-99 vol. 1, 7.3).
    HRESULT BooleanResponse(bool value);
    /// Answers a decimal integer (NR1, IEEE 488.2 section 8.7.2).
    ///
    /// @param value  a 32-bit value; -200 for another one
    HRESULT IntegerResponse(long value);
    /// Fixed notation with six decimals, "%f", so small values lose digits; NumericResponse loses nothing.
    HRESULT DoubleResponse(double value);
    /// As many digits as the value needs, through the format subsystem, as the pool answers it.
    HRESULT NumericResponse(double value);
    /// String response data (IEEE 488.2 section 8.7.8).
    HRESULT StringResponse(const std::string& text);
    /// Arbitrary ASCII response data (IEEE 488.2 section 8.7.11).
    ///
    /// @param length  bytes at data, 0 or more
    HRESULT ArbitraryResponse(const char* data, long length);
    /// Definite-length block (IEEE 488.2 section 8.7.9); the error text of a refusing output buffer goes
    /// along with -200.
    HRESULT BlockResponse(const char* data, long length);
    /// Numbers in the data format of the remote path.
    ///
    /// @param count  numbers at values, 0 or more
    HRESULT OutputFormatData(const double* values, long count);
    /// One word of a status register, through the format subsystem; every failure is reported and sets -200.
    ///
    /// @param name  for example "STATus:OPERation"
    /// @param index  tagScpiRegisterPart
    HRESULT OutputRegisterValue(const std::string& name, long index);
    /// @param[out] ppRegister  a new reference
    /// @throws CShellError "Scpi status register command error" when there is no such register
    HRESULT GetRegisterInterface(const std::string& name, IZOScpiStatusRegister** ppRegister);
    /// @}

private:
    template <class TReader, class... TOutputs>
    HRESULT ReadArgument(const TReader& reader, long index, TOutputs&... outputs);
    HRESULT RaiseIf(short code);
    HRESULT RaiseFault(const ScpiExecution::tagFoundArgument& argument);
    HRESULT SucceedOrRaise(HRESULT result);
    HRESULT BeginItem();
    HRESULT WriteItem(std::string_view text);
    template <class TOperation>
    HRESULT FormatItem(TOperation&& operation);
    IZOScpiOutputBuffer& RequireOutputBuffer();
    IZOScpiSubsystemFormat& RequireFormatSubsystem();

    std::int32_t m_iRemotePath;
    short m_scpiError = 0;
    CLazyScpiManager m_pScpiManager;
    const long* m_numericSuffixes;
    std::uint32_t m_argumentCount;
    const tagZO_SCPI_PARAMETER* m_pParams;
    std::string m_detail;
    bool m_query;
    const char* const* m_pp_Enums = nullptr;
    bool m_insertSeparator = false;
    const CObjectDataReference* m_object;
    IZOScpiOutputBuffer* m_pOutputBuffer;
    bool m_errorDelivered = false;
};

} // namespace ZoVelkor
