#pragma once

#include "CComBSTR.h"
#include "CCommandExecutionData.h"
#include "CScpiFunctionExecutionDataPoolParser.h"
#include "IZOScpiStatusRegister.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace ZoVelkor
{

/// Reference counting for an object on the stack: a reference that is never given back fails the test.
template <class TInterface>
class CFake : public TInterface
{
public:
    CFake() = default;
    CFake(CFake const&) = delete;
    CFake& operator=(CFake const&) = delete;
    virtual ~CFake() { EXPECT_EQ(m_references, 0) << "leaked reference"; }
    HRESULT QueryInterface(const IID& iid, void** object) override
    {
        ++m_queries;
        *object = iid == TInterface::kInterfaceId ? static_cast<TInterface*>(this) : nullptr;
        m_references += *object != nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return static_cast<ULONG>(++m_references); }
    ULONG Release() override { return static_cast<ULONG>(--m_references); }

    /// Hands out a reference the way a service getter does.
    HRESULT Give(TInterface** target, bool present)
    {
        *target = present ? this : nullptr;
        m_references += present;
        return present ? S_OK : S_FALSE;
    }

    int m_references = 0;
    int m_queries = 0;
};

/// Lets one of the calls that share it fail.
struct tagFault
{
    int calls = 0;
    int failingCall = -1;
    void FailAfter(int count) { failingCall = calls + count; }
    HRESULT Next() { return calls++ == failingCall ? E_FAIL : S_OK; }
    int CallsSince() const { return calls - failingCall - 1; }
};

class CFakeOutputBuffer : public CFake<IZOScpiOutputBuffer>
{
public:
    explicit CFakeOutputBuffer(tagFault& fault) : m_fault(fault) {}
    HRESULT Write(unsigned long length, char const* text, wchar_t** error) override
    {
        return Append(text, length, error);
    }
    HRESULT WriteBinary(unsigned long length, unsigned char const* data, wchar_t** error) override
    {
        return Append(data, m_bIgnoreBinary ? 0 : length, error);
    }

    std::string m_text;
    bool m_bIgnoreBinary = false;

private:
    HRESULT Append(void const* data, unsigned long length, wchar_t** error)
    {
        const HRESULT hr = m_fault.Next();
        if (FAILED(hr) && error != nullptr)
        {
            *error = SysAllocString(L"queue is full");
        }
        if (SUCCEEDED(hr) && length != 0)
        {
            m_text.append(static_cast<char const*>(data), length);
        }
        return hr;
    }

    tagFault& m_fault;
};

/// Writes what it is asked for in brackets.
class CFakeFormat : public CFake<IZOScpiSubsystemFormat>
{
public:
    CFakeFormat(std::string& text, tagFault& fault) : m_text(text), m_fault(fault) {}
    HRESULT InsertDataSeparator() override { return Put(","); }
    HRESULT NumericVariant(VARIANT const* value, tagEnumFormatDataType type, long width) override
    {
        const double number = value->vt == VT_R8   ? value->dblVal
                              : value->vt == VT_R4 ? double{value->fltVal}
                                                   : static_cast<double>(value->lVal);
        const std::string kind = value->vt == VT_R8 ? "R8" : value->vt == VT_R4 ? "R4" : "I4";
        const std::string form = type == ZO_FORMAT_DEFAULT && width == 0
                                     ? ""
                                     : ":" + std::to_string(type) + ":" + std::to_string(width);
        return Put("[" + kind + form + " " + std::to_string(number) + "]");
    }
    HRESULT NumericText(unsigned long length, char const* text) override
    {
        return Put("[num " + std::string(text, length) + "]");
    }
    HRESULT StringText(unsigned long length, char const* text) override
    {
        return Put("[str " + std::string(text, length) + "]");
    }
    HRESULT OutputData(VARIANT const*, tagEnumFormatDataInterpretation kind, VARIANT_BOOL separator) override
    {
        return Put("[data " + std::to_string(kind) + " " + std::to_string(separator) + "]");
    }
    HRESULT OutputScatteredData(unsigned long count,
                                VARIANT const* const*,
                                tagEnumFormatDataInterpretation const*,
                                VARIANT_BOOL separator) override
    {
        return Put("[scattered " + std::to_string(count) + " " + std::to_string(separator) + "]");
    }
    HRESULT OutputDoubles(double const* values, unsigned long count) override
    {
        return Put("[doubles " + std::to_string(count) + " " + std::to_string(values[0]) + "]");
    }
    HRESULT get_DataFormat(tagEnumFormatDataType*, long*) override { return E_NOTIMPL; }
    HRESULT put_DataFormat(tagEnumFormatDataType, long) override { return E_NOTIMPL; }
    HRESULT get_ByteOrder(tagEnumFormatByteOrder*) override { return E_NOTIMPL; }
    HRESULT put_ByteOrder(tagEnumFormatByteOrder) override { return E_NOTIMPL; }
    HRESULT GetDataFormatText(wchar_t** text) override
    {
        const HRESULT hr = m_fault.Next();
        *text = SUCCEEDED(hr) ? SysAllocString(L"REAL,32") : nullptr;
        return hr;
    }
    HRESULT Reset() override { return E_NOTIMPL; }

private:
    HRESULT Put(std::string const& text)
    {
        const HRESULT hr = m_fault.Next();
        m_text += SUCCEEDED(hr) ? text : "";
        return hr;
    }

    std::string& m_text;
    tagFault& m_fault;
};

class CFakeErrorManagement : public CFake<IZOScpiErrorManagement>
{
public:
    HRESULT SetError(long remotePath, short code, wchar_t const* detail) override
    {
        m_queue.push_back(std::to_string(remotePath) + ": " + std::to_string(code) + " " +
                          std::string(detail, detail + std::wcslen(detail)));
        return m_result;
    }
    HRESULT GetNextError(long, short*, wchar_t**) override { return E_NOTIMPL; }
    HRESULT GetErrorCount(long, unsigned long*) override { return E_NOTIMPL; }
    HRESULT ClearErrors(long) override { return E_NOTIMPL; }

    std::vector<std::string> m_queue;
    HRESULT m_result = S_OK;
};

/// Knows the one register "STATus:OPERation".
class CFakeStatusManagement : public CFake<IZOScpiStatusManagement>
{
public:
    HRESULT GetRegister(long, wchar_t const* name, IZOScpiStatusRegister** target) override
    {
        *target = std::wcscmp(name, L"STATus:OPERation") == 0 ? m_spRegister.Get() : nullptr;
        if (*target == nullptr)
        {
            return S_FALSE;
        }
        (*target)->AddRef();
        return S_OK;
    }

    CComPtr<IZOScpiStatusRegister> m_spRegister;
};

class CFakeManager : public CFake<IZOScpiManager>
{
public:
    CFakeManager(CFakeFormat& format, CFakeErrorManagement& errors, CFakeStatusManagement& status)
        : m_format(format),
          m_errors(errors),
          m_status(status)
    {}
    HRESULT GetRemotePath(long*) override { return E_NOTIMPL; }
    HRESULT GetErrorManagement(IZOScpiErrorManagement** p) override { return m_errors.Give(p, m_bErrors); }
    HRESULT GetStatusManagement(IZOScpiStatusManagement** p) override { return m_status.Give(p, m_bStatus); }
    HRESULT GetSubsystemFormat(IZOScpiSubsystemFormat** p) override { return m_format.Give(p, m_bFormat); }
    HRESULT GetPendingOperations(IZOScpiPendingOperations** p) override
    {
        *p = nullptr;
        return S_FALSE;
    }

    bool m_bErrors = true;
    bool m_bStatus = true;
    bool m_bFormat = true;

private:
    CFakeFormat& m_format;
    CFakeErrorManagement& m_errors;
    CFakeStatusManagement& m_status;
};

class CFakeBlock : public CFake<IZOScpiBlockData>
{
public:
    HRESULT Read(unsigned long, unsigned char*, unsigned long*) override { return E_NOTIMPL; }
    HRESULT Status(short*, long*) override { return E_NOTIMPL; }
    HRESULT Discard() override { return E_NOTIMPL; }
    HRESULT GetStatusEx(short*, long*, unsigned long*, unsigned long*) override { return E_NOTIMPL; }
    HRESULT ReadFromStream(IStream*, unsigned long, unsigned long*) override { return E_NOTIMPL; }
    HRESULT ContinueRead(long) override { return E_NOTIMPL; }
    HRESULT InitReaderFormat(tagEnumFormatDataType, long, tagEnumFormatByteOrder) override
    {
        return E_NOTIMPL;
    }
    HRESULT GetNextElement(VARIANT*) override { return E_NOTIMPL; }
    HRESULT GetNextDouble(double*) override { return E_NOTIMPL; }
    HRESULT GetNextInteger(long*) override { return E_NOTIMPL; }
    HRESULT GetNextArray(unsigned long, double*, unsigned long*) override { return E_NOTIMPL; }
    HRESULT GetNextScatteredArrays(unsigned long, unsigned long, double* const*, unsigned long*) override
    {
        return E_NOTIMPL;
    }
    HRESULT Access(unsigned char** data, unsigned long* length) override
    {
        *data = m_bytes;
        *length = sizeof(m_bytes);
        return m_result;
    }

    unsigned char m_bytes[3] = {7, 8, 9};
    HRESULT m_result = S_OK;
};

inline tagZO_SCPI_PARAMETER
Parameter(std::uint32_t type, char const* text = "", std::uint32_t specialCode = 0)
{
    tagZO_SCPI_PARAMETER parameter{};
    parameter.iType = type;
    parameter.iSpecialCode = specialCode;
    std::strncpy(parameter.szText, text, sizeof(parameter.szText) - 1);
    parameter.iTextLength = static_cast<std::uint32_t>(std::strlen(text));
    parameter.iUnit = 3;
    parameter.iUnitSuffix = 5;
    return parameter;
}

inline tagZO_SCPI_PARAMETER Number(char const* text)
{
    return Parameter(ZO_SCPI_PARAMTYPE_NUMERIC, text);
}

inline tagZO_SCPI_PARAMETER Special(std::uint32_t word)
{
    return Parameter(ZO_SCPI_PARAMTYPE_SPECIAL, "WORD", word);
}

/// One command and everything that Execute would be given with it.
struct tagCommand
{
    tagFault fault;
    CFakeOutputBuffer output{fault};
    CFakeFormat format{output.m_text, fault};
    CFakeErrorManagement errors;
    CFakeStatusManagement status;
    CFakeManager manager{format, errors, status};
    std::vector<tagZO_SCPI_PARAMETER> arguments;
    long suffixes[3] = {4, 5, -1};
    tagZO_SCPI_PARSER_DATA data =
        MakeScpiParserData(&manager, 2, 17, 0, suffixes, 0, nullptr, nullptr, &output);

    tagCommand() = default;
    explicit tagCommand(std::vector<tagZO_SCPI_PARAMETER> parameters) : arguments(std::move(parameters))
    {
        data.m_pArguments = arguments.data();
        data.m_iArgumentCount = static_cast<std::int32_t>(arguments.size());
    }
};

using CPool = CScpiFunctionExecutionDataPoolParser;
using CRecord = CCommandExecutionData;

/// The same handler code for both styles.
template <class TResult>
struct tagBoth
{
    TResult (*pool)(CPool&);
    TResult (*record)(CRecord&);
};

template <class TResult, class THandler>
tagBoth<TResult> Both(THandler)
{
    return {[](CPool& data) { return THandler{}(data); }, [](CRecord& data) { return THandler{}(data); }};
}

} // namespace ZoVelkor
