#include "CMultichannelFunctionality.h"

#include "CChannelManagement.h"
#include "CDeviceManagement.h"
#include "CParserLanguage.h"
#include "CParserManagement.h"
#include "GuardedEntry.h"
#include "Sessions/CPathStatusManagement.h"
#include "Sessions/CRemoteControl.h"

namespace ZoVelkor::RemoteKernel
{
namespace
{

/// Hands out a service of a path that has a connection, made by a function of the path.
template <class TService, class TMake>
HRESULT GiveOfPath(const KernelParts& parts, long remotePath, TService** service, TMake make)
{
    if (service == nullptr)
    {
        return E_POINTER;
    }
    *service = nullptr;
    return GuardedEntry([&]() -> HRESULT {
        std::shared_ptr<CRemotePath> path = parts.paths->Find(remotePath);
        if (path == nullptr)
        {
            return E_INVALIDARG;
        }
        return CComPtr<TService>(make(std::move(path))).CopyTo(service);
    });
}

/// Hands out a service that every path has, whether it is connected or not.
template <class TObject, class TService, class... TArguments>
HRESULT GiveOfNumber(long remotePath, TService** service, const TArguments&... arguments)
{
    if (service == nullptr)
    {
        return E_POINTER;
    }
    *service = nullptr;
    return GuardedEntry([&]() -> HRESULT {
        return CPathTable::IsNumber(remotePath)
                   ? CComPtr<TService>(CComObject<TObject, TService>::Create(arguments...)).CopyTo(service)
                   : E_INVALIDARG;
    });
}

} // namespace

HRESULT CMultichannelFunctionality::GetScpiStatusManagement(long remotePath,
                                                            IZOScpiStatusManagement** service)
{
    return GiveOfPath(m_parts, remotePath, service, [&](auto path) {
        return CComObject<CPathStatusManagement, IZOScpiStatusManagement>::Create(std::move(path),
                                                                                  m_parts.status);
    });
}

HRESULT CMultichannelFunctionality::GetScpiParserManagement(long remotePath,
                                                            IZOScpiParserManagement** service)
{
    return GiveOfNumber<CParserManagement>(remotePath, service, m_parts, remotePath);
}

HRESULT CMultichannelFunctionality::GetScpiErrorManagement(long remotePath, IZOScpiErrorManagement** service)
{
    return GiveOfPath(m_parts, remotePath, service, [&](auto path) {
        return CErrorObject::Create(CServedPaths(m_parts.paths, std::move(path)));
    });
}

HRESULT CMultichannelFunctionality::GetScpiRemoteManagement(long remotePath, IZOScpiRemoteControl** service)
{
    return GiveOfPath(m_parts, remotePath, service, [&](auto path) {
        return CComObject<CRemoteControl, IZOScpiRemoteControl>::Create(
            CServedPaths(m_parts.paths, std::move(path)), m_parts.events);
    });
}

HRESULT CMultichannelFunctionality::GetScpiChannelManagement(long remotePath,
                                                             IZOScpiChannelManagement** service)
{
    return GiveOfPath(m_parts, remotePath, service, [&](auto path) {
        return CComObject<CChannelManagement, IZOScpiChannelManagement>::Create(
            CServedPaths(m_parts.paths, std::move(path)));
    });
}

HRESULT CMultichannelFunctionality::GetScpiDeviceManagement(long remotePath,
                                                            IZOScpiDeviceManagement** service)
{
    return GiveOfNumber<CDeviceManagement>(remotePath, service, m_parts, remotePath);
}

HRESULT CMultichannelFunctionality::GetScpiFormatManagement(long remotePath, IZOScpiSubsystemFormat** service)
{
    return GiveOfPath(m_parts, remotePath, service, [](const auto& path) { return path->Format(); });
}

HRESULT CMultichannelFunctionality::GetScpiLanguageManagement(long remotePath,
                                                              IZOScpiParserLanguage** service)
{
    return GiveOfNumber<CParserLanguage>(remotePath, service, m_parts);
}

HRESULT CMultichannelFunctionality::GetChannelEvents(long remotePath, HANDLE* deviceClear, HANDLE* shutdown)
{
    if (deviceClear == nullptr || shutdown == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CRemotePath> path = m_parts.paths->Find(remotePath);
    if (path == nullptr || path->ShutdownEvent() == nullptr)
    {
        return E_INVALIDARG;
    }
    *deviceClear = path->DeviceClearEvent()->Get();
    *shutdown = path->ShutdownEvent()->Get();
    return S_OK;
}

} // namespace ZoVelkor::RemoteKernel
