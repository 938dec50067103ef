#pragma once

#include "CComPtr.h"
#include "CComVariant.h"
#include "IZODatabaseTransaction.h"
#include "IZOScpiBlockData.h"
#include "IZOScpiErrorManagement.h"
#include "IZOScpiManager.h"
#include "IZOScpiOutputBuffer.h"
#include "IZOScpiPendingOperations.h"
#include "IZOScpiStatusManagement.h"
#include "IZOScpiSubsystemFormat.h"
#include "ScpiErrorCodes.h"
#include "ScpiParameter.h"
#include "ScpiRegisterPart.h"
#include "ZoExport.h"

#include <string>

namespace ZoVelkor
{

class CObjectDataReference;
class CZoString;

/// What a command handler sees of one command: its arguments, its response and its SCPI error.
///
/// Results: 0 (S_OK) for success; 1 (S_FALSE) when a SCPI error has been set and the handler must return; any
/// other value comes from the component shell and is handed on. Argument indexes count from 0. A getter that
/// fails leaves its output as it was, unless said otherwise.
///
/// Every typed getter checks in this order: no argument array, or a negative index: an internal error is
/// reported and -200 is set; index not below the count: -109; another type than the required one: -109, -128,
/// -148, -158, -168 or -178 for the type that arrived, -100 for an unknown one.
///
/// Errors are set here and delivered once, by FinishCommandExecution.
/// Ownership: the pool borrows the command's data; it is used within one Execute call and not kept. Threads:
/// only the thread that executes the command; no locks.
class ZO_EXPORT CScpiFunctionExecutionDataPool
{
public:
    CScpiFunctionExecutionDataPool(const CScpiFunctionExecutionDataPool&) = delete;
    CScpiFunctionExecutionDataPool& operator=(const CScpiFunctionExecutionDataPool&) = delete;
    virtual ~CScpiFunctionExecutionDataPool();

    /// @name The command
    /// @{

    /// Whether the command came with '?'.
    virtual bool IsQuery() const = 0;
    /// The opposite of IsQuery.
    virtual bool IsSetting() const = 0;
    /// The remote path that the command came from, 0 or more.
    virtual long GetRemotePath() const = 0;
    /// Long form of the command without suffixes, borrowed; null when the parser gave none.
    virtual const wchar_t* GetHeader() const = 0;
    /// The component named in reports of internal errors; may be null.
    virtual const CObjectDataReference* GetObjectReference() const = 0;
    /// The raw numeric suffix of a header node as an unsigned 32-bit value; 1 where the message has none.
    ///
    /// @param index  counts the nodes of the header that take a suffix, from the root; not checked
    virtual unsigned long GetRawNumericSuffixValue(long index) const = 0;
    /// @}

    /// @name Arguments
    /// @{

    /// Number of arguments, those left out between two separators included.
    virtual long GetArgumentCount() const = 0;
    /// The same; always 0.
    virtual HRESULT GetArgumentCount(unsigned long& count) = 0;
    /// The kind of an argument, whatever it is.
    virtual HRESULT GetArgumentType(tagZO_SCPI_PARAMTYPE& type, long index) = 0;
    /// Checks how many arguments there are: -109 for too few, -115 for too many.
    ///
    /// @param last  index of the last required argument, not a count: (0, true) demands exactly one argument
    /// @param exactCount  further arguments are refused
    virtual HRESULT CheckArgumentCount(long last, bool exactCount) = 0;
    /// -108 when there is any argument.
    virtual HRESULT CheckArgumentNotAllowed() = 0;
    /// Sets the error of `actual` (values of tagZO_SCPI_PARAMTYPE) when it is not the expected type.
    virtual HRESULT CheckArgumentType(long actual, long expected) = 0;
    /// Sets the error of the type that the argument has; always 1.
    virtual HRESULT ScpiErrorUnexpectedParameterType(long index) = 0;

