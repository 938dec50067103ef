#include "CScpiSinkFramework.h"

#include "CComBSTR.h"
#include "CComVariant.h"
#include "ErrorRaising.h"
#include "IZOScpiErrorManagement.h"
#include "IZOScpiStatusRegister.h"
#include "ScpiExecutionRules.h"

#include <algorithm>

namespace ZoVelkor
{

ZO_SOURCE_UNIT("Remote/Src/CScpiSinkFramework")

using namespace ScpiExecution;

namespace
{

template <class TExecution>
HRESULT CloseExecution(long result, TExecution& execution) noexcept
{
    const auto hrResult = static_cast<HRESULT>(result);
    const HRESULT hr = GuardedEntry([&]() -> HRESULT {
        const bool isMapped = hrResult == S_OK || hrResult == S_FALSE || hrResult == E_ABORT;
        if (!isMapped && execution.GetScpiError() == kScpiNoError)
        {
            execution.SetScpiExecutionError("");
        }
        return execution.FinishCommandExecution();
    });
    if (hr != S_OK)
    {
        RepairError(ZO_ERROR(execution.GetObjectReference(), "hr == S_OK", "Fatal scpi execution error", hr));
    }
    return hrResult == E_ABORT ? E_ABORT : S_OK;
}

} // namespace

HRESULT ScpiExecution::DeliverError(tagErrorDelivery const& delivery)
{
    constexpr char kMissingInterface[] = "Fatal missing interface";
    if (delivery.services.Manager() == nullptr)
    {
        ThrowError(ZO_ERROR(delivery.pObject, "m_pScpiManager != NULL", kMissingInterface, E_POINTER));
    }
    if (delivery.remotePath < 0)
    {
        ThrowError(ZO_ERROR(delivery.pObject, "m_iRemotePath >= 0", "Invalid remote path", ZO_E_SHELL));
    }
    const CComPtr<IZOScpiErrorManagement> spErrorManagement = delivery.services.ErrorManagement();
    if (spErrorManagement == nullptr)
    {
        ThrowError(ZO_ERROR(delivery.pObject, "pScpiErrorManagement != NULL", kMissingInterface, E_POINTER));
    }
    const CComBSTR detail(delivery.detail.c_str());
    return spErrorManagement->SetError(delivery.remotePath, delivery.code, detail);
}

HRESULT CScpiSinkFramework::FinishCommandExecution(long result, CCommandExecutionData& data) noexcept
{
    return CloseExecution(result, data);
}

HRESULT CScpiSinkFramework::FinishCommandExecution(long result, CScpiFunctionExecutionDataPool& pool) noexcept
{
    return CloseExecution(result, pool);
}

std::string CScpiSinkFramework::GetScpiStringFormat(std::string_view text)
{
    std::string formatted;
    formatted.reserve(text.size() + 2 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '"')));
    formatted += '"';
    for (const char character : text)
    {
        formatted.append(character == '"' ? 2 : 1, character);
    }
    formatted += '"';
    return formatted;
}

CCommandExecutionData::CCommandExecutionData(tagZO_SCPI_PARSER_DATA const& data,
                                             CObjectDataReference const* pObject) noexcept
    : m_iRemotePath(data.m_iRemotePath),
      m_pScpiManager(data.m_pContext),
      m_pNumericSuffixes(data.m_pNumericSuffixes),
      m_iArgumentCount(static_cast<std::uint32_t>(data.m_iArgumentCount)),
      m_pParams(data.m_pArguments),
      m_bQuery(data.m_bQuery),
      m_pObject(pObject),
      m_pOutputBuffer(data.m_pOutputBuffer)
{}

CCommandExecutionData::~CCommandExecutionData() = default;

HRESULT CCommandExecutionData::SetScpiError(short code)
{
    m_iScpiError = code;
    m_sDetail.clear();
    return code != kScpiNoError ? S_FALSE : S_OK;
}

HRESULT CCommandExecutionData::SetScpiErrorEx(short code, std::string const& text)
{
    m_iScpiError = code;
    m_sDetail = text;
    return code != kScpiNoError ? S_FALSE : S_OK;
}

