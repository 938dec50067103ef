#pragma once

#include "CApplicationRegistry.h"
#include "CComPtr.h"
#include "CMutexLocker.h"
#include "CReadLocker.h"
#include "GuardedEntry.h"
#include "IZOScpiMultichannelEventObserver.h"

#include <atomic>
#include <utility>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// Tells the device handlers of the applications and the observers what happens on the remote paths.
///
/// Threads: any operation from any thread, but not from inside a handler or an observer.
class CEventDistributor
{
public:
    explicit CEventDistributor(CComPtr<CApplicationRegistryObject> registry) noexcept
        : m_registry(std::move(registry))
    {}

    /// Results as IZOScpiMultichannelAdministration::RegisterEventObserver and UnregisterEventObserver; the
    /// observer is not null.
    HRESULT RegisterObserver(IZOScpiMultichannelEventObserver* pObserver);
    HRESULT UnregisterObserver(IZOScpiMultichannelEventObserver* pObserver);
    /// Forgets all observers.
    void Close();

    /// Calls all device handlers, each under its application's lock.
    ///
    /// @return S_OK when one of them returned S_OK; E_FAIL when one failed; else S_FALSE
    template <class TCall>
    HRESULT TellHandlers(long remotePath, TCall call)
    {
        std::uint64_t generation = 0;
        HRESULT total = S_FALSE;
        const std::shared_ptr<const ApplicationSet> set = m_registry->Current(generation);
        for (const auto& application : set->applications)
        {
            const HRESULT result = application->CallDeviceHandler(remotePath, call);
            total = FAILED(result) || FAILED(total) ? E_FAIL : (result == S_OK ? S_OK : total);
        }
        return total;
    }

    bool HasObservers() const noexcept { return m_hasObservers.load(std::memory_order_relaxed); }
    template <class TCall>
    void TellObservers(TCall call)
    {
        if (HasObservers())
        {
            CMutexLocker turn(m_turn);
            const CReadLocker lock(m_mutex);
            turn.Unlock();
            for (const Observer& observer : m_observers)
            {
                static_cast<void>(GuardedEntry([&]() -> HRESULT { return call(*observer.observer); }));
            }
        }
    }
    /// An event that both know under the same name and that has no argument but the path.
    HRESULT Tell(long remotePath,
                 HRESULT (IZOScpiDeviceHandler::*handler)(),
                 HRESULT (IZOScpiMultichannelEventObserver::*observer)(long));
    void TellLockout(long remotePath, bool lockedOut);
    void TellOpcReset(long remotePath);

private:
    struct Observer
    {
        GUID id;
        CComPtr<IZOScpiMultichannelEventObserver> observer;
    };

    const CComPtr<CApplicationRegistryObject> m_registry;
    // Who changes the list waits for m_mutex holding this, so that a steady flow of events lets it through.
    CMutex m_turn ZO_ACQUIRED_BEFORE(m_mutex);
    CSharedMutex m_mutex; // held shared while observers are called
    std::vector<Observer> m_observers ZO_GUARDED_BY(m_mutex);
    std::atomic<bool> m_hasObservers{false};
};

} // namespace ZoVelkor::RemoteKernel
