#pragma once

#include "PlatformTypes.h"

#include <string>

namespace ZoVelkor
{

class CLazyScpiManager;
class CObjectDataReference;

namespace ScpiExecution
{

/// What the delivery of an execution's error needs.
struct ErrorDelivery
{
    CLazyScpiManager& services;
    long remotePath;
    short code;
    const std::string& detail;
    const CObjectDataReference* pObject;
};

/// Hands the error to the error management of the remote path.
///
/// @throws CShellError when it cannot be reached
HRESULT DeliverError(const ErrorDelivery& delivery);

} // namespace ScpiExecution
} // namespace ZoVelkor