HRESULT CCommandExecutionData::SetScpiExecutionError(std::string const& text)
{
    return SetScpiErrorEx(kScpiExecutionError, text);
}

HRESULT CCommandExecutionData::SetScpiError_QueryOnly()
{
    const tagScpiErrorValue error = QueryOnlyError(m_bQuery);
    return SetScpiErrorEx(error.code, error.detail);
}

HRESULT CCommandExecutionData::SetScpiError_NoQuery()
{
    const tagScpiErrorValue error = NoQueryError(m_bQuery);
    return SetScpiErrorEx(error.code, error.detail);
}

HRESULT CCommandExecutionData::SetScpiError_ParameterNotAllowed()
{
    return SetScpiError(kScpiParameterNotAllowed);
}

HRESULT CCommandExecutionData::ScpiErrorMissingParameter()
{
    return SetScpiError(kScpiMissingParameter);
}

HRESULT CCommandExecutionData::ScpiErrorUnexpectedParameter()
{
    return SetScpiError(kScpiUnexpectedNumberOfParameters);
}

HRESULT CCommandExecutionData::ScpiErrorUnexpectedParameterType(long index)
{
    return ReadArgument(kTypeRefusal, index);
}

HRESULT CCommandExecutionData::FinishCommandExecution()
{
    if (m_iScpiError == kScpiNoError || m_bErrorDelivered)
    {
        return S_OK;
    }
    if (FAILED(DeliverError({m_pScpiManager, m_iRemotePath, m_iScpiError, m_sDetail, m_pObject})))
    {
        return SetScpiExecutionError("");
    }
    m_bErrorDelivered = true;
    return S_OK;
}

HRESULT CCommandExecutionData::RaiseIf(short code)
{
    return code == kScpiNoError ? S_OK : SetScpiError(code);
}

HRESULT CCommandExecutionData::CheckArgumentCount(unsigned long last, bool exactCount)
{
    return RaiseIf(CountError(m_iArgumentCount, static_cast<std::uint32_t>(last), exactCount));
}

HRESULT CCommandExecutionData::CheckArgumentNotAllowed()
{
    return RaiseIf(NoArgumentError(m_iArgumentCount));
}

HRESULT CCommandExecutionData::CheckArgumentType(long actual, long expected)
{
    return RaiseIf(TypeError(static_cast<unsigned long>(actual), static_cast<unsigned long>(expected)));
}

HRESULT CCommandExecutionData::CheckParamType(long index, long type)
{
    if (index >= m_iArgumentCount)
    {
        return ScpiErrorMissingParameter();
    }
    tagZO_SCPI_PARAMTYPE actual = ZO_SCPI_PARAMTYPE_UNDEFINED;
    const HRESULT hr = GetArgumentType(actual, index);
    return hr == S_OK ? CheckArgumentType(actual, type) : hr;
}

HRESULT CCommandExecutionData::RaiseFault(tagFoundArgument const& argument)
{
    if (argument.pMisuse != nullptr)
    {
        tagMisuse const& misuse = *argument.pMisuse;
        char const* condition = misuse.condition != nullptr ? misuse.condition : "m_pParams != NULL";
        ThrowError(ZO_ERROR(m_pObject, condition, misuse.message, misuse.result));
    }
    return SetScpiError(argument.error);
}

template <class TReader, class... TOutputs>
HRESULT CCommandExecutionData::ReadArgument(TReader const& reader, long index, TOutputs&... outputs)
{
    const tagFoundArgument found = FindArgument(m_pParams, m_iArgumentCount, index, reader.acceptedType);
    return found.pParameter != nullptr ? RaiseIf(reader.read(*found.pParameter, outputs...))
                                       : RaiseFault(found);
}

HRESULT CCommandExecutionData::GetNumericSuffix(long& value, long index)
{
    value = m_pNumericSuffixes[index];
    return S_OK;
}

HRESULT CCommandExecutionData::GetNumericSuffixWithRangeCheck(long& value, long index, long min, long max)
{
    GetNumericSuffix(value, index);
    return RaiseIf(value < min || value > max ? kScpiHeaderSuffixOutOfRange : kScpiNoError);
}

HRESULT CCommandExecutionData::GetArgumentType(tagZO_SCPI_PARAMTYPE& type, long index)
{
    return ReadArgument(kTypeReader, index, type);
}