    /// Leading number of a numeric argument; text after it is ignored.
    ///
    /// Out of a double's range: -222, with the overflowed (infinite) value stored.
    virtual HRESULT GetDoubleArgument(double& value, long index) = 0;
    /// As GetDoubleArgument, and the unit value of the table; -1 without unit.
    virtual HRESULT GetDoubleArgumentWithUnit(double& value, long& unit, long index) = 0;
    /// Number truncated towards zero; -222 outside -2147483648 to 2147483647.
    virtual HRESULT GetIntegerArgument(long& value, long index) = 0;
    /// ON, OFF or a number, which is true unless it truncates to 0; -141 for another special word.
    virtual HRESULT GetBooleanArgument(bool& value, long index) = 0;
    /// Value of a character-data argument in the command table, see _CS_CHR.
    virtual HRESULT GetCharacterArgument(long& value, long index) = 0;
    /// A special word such as MINimum; another kind of argument sets the error of its type.
    virtual HRESULT GetMnemonicArgument(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value, long index) = 0;
    /// Contents of a string argument, embedded NULs included.
    virtual HRESULT GetStringArgument(std::string& text, long index) = 0;
    /// An expression, parentheses included.
    virtual HRESULT GetExprStringArgument(std::string& text, long index) = 0;
    /// The text of an argument of any type, as received.
    ///
    /// A missing argument sets -109 but returns 0, with the text left alone; GetScpiError tells.
    virtual HRESULT GetStringArgument(CZoString& text, long index) = 0;
    /// The text of an argument of any type up to its first blank, which drops a unit; ON and OFF give "1" and
    /// "0".
    ///
    /// A missing argument sets -109 but returns 0, with the text left alone; GetScpiError tells.
    virtual HRESULT GetNumericArgument(CZoString& text, long index) = 0;
    /// Unit-suffix value of a numeric argument; -1, also on failure, when none is to be reported.
    virtual HRESULT GetUnitSuffix(long& unit, long index) = 0;
    /// The reader of a block argument.
    ///
    /// @param[out] ppBlockData  a new reference; null when the argument has no block object
    /// @param[out] length  bytes; -1 when not known in advance
    virtual HRESULT GetBlockArgument(IZOScpiBlockData** ppBlockData, long& length, long index) = 0;
    /// Lends the unread bytes of a block argument without copying them.
    ///
    /// @param[out] ppBlockData  first byte, borrowed from the kernel until Execute returns; null without
    ///                          block
    /// @return 0, 1, or E_ABORT when the command was cancelled; -200 when the block is too large to be held
    ///         in memory
    virtual HRESULT GetBlockDataArgument(unsigned char** ppBlockData, unsigned long& length, long index) = 0;
    /// @}

    /// @name Errors
    /// @{

    /// Sets the SCPI error of this command.
    ///
    /// @param code  0 takes an error back
    /// @param text  detail that follows the standard text of the code
    /// @param replace  false: an error that has been set before stays
    /// @return 1 when the command has an error afterwards, else 0
    virtual HRESULT SetScpiError(short code, const std::string& text, bool replace) = 0;
    /// The same without detail; replaces an earlier error.
    HRESULT SetScpiError(short code) { return SetScpiError(code, std::string(), true); }
    /// -200 "Execution error" with a detail; the empty one gives none. Replaces an earlier error.
    virtual HRESULT SetScpiExecutionError(const std::string& text) = 0;
    /// -100 with the detail "query only", unless the command is a query.
    virtual HRESULT SetScpiError_QueryOnly() = 0;
    /// -100 with the detail "no query" when the command is a query.
    virtual HRESULT SetScpiError_NoQuery() = 0;
    /// -108: the command takes no parameter.
    virtual HRESULT SetScpiError_ParameterNotAllowed() = 0;
    /// -109: a parameter is missing.
    virtual HRESULT ScpiErrorMissingParameter() = 0;
    /// -115: there are too many.
    virtual HRESULT ScpiErrorUnexpectedParameter() = 0;
    /// -160 with the text, in which "%FORMDATA%" stands for the current data format; a "()" left over is
    /// removed.
    virtual HRESULT SetScpiBlockDataError(const std::string& text) = 0;
    /// 0 while no error is set.
    virtual short GetScpiError() const = 0;
    /// The detail; empty without one.
    virtual const std::string& GetScpiErrorText() const = 0;
    /// Hands the error, when one is set, to the error management of the remote path; once.
    ///
    /// @return S_OK; S_FALSE when the hand-over failed, the error is then -200
    /// @throws CShellError without error management or with a negative remote path
    virtual HRESULT FinishCommandExecution() = 0;
    /// @}

    /// @name Response
    /// Items of one query are joined by data separators: every item is preceded by one when an item was
    /// written before. Numbers, strings and separators go through the format subsystem, all else straight to
    /// the output buffer; a refusal of either sets -200.
    /// @{

