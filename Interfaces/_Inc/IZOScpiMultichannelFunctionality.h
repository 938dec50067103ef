#pragma once

#include "Handle.h"
#include "Unknown.h"

namespace ZoVelkor
{

struct IZOScpiChannelManagement;
struct IZOScpiDeviceManagement;
struct IZOScpiErrorManagement;
struct IZOScpiParserLanguage;
struct IZOScpiParserManagement;
struct IZOScpiRemoteControl;
struct IZOScpiStatusManagement;
struct IZOScpiSubsystemFormat;

/// The services of one remote path. Found at the root.
///
/// What is handed out reaches its own path alone: an operation that names another path gives E_INVALIDARG,
/// and so does every operation that names the path once its connection has ended. Each getter gives a new
/// reference. Results: S_OK; E_POINTER; E_INVALIDARG for a number that is no path of the kernel or, parser
/// and device management apart, has no connection. Threads: any operation from any thread.
struct IZOScpiMultichannelFunctionality : IUnknown
{
    static constexpr IID kInterfaceId{
        0xBB487760, 0xFED4, 0x402B, {0xB7, 0xD4, 0xAA, 0x1E, 0xEB, 0xCC, 0x9F, 0xDE}};

    /// The status registers that the path sees.
    virtual HRESULT GetScpiStatusManagement(long remotePath, IZOScpiStatusManagement** service) = 0;
    /// Start and stop of the path's messages, and the registration of objects.
    virtual HRESULT GetScpiParserManagement(long remotePath, IZOScpiParserManagement** service) = 0;
    /// The error queue of the path.
    virtual HRESULT GetScpiErrorManagement(long remotePath, IZOScpiErrorManagement** service) = 0;
    /// Remote, local and lockout of the path.
    virtual HRESULT GetScpiRemoteManagement(long remotePath, IZOScpiRemoteControl** service) = 0;
    /// The channel of the path.
    virtual HRESULT GetScpiChannelManagement(long remotePath, IZOScpiChannelManagement** service) = 0;
    /// The device events of the path.
    virtual HRESULT GetScpiDeviceManagement(long remotePath, IZOScpiDeviceManagement** service) = 0;
    /// The format works on the commands of its path: it is used from inside them only.
    virtual HRESULT GetScpiFormatManagement(long remotePath, IZOScpiSubsystemFormat** service) = 0;
    /// The command language.
    virtual HRESULT GetScpiLanguageManagement(long remotePath, IZOScpiParserLanguage** service) = 0;

    /// Events that a channel can wait for beside its connection; borrowed, valid until RemoveConnection.
    ///
    /// @param[out] deviceClear  set while a device clear is being carried out
    /// @param[out] shutdown  set when the kernel ends the connection
    virtual HRESULT GetChannelEvents(long remotePath, HANDLE* deviceClear, HANDLE* shutdown) = 0;

protected:
    ~IZOScpiMultichannelFunctionality() = default;
};

inline constexpr const IID& IID_IZOScpiMultichannelFunctionality =
    IZOScpiMultichannelFunctionality::kInterfaceId;

} // namespace ZoVelkor
