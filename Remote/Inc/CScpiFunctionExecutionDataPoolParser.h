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
///
/// Results, checks, ownership and threads are those of the base class. Without output buffer or format
/// subsystem a response reports the missing interface and sets -200.
class ZO_EXPORT CScpiFunctionExecutionDataPoolParser : public CScpiFunctionExecutionDataPool
{
public:
    /// @param data  copied; what it points to is borrowed until Execute returns
    /// @param pObject  the component named in reports of internal errors; may be null
    explicit CScpiFunctionExecutionDataPoolParser(const tagZO_SCPI_PARSER_DATA& data,
                                                  const CObjectDataReference* pObject = nullptr) noexcept;
    ~CScpiFunctionExecutionDataPoolParser() override;

    bool IsQuery() const override { return m_ParserData.m_bQuery; }
    bool IsSetting() const override { return !m_ParserData.m_bQuery; }
    long GetRemotePath() const override { return m_ParserData.m_iRemotePath; }
    const wchar_t* GetHeader() const override { return m_ParserData.m_bsHeader; }
    const CObjectDataReference* GetObjectReference() const override { return m_object; }
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
    HRESULT SetScpiError(short code, const std::string& text, bool replace) override;
    HRESULT SetScpiExecutionError(const std::string& text) override;
    HRESULT SetScpiError_QueryOnly() override;
    HRESULT SetScpiError_NoQuery() override;
    HRESULT SetScpiError_ParameterNotAllowed() override;
    HRESULT ScpiErrorMissingParameter() override;
    HRESULT ScpiErrorUnexpectedParameter() override;
    HRESULT SetScpiBlockDataError(const std::string& text) override;
    short GetScpiError() const override { return m_scpiError; }
    const std::string& GetScpiErrorText() const override { return m_scpiErrorText; }
    HRESULT FinishCommandExecution() override;

    using CScpiFunctionExecutionDataPool::NumericResponse;
    HRESULT NumericResponse(double value) override;
    HRESULT NumericResponse(float value) override;
    HRESULT NumericResponse(long value) override;
    HRESULT NumericResponse(const CComVariant& value) override;
    HRESULT NumericResponse(const std::string& text) override;
    HRESULT NumericResponseEx(const CComVariant& value, tagEnumFormatDataType type, long width) override;
    HRESULT DoubleResponse(double value) override;
    using CScpiFunctionExecutionDataPool::IntegerResponse;
    HRESULT IntegerResponse(long value) override;
    HRESULT IntegerResponse(const CComVariant& value) override;
    HRESULT IntegerResponse(const CZoString& text) override;
    HRESULT IntegerResponse(const std::string& text) override;
    using CScpiFunctionExecutionDataPool::BooleanResponse;
    HRESULT BooleanResponse(bool value) override;
    HRESULT BooleanResponse(const CComVariant& value) override;
    HRESULT BooleanResponse(const CZoString& text) override;
    HRESULT BooleanResponse(const std::string& text) override;
    HRESULT StringResponse(const std::string& text) override;
    HRESULT StringResponse(const char* text) override;
    HRESULT StringResponse(const wchar_t* text) override;
    HRESULT StringResponse(const CZoString& text) override;
    HRESULT ArbitraryResponse(const char* data, long length) override;
    HRESULT ArbitraryResponse(const std::string& text) override;
    HRESULT ArbitraryResponse(const CZoString& text) override;
    HRESULT ArbitraryResponse(const char* text) override;
    HRESULT BlockResponse(const char* data, long length) override;
    HRESULT OutputEnumValue(long value) override;
    HRESULT OutputData(const VARIANT* data, tagEnumFormatDataInterpretation interpretation) override;
    HRESULT OutputScatteredData(unsigned long count,
                                const VARIANT* const* data,
                                const tagEnumFormatDataInterpretation* interpretations) override;
    HRESULT OutputRegisterValue(const std::string& name) override;
    HRESULT PendingDataSeparatorResponse() override;
    bool GetInsertOutputSeparator() const override { return m_insertSeparator; }
    void ClearInsertOutputSeparator() override { m_insertSeparator = false; }

    bool RunOutputFilter(const std::string& line) override;
    HRESULT SetOutputFilterString(const std::string& text) override;
    HRESULT SetOutputFilterRegEx(const std::string& pattern) override;
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
    void SetBlockDataReader(IZOScpiBlockData* reader) override { m_blockDataReader = reader; }
    IZOScpiBlockData* GetBlockDataReader() const override { return m_blockDataReader; }
    void SetBlockDataWriter(IZOScpiSubsystemFormat* writer) override { m_blockDataWriter = writer; }
    IZOScpiSubsystemFormat* GetBlockDataWriter() const override { return m_blockDataWriter; }

    HRESULT FinishTransaction(CComPtr<IZODatabaseTransaction>& transaction,
                              const TransactionAcceptMode& acceptMode) override;
    HRESULT UndoTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;
    HRESULT StopTransaction() override;
    /// Always 1, with null: commands of the remote kernel carry no transaction. So do the next two.
    HRESULT GetReadTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;
    /// Always 1, with null.
    HRESULT GetWriteTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;
    /// Always 1, with null.
    HRESULT GetCurrentTransaction(CComPtr<IZODatabaseTransaction>& transaction) override;

protected:
    /// Gives the pool the read transaction that StopTransaction aborts; the pool holds a reference.
    void SetReadTransaction(IZODatabaseTransaction* transaction) { m_pIReadTransaction = transaction; }

    /// Keeps every line. One of these three operations is installed at any time.
    bool IgnoreFilter(const std::string& line) const;
    /// Keeps the lines that contain the filter's text.
    bool StringFilter(const std::string& line) const;
    /// Keeps none: regular expressions are not available, and this filter is never installed.
    bool RegExFilter(const std::string& line) const;

private:
    using FilterOperation = bool (CScpiFunctionExecutionDataPoolParser::*)(const std::string&) const;

    template <class TReader, class... TOutputs>
    HRESULT ReadArgument(const TReader& reader, long index, TOutputs&... outputs);
    template <class TConversion>
    HRESULT ReadText(CZoString& text, long index, TConversion&& conversion);
    ScpiExecution::tagFoundArgument Find(long index, unsigned long acceptedType) const noexcept;
    template <class TOperation>
    HRESULT FormatItem(TOperation&& operation);
    template <class TOperation>
    HRESULT FormatData(TOperation&& operation);
    HRESULT RaiseFault(const ScpiExecution::tagFoundArgument& argument);
    HRESULT RaiseIf(short code);
    HRESULT SucceedOrRaise(HRESULT result);
    HRESULT NullBlockPointer();
    HRESULT BeginItem();
    HRESULT InsertSeparator();
    HRESULT WriteItem(std::string_view text);
    HRESULT WriteString(std::string_view text);
    IZOScpiSubsystemFormat* RequireFormatSubsystem();
    IZOScpiOutputBuffer* RequireOutputBuffer();
    void InstallFilter(FilterOperation filter, const std::string& operand);

    tagZO_SCPI_PARSER_DATA m_ParserData;
    const CObjectDataReference* m_object;
    CLazyScpiManager m_Services;
    std::string m_scpiErrorText;
    short m_scpiError = 0;
    bool m_errorDelivered = false;
    bool m_insertSeparator = false;
    FilterOperation m_outputFilter;
    std::string m_filterText;
    CComPtr<IZOScpiBlockData> m_blockDataReader;
    CComPtr<IZOScpiSubsystemFormat> m_blockDataWriter;
    CComPtr<IZODatabaseTransaction> m_pIReadTransaction;
};

} // namespace ZoVelkor