HRESULT CCommandExecutionData::GetDoubleArgument(double& value, long index)
{
    return ReadArgument(kDoubleReader, index, value);
}

HRESULT CCommandExecutionData::GetDoubleArgumentWithUnit(double& value, long& unit, long index)
{
    return ReadArgument(kDoubleWithUnitReader, index, value, unit);
}

HRESULT CCommandExecutionData::GetIntegerArgument(long& value, long index)
{
    return ReadArgument(kIntegerReader, index, value);
}

HRESULT CCommandExecutionData::GetBooleanArgument(bool& value, long index)
{
    return ReadArgument(kBooleanReader, index, value);
}

HRESULT CCommandExecutionData::GetCharacterArgument(long& value, long index)
{
    return ReadArgument(kCharacterReader, index, value);
}

HRESULT CCommandExecutionData::GetCharacterString(std::string& text, long index)
{
    long code = 0;
    if (const HRESULT hr = GetCharacterArgument(code, index); hr != S_OK)
    {
        return hr;
    }
    if (m_pp_Enums == nullptr)
    {
        ThrowError(ZO_ERROR(m_pObject, "m_pp_Enums", "Null pointer detected (m_pp_Enums)", E_POINTER));
    }
    char const* const* ppText = m_pp_Enums;
    for (long position = 1; position < code && *ppText != nullptr; ++position)
    {
        ++ppText;
    }
    if (code < 1 || *ppText == nullptr)
    {
        return SetScpiError(kScpiInvalidCharacterData);
    }
    text = *ppText;
    return S_OK;
}

HRESULT CCommandExecutionData::GetMnemonicArgument(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value, long index)
{
    return ReadArgument(kMnemonicReader, index, value);
}

HRESULT CCommandExecutionData::GetStringArgument(std::string& text, long index)
{
    return ReadArgument(kStringReader, index, text);
}

HRESULT CCommandExecutionData::GetExprStringArgument(std::string& text, long index)
{
    return ReadArgument(kExpressionReader, index, text);
}

HRESULT CCommandExecutionData::GetBlockArgument(IZOScpiBlockData** ppBlockData, long& length, long index)
{
    if (ppBlockData == nullptr)
    {
        ThrowError(ZO_NULL_POINTER(m_pObject, "ppBlockData"));
    }
    return ReadArgument(kBlockReader, index, *ppBlockData, length);
}

HRESULT CCommandExecutionData::GetSuffix(long& unit, long index)
{
    // Deliberate: handlers of this style take 0 for "no unit"; those of the pool take -1.
    constexpr tagArgumentReader<long> kSuffixReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadUnitSuffix<0>};
    return ReadArgument(kSuffixReader, index, unit);
}

IZOScpiOutputBuffer& CCommandExecutionData::RequireOutputBuffer()
{
    if (m_pOutputBuffer == nullptr)
    {
        ThrowError(ZO_ERROR(m_pObject, "m_pOutputBuffer != NULL", kInterfaceMissing, E_POINTER));
    }
    return *m_pOutputBuffer;
}

IZOScpiSubsystemFormat& CCommandExecutionData::RequireFormatSubsystem()
{
    IZOScpiSubsystemFormat* pScpiSubsystemFormat = m_pScpiManager.SubsystemFormat();
    if (pScpiSubsystemFormat == nullptr)
    {
        ThrowError(ZO_ERROR(m_pObject, "pScpiSubsystemFormat != NULL", kInterfaceMissing, E_POINTER));
    }
    return *pScpiSubsystemFormat;
}

HRESULT CCommandExecutionData::SucceedOrRaise(HRESULT hr)
{
    return SUCCEEDED(hr) ? S_OK : SetScpiExecutionError("");
}

HRESULT CCommandExecutionData::BeginItem()
{
    if (m_bInsertSeparator && FAILED(RequireOutputBuffer().Write(1, ",", nullptr)))
    {
        return SetScpiExecutionError("");
    }
    m_bInsertSeparator = true;
    return S_OK;
}

