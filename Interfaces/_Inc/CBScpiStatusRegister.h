#pragma once

#include "CComPtr.h"
#include "CCritSection.h"
#include "CObjectDataReference.h"
#include "Event.h"
#include "IZOScpiStatusRegister.h"
#include "ZoExport.h"

namespace ZoVelkor
{

/// Base of status registers: the arithmetic of condition, events, filters and enable, the summary's way to a
/// parent register, and the waits (IEEE 488.2 section 11, SCPI-99 vol. 1, 9).
///
/// The summary is true while an enabled event is latched. When it changes, the bits of the parent mask in the
/// parent's condition follow it; the parent's failing result is returned and the change here is kept.
///
/// A register serves one waiter: a second wait releases the first, which returns S_OK. A waiter that its bits
/// have woken gets S_OK and 0 and reads the register again. Waiting needs a device-clear handle.
///
/// Null out-pointers give E_POINTER, except where an operation says otherwise.
/// Threads: any operation from any thread, but SetDeviceClearHandle before the first wait. The lock of a
/// register is held while the parent is called: locks go from child to parent, so the registers must not form
/// a circle. A register must not be destroyed while someone waits for it.
class ZO_EXPORT CBScpiStatusRegister : public IZOScpiStatusRegister, public virtual CObjectDataReference
{
public:
    /// An event that the system does not give leaves a register whose waits return E_ABORT.
    CBScpiStatusRegister();

    HRESULT GetCondition(wchar_t* condition) override;
    HRESULT SetCondition(long bit, short on) override;
    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override;
    /// @throws CShellError "Status register runtime error" when one of the two changes does not give S_OK
    HRESULT PulseCondition(wchar_t mask) override;
    HRESULT GetEnable(wchar_t* enable) override;
    HRESULT SetEnable(wchar_t value) override;
    HRESULT SetEnableDeep(wchar_t value) override;
    HRESULT GetEvents(wchar_t* events) override;
    HRESULT GetEventBits(wchar_t mask, wchar_t* events) override;
    /// @param timeoutMs  0 or more; -1 waits without limit
    /// @return S_OK; S_FALSE on time-out; E_ABORT on device clear or without handles; E_FAIL; the parent's
    /// result when reading the events has changed the summary
    HRESULT WaitEventBits(long timeoutMs, wchar_t mask, wchar_t* events) override;
    /// Parameters and results as WaitEventBits, without the parent's.
    HRESULT WaitConditionBits(long timeoutMs, wchar_t mask, wchar_t* condition) override;
    HRESULT ClearEvents() override;
    /// Clears the condition and nothing else: no events, no summary, nobody is woken.
    HRESULT ClearCondition() override;
    /// Loads enable and filters from the preset defaults; the parent learns nothing of it.
    HRESULT Preset() override;
    HRESULT SetNegTrans(wchar_t value) override;
    HRESULT SetNegTransDeep(wchar_t value) override;
    HRESULT GetNegTrans(wchar_t* value) override;
    HRESULT SetPosTrans(wchar_t value) override;
    HRESULT SetPosTransDeep(wchar_t value) override;
    HRESULT GetPosTrans(wchar_t* value) override;
    HRESULT SetParentUpdate(short on) override;
    HRESULT GetParentUpdate(short* on) override;
    HRESULT GetSnapshot(
        wchar_t* condition, wchar_t* negTrans, wchar_t* posTrans, wchar_t* events, wchar_t* enable) override;
    HRESULT GetSummary(short* summary) override;
    /// @param parent  counted; null: none
    /// @param mask  condition bits of the parent that carry the summary; they are not set by this call
    HRESULT SetupParentRegister(IZOScpiStatusRegister* parent, wchar_t mask) override;
    /// @param[out] parent  a new reference, null when there is none; must not be null
    /// @param[out] mask  may be null
    HRESULT GetParentRegister(IZOScpiStatusRegister** parent, wchar_t* mask) override;
    HRESULT GetData(tagScpiStatusData* data) override;
    HRESULT GetPresetDefaults(wchar_t* negTrans, wchar_t* posTrans, wchar_t* enable) override;
    HRESULT SetPresetDefaults(wchar_t negTrans, wchar_t posTrans, wchar_t enable) override;
    /// @param handle  event that ends the waits while it is set; stays the caller's, must outlive the waits
    HRESULT SetDeviceClearHandle(unsigned long handle) override;
    HRESULT ClearSummaryCondition(long bit) override;

    /// Says which bits the transition filters may hold; 0xFFFF until then.
    virtual HRESULT DoSetRegisterMask(wchar_t mask);
    /// Hands the summary to the parent; called with the lock held, when the summary has changed.
    virtual HRESULT DoUpdateParentRegister(bool summary);
    /// Fills what GetData gives; called with the lock held. The base gives E_NOTIMPL.
    virtual HRESULT DoGetScpiStatusData(tagScpiStatusData* data);

    CBScpiStatusRegister(const CBScpiStatusRegister&) = delete;
    CBScpiStatusRegister& operator=(const CBScpiStatusRegister&) = delete;
    virtual ~CBScpiStatusRegister();
};

} // namespace ZoVelkor
