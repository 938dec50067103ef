#include "CBenchmarkApplication.h"

#include "CBScpiParser.h"
#include "CComObject.h"
#include "CRemoteKernel.h"
#include "CScpiFunctionExecutionDataPoolParser.h"
#include "CScpiSinkFramework.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <stdexcept>

namespace ZoVelkor::Benchmarks
{
namespace
{

constexpr std::size_t kListLength = 1000;
/// Bytes of a block that are read at a time.
constexpr std::size_t kPiece = std::size_t{1} << 20;

} // namespace

CBenchmarkApplication::CBenchmarkApplication() : m_block(kLargeBlockSize, 'x'), m_values(kListLength)
{
    for (std::size_t i = 0; i < kListLength; ++i)
    {
        m_values[i] = -80.0 + 30.0 * std::sin(static_cast<double>(i) * 0.37);
    }
}

HRESULT CBenchmarkApplication::Execute(IUnknown* context,
                                       long remotePath,
                                       unsigned long command,
                                       short isQuery,
                                       long* numericSuffixes,
                                       unsigned long argumentCount,
                                       tagZO_SCPI_PARAMETER* arguments,
                                       wchar_t* header,
                                       IZOScpiOutputBuffer* output)
{
    CScpiFunctionExecutionDataPoolParser pool(
        MakeScpiParserData(
            context, remotePath, command, isQuery, numericSuffixes, argumentCount, arguments, header, output),
        this);
    return CScpiSinkFramework::RunCommand(pool, [&](CScpiFunctionExecutionDataPool& data) -> HRESULT {
        switch (static_cast<Target>(command))
        {
        case Target::Setting:
            return data.GetDoubleArgument(m_frequency, 0);
        case Target::Query:
            return data.NumericResponse(m_frequency);
        case Target::Identity:
            return data.ArbitraryResponse("Zo,Benchmark,1,1.0");
        case Target::Block:
            return TakeBlock(data);
        case Target::List:
            return AnswerList(data);
        case Target::Filler:
            break;
        }
        return E_UNEXPECTED;
    });
}

/// Takes a block where it lies, or as it arrives.
HRESULT CBenchmarkApplication::TakeBlock(CScpiFunctionExecutionDataPool& data)
{
    CComPtr<IZOScpiBlockData> block;
    long length = 0;
    HRESULT result = data.GetBlockArgument(&block, length, 0);
    if (result != S_OK)
    {
        return result;
    }
    unsigned char* bytes = nullptr;
    result = block->Access(&bytes, &m_blockLength);
    benchmark::DoNotOptimize(bytes);
    if (result != E_PENDING)
    {
        return result;
    }
    m_piece.resize(kPiece);
    unsigned long got = kPiece;
    for (result = S_OK; result == S_OK && got == kPiece; m_blockLength += got)
    {
        result = block->Read(kPiece, m_piece.data(), &got);
        benchmark::DoNotOptimize(m_piece.data());
    }
    return FAILED(result) ? result : S_OK;
}

HRESULT CBenchmarkApplication::AnswerList(CScpiFunctionExecutionDataPool& data)
{
    if (data.GetRawNumericSuffixValue(0) == 2)
    {
        return data.BlockResponse(m_block.data(), static_cast<long>(m_block.size()));
    }
    return data.GetFormatSubsystem()->OutputDoubles(m_values.data(), m_values.size());
}

void RegisterBenchmarkApplication(RemoteKernel::CRemoteKernel& kernel,
                                  const CCommandTree& tree,
                                  IZOScpiExecutionSink* sink)
{
    const auto parser = CComObject<CBScpiParser, IZOScpiParser>::Create();
    CComBSTR name(L"benchmark");
    const auto size = static_cast<std::uint32_t>(tree.Records().size() * sizeof(_CMD_SET_RECORD));
    parser->RegisterCommandTree(ZO_PARSER_TYPE_MEASUREMENT, name, {size, tree.Records().data()}, sink);
    const tagZO_SCPI_PARSER_OBJECT object{name, ZO_PARSER_TYPE_MEASUREMENT, parser, {1, 0, 0, {}}};
    if (kernel.ObjectRegistration().RegisterObject(&object) != S_OK)
    {
        throw std::runtime_error("the generated table was refused");
    }
}

} // namespace ZoVelkor::Benchmarks
