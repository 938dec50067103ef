#include "CCommandExecutionData.h"

#include "CComVariant.h"
#include "CScpiSinkFramework.h"
#include "ErrorDelivery.h"
#include "ErrorRaising.h"
#include "IZOScpiStatusRegister.h"
#include "ScpiExecutionRules.h"

namespace ZoVelkor
{

// A part of the sink framework as far as error reports go: whoever reads them looks for this name.
ZO_SOURCE_UNIT("Remote/Src/CScpiSinkFramework");

using namespace ScpiExecution;

CCommandExecutionData::CCommandExecutionData(const tagZO_SCPI_PARSER_DATA& data,
                                             const CObjectDataReference* pObject) noexcept
    : m_iRemotePath(data.m_iRemotePath),
      m_pScpiManager(data.m_pContext),
      m_numericSuffixes(data.m_pNumericSuffixes),
      m_argumentCount(static_cast<std::uint32_t>(data.m_iArgumentCount)),
      m_pParams(data.m_pArguments),
      m_query(data.m_bQuery),
      m_object(pObject),
      m_pOutputBuffer(data.m_pOutputBuffer)
{}

CCommandExecutionData::~CCommandExecutionData() = default;

HRESULT CCommandExecutionData::SetScpiError(short code)
{
    m_scpiError = code;
    return code != kScpiNoError ? S_FALSE : S_OK;
}

HRESULT CCommandExecutionData::SetScpiErrorEx(short code, const std::string& text)
{
    m_scpiError = code;
    m_detail = text;
    return code != kScpiNoError ? S_FALSE : S_OK;
}

HRESULT CCommandExecutionData::SetScpiExecutionError(const std::string& text)
{
    return SetScpiErrorEx(kScpiExecutionError, text);
}

HRESULT CCommandExecutionData::SetScpiError_QueryOnly()
{
    const ScpiErrorValue error = QueryOnlyError(m_query);
    return error.code != kScpiNoError ? SetScpiErrorEx(error.code, error.detail) : SetScpiError(kScpiNoError);
}

HRESULT CCommandExecutionData::SetScpiError_NoQuery()
{
    const ScpiErrorValue error = NoQueryError(m_query);
    return error.code != kScpiNoError ? SetScpiErrorEx(error.code, error.detail) : SetScpiError(kScpiNoError);
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
    if (m_scpiError == kScpiNoError || m_errorDelivered)
    {
        return S_OK;
    }
    if (FAILED(DeliverError({m_pScpiManager, m_iRemotePath, m_scpiError, m_detail, m_object})))
    {
        return SetScpiExecutionError("");
    }
    m_errorDelivered = true;
    return S_OK;
}

HRESULT CCommandExecutionData::RaiseIf(short code)
{
    return code == kScpiNoError ? S_OK : SetScpiError(code);
}

HRESULT CCommandExecutionData::CheckArgumentCount(unsigned long last, bool exactCount)
{
    return RaiseIf(CountError(m_argumentCount, static_cast<std::uint32_t>(last), exactCount));
}

HRESULT CCommandExecutionData::CheckArgumentNotAllowed()
{
    return RaiseIf(NoArgumentError(m_argumentCount));
}

HRESULT CCommandExecutionData::CheckArgumentType(long actual, long expected)
{
    return RaiseIf(TypeError(static_cast<unsigned long>(actual), static_cast<unsigned long>(expected)));
}

HRESULT CCommandExecutionData::CheckParamType(long index, long type)
{
    if (index >= m_argumentCount)
    {
        return ScpiErrorMissingParameter();
    }
    tagZO_SCPI_PARAMTYPE actual = ZO_SCPI_PARAMTYPE_UNDEFINED;
    const HRESULT result = GetArgumentType(actual, index);
    return result == S_OK ? CheckArgumentType(actual, type) : result;
}

HRESULT CCommandExecutionData::RaiseFault(const tagFoundArgument& argument)
{
    if (argument.misuse != nullptr)
    {
        const Misuse& misuse = *argument.misuse;
        const char* condition = misuse.condition != nullptr ? misuse.condition : "m_pParams != NULL";
        ThrowError(ZO_ERROR(m_object, condition, misuse.message, misuse.result));
    }
    return SetScpiError(argument.error);
}

template <class TReader, class... TOutputs>
HRESULT CCommandExecutionData::ReadArgument(const TReader& reader, long index, TOutputs&... outputs)
{
    const tagFoundArgument found = FindArgument(m_pParams, m_argumentCount, index, reader.acceptedType);
    return found.parameter != nullptr ? RaiseIf(reader.read(*found.parameter, outputs...))
                                      : RaiseFault(found);
}

HRESULT CCommandExecutionData::GetNumericSuffix(long& value, long index)
{
    value = m_numericSuffixes[index];
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
    if (const HRESULT result = GetCharacterArgument(code, index); result != S_OK)
    {
        return result;
    }
    if (m_pp_Enums == nullptr)
    {
        ThrowError(ZO_ERROR(m_object, "m_pp_Enums", "Null pointer detected (m_pp_Enums)", E_POINTER));
    }
    // By steps: how many texts there are is not known, only where they end.
    const char* const* word = m_pp_Enums;
    for (long position = 1; position < code && *word != nullptr; ++position)
    {
        ++word;
    }
    if (code < 1 || *word == nullptr)
    {
        return SetScpiError(kScpiInvalidCharacterData);
    }
    text = *word;
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
        ThrowError(ZO_NULL_POINTER(m_object, "ppBlockData"));
    }
    return ReadArgument(kBlockReader, index, *ppBlockData, length);
}

