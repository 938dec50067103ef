#pragma once

#include "Analyzer/CSweepEngine.h"
#include "CCritSection.h"
#include "CLxiEventEndpoint.h"
#include "ILxiEventObserver.h"
#include "ThreadAnnotations.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <string>

namespace ZoVelkor::Demo
{

inline constexpr std::size_t kLanEventCount = 8; ///< LAN0 to LAN7
inline constexpr double kMaxLxiDelayS = 10.0;
inline constexpr double kMaxLxiLeadS = 100.0; ///< how far ahead an event may be stamped

/// What one LAN event does to a sweep that waits for LXI events.
struct LanSettings
{
    bool enabled = false;
    double delayS = 0; ///< from the time of the event to the trigger
};

/// The LXI events of the instrument: enabled ones release the sweep that waits for them, at their time.
///
/// Without LXI it does nothing but keep its settings. Threads: any operation from any thread.
class CLxiTrigger : private RemoteKernel::ILxiEventObserver
{
public:
    /// Starts to listen. When that fails the instrument goes on without LXI, see Fault.
    ///
    /// @param sweeps    borrowed
    /// @param settings  null: no LXI
    CLxiTrigger(CSweepEngine& sweeps, const std::optional<RemoteKernel::LxiEndpointSettings>& settings);
    CLxiTrigger(const CLxiTrigger&) = delete;
    CLxiTrigger& operator=(const CLxiTrigger&) = delete;
    virtual ~CLxiTrigger();

    bool IsOn() const noexcept { return m_on; }
    /// Why LXI does not work; empty when it does, or is not asked for.
    const std::string& Fault() const noexcept { return m_fault; }
    RemoteKernel::CLxiEventEndpoint& Endpoint() noexcept { return m_endpoint; }

    /// No event is enabled, and none delayed.
    void Reset();

    /// @param lan  0 to 7
    LanSettings Get(long lan) const;
    void Put(long lan, const LanSettings& settings);

    /// Whether somebody looks for the instrument among others. *RST leaves it alone.
    bool IsIdentified() const noexcept { return m_identified; }
    void Identify(bool on) noexcept { m_identified = on; }

private:
    void OnLxiEvent(const RemoteKernel::LxiEvent& event) override;

    CSweepEngine& m_sweeps;
    bool m_on = false;
    std::atomic<bool> m_identified{false};
    std::string m_fault;

    mutable CCritSection m_section;
    std::array<LanSettings, kLanEventCount> m_lan ZO_GUARDED_BY(m_section);

    RemoteKernel::CLxiEventEndpoint m_endpoint; // last: its thread uses the others
};

} // namespace ZoVelkor::Demo
