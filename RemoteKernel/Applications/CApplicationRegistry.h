// Applications: who runs commands and hears device events, and how they come and go.
//
// A registration becomes a CApplication with a copy of its table; the CApplicationRegistry joins all tables
// to an index and publishes an ApplicationSet that never changes. Sessions notice by its number, between two
// messages. A command reaches its handler by CApplication::Execute, an event by CEventDistributor.
// Registration comes from any thread, but not from inside a handler.
// Lock order: the registry's change before its current set; the distributor's turn before its observers; an
// application before its engines. Handlers run under their application's lock and may call whatever lies in
// Responses and Status.

#pragma once

#include "CApplication.h"
#include "CComObject.h"
#include "CMutex.h"
#include "IZOScpiObjectRegistration.h"
#include "InstrumentIdentity.h"
#include "Parsing/CCommandIndex.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// All that a program message needs to know of the registered applications; never changes.
struct ApplicationSet
{
    std::vector<std::shared_ptr<CApplication>> applications; ///< the kernel's own first
    std::unique_ptr<const CCommandIndex> index;
    std::string identity; ///< response to *IDN?
};

/// Where applications enter and leave; hands out the current set to the sessions.
///
/// Threads: any operation from any thread, but registration not from inside a handler.
class CApplicationRegistry : public IZOScpiObjectRegistration
{
public:
    /// @param builtIns  table of the kernel's own commands; outlives the registry
    CApplicationRegistry(InstrumentIdentity identity, std::span<const _CMD_SET_RECORD> builtIns);
    virtual ~CApplicationRegistry() = default;

    /// Results as the interface says; E_UNEXPECTED, reported, after Close.
    HRESULT RegisterObject(const tagZO_SCPI_PARSER_OBJECT* object) override;
    HRESULT UnregisterObject(GUID id) override;

    /// Registers a parser of all paths, which may have an engine for each.
    ///
    /// @return as RegisterObject; E_INVALIDARG, reported, when it is registered so already
    HRESULT RegisterParser(IZOScpiParser* pParser);
    /// Registers a plug-in: its commands, who runs them, and its device handler if it has one.
    ///
    /// @return as RegisterParser; E_NOINTERFACE when the object is none
    HRESULT RegisterPlugIn(IUnknown* pPlugIn);
    /// Registers a device handler without commands; the same one once for each path.
    ///
    /// @return S_OK; S_FALSE when it is registered already
    HRESULT RegisterDeviceHandler(IZOScpiDeviceHandler* handler, long remotePath);
    /// Takes back what one of these three has registered.
    ///
    /// @return as UnregisterObject
    HRESULT
    Unregister(ApplicationKind kind, IUnknown* pObject, long remotePath = kAllPaths);

    /// @return the application of this identifier; null when there is none
    std::shared_ptr<CApplication> FindApplication(const GUID& id) const;

    /// Tells the applications that a remote path has ended.
    void ReleaseEngines(long remotePath) const noexcept;

    /// Number of the current set; changes with every registration.
    std::uint64_t Generation() const noexcept { return m_generation.load(std::memory_order_acquire); }

    /// Fetches the current set.
    ///
    /// @param[out] generation  its number
    std::shared_ptr<const ApplicationSet> Current(std::uint64_t& generation) const;
    std::shared_ptr<const ApplicationSet> Current() const;

    /// Unregisters everything and accepts no more.
    void Close();

private:
    static bool
    IsSame(const ApplicationParts& parts, ApplicationKind kind, IUnknown* identity, long remotePath) noexcept;
    HRESULT RegisterFrom(IZOScpiParser* pParser, ApplicationParts& parts);
    HRESULT CheckTable(const CApplication& application) const;
    HRESULT Add(ApplicationParts& parts);
    bool IsRegisteredLocked(const ApplicationParts& parts) const ZO_REQUIRES(m_changeMutex);
    /// Takes the first application out for which a condition holds.
    ///
    /// @return as UnregisterObject
    template <class TCondition>
    HRESULT RemoveWhere(TCondition condition);
    void PublishLocked(std::vector<std::shared_ptr<CApplication>> applications) ZO_REQUIRES(m_changeMutex);
    std::string IdentityResponse(const std::vector<std::shared_ptr<CApplication>>& applications) const;

    const InstrumentIdentity m_identity;
    CMutex m_changeMutex ZO_ACQUIRED_BEFORE(m_mutex); // one change at a time
    bool m_closed ZO_GUARDED_BY(m_changeMutex) = false;
    mutable CMutex m_mutex;
    std::shared_ptr<const ApplicationSet> m_current ZO_GUARDED_BY(m_mutex); // changes under both locks
    std::atomic<std::uint64_t> m_generation{0};
};

using CApplicationRegistryObject = CComObject<CApplicationRegistry, IZOScpiObjectRegistration>;

} // namespace ZoVelkor::RemoteKernel