HRESULT CCommandExecutionData::GetSuffix(long& unit, long index)
{
    // Deliberate: handlers of this style take 0 for "no unit"; those of the pool take -1.
    constexpr ArgumentReader<long> kSuffixReader{ZO_SCPI_PARAMTYPE_NUMERIC, &ReadUnitSuffix<0>};
    return ReadArgument(kSuffixReader, index, unit);
}

IZOScpiOutputBuffer& CCommandExecutionData::RequireOutputBuffer()
{
    if (m_pOutputBuffer == nullptr)
    {
        ThrowError(ZO_ERROR(m_object, "m_pOutputBuffer != NULL", kInterfaceMissing, E_POINTER));
    }
    return *m_pOutputBuffer;
}

IZOScpiSubsystemFormat& CCommandExecutionData::RequireFormatSubsystem()
{
    IZOScpiSubsystemFormat* pScpiSubsystemFormat = m_pScpiManager.SubsystemFormat();
    if (pScpiSubsystemFormat == nullptr)
    {
        ThrowError(ZO_ERROR(m_object, "pScpiSubsystemFormat != NULL", kInterfaceMissing, E_POINTER));
    }
    return *pScpiSubsystemFormat;
}

HRESULT CCommandExecutionData::SucceedOrRaise(HRESULT result)
{
    return SUCCEEDED(result) ? S_OK : SetScpiExecutionError("");
}

HRESULT CCommandExecutionData::BeginItem()
{
    if (m_insertSeparator && FAILED(RequireOutputBuffer().Write(1, ",", nullptr)))
    {
        return SetScpiExecutionError("");
    }
    m_insertSeparator = true;
    return S_OK;
}

HRESULT CCommandExecutionData::WriteItem(std::string_view text)
{
    const HRESULT result = BeginItem();
    return result == S_OK ? SucceedOrRaise(RequireOutputBuffer().Write(text.size(), text.data(), nullptr))
                          : result;
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

HRESULT CCommandExecutionData::NumericResponse(double value)
{
    return FormatItem([value](IZOScpiSubsystemFormat& subsystemFormat) {
        const CComVariant number(value);
        return subsystemFormat.NumericVariant(&number, ZO_FORMAT_DEFAULT, 0);
    });
}

HRESULT CCommandExecutionData::StringResponse(const std::string& text)
{
    return WriteItem(CScpiSinkFramework::GetScpiStringFormat(text));
}

HRESULT CCommandExecutionData::ArbitraryResponse(const char* data, long length)
{
    return IsReadable(data, length) ? WriteItem({data, static_cast<std::size_t>(length)})
                                    : SetScpiExecutionError("");
}

HRESULT CCommandExecutionData::BlockResponse(const char* data, long length)
{
    if (!IsReadable(data, length))
    {
        return SetScpiExecutionError("");
    }
    if (const HRESULT result = BeginItem(); result != S_OK)
    {
        return result;
    }
    const BlockWrite written = WriteBlock(RequireOutputBuffer(), data, length);
    return SUCCEEDED(written.result) ? S_OK : SetScpiExecutionError(written.errorText);
}

template <class TOperation>
HRESULT CCommandExecutionData::FormatItem(TOperation&& operation)
{
    try
    {
        IZOScpiSubsystemFormat& subsystemFormat = RequireFormatSubsystem();
        const HRESULT result = BeginItem();
        return result == S_OK ? SucceedOrRaise(operation(subsystemFormat)) : result;
    }
    catch (const CShellError&)
    {
        return SetScpiExecutionError("");
    }
}

HRESULT CCommandExecutionData::OutputFormatData(const double* values, long count)
{
    if (!IsReadable(values, count))
    {
        return SetScpiExecutionError("");
    }
    return FormatItem([=](IZOScpiSubsystemFormat& subsystemFormat) {
        return subsystemFormat.OutputDoubles(values, static_cast<unsigned long>(count));
    });
}

HRESULT CCommandExecutionData::OutputRegisterValue(const std::string& name, long index)
{
    long value = 0;
    try
    {
        CComPtr<IZOScpiStatusRegister> statusRegister;
        GetRegisterInterface(name, &statusRegister);
        if (const HRESULT result = ReadRegisterWord(*statusRegister, index, value); result != S_OK)
        {
            ThrowError(ZO_ERROR(m_object, "hr == S_OK", kRegisterError, result));
        }
    }
    catch (const CShellError&)
    {
        return SetScpiExecutionError("");
    }
    return FormatItem([value](IZOScpiSubsystemFormat& subsystemFormat) {
        const CComVariant number(static_cast<LONG>(value), VT_I4);
        return subsystemFormat.NumericVariant(&number, ZO_FORMAT_DEFAULT, 0);
    });
}

HRESULT CCommandExecutionData::GetRegisterInterface(const std::string& name,
                                                    IZOScpiStatusRegister** ppRegister)
{
    if (ppRegister == nullptr)
    {
        ThrowError(ZO_NULL_POINTER(m_object, "ppRegister"));
    }
    *ppRegister = nullptr;
    const CComPtr<IZOScpiStatusManagement> statusManagement = m_pScpiManager.StatusManagement();
    if (statusManagement == nullptr)
    {
        ThrowError(ZO_ERROR(m_object, "pStatusManagement != NULL", kRegisterError, E_POINTER));
    }
    *ppRegister = FindRegister(*statusManagement, m_iRemotePath, name).Detach();
    if (*ppRegister == nullptr)
    {
        ThrowError(ZO_ERROR(m_object, "*ppRegister != NULL", kRegisterError, E_POINTER));
    }
    return S_OK;
}

} // namespace ZoVelkor
