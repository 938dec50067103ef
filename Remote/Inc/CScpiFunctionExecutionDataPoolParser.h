#pragma once

#include "CLazyScpiManager.h"
#include "CScpiFunctionExecutionDataPool.h"
#include "ScpiParserData.h"

#include <string_view>

namespace ZoVelkor
{

class CObjectDataReference;

namespace ScpiExecution
{
struct tagFoundArgument;
}

/// The execution-data pool of a command that came through the remote kernel's parser.
///
/// Making one allocates nothing and asks no interface:
/// `CScpiFunctionExecutionDataPoolParser pool(MakeScpiParserData(context, remotePath, ...), this);`
class ZO_EXPORT CScpiFunctionExecutionDataPoolParser : public CScpiFunctionExecutionDataPool
{
public:
    /// @param data  copied; what it points to is borrowed until Execute returns
    /// @param pObject  the component named in reports of internal errors; may be null
    explicit CScpiFunctionExecutionDataPoolParser(tagZO_SCPI_PARSER_DATA const& data,
                                                  CObjectDataReference const* pObject = nullptr) noexcept;
    ~CScpiFunctionExecutionDataPoolParser() override;

    bool IsQuery() const override { return m_ParserData.m_bQuery; }
    bool IsSetting() const override { return !m_ParserData.m_bQuery; }
    long GetRemotePath() const override { return m_ParserData.m_iRemotePath; }
    wchar_t const* GetHeader() const override { return m_ParserData.m_bsHeader; }
    CObjectDataReference const* GetObjectReference() const override { return m_pObject; }
    unsigned long GetRawNumericSuffixValue(long index) const override;

    long GetArgumentCount() const override { return m_ParserData.m_iArgumentCount; }
    HRESULT GetArgumentCount(unsigned long& count) override;
    HRESULT GetArgumentType(tagZO_SCPI_PARAMTYPE& type, long index) override;
    HRESULT CheckArgumentCount(long last, bool exactCount) override;
    HRESULT CheckArgumentNotAllowed() override;
    HRESULT CheckArgumentType(long actual, long expected) override;
    HRESULT ScpiErrorUnexpectedParameterType(long index) override;

    HRESULT GetDoubleArgument(double& value, long index) override;
    HRESULT GetDoubleArgumentWithUnit(double& value, long& unit, long index) override;
    HRESULT GetIntegerArgument(long& value, long index) override;
    HRESULT GetBooleanArgument(bool& value, long index) override;
    HRESULT GetCharacterArgument(long& value, long index) override;
    HRESULT GetMnemonicArgument(tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE& value, long index) override;
    HRESULT GetStringArgument(std::string& text, long index) override;
    HRESULT GetExprStringArgument(std::string& text, long index) override;
    HRESULT GetStringArgument(CZoString& text, long index) override;
    HRESULT GetNumericArgument(CZoString& text, long index) override;
    HRESULT GetUnitSuffix(long& unit, long index) override;
    HRESULT GetBlockArgument(IZOScpiBlockData** ppBlockData, long& length, long index) override;
    HRESULT GetBlockDataArgument(unsigned char** ppBlockData, unsigned long& length, long index) override;

    using CScpiFunctionExecutionDataPool::SetScpiError;
    HRESULT SetScpiError(short code, std::string const& text, bool replace) override;
    HRESULT SetScpiExecutionError(std::string const& text) override;
    HRESULT SetScpiError_QueryOnly() override;
    HRESULT SetScpiError_NoQuery() override;
    HRESULT SetScpiError_ParameterNotAllowed() override;
    HRESULT ScpiErrorMissingParameter() override;
    HRESULT ScpiErrorUnexpectedParameter() override;
    HRESULT SetScpiBlockDataError(std::string const& text) override;
    short GetScpiError() const override { return m_iScpiError; }
    std::string const& GetScpiErrorText() const override { return m_sScpiErrorText; }
    HRESULT FinishCommandExecution() override;

    using CScpiFunctionExecutionDataPool::NumericResponse;
    HRESULT NumericResponse(double value) override;
    HRESULT NumericResponse(float value) override;
    HRESULT NumericResponse(long value) override;
    HRESULT NumericResponse(CComVariant const& value) override;
    HRESULT NumericResponse(std::string const& text) override;
    HRESULT NumericResponseEx(CComVariant const& value, tagEnumFormatDataType type, long width) override;
    HRESULT DoubleResponse(double value) override;
    using CScpiFunctionExecutionDataPool::IntegerResponse;
    HRESULT IntegerResponse(long value) override;
    HRESULT IntegerResponse(CComVariant const& value) override;
    HRESULT IntegerResponse(CZoString const& text) override;
    HRESULT IntegerResponse(std::string const& text) override;
    using CScpiFunctionExecutionDataPool::BooleanResponse;
    HRESULT BooleanResponse(bool value) override;
    HRESULT BooleanResponse(CComVariant const& value) override;
    HRESULT BooleanResponse(CZoString const& text) override;
    HRESULT BooleanResponse(std::string const& text) override;
    HRESULT StringResponse(std::string const& text) override;
    HRESULT StringResponse(char const* text) override;
    HRESULT StringResponse(wchar_t const* text) override;
    HRESULT StringResponse(CZoString const& text) override;
    HRESULT ArbitraryResponse(char const* data, long length) override;
    HRESULT ArbitraryResponse(std::string const& text) override;
    HRESULT ArbitraryResponse(CZoString const& text) override;
    HRESULT ArbitraryResponse(char const* text) override;
    HRESULT BlockResponse(char const* data, long length) override;
    HRESULT OutputEnumValue(long value) override;
    HRESULT OutputData(VARIANT const* data, tagEnumFormatDataInterpretation interpretation) override;
    HRESULT OutputScatteredData(unsigned long count,
                                VARIANT const* const* data,
                                tagEnumFormatDataInterpretation const* interpretations) override;
    HRESULT OutputRegisterValue(std::string const& name) override;
    HRESULT PendingDataSeparatorResponse() override;
    bool GetInsertOutputSeparator() const override { return m_bInsertSeparator; }
    void ClearInsertOutputSeparator() override { m_bInsertSeparator = false; }

