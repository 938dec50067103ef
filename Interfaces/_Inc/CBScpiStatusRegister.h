#pragma once

#include "CComPtr.h"
#include "CCritSection.h"
#include "CCritSectionLocker.h"
#include "CObjectDataReference.h"
#include "Event.h"
#include "IZOScpiStatusRegister.h"
#include "ThreadAnnotations.h"
#include "ZoExport.h"

#include <atomic>
#include <cstdint>

namespace ZoVelkor
{

/// Base of status registers: the arithmetic of condition, events, filters and enable, the summary's way to a
/// parent register, and the waits (IEEE 488.2 section 11, SCPI-99 vol. 1, 9).
///
/// The summary is true while an enabled event is latched. When it changes, the bits of the parent mask in the
/// parent's condition follow it; the parent's failing result is returned and the change here is kept.
///
/// A register serves one waiter: a second wait releases the first, which returns S_OK, and takes its place.
/// A waiter that its bits have woken gets S_OK and 0 and reads the register again. Waiting needs a
/// device-clear handle.
///
/// Null out-pointers give E_POINTER and an error report, except where an operation says otherwise. Whatever a
/// parent or a derived class throws becomes the result; PulseCondition alone raises an error.
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
    /// @param timeoutMs  -1 and 0xFFFFFFFF or more: without limit; 0 and what is below -1: only looks
    /// @return S_OK; S_FALSE on time-out; E_ABORT on device clear or without handles; E_FAIL; the parent's
    ///         result when reading the events has changed the summary
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
    /// @param[out] parent  a new reference, null when there is none; a null pointer ends the process
    ///                     (ZO_ASSERT)
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
    ~CBScpiStatusRegister() override;

protected:
    /// The register's lock, for derived classes that do more than one step at once. It is recursive.
    CCritSection& Section() const noexcept ZO_RETURN_CAPABILITY(m_lock) { return m_lock; }

private:
    using RegisterWord = std::uint32_t;
    using WordGetter = HRESULT (IZOScpiStatusRegister::*)(wchar_t*);
    using WordSetter = HRESULT (IZOScpiStatusRegister::*)(wchar_t);

    HRESULT RefuseNull(const char* condition, int line = __builtin_LINE());
    HRESULT ReadWord(RegisterWord CBScpiStatusRegister::*word, wchar_t* out);
    HRESULT ChangeCondition(RegisterWord mask, RegisterWord value);
    HRESULT SetFilterDeep(RegisterWord CBScpiStatusRegister::*filter,
                          wchar_t value,
                          WordGetter getParent,
                          WordSetter setParent);
    bool SummaryLocked() const ZO_REQUIRES(m_lock) { return (m_events & m_enable) != 0; }
    bool UpdatesParentLocked() const ZO_REQUIRES(m_lock);
    HRESULT UpdateSummaryLocked(bool former) ZO_REQUIRES(m_lock);
    void WidenParentLocked(WordGetter get, WordSetter set) ZO_REQUIRES(m_lock);
    RegisterWord TakeEventsLocked(RegisterWord mask) ZO_REQUIRES(m_lock);
    void WakeLocked(RegisterWord& waitMask) ZO_REQUIRES(m_lock);
    bool ReleaseWaiter(CCritSectionLocker& locker);
    void ArmLocked(RegisterWord conditionMask, RegisterWord eventMask) ZO_REQUIRES(m_lock);
    bool CanWaitLocked() const ZO_REQUIRES(m_lock);
    DWORD Wait(CCritSectionLocker& locker, long timeoutMs);

    mutable CCritSection m_lock;
    RegisterWord m_waitConditionMask ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_waitEventMask ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_captured ZO_GUARDED_BY(m_lock) = 0;
    /// Whether a wait has left the lock, and how many have come back: a second one lets the first leave.
    bool m_isWaiting ZO_GUARDED_BY(m_lock) = false;
    std::atomic<std::uint32_t> m_waitsEnded = 0;
    CUniqueEvent m_wakeEvent;
    std::atomic<HANDLE> m_deviceClear = INVALID_HANDLE_VALUE;
    RegisterWord m_registerMask ZO_GUARDED_BY(m_lock) = 0xFFFF;
    RegisterWord m_presetEnable ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_presetNegTrans ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_presetPosTrans ZO_GUARDED_BY(m_lock) = 0xFFFF;
    CComPtr<IZOScpiStatusRegister> m_parent ZO_GUARDED_BY(m_lock);
    RegisterWord m_parentMask ZO_GUARDED_BY(m_lock) = 0;
    short m_parentUpdate ZO_GUARDED_BY(m_lock) = VARIANT_TRUE;
    RegisterWord m_condition ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_events ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_negTrans ZO_GUARDED_BY(m_lock) = 0;
    RegisterWord m_posTrans ZO_GUARDED_BY(m_lock) = 0xFFFF;
    RegisterWord m_enable ZO_GUARDED_BY(m_lock) = 0;
};

} // namespace ZoVelkor
