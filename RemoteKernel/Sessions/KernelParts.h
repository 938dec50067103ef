#pragma once

#include "Applications/CApplicationRegistry.h"
#include "Applications/CEventDistributor.h"
#include "CComObject.h"
#include "CErrorManagement.h"
#include "CMessageTrace.h"
#include "CParserGate.h"
#include "CPathTable.h"
#include "CSessionList.h"
#include "Responses/CDefaultFormat.h"
#include "Status/CPendingOperations.h"
#include "Status/CStatusManagement.h"

#include <memory>

namespace ZoVelkor::RemoteKernel
{

using CErrorObject = CComObject<CErrorManagement, IZOScpiErrorManagement>;
using CStatusObject = CComObject<CStatusManagement, IZOScpiStatusManagement>;
using COperationsObject = CComObject<CPendingOperations, IZOScpiPendingOperations>;
using CMessageTraceObject = CComObject<CMessageTrace, IZOScpiTraceManagement>;

/// What the sessions and services of one kernel share; each holds what it needs as long as it lives.
struct KernelParts
{
    CComPtr<CApplicationRegistryObject> registry;
    CComPtr<CErrorObject> errors;
    CComPtr<CStatusObject> status;
    CComPtr<COperationsObject> operations;
    CComPtr<CDefaultFormatObject> format;
    CComPtr<CMessageTraceObject> trace;
    std::shared_ptr<CSessionList> sessions;
    std::shared_ptr<CPathTable> paths;
    std::shared_ptr<CParserGate> gate;
    std::shared_ptr<CEventDistributor> events;
};

} // namespace ZoVelkor::RemoteKernel