    /// Answers a number with as many digits as it needs; infinity and not-a-number as their stand-ins.
    virtual HRESULT NumericResponse(double value) = 0;
    virtual HRESULT NumericResponse(float value) = 0;
    /// Answers an integer.
    ///
    /// @param value  a 32-bit value; -200 for another one
    virtual HRESULT NumericResponse(long value) = 0;
    /// Answers whatever scalar the variant holds; -200 for what is no number.
    virtual HRESULT NumericResponse(const CComVariant& value) = 0;
    /// "true" and "false" are answered as 1 and 0; other text must be a well-formed number.
    virtual HRESULT NumericResponse(const std::string& text) = 0;
    /// NumericResponse of the same value.
    HRESULT NumericResponse(int value) { return NumericResponse(static_cast<long>(value)); }
    /// NumericResponse of the text, which must not be null.
    HRESULT NumericResponse(const char* text) { return NumericResponse(std::string(text)); }
    /// @param width  depends on the type, see tagEnumFormatDataType
    virtual HRESULT NumericResponseEx(const CComVariant& value, tagEnumFormatDataType type, long width) = 0;
    /// NumericResponse under the name that the record has.
    virtual HRESULT DoubleResponse(double value) = 0;

    /// @param value  a 32-bit value; -200 for another one
    virtual HRESULT IntegerResponse(long value) = 0;
    /// Converts to 32 bits as VariantChangeType does, which rounds; -200 when that fails.
    virtual HRESULT IntegerResponse(const CComVariant& value) = 0;
    /// A number as text, truncated towards zero; -200 when it is none or outside 32 bits.
    virtual HRESULT IntegerResponse(const CZoString& text) = 0;
    virtual HRESULT IntegerResponse(const std::string& text) = 0;
    /// IntegerResponse of the text, which must not be null.
    HRESULT IntegerResponse(const char* text) { return IntegerResponse(std::string(text)); }

    /// 1 or 0, never ON or OFF.
    virtual HRESULT BooleanResponse(bool value) = 0;
    /// Converts as VariantChangeType does; -200 when that fails.
    virtual HRESULT BooleanResponse(const CComVariant& value) = 0;
    /// "true", "false" or a number; -200 for other text.
    virtual HRESULT BooleanResponse(const CZoString& text) = 0;
    virtual HRESULT BooleanResponse(const std::string& text) = 0;
    /// BooleanResponse of the text, which must not be null.
    HRESULT BooleanResponse(const char* text) { return BooleanResponse(std::string(text)); }

    /// Text without quotes; the format subsystem adds them.
    virtual HRESULT StringResponse(const std::string& text) = 0;
    /// @param text  null is answered as an empty string
    virtual HRESULT StringResponse(const char* text) = 0;
    /// Wide text ends at its first NUL; what code page 0 cannot hold becomes '?'.
    virtual HRESULT StringResponse(const wchar_t* text) = 0;
    /// Narrowed to code page 0 up to the first NUL.
    virtual HRESULT StringResponse(const CZoString& text) = 0;

    /// Arbitrary ASCII response data (IEEE 488.2 section 8.7.11).
    ///
    /// @param length  bytes at data, 0 or more
    virtual HRESULT ArbitraryResponse(const char* data, long length) = 0;
    /// The whole text, embedded NULs included.
    virtual HRESULT ArbitraryResponse(const std::string& text) = 0;
    /// Narrowed to code page 0 up to the first NUL.
    virtual HRESULT ArbitraryResponse(const CZoString& text) = 0;
    /// @param text  null writes an empty item
    virtual HRESULT ArbitraryResponse(const char* text) = 0;

    /// Definite-length block (IEEE 488.2 section 8.7.9); the error text of a refusing output buffer goes
    /// along with -200.
    ///
    /// @param length  bytes at data, 0 or more
    virtual HRESULT BlockResponse(const char* data, long length) = 0;
    /// The value of an enumeration in decimal.
    virtual HRESULT OutputEnumValue(long value) = 0;
    /// Data in the data format of the remote path.
    ///
    /// @param data  borrowed; a scalar or a one-dimensional array
    virtual HRESULT OutputData(const VARIANT* data, tagEnumFormatDataInterpretation interpretation) = 0;
    /// Several data items with elements of equal index next to each other.
    virtual HRESULT OutputScatteredData(unsigned long count,
                                        const VARIANT* const* data,
                                        const tagEnumFormatDataInterpretation* interpretations) = 0;
    /// The condition of a status register as an integer.
    ///
    /// @param name  for example "STATus:OPERation"
    virtual HRESULT OutputRegisterValue(const std::string& name) = 0;
    /// Writes a pending data separator now; the next item carries none.
    virtual HRESULT PendingDataSeparatorResponse() = 0;
    /// Whether the next item is preceded by a separator.
    virtual bool GetInsertOutputSeparator() const = 0;
    /// Makes the next item one without separator, as the first of a query is.
    virtual void ClearInsertOutputSeparator() = 0;
    /// @}

