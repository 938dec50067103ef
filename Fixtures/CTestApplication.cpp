#include "CTestApplication.h"

#include "CMutexLocker.h"
#include "ErrorRaising.h"
#include "IZOScpiBlockData.h"
#include "ScpiErrorCodes.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace ZoVelkor::RemoteKernel::Testing
{

ZO_SOURCE_UNIT("Fixtures/CTestApplication");

namespace
{
enum Command : std::int32_t
{
    CmdStore,
    CmdStoreWithSuffix,
    CmdLast,
    CmdStoreBlock,
    CmdAnswerBlock,
    CmdAnswerList = CTestSink::kAnswerList,
    CmdFormat,
    CmdFail,
    CmdOverlap,
    CmdHold,
    CmdTake
};

constexpr std::uint32_t kNumber = ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT;
constexpr std::uint32_t kBoolean = ARG_SFLOAT | ARG_OFF | MNEM;
} // namespace

struct CTestSink::Call
{
    IZOScpiManager& manager;
    long remotePath;
    bool query;
    const long* suffixes;
    std::vector<tagZO_SCPI_PARAMETER> arguments;
    IZOScpiOutputBuffer& output;

    int Integer(std::size_t index) const { return std::atoi(arguments.at(index).szText); }
    CComPtr<IZOScpiSubsystemFormat> Format() const
    {
        CComPtr<IZOScpiSubsystemFormat> format;
        manager.GetSubsystemFormat(&format);
        return format;
    }
    void SetError(short code, const wchar_t* detail) const
    {
        CComPtr<IZOScpiErrorManagement> errors;
        manager.GetErrorManagement(&errors);
        errors->SetError(remotePath, code, detail);
    }
};

std::vector<_CMD_SET_RECORD> CTestSink::Table()
{
    const Words units{{"HZ", 1}};
    const Words modes{{"POSitive", 1}, {"NEGative", 2}};
    return CTableBuilder()
        .Add("CHANnel#1-3:FREQuency", DEF, CmdStoreWithSuffix, HDR_SET, {{kNumber, 0, units, {}}})
        .Add("INTeger", DEF, CmdStore, HDR_SET, {{ARG_SINT}})
        .Add("SWITch", DEF, CmdStore, HDR_SET, {{kBoolean}})
        .Add("MODE", DEF, CmdStore, HDR_SET, {{MNEM, 0, {}, modes}})
        .Add("TEXT", DEF, CmdStore, HDR_SET, {{ARG_STRG}, {ARG_STRG, ARG_FLAG_OPT}})
        .Add("ROUTe", DEF, CmdStore, HDR_SET, {{ARG_EXPR}})
        .Add("LAST", CmdLast, DEF, QMARK)
        .Add("BLOCk", CmdAnswerBlock, CmdStoreBlock, QMARK | HDR_SET, {{ARG_BLOCK}})
        .Add("LIST", CmdAnswerList, DEF, QMARK, {{ARG_SINT}})
        .Add("FORMat", DEF, CmdFormat, HDR_SET, {{ARG_SINT}, {ARG_SINT}})
        .Add("FAIL", CmdFail, DEF, QMARK, {{ARG_SINT}})
        .Add("OVERlap", CmdOverlap, DEF, 0)
        .Add("HOLD", CmdHold, DEF, 0)
        .Add("TAKE", DEF, CmdTake, HDR_SET, {{ARG_SINT}, {ARG_BLOCK}})
        .Add("PAIR", DEF, CmdTake, HDR_SET, {{ARG_SINT}, {ARG_BLOCK}, {ARG_BLOCK}})
        .Add("REPeat", DEF, CmdTake, HDR_SET, {{ARG_SINT}, {ARG_BLOCK, ARG_FLAG_REP}})
        .Add("DEEP:TAKE", DEF, CmdTake, HDR_SET, {{ARG_SINT}, {ARG_BLOCK}})
        .Add("DEEP:REPeat", DEF, CmdTake, HDR_SET, {{ARG_SINT}, {ARG_BLOCK, ARG_FLAG_REP}})
        .Add("DEEP:LAST", CmdLast, DEF, QMARK)
        .Add("POSitive", DEF, CmdTake, HDR_SET, {{ARG_PINT}, {ARG_DBLOCK}})
        .Build();
}

HRESULT CTestSink::Execute(IUnknown* context,
                           long remotePath,
                           unsigned long command,
                           short isQuery,
                           long* numericSuffixes,
                           unsigned long argumentCount,
                           tagZO_SCPI_PARAMETER* arguments,
                           wchar_t*,
                           IZOScpiOutputBuffer* output)
{
    if (m_running.fetch_add(1) != 0)
    {
        m_overlapped = true;
    }
    CComPtr<IZOScpiManager> manager;
    context->QueryInterface(IID_IZOScpiManager, reinterpret_cast<void**>(&manager));
    struct Leave
    {
        std::atomic<int>& running;
        ~Leave() { --running; }
    } leave{m_running};
    return Run({*manager,
                remotePath,
                isQuery != 0,
                numericSuffixes,
                {arguments, arguments + argumentCount},
                *output},
               command);
}

HRESULT CTestSink::Run(const Call& call, unsigned long command)
{
    switch (command)
    {
    case CmdStore:
        return Store(call, {});
    case CmdStoreWithSuffix:
        return Store(call, std::to_string(call.suffixes[0]) + ' ');
    case CmdLast:
        return call.Format()->StringText(m_last.size(), m_last.data());
    case CmdStoreBlock:
        return StoreBlock(call);
    case CmdAnswerBlock:
        return AnswerBlock(call);
    case CmdAnswerList:
        return AnswerList(call);
    case CmdFormat:
        return SetFormat(call);
    case CmdFail:
        return Fail(call);
    case CmdOverlap:
        return BeginOperation(call);
    case CmdTake:
        return TakeBlock(call);
    default:
        SetEvent(m_holdEntered.Get());
        WaitForSingleObject(m_holdRelease.Get(), INFINITE);
        return S_OK;
    }
}

HRESULT CTestSink::Store(const Call& call, std::string prefix)
{
    m_last = std::move(prefix);
    for (const tagZO_SCPI_PARAMETER& argument : call.arguments)
    {
        m_last += std::to_string(argument.iType) + ':' + std::to_string(argument.iSpecialCode) + ':' +
                  std::string(argument.szText, argument.iTextLength) + ';';
    }
    return S_OK;
}

HRESULT CTestSink::StoreBlock(const Call& call)
{
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    std::vector<unsigned char> block;
    HRESULT result = S_OK;
    for (unsigned long got = kPiece; result == S_OK && got == kPiece;)
    {
        const std::size_t have = block.size();
        block.resize(have + kPiece);
        result = call.arguments.at(0).pBlockData->Read(kPiece, block.data() + have, &got);
        block.resize(have + got);
    }
    if (FAILED(result))
    {
        return result;
    }
    m_block = std::move(block);
    return S_OK;
}

HRESULT CTestSink::TakeBlock(const Call& call)
{
    IZOScpiBlockData& block = *call.arguments.back().pBlockData;
    long wanted = call.Integer(0);
    std::uint32_t sum = 0;
    unsigned char piece[4096];
    HRESULT result = S_OK;
    SetEvent(m_takeEntered.Get());
    for (unsigned long got = 1; result == S_OK && got != 0 && wanted > 0; wanted -= static_cast<long>(got))
    {
        result = block.Read(
            std::min<unsigned long>(sizeof piece, static_cast<unsigned long>(wanted)), piece, &got);
        sum = std::accumulate(piece, piece + got, sum);
    }
    if (FAILED(result))
    {
        m_takeResult = result;
        return result;
    }
    short complete = 0;
    long length = 0;
    unsigned long available = 0;
    unsigned long consumed = 0;
    block.GetStatusEx(&complete, &length, &available, &consumed);
    m_last = std::to_string(consumed) + '/' + std::to_string(length) + ':' + std::to_string(sum);
    return S_OK;
}

HRESULT CTestSink::AnswerBlock(const Call& call) const
{
    const std::string length = std::to_string(m_block.size());
    const std::string header = '#' + std::to_string(length.size()) + length;
    const HRESULT result = call.output.Write(header.size(), header.data(), nullptr);
    return FAILED(result) ? result : call.output.WriteBinary(m_block.size(), m_block.data(), nullptr);
}

HRESULT CTestSink::AnswerList(const Call& call) const
{
    std::vector<double> values;
    for (int i = 0; i < call.Integer(0); ++i)
    {
        values.push_back(i * 0.5);
    }
    return call.Format()->OutputDoubles(values.data(), values.size());
}

HRESULT CTestSink::SetFormat(const Call& call) const
{
    return call.Format()->put_DataFormat(static_cast<tagEnumFormatDataType>(call.Integer(0)),
                                         call.Integer(1));
}

HRESULT CTestSink::Fail(const Call& call) const
{
    call.output.Write(4, "half", nullptr);
    switch (static_cast<Failure>(call.Integer(0)))
    {
    case ErrorAndResultOne:
        call.SetError(kScpiSettingsConflict, L"one \"quoted\"");
        return S_FALSE;
    case ErrorAndResultZero:
        call.SetError(kScpiSettingsConflict, nullptr);
        return S_OK;
    case FailureWithoutError:
        return E_FAIL;
    case FailureWithError:
        call.SetError(kScpiDataOutOfRange, L"");
        return E_FAIL;
    case ShellException:
        ThrowError(ZO_ERROR(this, "false", "Thrown by a handler", E_ABORT));
    case OtherException:
        throw std::runtime_error("thrown by a handler");
    case Cancelled:
        return E_ABORT;
    default:
        call.SetError(kScpiDataQuestionable, L"overload");
        return S_OK;
    }
}

HRESULT CTestSink::BeginOperation(const Call& call)
{
    const CMutexLocker lock(m_mutex);
    call.manager.GetPendingOperations(&m_pendingOperations);
    const HRESULT result = m_pendingOperations->BeginOperation(call.remotePath, &m_operations.emplace_back());
    SetEvent(m_operationBegun.Get());
    return result;
}

void CTestSink::EndOperations()
{
    const CMutexLocker lock(m_mutex);
    for (const unsigned long operation : std::exchange(m_operations, {}))
    {
        m_pendingOperations->EndOperation(operation);
    }
}

HRESULT CTestDevice::Reset()
{
    ++m_resets;
    return S_OK;
}

HRESULT CTestDevice::Selftest(short* passed)
{
    *passed = ToVariantBool(m_healthy);
    return S_OK;
}

HRESULT CTestDevice::GetDeviceOptions(wchar_t** text)
{
    *text = m_options.empty() ? nullptr : SysAllocString(m_options.c_str());
    return S_OK;
}

std::string CTestDevice::TakeEvents()
{
    const CMutexLocker lock(m_mutex);
    return std::exchange(m_events, {});
}

HRESULT CTestDevice::Note(char event)
{
    const CMutexLocker lock(m_mutex);
    m_events += event;
    return S_OK;
}

CComPtr<IZOScpiParser> MakeParser(const std::vector<_CMD_SET_RECORD>& records,
                                  IZOScpiExecutionSink* sink,
                                  IZOScpiDeviceHandler* device)
{
    const auto parser = CComObject<CBScpiParser, IZOScpiParser>::Create(device);
    const auto size = static_cast<std::uint32_t>(records.size() * sizeof(_CMD_SET_RECORD));
    CComBSTR name(L"tester");
    parser->RegisterCommandTree(ZO_PARSER_TYPE_MEASUREMENT, name, {size, records.data()}, sink);
    return CComPtr<IZOScpiParser>(parser);
}

TestInstrument::TestInstrument()
{
    if (FAILED(kernel.Start()) || FAILED(Register(table, id)))
    {
        throw std::runtime_error("the test application is refused");
    }
}

HRESULT TestInstrument::Register(const std::vector<_CMD_SET_RECORD>& records,
                                 GUID& objectId,
                                 IZOScpiExecutionSink* otherSink)
{
    IZOScpiExecutionSink* const usedSink =
        otherSink != nullptr ? otherSink : static_cast<IZOScpiExecutionSink*>(sink);
    CoCreateGuid(&objectId);
    const auto parser = MakeParser(records, usedSink, device);
    const tagZO_SCPI_PARSER_OBJECT object{L"tester", ZO_PARSER_TYPE_MEASUREMENT, parser, objectId};
    return kernel.ObjectRegistration().RegisterObject(&object);
}

} // namespace ZoVelkor::RemoteKernel::Testing
