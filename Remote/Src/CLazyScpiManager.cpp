#include "CLazyScpiManager.h"

namespace ZoVelkor
{

namespace
{

template <class TService>
CComPtr<TService> Fetch(IZOScpiManager* manager, HRESULT (IZOScpiManager::*getter)(TService**)) noexcept
{
    CComPtr<TService> service;
    if (manager == nullptr || FAILED((manager->*getter)(&service)))
    {
        return {};
    }
    return service;
}

} // namespace

IZOScpiManager* CLazyScpiManager::Manager() noexcept
{
    if (m_manager == nullptr && m_context != nullptr)
    {
        void* manager = nullptr;
        m_context->QueryInterface(IZOScpiManager::kInterfaceId, &manager);
        m_manager.Attach(static_cast<IZOScpiManager*>(manager));
    }
    return m_manager;
}

IZOScpiSubsystemFormat* CLazyScpiManager::SubsystemFormat() noexcept
{
    if (m_subsystemFormat == nullptr)
    {
        m_subsystemFormat = Fetch(Manager(), &IZOScpiManager::GetSubsystemFormat);
    }
    return m_subsystemFormat;
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
