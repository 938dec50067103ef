#pragma once

#include "CMutex.h"
#include "CPendingOperations.h"
#include "CSessionStatus.h"
#include "CSummaryDistributor.h"
#include "IPowerOnStore.h"
#include "IZOScpiStatusManagement.h"

#include <array>
#include <map>
#include <memory>

namespace ZoVelkor::RemoteKernel
{

/// Registers that the instrument has once, whatever the sessions, in the order of their commands.
enum InstrumentRegister : std::size_t
{
    kOperationRegister,
    kQuestionableRegister,
    kQuestionablePowerRegister,
    kQuestionableFrequencyRegister,
    kInstrumentRegisterCount
};

/// The status registers of the instrument and of all its sessions.
///
/// The state of the instrument (STATus:OPERation, STATus:QUEStionable and what lies below) exists once. What
/// concerns one session's exchange of messages (status byte, standard event register) belongs to the session,
/// like its error queue. Threads: any operation from any thread.
class CStatusManagement : public IZOScpiStatusManagement, public IOperationCompleteObserver
{
public:
    /// @throws std::system_error when the system is short of descriptors
    CStatusManagement();
    virtual ~CStatusManagement() = default;

    HRESULT
    GetRegister(long remotePath, const wchar_t* name, IZOScpiStatusRegister** statusRegister) override;
    HRESULT SerialPoll(long remotePath, unsigned char* stb) override;
    void OperationComplete(long remotePath) noexcept override;

    void AddPath(long remotePath, std::shared_ptr<CSessionStatus> status);
    void RemovePath(long remotePath) noexcept;

    CStatusRegisterObject& InstrumentRegister(InstrumentRegister index) noexcept
    {
        return *m_registers[index];
    }
    /// *CLS: clears the events of the instrument's registers.
    void ClearEvents() noexcept;
    /// STATus:PRESet (SCPI-99 vol. 2, 20.7): loads the preset defaults of the instrument's registers.
    void Preset() noexcept;

    /// Gives the status that the instrument was switched on with; before the first session.
    ///
    /// @param store  borrowed; hears of changes. Null: nothing is kept
    void PowerOn(const PowerOnStatus& status, IPowerOnStore* store);
    /// The masks that a session begins with: each sees a power-on at its beginning.
    const EnableMasks& PowerOnMasks() const noexcept { return m_powerOnMasks; }
    /// *PSC: whether the enable masks are cleared at power-on (IEEE 488.2 section 10.25).
    ///
    /// @param masks  of the session that says so
    /// @return false when the store failed; the flag holds until the instrument is switched off
    bool SetPowerOnClear(bool clear, const EnableMasks& masks);
    bool IsPowerOnClear();
    /// Notes the masks of a session that has set one. The last session to do so has its masks kept.
    ///
    /// @return as SetPowerOnClear
    bool NoteMasks(const EnableMasks& masks);

    /// Ends all waits for bits of the instrument's registers; there will be no more.
    void Stop() noexcept { SetEvent(m_stopEvent->Get()); }

private:
    std::shared_ptr<CSessionStatus> Find(long remotePath);
    bool KeepLocked(const PowerOnStatus& status) ZO_REQUIRES(m_powerOnMutex);

    const SharedEvent m_stopEvent;
    const CComPtr<CSummaryDistributorObject> m_distributor;
    std::array<CComPtr<CStatusRegisterObject>, kInstrumentRegisterCount> m_registers;
    EnableMasks m_powerOnMasks; // constant once there are sessions
    CMutex m_powerOnMutex;
    PowerOnStatus m_powerOn ZO_GUARDED_BY(m_powerOnMutex);
    bool m_powerOnKept ZO_GUARDED_BY(m_powerOnMutex) = true;
    IPowerOnStore* m_powerOnStore ZO_GUARDED_BY(m_powerOnMutex) = nullptr;
    CMutex m_mutex;
    std::map<long, std::shared_ptr<CSessionStatus>> m_paths ZO_GUARDED_BY(m_mutex);
};

} // namespace ZoVelkor::RemoteKernel
