#include "CBScpiExecutionSink.h"

namespace ZoVelkor
{

HRESULT CBScpiExecutionSink::Execute(IUnknown* /*context*/,
                                     long /*remotePath*/,
                                     unsigned long /*command*/,
                                     short /*isQuery*/,
                                     long* /*numericSuffixes*/,
                                     unsigned long /*argumentCount*/,
                                     tagZO_SCPI_PARAMETER* /*arguments*/,
                                     wchar_t* /*header*/,
                                     IZOScpiOutputBuffer* /*output*/)
{
    return S_OK;
}

} // namespace ZoVelkor