HRESULT CCommandExecutionData::WriteItem(std::string_view text)
{
    const HRESULT hr = BeginItem();
    return hr == S_OK ? SucceedOrRaise(RequireOutputBuffer().Write(text.size(), text.data(), nullptr)) : hr;
}

HRESULT CCommandExecutionData::BooleanResponse(bool value)
{
    return WriteItem(value ? "1" : "0");
}

HRESULT CCommandExecutionData::IntegerResponse(long value)
{
    NumberBuffer buffer;
    return Narrow(value) ? WriteItem(FormatInteger(buffer, value)) : SetScpiExecutionError(kIntegerTooLarge);
}

HRESULT CCommandExecutionData::DoubleResponse(double value)
{
    NumberBuffer buffer;
    return WriteItem(FormatFixed(buffer, value));
}

HRESULT CCommandExecutionData::StringResponse(std::string const& text)
{
    return WriteItem(CScpiSinkFramework::GetScpiStringFormat(text));
}

HRESULT CCommandExecutionData::ArbitraryResponse(char const* data, long length)
{
    return IsReadable(data, length) ? WriteItem({data, static_cast<std::size_t>(length)})
                                    : SetScpiExecutionError("");
}

HRESULT CCommandExecutionData::BlockResponse(char const* data, long length)
{
    if (!IsReadable(data, length))
    {
        return SetScpiExecutionError("");
    }
    if (const HRESULT hr = BeginItem(); hr != S_OK)
    {
        return hr;
    }
    const tagBlockWrite written = WriteBlock(RequireOutputBuffer(), data, length);
    return SUCCEEDED(written.result) ? S_OK : SetScpiExecutionError(written.errorText);
}

template <class TOperation>
HRESULT CCommandExecutionData::FormatItem(TOperation&& operation)
{
    try
    {
        IZOScpiSubsystemFormat& subsystemFormat = RequireFormatSubsystem();
        const HRESULT hr = BeginItem();
        return hr == S_OK ? SucceedOrRaise(operation(subsystemFormat)) : hr;
    }
    catch (CShellError const&)
    {
        return SetScpiExecutionError("");
    }
}

HRESULT CCommandExecutionData::OutputFormatData(double const* values, long count)
{
    if (!IsReadable(values, count))
    {
        return SetScpiExecutionError("");
    }
    return FormatItem([=](IZOScpiSubsystemFormat& subsystemFormat) {
        return subsystemFormat.OutputDoubles(values, static_cast<unsigned long>(count));
    });
}

HRESULT CCommandExecutionData::OutputRegisterValue(std::string const& name, long index)
{
    long value = 0;
    try
    {
        CComPtr<IZOScpiStatusRegister> spRegister;
        GetRegisterInterface(name, &spRegister);
        if (const HRESULT hr = ReadRegisterWord(*spRegister, index, value); hr != S_OK)
        {
            ThrowError(ZO_ERROR(m_pObject, "hr == S_OK", kRegisterError, hr));
        }
    }
    catch (CShellError const&)
    {
        return SetScpiExecutionError("");
    }
    return FormatItem([value](IZOScpiSubsystemFormat& subsystemFormat) {
        const CComVariant number(static_cast<LONG>(value), VT_I4);
        return subsystemFormat.NumericVariant(&number, ZO_FORMAT_DEFAULT, 0);
    });
}

HRESULT CCommandExecutionData::GetRegisterInterface(std::string const& name,
                                                    IZOScpiStatusRegister** ppRegister)
{
    if (ppRegister == nullptr)
    {
        ThrowError(ZO_NULL_POINTER(m_pObject, "ppRegister"));
    }
    *ppRegister = nullptr;
    const CComPtr<IZOScpiStatusManagement> spStatusManagement = m_pScpiManager.StatusManagement();
    if (spStatusManagement == nullptr)
    {
        ThrowError(ZO_ERROR(m_pObject, "pStatusManagement != NULL", kRegisterError, E_POINTER));
    }
    *ppRegister = FindRegister(*spStatusManagement, m_iRemotePath, name).Detach();
    if (*ppRegister == nullptr)
    {
        ThrowError(ZO_ERROR(m_pObject, "*ppRegister != NULL", kRegisterError, E_POINTER));
    }
    return S_OK;
}

} // namespace ZoVelkor
