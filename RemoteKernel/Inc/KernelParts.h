#pragma once

#include "CApplicationRegistry.h"
#include "CComObject.h"
#include "CDefaultFormat.h"
#include "CErrorManagement.h"
#include "CEventDistributor.h"
#include "CMessageTrace.h"
#include "CParserGate.h"
#include "CPathTable.h"
#include "CPendingOperations.h"
#include "CStatusManagement.h"

#include <memory>

namespace ZoVelkor::RemoteKernel
{

using CErrorObject = CComObject<CErrorManagement, IZOScpiErrorManagement>;
using CStatusObject = CComObject<CStatusManagement, IZOScpiStatusManagement>;
using COperationsObject = CComObject<CPendingOperations, IZOScpiPendingOperations>;
using CMessageTraceObject = CComObject<CMessageTrace, IZOScpiTraceManagement>;

/// What the sessions and services of one kernel share; each holds what it needs as long as it lives.
struct tagKernelParts
{
    CComPtr<CApplicationRegistryObject> spRegistry;
    CComPtr<CErrorObject> spErrors;
    CComPtr<CStatusObject> spStatus;
    CComPtr<COperationsObject> spOperations;
    CComPtr<CDefaultFormatObject> spFormat;
    CComPtr<CMessageTraceObject> spTrace;
    std::shared_ptr<CPathTable> spPaths;
    std::shared_ptr<CParserGate> spGate;
    std::shared_ptr<CEventDistributor> spEvents;
};

} // namespace ZoVelkor::RemoteKernel
