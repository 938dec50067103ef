#pragma once

#include "Applications/CApplicationRegistry.h"
#include "Applications/CEventDistributor.h"
#include "Responses/CFormatSubsystem.h"
#include "Status/CErrorQueue.h"
#include "Status/CStatusManagement.h"

#include <memory>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

/// What the kernel's own commands work on: one session and what it sees of the kernel. All borrowed.
struct BuiltInContext
{
    COutputQueue& output;
    CFormatSubsystem& format;
    CErrorQueue& errors;
    CPendingOperations& operations;
    CSessionStatus& status;
    CStatusManagement& instrument;
    CEventDistributor& events;
    const std::shared_ptr<const ApplicationSet>& applications; ///< set of the message at hand
    long remotePath;
    HANDLE cancelEvent; ///< ends *OPC? and *WAI
    int connection;     ///< its error or hang-up does the same; -1: none

    HRESULT Answer(std::string_view text) const;
    HRESULT AnswerInteger(std::size_t value) const;
    /// Queues an error of the running command.
    ///
    /// @return E_FAIL
    HRESULT Fail(short code, std::string_view detail = {}) const;
};

} // namespace ZoVelkor::RemoteKernel
