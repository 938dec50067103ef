#pragma once

#include "IZOScpiErrorManagement.h"
#include "IZOScpiPendingOperations.h"
#include "IZOScpiStatusManagement.h"
#include "IZOScpiSubsystemFormat.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// Services of one remote path; the context object of every Execute call.
///
/// Each getter returns a new reference and S_OK; E_POINTER for a null pointer. A service that the path does
/// not have gives S_FALSE and null. What is handed out serves this path alone. Threads: any operation from
/// any thread.
struct IZOScpiManager : IUnknown
{
    static constexpr IID kInterfaceId{
        0x96D9252D, 0x0E99, 0x4450, {0xB5, 0x28, 0x76, 0x2C, 0x82, 0x5F, 0x43, 0x61}};

    /// The number of the path, 0 or more.
    virtual HRESULT GetRemotePath(long* remotePath) = 0;
    /// The error queue of the path.
    virtual HRESULT GetErrorManagement(IZOScpiErrorManagement** service) = 0;
    /// The status registers that the path sees.
    virtual HRESULT GetStatusManagement(IZOScpiStatusManagement** service) = 0;
    /// The data format of the path; used from inside its commands only.
    virtual HRESULT GetSubsystemFormat(IZOScpiSubsystemFormat** service) = 0;
    /// The overlapped commands of the path.
    virtual HRESULT GetPendingOperations(IZOScpiPendingOperations** service) = 0;

protected:
    ~IZOScpiManager() = default;
};

inline constexpr const IID& IID_IZOScpiManager = IZOScpiManager::kInterfaceId;

} // namespace ZoVelkor
