#include "CScpiFunctionExecutionDataPoolParser.h"

#include "CComBSTR.h"
#include "CScpiTransaction.h"
#include "ErrorDelivery.h"
#include "ErrorRaising.h"
#include "IZOScpiStatusRegister.h"
#include "ScpiExecutionRules.h"
#include "ZoString.h"

#include <cstring>

namespace ZoVelkor
{

// The only pool there is: whoever reads error reports looks for the name of the base.
ZO_SOURCE_UNIT("Remote/Src/CScpiFunctionExecutionDataPool");

using namespace ScpiExecution;

namespace
{

void ReplaceAll(std::string& text, std::string_view what, std::string_view by)
{
    // Goes on behind what was put in, which may contain what is replaced.
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
    {
        text.replace(at, what.size(), by);
    }
}

std::string DataFormatText(IZOScpiSubsystemFormat* subsystemFormat)
{
    CComBSTR text;
    if (subsystemFormat == nullptr || FAILED(subsystemFormat->GetDataFormatText(&text)))
    {
        return {};
    }
    return CZoString(text).ToStdString();
}

/// Deliberate: handlers written for both kinds of pool return at once, and nothing has gone wrong.
HRESULT HandOutNoTransaction(CComPtr<IZODatabaseTransaction>& transaction)
{
    transaction = nullptr;
    return S_FALSE;
}

std::string_view TextOrEmpty(const char* text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

} // namespace

CScpiFunctionExecutionDataPoolParser::CScpiFunctionExecutionDataPoolParser(
    const tagZO_SCPI_PARSER_DATA& data, const CObjectDataReference* pObject) noexcept
    : m_ParserData(data),
      m_object(pObject),
      m_Services(data.m_pContext),
      m_outputFilter(&CScpiFunctionExecutionDataPoolParser::IgnoreFilter)
{}

CScpiFunctionExecutionDataPoolParser::~CScpiFunctionExecutionDataPoolParser() = default;

unsigned long CScpiFunctionExecutionDataPoolParser::GetRawNumericSuffixValue(long index) const
{
    return static_cast<std::uint32_t>(m_ParserData.m_pNumericSuffixes[index]);
}

// Arguments

HRESULT CScpiFunctionExecutionDataPoolParser::RaiseIf(short code)
{
    return code == kScpiNoError ? S_OK : SetScpiError(code);
}

HRESULT CScpiFunctionExecutionDataPoolParser::RaiseFault(const tagFoundArgument& argument)
{
    if (argument.misuse != nullptr)
    {
        const Misuse& misuse = *argument.misuse;
        const char* condition =
            misuse.condition != nullptr ? misuse.condition : "m_ParserData.m_pArguments != NULL";
        RepairError(ZO_ERROR(m_object, condition, misuse.message, misuse.result));
        return SetScpiExecutionError("");
    }
    return RaiseIf(argument.error);
}

HRESULT CScpiFunctionExecutionDataPoolParser::NullBlockPointer()
{
    RepairError(ZO_NULL_POINTER(m_object, "ppBlockData"));
    return SetScpiExecutionError("");
}

tagFoundArgument CScpiFunctionExecutionDataPoolParser::Find(long index,
                                                            unsigned long acceptedType) const noexcept
{
    return FindArgument(m_ParserData.m_pArguments, m_ParserData.m_iArgumentCount, index, acceptedType);
}

template <class TReader, class... TOutputs>
HRESULT
CScpiFunctionExecutionDataPoolParser::ReadArgument(const TReader& reader, long index, TOutputs&... outputs)
{
    const tagFoundArgument found = Find(index, reader.acceptedType);
    return found.parameter != nullptr ? RaiseIf(reader.read(*found.parameter, outputs...))
                                      : RaiseFault(found);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetArgumentCount(unsigned long& count)
{
    count = static_cast<unsigned long>(m_ParserData.m_iArgumentCount);
    return S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetArgumentType(tagZO_SCPI_PARAMTYPE& type, long index)
{
    return ReadArgument(kTypeReader, index, type);
}

HRESULT CScpiFunctionExecutionDataPoolParser::CheckArgumentCount(long last, bool exactCount)
{
    return RaiseIf(CountError(m_ParserData.m_iArgumentCount, last, exactCount));
}

HRESULT CScpiFunctionExecutionDataPoolParser::CheckArgumentNotAllowed()
{
    return RaiseIf(NoArgumentError(m_ParserData.m_iArgumentCount));
}

HRESULT CScpiFunctionExecutionDataPoolParser::CheckArgumentType(long actual, long expected)
{
    return RaiseIf(TypeError(static_cast<unsigned long>(actual), static_cast<unsigned long>(expected)));
}

HRESULT CScpiFunctionExecutionDataPoolParser::ScpiErrorUnexpectedParameterType(long index)
{
    return ReadArgument(kTypeRefusal, index);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetDoubleArgument(double& value, long index)
{
    return ReadArgument(kDoubleReader, index, value);
}

HRESULT
CScpiFunctionExecutionDataPoolParser::GetDoubleArgumentWithUnit(double& value, long& unit, long index)
{
    return ReadArgument(kDoubleWithUnitReader, index, value, unit);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetIntegerArgument(long& value, long index)
{
    return ReadArgument(kIntegerReader, index, value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetBooleanArgument(bool& value, long index)
{
    return ReadArgument(kBooleanReader, index, value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetCharacterArgument(long& value, long index)
{
    return ReadArgument(kCharacterReader, index, value);
}

HRESULT
CScpiFunctionExecutionDataPoolParser::GetMnemonicArgument(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value,
                                                          long index)
{
    return ReadArgument(kMnemonicReader, index, value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetStringArgument(std::string& text, long index)
{
    return ReadArgument(kStringReader, index, text);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetExprStringArgument(std::string& text, long index)
{
    return ReadArgument(kExpressionReader, index, text);
}

template <class TConversion>
HRESULT CScpiFunctionExecutionDataPoolParser::ReadText(CZoString& text, long index, TConversion&& conversion)
{
    // Deliberate: handlers with optional arguments rely on success and an untouched text when one is missing.
    if (CheckArgumentCount(index, false) != S_OK)
    {
        return S_OK;
    }
    const tagFoundArgument found = Find(index, kAnyType);
    if (found.parameter == nullptr)
    {
        return RaiseFault(found);
    }
    text = conversion(*found.parameter);
    return S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetStringArgument(CZoString& text, long index)
{
    return ReadText(text, index, [](const auto& parameter) { return CZoString(parameter.szText); });
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetNumericArgument(CZoString& text, long index)
{
    return ReadText(text, index, [](const tagZO_SCPI_PARAMETER& parameter) {
        bool isOn = false;
        if (parameter.iType == ZO_SCPI_PARAMTYPE_SPECIAL && ReadBoolean(parameter, isOn) == kScpiNoError)
        {
            return CZoString(isOn ? "1" : "0");
        }
        return CZoString(std::string(parameter.szText, std::strcspn(parameter.szText, " ")));
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetUnitSuffix(long& unit, long index)
{
    // Deliberate: handlers of this style take -1 for "no unit"; those of the record take 0.
    constexpr long kNoUnit = -1;
    constexpr ArgumentReader<long> kUnitReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadUnitSuffix<kNoUnit>};
    unit = kNoUnit;
    return ReadArgument(kUnitReader, index, unit);
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetBlockArgument(IZOScpiBlockData** ppBlockData,
                                                               long& length,
                                                               long index)
{
    return ppBlockData != nullptr ? ReadArgument(kBlockReader, index, *ppBlockData, length)
                                  : NullBlockPointer();
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetBlockDataArgument(unsigned char** ppBlockData,
                                                                   unsigned long& length,
                                                                   long index)
{
    if (ppBlockData == nullptr)
    {
        return NullBlockPointer();
    }
    const tagFoundArgument found = Find(index, ZO_SCPI_PARAMTYPE_BLOCK);
    if (found.parameter == nullptr)
    {
        return RaiseFault(found);
    }
    unsigned char* pData = nullptr;
    unsigned long size = 0;
    IZOScpiBlockData* block = found.parameter->pBlockData;
    if (const HRESULT result = block != nullptr ? block->Access(&pData, &size) : S_OK; FAILED(result))
    {
        return result == E_ABORT ? result : SetScpiExecutionError("");
    }
    *ppBlockData = pData;
    length = size;
    return S_OK;
}

// Errors

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError(short code, const std::string& text, bool replace)
{
    if (replace || m_scpiError == kScpiNoError)
    {
        m_scpiError = code;
        m_scpiErrorText = text;
    }
    return m_scpiError != kScpiNoError ? S_FALSE : S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiExecutionError(const std::string& text)
{
    return SetScpiError(kScpiExecutionError, text, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError_QueryOnly()
{
    const ScpiErrorValue error = QueryOnlyError(IsQuery());
    return SetScpiError(error.code, error.detail, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError_NoQuery()
{
    const ScpiErrorValue error = NoQueryError(IsQuery());
    return SetScpiError(error.code, error.detail, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError_ParameterNotAllowed()
{
    return SetScpiError(kScpiParameterNotAllowed);
}

HRESULT CScpiFunctionExecutionDataPoolParser::ScpiErrorMissingParameter()
{
    return SetScpiError(kScpiMissingParameter);
}

HRESULT CScpiFunctionExecutionDataPoolParser::ScpiErrorUnexpectedParameter()
{
    return SetScpiError(kScpiUnexpectedNumberOfParameters);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiBlockDataError(const std::string& text)
{
    std::string message = text;
    ReplaceAll(message, "%FORMDATA%", DataFormatText(GetFormatSubsystem()));
    // Last: parentheses around a data format that there is none of are left over.
    ReplaceAll(message, "()", "");
    return SetScpiError(kScpiBlockDataError, message, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::FinishCommandExecution()
{
    if (m_scpiError == kScpiNoError || m_errorDelivered)
    {
        return S_OK;
    }
    if (FAILED(DeliverError({m_Services, GetRemotePath(), m_scpiError, m_scpiErrorText, m_object})))
    {
        return SetScpiExecutionError("");
    }
    m_errorDelivered = true;
    return S_OK;
}

// Response

HRESULT CScpiFunctionExecutionDataPoolParser::SucceedOrRaise(HRESULT result)
{
    return SUCCEEDED(result) ? S_OK : SetScpiExecutionError("");
}

IZOScpiSubsystemFormat* CScpiFunctionExecutionDataPoolParser::RequireFormatSubsystem()
{
    IZOScpiSubsystemFormat* pScpiSubsystemFormat = GetFormatSubsystem();
    if (pScpiSubsystemFormat == nullptr)
    {
        RepairError(ZO_ERROR(m_object, "pScpiSubsystemFormat != NULL", kInterfaceMissing, E_POINTER));
        SetScpiExecutionError("");
    }
    return pScpiSubsystemFormat;
}

IZOScpiOutputBuffer* CScpiFunctionExecutionDataPoolParser::RequireOutputBuffer()
{
    IZOScpiOutputBuffer* pScpiOutputBuffer = GetOutputBuffer();
    if (pScpiOutputBuffer == nullptr)
    {
        RepairError(ZO_ERROR(m_object, "pScpiOutputBuffer != NULL", kInterfaceMissing, E_POINTER));
        SetScpiExecutionError("");
    }
    return pScpiOutputBuffer;
}

HRESULT CScpiFunctionExecutionDataPoolParser::InsertSeparator()
{
    IZOScpiSubsystemFormat* subsystemFormat = m_insertSeparator ? RequireFormatSubsystem() : nullptr;
    if (subsystemFormat == nullptr)
    {
        return m_insertSeparator ? S_FALSE : S_OK;
    }
    return SucceedOrRaise(subsystemFormat->InsertDataSeparator());
}

HRESULT CScpiFunctionExecutionDataPoolParser::BeginItem()
{
    const HRESULT result = InsertSeparator();
    m_insertSeparator = m_insertSeparator || result == S_OK;
    return result;
}

template <class TOperation>
HRESULT CScpiFunctionExecutionDataPoolParser::FormatItem(TOperation&& operation)
{
    if (const HRESULT result = BeginItem(); result != S_OK)
    {
        return result;
    }
    IZOScpiSubsystemFormat* subsystemFormat = RequireFormatSubsystem();
    return subsystemFormat != nullptr ? SucceedOrRaise(operation(*subsystemFormat)) : S_FALSE;
}

/// Data outputs insert the separator themselves.
template <class TOperation>
HRESULT CScpiFunctionExecutionDataPoolParser::FormatData(TOperation&& operation)
{
    const VARIANT_BOOL separator = ToVariantBool(m_insertSeparator);
    m_insertSeparator = true;
    IZOScpiSubsystemFormat* subsystemFormat = RequireFormatSubsystem();
    return subsystemFormat != nullptr ? SucceedOrRaise(operation(*subsystemFormat, separator)) : S_FALSE;
}

HRESULT CScpiFunctionExecutionDataPoolParser::WriteItem(std::string_view text)
{
    if (const HRESULT result = BeginItem(); result != S_OK)
    {
        return result;
    }
    IZOScpiOutputBuffer* pOutputBuffer = RequireOutputBuffer();
    return pOutputBuffer != nullptr ? SucceedOrRaise(pOutputBuffer->Write(text.size(), text.data(), nullptr))
                                    : S_FALSE;
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(double value)
{
    return NumericResponse(CComVariant(value));
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(float value)
{
    return NumericResponse(CComVariant(value));
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(long value)
{
    const auto narrow = Narrow(value);
    return narrow ? NumericResponse(CComVariant(*narrow)) : SetScpiExecutionError(kIntegerTooLarge);
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(const CComVariant& value)
{
    return NumericResponseEx(value, ZO_FORMAT_DEFAULT, 0);
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(const std::string& text)
{
    std::string_view number = text;
    number = number == "true" ? "1" : number == "false" ? "0" : number;
    return FormatItem([number](IZOScpiSubsystemFormat& subsystemFormat) {
        return subsystemFormat.NumericText(number.size(), number.data());
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponseEx(const CComVariant& value,
                                                                tagEnumFormatDataType type,
                                                                long width)
{
    return FormatItem([&](IZOScpiSubsystemFormat& subsystemFormat) {
        return subsystemFormat.NumericVariant(&value, type, width);
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::DoubleResponse(double value)
{
    return NumericResponse(value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(long value)
{
    return NumericResponse(value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(const CComVariant& value)
{
    CComVariant integer;
    return SUCCEEDED(VariantChangeType(&integer, &value, 0, VT_I4)) ? NumericResponse(integer)
                                                                    : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(const CZoString& text)
{
    return IntegerResponse(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(const std::string& text)
{
    long value = 0;
    const auto number = WholeNumber(text);
    return number && TruncateNumber(*number, value) == kScpiNoError ? IntegerResponse(value)
                                                                    : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(bool value)
{
    return WriteItem(value ? "1" : "0");
}

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(const CComVariant& value)
{
    CComVariant boolean;
    return SUCCEEDED(VariantChangeType(&boolean, &value, 0, VT_BOOL))
               ? BooleanResponse(boolean.boolVal != VARIANT_FALSE)
               : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(const CZoString& text)
{
    return BooleanResponse(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(const std::string& text)
{
    if (text == "true" || text == "false")
    {
        return BooleanResponse(text == "true");
    }
    const auto number = WholeNumber(text);
    return number ? BooleanResponse(*number != 0) : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::WriteString(std::string_view text)
{
    return FormatItem([text](IZOScpiSubsystemFormat& subsystemFormat) {
        return subsystemFormat.StringText(text.size(), text.data());
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(const std::string& text)
{
    return WriteString(text);
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(const char* text)
{
    return WriteString(TextOrEmpty(text));
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(const wchar_t* text)
{
    return WriteString(CZoString(text).ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(const CZoString& text)
{
    return WriteString(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(const char* data, long length)
{
    return IsReadable(data, length) ? WriteItem({data, static_cast<std::size_t>(length)})
                                    : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(const std::string& text)
{
    return WriteItem(text);
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(const CZoString& text)
{
    return WriteItem(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(const char* text)
{
    return WriteItem(TextOrEmpty(text));
}

HRESULT CScpiFunctionExecutionDataPoolParser::BlockResponse(const char* data, long length)
{
    if (!IsReadable(data, length))
    {
        return SetScpiExecutionError("");
    }
    if (const HRESULT result = BeginItem(); result != S_OK)
    {
        return result;
    }
    IZOScpiOutputBuffer* pOutputBuffer = RequireOutputBuffer();
    if (pOutputBuffer == nullptr)
    {
        return S_FALSE;
    }
    const BlockWrite written = WriteBlock(*pOutputBuffer, data, length);
    return SUCCEEDED(written.result) ? S_OK : SetScpiExecutionError(written.errorText);
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputEnumValue(long value)
{
    NumberBuffer buffer;
    const std::string_view text = FormatInteger(buffer, value);
    return ArbitraryResponse(text.data(), static_cast<long>(text.size()));
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputData(const VARIANT* data,
                                                         tagEnumFormatDataInterpretation interpretation)
{
    return FormatData([=](IZOScpiSubsystemFormat& subsystemFormat, VARIANT_BOOL separator) {
        return subsystemFormat.OutputData(data, interpretation, separator);
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputScatteredData(
    unsigned long count, const VARIANT* const* data, const tagEnumFormatDataInterpretation* interpretations)
{
    return FormatData([=](IZOScpiSubsystemFormat& subsystemFormat, VARIANT_BOOL separator) {
        return subsystemFormat.OutputScatteredData(count, data, interpretations, separator);
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputRegisterValue(const std::string& name)
{
    long value = 0;
    HRESULT result = E_POINTER;
    if (const CComPtr<IZOScpiStatusManagement> statusManagement = GetStatusManagement())
    {
        const auto statusRegister = FindRegister(*statusManagement, GetRemotePath(), name);
        result = statusRegister != nullptr ? ReadRegisterWord(*statusRegister, kScpiRegisterCondition, value)
                                           : E_FAIL;
    }
    if (result != S_OK)
    {
        RepairError(ZO_ERROR(m_object, "hResult == S_OK", kRegisterError, result));
        return SetScpiExecutionError("");
    }
    return IntegerResponse(value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::PendingDataSeparatorResponse()
{
    const HRESULT result = InsertSeparator();
    m_insertSeparator = m_insertSeparator && result != S_OK;
    return result;
}

// Output filter

bool CScpiFunctionExecutionDataPoolParser::IgnoreFilter(const std::string&) const
{
    return true;
}

bool CScpiFunctionExecutionDataPoolParser::StringFilter(const std::string& line) const
{
    return line.find(m_filterText) != std::string::npos;
}

bool CScpiFunctionExecutionDataPoolParser::RegExFilter(const std::string&) const
{
    return false;
}

void CScpiFunctionExecutionDataPoolParser::InstallFilter(FilterOperation filter, const std::string& operand)
{
    m_outputFilter = filter;
    m_filterText = operand;
}

bool CScpiFunctionExecutionDataPoolParser::RunOutputFilter(const std::string& line)
{
    return (this->*m_outputFilter)(line);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetOutputFilterString(const std::string& text)
{
    InstallFilter(text.empty() ? &CScpiFunctionExecutionDataPoolParser::IgnoreFilter
                               : &CScpiFunctionExecutionDataPoolParser::StringFilter,
                  text);
    return S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetOutputFilterRegEx(const std::string& pattern)
{
    // Deliberate: this platform offers no regular expressions, so a pattern must not drop any line.
    InstallFilter(&CScpiFunctionExecutionDataPoolParser::IgnoreFilter, pattern);
    return pattern.empty() ? S_OK : SetScpiExecutionError("invalid regular expression (" + pattern + ")");
}

void CScpiFunctionExecutionDataPoolParser::ClearOutputFilter()
{
    InstallFilter(&CScpiFunctionExecutionDataPoolParser::IgnoreFilter, std::string());
}

bool CScpiFunctionExecutionDataPoolParser::IsOutputFilterDefined() const
{
    // Deliberate: listing handlers ask whether they may skip the filter, whatever the name says.
    return m_outputFilter == &CScpiFunctionExecutionDataPoolParser::IgnoreFilter;
}

// Data-base transactions

HRESULT CScpiFunctionExecutionDataPoolParser::FinishTransaction(CComPtr<IZODatabaseTransaction>& transaction,
                                                                const TransactionAcceptMode& acceptMode)
{
    Acceptance acceptance{};
    const HRESULT result =
        transaction != nullptr ? transaction->FinishTransaction(acceptMode, &acceptance) : S_OK;
    if (result == S_OK)
    {
        return S_OK;
    }
    long code = kScpiNoError;
    CComBSTR text;
    CScpiTransaction::GetScpiErrorFromAcceptance(&acceptance, code, text);
    if (code == kScpiNoError)
    {
        return FAILED(result) ? result : S_OK;
    }
    return SetScpiError(static_cast<short>(code), CZoString(text).ToStdString(), true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::UndoTransaction(CComPtr<IZODatabaseTransaction>& transaction)
{
    return SucceedOrRaise(transaction != nullptr ? transaction->UndoTransaction() : S_OK);
}

HRESULT CScpiFunctionExecutionDataPoolParser::StopTransaction()
{
    const HRESULT result = m_pIReadTransaction != nullptr ? m_pIReadTransaction->AbortTransaction() : S_OK;
    if (result != S_OK)
    {
        constexpr const char* kCondition = "m_pIReadTransaction->AbortTransaction() == S_OK";
        RepairError(ZO_ERROR(m_object, kCondition, "Transaction cannot be aborted", result));
        return SetScpiExecutionError("");
    }
    m_pIReadTransaction = nullptr;
    return S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetReadTransaction(CComPtr<IZODatabaseTransaction>& transaction)
{
    return HandOutNoTransaction(transaction);
}

HRESULT
CScpiFunctionExecutionDataPoolParser::GetWriteTransaction(CComPtr<IZODatabaseTransaction>& transaction)
{
    return HandOutNoTransaction(transaction);
}

HRESULT
CScpiFunctionExecutionDataPoolParser::GetCurrentTransaction(CComPtr<IZODatabaseTransaction>& transaction)
{
    return HandOutNoTransaction(transaction);
}

} // namespace ZoVelkor
