#pragma once

#include "CObjectDataReference.h"
#include "IZOScpiExecutionSink.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of execution sinks: every command succeeds and does nothing.
class ZO_EXPORT CBScpiExecutionSink : public IZOScpiExecutionSink, public virtual CObjectDataReference
{
public:
    HRESULT Execute(IUnknown* context,
                    long remotePath,
                    unsigned long command,
                    short isQuery,
                    long* numericSuffixes,
                    unsigned long argumentCount,
                    tagZO_SCPI_PARAMETER* arguments,
                    wchar_t* header,
                    IZOScpiOutputBuffer* output) override;

protected:
    ~CBScpiExecutionSink() override = default;
};

} // namespace ZoVelkor
