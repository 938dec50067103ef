#pragma once

#include "CBScpiExecutionSink.h"
#include "CCommandTree.h"
#include "CScpiFunctionExecutionDataPool.h"

#include <cstddef>
#include <vector>

namespace ZoVelkor::RemoteKernel
{
class CRemoteKernel;
}

namespace ZoVelkor::Benchmarks
{

/// Bytes that the query of trace 2 answers as a block.
inline constexpr std::size_t kLargeBlockSize = std::size_t{1} << 24;

/// Handlers of the generated trees, written as an application would: the pool style for all of them.
class CBenchmarkApplication : public CBScpiExecutionSink
{
public:
    CBenchmarkApplication();

    HRESULT Execute(IUnknown* context,
                    long remotePath,
                    unsigned long command,
                    short isQuery,
                    long* numericSuffixes,
                    unsigned long argumentCount,
                    tagZO_SCPI_PARAMETER* arguments,
                    wchar_t* header,
                    IZOScpiOutputBuffer* output) override;

private:
    HRESULT TakeBlock(CScpiFunctionExecutionDataPool& data);
    HRESULT AnswerList(CScpiFunctionExecutionDataPool& data);

    double m_frequency = 0;
    unsigned long m_blockLength = 0;
    std::vector<unsigned char> m_piece;
    std::vector<char> m_block;
    std::vector<double> m_values;
};

/// Registers the handlers for a tree.
///
/// @throws std::runtime_error when the kernel refuses the table
void RegisterBenchmarkApplication(RemoteKernel::CRemoteKernel& kernel,
                                  const CCommandTree& tree,
                                  IZOScpiExecutionSink* sink);

} // namespace ZoVelkor::Benchmarks
