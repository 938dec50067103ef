#include "CScpiFunctionExecutionDataPool.h"

#include "CComBSTR.h"
#include "CScpiFunctionExecutionDataPoolParser.h"
#include "CScpiTransaction.h"
#include "ErrorRaising.h"
#include "IZOScpiStatusRegister.h"
#include "ScpiExecutionRules.h"
#include "ZoString.h"

#include <cstring>

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Remote/Src/CScpiFunctionExecutionDataPool")

using namespace ScpiExecution;

namespace
{

void ReplaceAll(std::string& text, std::string_view what, std::string_view by)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
    {
        text.replace(at, what.size(), by);
    }
}

std::string DataFormatText(IZOScpiSubsystemFormat* pSubsystemFormat)
{
    CComBSTR text;
    if (pSubsystemFormat == nullptr || FAILED(pSubsystemFormat->GetDataFormatText(&text)))
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

std::string_view TextOrEmpty(char const* text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

} // namespace

CScpiFunctionExecutionDataPool::~CScpiFunctionExecutionDataPool() = default;

CScpiFunctionExecutionDataPoolParser::CScpiFunctionExecutionDataPoolParser(
    tagZO_SCPI_PARSER_DATA const& data, CObjectDataReference const* pObject) noexcept
    : m_ParserData(data),
      m_pObject(pObject),
      m_Services(data.m_pContext),
      m_pOutputFilter(&CScpiFunctionExecutionDataPoolParser::IgnoreFilter)
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

HRESULT CScpiFunctionExecutionDataPoolParser::RaiseFault(tagFoundArgument const& argument)
{
    if (argument.pMisuse != nullptr)
    {
        tagMisuse const& misuse = *argument.pMisuse;
        char const* condition =
            misuse.condition != nullptr ? misuse.condition : "m_ParserData.m_pArguments != NULL";
        RepairError(ZO_ERROR(m_pObject, condition, misuse.message, misuse.result));
        return SetScpiExecutionError("");
    }
    return RaiseIf(argument.error);
}

HRESULT CScpiFunctionExecutionDataPoolParser::NullBlockPointer()
{
    RepairError(ZO_NULL_POINTER(m_pObject, "ppBlockData"));
    return SetScpiExecutionError("");
}

tagFoundArgument CScpiFunctionExecutionDataPoolParser::Find(long index,
                                                            unsigned long acceptedType) const noexcept
{
    return FindArgument(m_ParserData.m_pArguments, m_ParserData.m_iArgumentCount, index, acceptedType);
}

template <class TReader, class... TOutputs>
HRESULT
CScpiFunctionExecutionDataPoolParser::ReadArgument(TReader const& reader, long index, TOutputs&... outputs)
{
    const tagFoundArgument found = Find(index, reader.acceptedType);
    return found.pParameter != nullptr ? RaiseIf(reader.read(*found.pParameter, outputs...))
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
    if (found.pParameter == nullptr)
    {
        return RaiseFault(found);
    }
    text = conversion(*found.pParameter);
    return S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetStringArgument(CZoString& text, long index)
{
    return ReadText(text, index, [](auto const& parameter) { return CZoString(parameter.szText); });
}

HRESULT CScpiFunctionExecutionDataPoolParser::GetNumericArgument(CZoString& text, long index)
{
    return ReadText(text, index, [](tagZO_SCPI_PARAMETER const& parameter) {
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
    constexpr tagArgumentReader<long> kUnitReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadUnitSuffix<kNoUnit>};
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
    if (found.pParameter == nullptr)
    {
        return RaiseFault(found);
    }
    unsigned char* pData = nullptr;
    unsigned long size = 0;
    IZOScpiBlockData* pBlock = found.pParameter->pBlockData;
    if (const HRESULT hr = pBlock != nullptr ? pBlock->Access(&pData, &size) : S_OK; FAILED(hr))
    {
        return hr == E_ABORT ? hr : SetScpiExecutionError("");
    }
    *ppBlockData = pData;
    length = size;
    return S_OK;
}

// Errors

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError(short code, std::string const& text, bool replace)
{
    if (replace || m_iScpiError == kScpiNoError)
    {
        m_iScpiError = code;
        m_sScpiErrorText = text;
    }
    return m_iScpiError != kScpiNoError ? S_FALSE : S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiExecutionError(std::string const& text)
{
    return SetScpiError(kScpiExecutionError, text, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError_QueryOnly()
{
    const tagScpiErrorValue error = QueryOnlyError(IsQuery());
    return SetScpiError(error.code, error.detail, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiError_NoQuery()
{
    const tagScpiErrorValue error = NoQueryError(IsQuery());
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

HRESULT CScpiFunctionExecutionDataPoolParser::SetScpiBlockDataError(std::string const& text)
{
    std::string message = text;
    ReplaceAll(message, "%FORMDATA%", DataFormatText(GetFormatSubsystem()));
    ReplaceAll(message, "()", "");
    return SetScpiError(kScpiBlockDataError, message, true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::FinishCommandExecution()
{
    if (m_iScpiError == kScpiNoError || m_bErrorDelivered)
    {
        return S_OK;
    }
    if (FAILED(DeliverError({m_Services, GetRemotePath(), m_iScpiError, m_sScpiErrorText, m_pObject})))
    {
        return SetScpiExecutionError("");
    }
    m_bErrorDelivered = true;
    return S_OK;
}

// Response

HRESULT CScpiFunctionExecutionDataPoolParser::SucceedOrRaise(HRESULT hr)
{
    return SUCCEEDED(hr) ? S_OK : SetScpiExecutionError("");
}

IZOScpiSubsystemFormat* CScpiFunctionExecutionDataPoolParser::RequireFormatSubsystem()
{
    IZOScpiSubsystemFormat* pScpiSubsystemFormat = GetFormatSubsystem();
    if (pScpiSubsystemFormat == nullptr)
    {
        RepairError(ZO_ERROR(m_pObject, "pScpiSubsystemFormat != NULL", kInterfaceMissing, E_POINTER));
        SetScpiExecutionError("");
    }
    return pScpiSubsystemFormat;
}

IZOScpiOutputBuffer* CScpiFunctionExecutionDataPoolParser::RequireOutputBuffer()
{
    IZOScpiOutputBuffer* pScpiOutputBuffer = GetOutputBuffer();
    if (pScpiOutputBuffer == nullptr)
    {
        RepairError(ZO_ERROR(m_pObject, "pScpiOutputBuffer != NULL", kInterfaceMissing, E_POINTER));
        SetScpiExecutionError("");
    }
    return pScpiOutputBuffer;
}

HRESULT CScpiFunctionExecutionDataPoolParser::InsertSeparator()
{
    IZOScpiSubsystemFormat* pSubsystemFormat = m_bInsertSeparator ? RequireFormatSubsystem() : nullptr;
    if (pSubsystemFormat == nullptr)
    {
        return m_bInsertSeparator ? S_FALSE : S_OK;
    }
    return SucceedOrRaise(pSubsystemFormat->InsertDataSeparator());
}

HRESULT CScpiFunctionExecutionDataPoolParser::BeginItem()
{
    const HRESULT hr = InsertSeparator();
    m_bInsertSeparator = m_bInsertSeparator || hr == S_OK;
    return hr;
}

template <class TOperation>
HRESULT CScpiFunctionExecutionDataPoolParser::FormatItem(TOperation&& operation)
{
    if (const HRESULT hr = BeginItem(); hr != S_OK)
    {
        return hr;
    }
    IZOScpiSubsystemFormat* pSubsystemFormat = RequireFormatSubsystem();
    return pSubsystemFormat != nullptr ? SucceedOrRaise(operation(*pSubsystemFormat)) : S_FALSE;
}

/// Data outputs insert the separator themselves.
template <class TOperation>
HRESULT CScpiFunctionExecutionDataPoolParser::FormatData(TOperation&& operation)
{
    const VARIANT_BOOL separator = m_bInsertSeparator ? VARIANT_TRUE : VARIANT_FALSE;
    m_bInsertSeparator = true;
    IZOScpiSubsystemFormat* pSubsystemFormat = RequireFormatSubsystem();
    return pSubsystemFormat != nullptr ? SucceedOrRaise(operation(*pSubsystemFormat, separator)) : S_FALSE;
}

HRESULT CScpiFunctionExecutionDataPoolParser::WriteItem(std::string_view text)
{
    if (const HRESULT hr = BeginItem(); hr != S_OK)
    {
        return hr;
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

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(CComVariant const& value)
{
    return NumericResponseEx(value, ZO_FORMAT_DEFAULT, 0);
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponse(std::string const& text)
{
    std::string_view number = text;
    number = number == "true" ? "1" : number == "false" ? "0" : number;
    return FormatItem([number](IZOScpiSubsystemFormat& subsystemFormat) {
        return subsystemFormat.NumericText(number.size(), number.data());
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::NumericResponseEx(CComVariant const& value,
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

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(CComVariant const& value)
{
    CComVariant integer;
    return SUCCEEDED(VariantChangeType(&integer, &value, 0, VT_I4)) ? NumericResponse(integer)
                                                                    : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(CZoString const& text)
{
    return IntegerResponse(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::IntegerResponse(std::string const& text)
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

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(CComVariant const& value)
{
    CComVariant boolean;
    return SUCCEEDED(VariantChangeType(&boolean, &value, 0, VT_BOOL))
               ? BooleanResponse(boolean.boolVal != VARIANT_FALSE)
               : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(CZoString const& text)
{
    return BooleanResponse(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::BooleanResponse(std::string const& text)
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

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(std::string const& text)
{
    return WriteString(text);
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(char const* text)
{
    return WriteString(TextOrEmpty(text));
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(wchar_t const* text)
{
    return WriteString(CZoString(text).ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::StringResponse(CZoString const& text)
{
    return WriteString(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(char const* data, long length)
{
    return IsReadable(data, length) ? WriteItem({data, static_cast<std::size_t>(length)})
                                    : SetScpiExecutionError("");
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(std::string const& text)
{
    return WriteItem(text);
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(CZoString const& text)
{
    return WriteItem(text.ToStdString());
}

HRESULT CScpiFunctionExecutionDataPoolParser::ArbitraryResponse(char const* text)
{
    return WriteItem(TextOrEmpty(text));
}

HRESULT CScpiFunctionExecutionDataPoolParser::BlockResponse(char const* data, long length)
{
    if (!IsReadable(data, length))
    {
        return SetScpiExecutionError("");
    }
    if (const HRESULT hr = BeginItem(); hr != S_OK)
    {
        return hr;
    }
    IZOScpiOutputBuffer* pOutputBuffer = RequireOutputBuffer();
    if (pOutputBuffer == nullptr)
    {
        return S_FALSE;
    }
    const tagBlockWrite written = WriteBlock(*pOutputBuffer, data, length);
    return SUCCEEDED(written.result) ? S_OK : SetScpiExecutionError(written.errorText);
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputEnumValue(long value)
{
    NumberBuffer buffer;
    const std::string_view text = FormatInteger(buffer, value);
    return ArbitraryResponse(text.data(), static_cast<long>(text.size()));
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputData(VARIANT const* data,
                                                         tagEnumFormatDataInterpretation interpretation)
{
    return FormatData([=](IZOScpiSubsystemFormat& subsystemFormat, VARIANT_BOOL separator) {
        return subsystemFormat.OutputData(data, interpretation, separator);
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputScatteredData(
    unsigned long count, VARIANT const* const* data, tagEnumFormatDataInterpretation const* interpretations)
{
    return FormatData([=](IZOScpiSubsystemFormat& subsystemFormat, VARIANT_BOOL separator) {
        return subsystemFormat.OutputScatteredData(count, data, interpretations, separator);
    });
}

HRESULT CScpiFunctionExecutionDataPoolParser::OutputRegisterValue(std::string const& name)
{
    long value = 0;
    HRESULT hResult = E_POINTER;
    if (const CComPtr<IZOScpiStatusManagement> spStatusManagement = GetStatusManagement())
    {
        const auto spRegister = FindRegister(*spStatusManagement, GetRemotePath(), name);
        hResult =
            spRegister != nullptr ? ReadRegisterWord(*spRegister, kScpiRegisterCondition, value) : E_FAIL;
    }
    if (hResult != S_OK)
    {
        RepairError(ZO_ERROR(m_pObject, "hResult == S_OK", kRegisterError, hResult));
        return SetScpiExecutionError("");
    }
    return IntegerResponse(value);
}

HRESULT CScpiFunctionExecutionDataPoolParser::PendingDataSeparatorResponse()
{
    const HRESULT hr = InsertSeparator();
    m_bInsertSeparator = m_bInsertSeparator && hr != S_OK;
    return hr;
}

// Output filter

bool CScpiFunctionExecutionDataPoolParser::IgnoreFilter(std::string const&) const
{
    return true;
}

bool CScpiFunctionExecutionDataPoolParser::StringFilter(std::string const& line) const
{
    return line.find(m_sOutputFilter) != std::string::npos;
}

bool CScpiFunctionExecutionDataPoolParser::RegExFilter(std::string const&) const
{
    return false;
}

void CScpiFunctionExecutionDataPoolParser::InstallFilter(FilterOperation filter, std::string const& operand)
{
    m_pOutputFilter = filter;
    m_sOutputFilter = operand;
}

bool CScpiFunctionExecutionDataPoolParser::RunOutputFilter(std::string const& line)
{
    return (this->*m_pOutputFilter)(line);
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetOutputFilterString(std::string const& text)
{
    InstallFilter(text.empty() ? &CScpiFunctionExecutionDataPoolParser::IgnoreFilter
                               : &CScpiFunctionExecutionDataPoolParser::StringFilter,
                  text);
    return S_OK;
}

HRESULT CScpiFunctionExecutionDataPoolParser::SetOutputFilterRegEx(std::string const& pattern)
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
    return m_pOutputFilter == &CScpiFunctionExecutionDataPoolParser::IgnoreFilter;
}

// Data-base transactions

HRESULT CScpiFunctionExecutionDataPoolParser::FinishTransaction(CComPtr<IZODatabaseTransaction>& transaction,
                                                                TransactionAcceptMode const& acceptMode)
{
    Acceptance acceptance{};
    const HRESULT hr =
        transaction != nullptr ? transaction->FinishTransaction(acceptMode, &acceptance) : S_OK;
    if (hr == S_OK)
    {
        return S_OK;
    }
    long code = kScpiNoError;
    CComBSTR text;
    CScpiTransaction::GetScpiErrorFromAcceptance(&acceptance, code, text);
    if (code == kScpiNoError)
    {
        return FAILED(hr) ? hr : S_OK;
    }
    return SetScpiError(static_cast<short>(code), CZoString(text).ToStdString(), true);
}

HRESULT CScpiFunctionExecutionDataPoolParser::UndoTransaction(CComPtr<IZODatabaseTransaction>& transaction)
{
    return SucceedOrRaise(transaction != nullptr ? transaction->UndoTransaction() : S_OK);
}

HRESULT CScpiFunctionExecutionDataPoolParser::StopTransaction()
{
    const HRESULT hr = m_pIReadTransaction != nullptr ? m_pIReadTransaction->AbortTransaction() : S_OK;
    if (hr != S_OK)
    {
        constexpr char const* kCondition = "m_pIReadTransaction->AbortTransaction() == S_OK";
        RepairError(ZO_ERROR(m_pObject, kCondition, "Transaction cannot be aborted", hr));
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