    /// @name Output filter
    /// Decides which of several response lines are kept; without filter all are.
    /// @{

    /// Asks the filter about one line; writes nothing.
    ///
    /// @return true: keep the line
    virtual bool RunOutputFilter(const std::string& line) = 0;
    /// Keeps the lines that contain the text, case-sensitive; an empty text removes the filter.
    virtual HRESULT SetOutputFilterString(const std::string& text) = 0;
    /// Regular expressions are not available: removes the filter, and -200 unless the pattern is empty.
    virtual HRESULT SetOutputFilterRegEx(const std::string& pattern) = 0;
    /// All lines are kept again.
    virtual void ClearOutputFilter() = 0;
    /// True when all lines are kept; false while a string filter is active.
    virtual bool IsOutputFilterDefined() const = 0;
    /// @}

    /// @name Services of the remote path
    /// Pointers are borrowed, smart pointers counted; null when the remote path does not have the service.
    /// @{

    /// Receives the response of this command.
    virtual IZOScpiOutputBuffer* GetOutputBuffer() = 0;
    /// The data format of the path.
    virtual IZOScpiSubsystemFormat* GetFormatSubsystem() = 0;
    /// The services of the path themselves.
    virtual IZOScpiManager* GetScpiManager() = 0;
    /// The error queue of the path.
    virtual CComPtr<IZOScpiErrorManagement> GetErrorManagement() = 0;
    /// The status registers that the path sees.
    virtual CComPtr<IZOScpiStatusManagement> GetStatusManagement() = 0;
    /// The overlapped commands of the path.
    virtual CComPtr<IZOScpiPendingOperations> GetPendingOperations() = 0;
    /// Where handlers that pass a block on keep its source and its sink; null at first. The pool holds a
    /// reference and does nothing else with them.
    virtual void SetBlockDataReader(IZOScpiBlockData* reader) = 0;
    /// What SetBlockDataReader was given, borrowed.
    virtual IZOScpiBlockData* GetBlockDataReader() const = 0;
    /// The sink of a block that is passed on.
    virtual void SetBlockDataWriter(IZOScpiSubsystemFormat* writer) = 0;
    /// What SetBlockDataWriter was given, borrowed.
    virtual IZOScpiSubsystemFormat* GetBlockDataWriter() const = 0;
    /// @}

    /// @name Data-base transactions
    /// A null transaction is no error; there is nothing to do for it.
    /// @{

    /// Finishes a transaction; when it does not end with S_OK, its verdict becomes the SCPI error, see
    /// CScpiTransaction.
    ///
    /// @return 0; 1 with the SCPI error set; the transaction's failure when its verdict names no error
    virtual HRESULT FinishTransaction(CComPtr<IZODatabaseTransaction>& transaction,
                                      const TransactionAcceptMode& acceptMode) = 0;
    /// Takes back what was written in a transaction; -200 when that fails.
    virtual HRESULT UndoTransaction(CComPtr<IZODatabaseTransaction>& transaction) = 0;
    /// Aborts the pool's read transaction and lets go of it; -200 and an error report when that fails.
    virtual HRESULT StopTransaction() = 0;
    /// The pool's transaction for reading.
    ///
    /// @param[out] transaction  a new reference
    /// @return 0; 1, with null and without a SCPI error, when the pool has none
    virtual HRESULT GetReadTransaction(CComPtr<IZODatabaseTransaction>& transaction) = 0;
    /// The pool's transaction for writing; otherwise as GetReadTransaction.
    virtual HRESULT GetWriteTransaction(CComPtr<IZODatabaseTransaction>& transaction) = 0;
    /// The transaction that is open; otherwise as GetReadTransaction.
    virtual HRESULT GetCurrentTransaction(CComPtr<IZODatabaseTransaction>& transaction) = 0;
    /// @}

protected:
    CScpiFunctionExecutionDataPool() noexcept = default;
};

} // namespace ZoVelkor
