#pragma once

#include "CComVariant.h"
#include "CCommandExecutionData.h"
#include "CErrorRecorder.h"
#include "CScpiFunctionExecutionDataPoolParser.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace ZoVelkor
{

/// Reference counting for an object on the stack: a reference that is never given back fails the test.
template <class TInterface>
class CFake : public TInterface
{
public:
    virtual ~CFake() { EXPECT_EQ(m_references, 0) << "leaked reference"; }
    HRESULT QueryInterface(const IID& iid, void** object) override
    {
        ++m_queries;
        TInterface* self = nullptr;
        const HRESULT result = iid == TInterface::kInterfaceId ? Give(&self) : E_NOINTERFACE;
        *object = self;
        return result;
    }
    ULONG AddRef() override { return static_cast<ULONG>(++std::atomic_ref(m_references)); }
    ULONG Release() override { return static_cast<ULONG>(--std::atomic_ref(m_references)); }
    /// Hands out a reference the way a service getter does.
    HRESULT Give(TInterface** target)
    {
        *target = m_present ? this : nullptr;
        m_references += m_present;
        return m_present ? S_OK : S_FALSE;
    }

    int m_references = 0;
    int m_queries = 0;
    bool m_present = true;
};

/// What the command wrote; lets one of the writes fail.
struct Transcript
{
    std::string text;
    int calls = 0;
    int failingCall = -1;

    void FailAfter(int count) { failingCall = calls + count; }
    bool HasFailed() const { return calls > failingCall; }
    HRESULT Add(const std::string& more) { return calls++ == failingCall ? E_FAIL : (text += more, S_OK); }
};

struct FakeOutputBuffer : CFake<IZOScpiOutputBuffer>
{
    HRESULT Write(unsigned long length, const char* text, wchar_t** error) override
    {
        const HRESULT result = transcript.Add(length != 0 ? std::string(text, length) : "");
        if (FAILED(result) && error != nullptr)
        {
            *error = SysAllocString(L"queue is full");
        }
        return result;
    }
    /// Lengths beyond 100 are not read.
    HRESULT WriteBinary(unsigned long length, const unsigned char* data, wchar_t** error) override
    {
        return Write(length > 100 ? 0 : length, reinterpret_cast<const char*>(data), error);
    }

    Transcript transcript;
};

/// Writes what it is asked for in brackets.
class CFakeFormat : public CFake<IZOScpiSubsystemFormat>
{
public:
    explicit CFakeFormat(Transcript& transcript) : m_transcript(transcript) {}
    HRESULT InsertDataSeparator() override { return m_transcript.Add(","); }
    HRESULT NumericVariant(const VARIANT* value, tagEnumFormatDataType type, long width) override
    {
        CComVariant number(*value);
        number.ChangeType(VT_R8);
        return Put(value->vt, static_cast<double>(number.dblVal), type, width);
    }
    HRESULT NumericText(unsigned long n, const char* p) override { return Put("num", std::string(p, n)); }
    HRESULT StringText(unsigned long n, const char* p) override { return Put("str", std::string(p, n)); }
    HRESULT OutputData(const VARIANT*, tagEnumFormatDataInterpretation kind, VARIANT_BOOL separator) override
    {
        return Put("data", kind, separator);
    }
    HRESULT OutputScatteredData(unsigned long count,
                                const VARIANT* const*,
                                const tagEnumFormatDataInterpretation*,
                                VARIANT_BOOL separator) override
    {
        return Put("scattered", count, separator);
    }
    HRESULT OutputDoubles(const double* values, unsigned long n) override { return Put("reals", n, *values); }
    HRESULT get_DataFormat(tagEnumFormatDataType*, long*) override { return E_NOTIMPL; }
    HRESULT put_DataFormat(tagEnumFormatDataType, long) override { return E_NOTIMPL; }
    HRESULT get_ByteOrder(tagEnumFormatByteOrder*) override { return E_NOTIMPL; }
    HRESULT put_ByteOrder(tagEnumFormatByteOrder) override { return E_NOTIMPL; }
    HRESULT Reset() override { return E_NOTIMPL; }
    HRESULT GetDataFormatText(wchar_t** text) override
    {
        const HRESULT result = m_transcript.Add("");
        *text = SUCCEEDED(result) ? SysAllocString(L"REAL,32") : nullptr;
        return result;
    }

private:
    template <class... TItems>
    HRESULT Put(const TItems&... items)
    {
        std::ostringstream text;
        ((text << ' ' << items), ...);
        return m_transcript.Add("[" + text.str().substr(1) + "]");
    }

    Transcript& m_transcript;
};

struct FakeErrorManagement : CFake<IZOScpiErrorManagement>
{
    HRESULT SetError(long remotePath, short code, const wchar_t* detail) override
    {
        const std::string text(detail, detail + std::wcslen(detail));
        queue += std::to_string(remotePath) + ":" + std::to_string(code) + text + ";";
        return result;
    }
    HRESULT GetNextError(long, short*, wchar_t**) override { return E_NOTIMPL; }
    HRESULT GetErrorCount(long, unsigned long*) override { return E_NOTIMPL; }
    HRESULT ClearErrors(long) override { return E_NOTIMPL; }

    std::string queue;
    HRESULT result = S_OK;
};

struct FakeStatusManagement : CFake<IZOScpiStatusManagement>
{
    HRESULT SerialPoll(long, unsigned char*) override { return E_NOTIMPL; }
    HRESULT GetRegister(long, const wchar_t*, IZOScpiStatusRegister** target) override
    {
        *target = nullptr;
        return S_FALSE;
    }
};

/// One command and everything that Execute would be given with it; itself the manager.
struct Command : CFake<IZOScpiManager>
{
    explicit Command(std::vector<tagZO_SCPI_PARAMETER> parameters = {}) : arguments(std::move(parameters)) {}
    HRESULT GetRemotePath(long*) override { return E_NOTIMPL; }
    HRESULT GetErrorManagement(IZOScpiErrorManagement** p) override { return errors.Give(p); }
    HRESULT GetStatusManagement(IZOScpiStatusManagement** p) override { return status.Give(p); }
    HRESULT GetSubsystemFormat(IZOScpiSubsystemFormat** p) override { return format.Give(p); }
    HRESULT GetPendingOperations(IZOScpiPendingOperations**) override { return E_NOTIMPL; }

    std::vector<tagZO_SCPI_PARAMETER> arguments;
    long suffixes[3] = {4, 5, -1};
    FakeOutputBuffer output;
    Transcript& transcript = output.transcript;
    CFakeFormat format{transcript};
    FakeErrorManagement errors;
    FakeStatusManagement status;
    tagZO_SCPI_PARSER_DATA data =
        MakeScpiParserData(this, 2, 17, 0, suffixes, arguments.size(), arguments.data(), nullptr, &output);
};

inline tagZO_SCPI_PARAMETER Parameter(std::uint32_t type, const char* text, std::uint32_t code = 0)
{
    tagZO_SCPI_PARAMETER parameter{type, code, {}, 3, 5, 0, 0, 0, nullptr};
    std::strncpy(parameter.szText, text, sizeof(parameter.szText) - 1);
    parameter.iTextLength = static_cast<std::uint32_t>(std::strlen(text));
    return parameter;
}

inline tagZO_SCPI_PARAMETER Number(const char* text)
{
    return Parameter(ZO_SCPI_PARAMTYPE_NUMERIC, text);
}

inline tagZO_SCPI_PARAMETER Special(std::uint32_t word)
{
    return Parameter(ZO_SCPI_PARAMTYPE_SPECIAL, "WORD", word);
}

using CPool = CScpiFunctionExecutionDataPoolParser;
using CRecord = CCommandExecutionData;

/// Gives the command to both handler styles, each with a fresh pool or record.
template <class TTest>
void OnBothStyles(const Command& command, const TTest& test)
{
    CPool pool(command.data);
    test(pool);
    CRecord record(command.data);
    test(record);
}

/// One line for each report: condition, message, and whether it was thrown.
inline std::string Lines(const std::vector<CErrorRecorder::Entry>& entries)
{
    std::string lines;
    for (const auto& [report, thrown] : entries)
    {
        lines += std::string(report.condition) + "|" + report.message + (thrown ? "|thrown\n" : "\n");
    }
    return lines;
}

} // namespace ZoVelkor