    bool RunOutputFilter(std::string const& line) override;
    HRESULT SetOutputFilterString(std::string const& text) override;
    HRESULT SetOutputFilterRegEx(std::string const& pattern) override;
    void ClearOutputFilter() override;
    bool IsOutputFilterDefined() const override;

    IZOScpiOutputBuffer* GetOutputBuffer() override { return m_ParserData.m_pOutputBuffer; }
    IZOScpiSubsystemFormat* GetFormatSubsystem() override { return m_Services.SubsystemFormat(); }
    IZOScpiManager* GetScpiManager() override { return m_Services.Manager(); }
    CComPtr<IZOScpiErrorManagement> GetErrorManagement() override { return m_Services.ErrorManagement(); }
    CComPtr<IZOScpiStatusManagement> GetStatusManagement() override { return m_Services.StatusManagement(); }
    CComPtr<IZOScpiPendingOperations> GetPendingOperations() override
    {
        return m_Services.PendingOperations();
    }
    void SetBlockDataReader(IZOScpiBlockData* pReader) override { m_spBlockDataReader = pReader; }
    IZOScpiBlockData* GetBlockDataReader() const override { return m_spBlockDataReader; }
    void SetBlockDataWriter(IZOScpiSubsystemFormat* pWriter) override { m_spBlockDataWriter = pWriter; }
    IZOScpiSubsystemFormat* GetBlockDataWriter() const override { return m_spBlockDataWriter; }

    HRESULT FinishTransaction(CComPtr<IZODatabaseTransaction>& transaction,
                              TransactionAcceptMode const& acceptMode) override;
    HRESULT UndoTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;
    HRESULT StopTransaction() override;
    /// Always 1: commands of the remote kernel carry no transaction. So do the next two.
    HRESULT GetReadTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;
    HRESULT GetWriteTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;
    HRESULT GetCurrentTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;

protected:
    /// Gives the pool the read transaction that StopTransaction aborts; the pool holds a reference.
    void SetReadTransaction(IZODatabaseTransaction* pTransaction) { m_pIReadTransaction = pTransaction; }

    /// The three filter operations; one of them is installed at any time.
    bool IgnoreFilter(std::string const& line) const;
    bool StringFilter(std::string const& line) const;
    bool RegExFilter(std::string const& line) const;

private:
    using FilterOperation = bool (CScpiFunctionExecutionDataPoolParser::*)(std::string const&) const;

    template <class TReader, class... TOutputs>
    HRESULT ReadArgument(TReader const& reader, long index, TOutputs&... outputs);
    template <class TConversion>
    HRESULT ReadText(CZoString& text, long index, TConversion&& conversion);
    ScpiExecution::tagFoundArgument Find(long index, unsigned long acceptedType) const noexcept;
    template <class TOperation>
    HRESULT FormatItem(TOperation&& operation);
    template <class TOperation>
    HRESULT FormatData(TOperation&& operation);
    HRESULT RaiseFault(ScpiExecution::tagFoundArgument const& argument);
    HRESULT RaiseIf(short code);
    HRESULT SucceedOrRaise(HRESULT hr);
    HRESULT NullBlockPointer();
    HRESULT BeginItem();
    HRESULT InsertSeparator();
    HRESULT WriteItem(std::string_view text);
    HRESULT WriteString(std::string_view text);
    IZOScpiSubsystemFormat* RequireFormatSubsystem();
    IZOScpiOutputBuffer* RequireOutputBuffer();
    void InstallFilter(FilterOperation filter, std::string const& operand);

    tagZO_SCPI_PARSER_DATA m_ParserData;
    CObjectDataReference const* m_pObject;
    CLazyScpiManager m_Services;
    std::string m_sScpiErrorText;
    short m_iScpiError = 0;
    bool m_bErrorDelivered = false;
    bool m_bInsertSeparator = false;
    FilterOperation m_pOutputFilter;
    std::string m_sOutputFilter;
    CComPtr<IZOScpiBlockData> m_spBlockDataReader;
    CComPtr<IZOScpiSubsystemFormat> m_spBlockDataWriter;
    CComPtr<IZODatabaseTransaction> m_pIReadTransaction;
};

} // namespace ZoVelkor
