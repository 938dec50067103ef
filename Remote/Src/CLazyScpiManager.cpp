#include "CLazyScpiManager.h"

namespace ZoVelkor
{

namespace
{

template <class TService>
CComPtr<TService> Fetch(IZOScpiManager* pManager, HRESULT (IZOScpiManager::*getter)(TService**)) noexcept
{
    CComPtr<TService> spService;
    if (pManager == nullptr || FAILED((pManager->*getter)(&spService)))
    {
        return {};
    }
    return spService;
}

} // namespace

IZOScpiManager* CLazyScpiManager::Manager() noexcept
{
    if (m_spManager == nullptr && m_pContext != nullptr)
    {
        void* pManager = nullptr;
        m_pContext->QueryInterface(IZOScpiManager::kInterfaceId, &pManager);
        m_spManager.Attach(static_cast<IZOScpiManager*>(pManager));
    }
    return m_spManager;
}

IZOScpiSubsystemFormat* CLazyScpiManager::SubsystemFormat() noexcept
{
    if (m_spSubsystemFormat == nullptr)
    {
        m_spSubsystemFormat = Fetch(Manager(), &IZOScpiManager::GetSubsystemFormat);
    }
    return m_spSubsystemFormat;
}

CComPtr<IZOScpiErrorManagement> CLazyScpiManager::ErrorManagement() noexcept
{
    return Fetch(Manager(), &IZOScpiManager::GetErrorManagement);
}

CComPtr<IZOScpiStatusManagement> CLazyScpiManager::StatusManagement() noexcept
{
    return Fetch(Manager(), &IZOScpiManager::GetStatusManagement);
}

CComPtr<IZOScpiPendingOperations> CLazyScpiManager::PendingOperations() noexcept
{
    return Fetch(Manager(), &IZOScpiManager::GetPendingOperations);
}

} // namespace ZoVelkor
