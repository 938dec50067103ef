#include "CEventDistributor.h"

#include "CWriteLocker.h"
#include "Variant.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

HRESULT CEventDistributor::RegisterObserver(IZOScpiMultichannelEventObserver* pObserver)
{
    return GuardedEntry([&]() -> HRESULT {
        GUID id = GUID_NULL;
        const HRESULT result = pObserver->get_EventClientId(&id);
        if (FAILED(result) || id == GUID_NULL)
        {
            return FAILED(result) ? result : E_INVALIDARG;
        }
        const CMutexLocker turn(m_turn);
        const CWriteLocker lock(m_mutex);
        if (std::any_of(m_observers.begin(), m_observers.end(), [&id](const auto& o) { return o.id == id; }))
        {
            return E_INVALIDARG;
        }
        m_observers.push_back({id, pObserver});
        m_hasObservers.store(true);
        return S_OK;
    });
}

HRESULT CEventDistributor::UnregisterObserver(IZOScpiMultichannelEventObserver* pObserver)
{
    return GuardedEntry([&]() -> HRESULT {
        GUID id = GUID_NULL;
        const HRESULT result = pObserver->get_EventClientId(&id);
        if (FAILED(result))
        {
            return result;
        }
        CComPtr<IZOScpiMultichannelEventObserver> gone; // released without lock
        const CMutexLocker turn(m_turn);
        const CWriteLocker lock(m_mutex);
        const auto found =
            std::find_if(m_observers.begin(), m_observers.end(), [&id](const auto& o) { return o.id == id; });
        if (found == m_observers.end())
        {
            return S_FALSE;
        }
        gone = std::move(found->observer);
        m_observers.erase(found);
        m_hasObservers.store(!m_observers.empty());
        return S_OK;
    });
}

void CEventDistributor::Close()
{
    std::vector<Observer> observers;
    const CMutexLocker turn(m_turn);
    const CWriteLocker lock(m_mutex);
    observers.swap(m_observers);
    m_hasObservers.store(false);
}

HRESULT CEventDistributor::Tell(long remotePath,
                                HRESULT (IZOScpiDeviceHandler::*handler)(),
                                HRESULT (IZOScpiMultichannelEventObserver::*observer)(long))
{
    const HRESULT result =
        TellHandlers(remotePath, [handler](IZOScpiDeviceHandler& target) { return (target.*handler)(); });
    TellObservers([=](IZOScpiMultichannelEventObserver& target) { return (target.*observer)(remotePath); });
    return result;
}

void CEventDistributor::TellLockout(long remotePath, bool lockedOut)
{
    const short on = ToVariantBool(lockedOut);
    static_cast<void>(
        TellHandlers(remotePath, [on](IZOScpiDeviceHandler& target) { return target.LocalLockout(on); }));
    TellObservers(
        [=](IZOScpiMultichannelEventObserver& target) { return target.LocalLockout(on, remotePath); });
}

void CEventDistributor::TellOpcReset(long remotePath)
{
    if (!HasObservers())
    {
        return;
    }
    std::vector<GUID> ids;
    {
        CMutexLocker turn(m_turn);
        const CReadLocker lock(m_mutex);
        turn.Unlock();
        std::transform(m_observers.begin(), m_observers.end(), std::back_inserter(ids), [](const auto& o) {
            return o.id;
        });
    }
    TellObservers([&](IZOScpiMultichannelEventObserver& target) {
        return target.OpcReset(remotePath, ids.size(), ids.data());
    });
}

} // namespace ZoVelkor::RemoteKernel
