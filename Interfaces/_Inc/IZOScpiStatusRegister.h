#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct tagScpiStatusData;

/// One status register with condition, event, enable and transition filters (IEEE 488.2 section 11, SCPI-99
/// vol. 1, 9). Register words are bit patterns of 32 bits, carried in wchar_t.
///
/// A condition bit that rises latches its event where the positive filter has the bit, one that falls where
/// the negative filter has it. The summary is true while an event is latched whose enable bit is set; a
/// parent register shows it as a condition of its own.
///
/// Results, unless said otherwise: S_OK; E_POINTER for a null out-pointer; the failing result of the parent
/// when the change has reached it, and the change here is kept. Threads: any operation from any thread. The
/// operations' order is part of the interface.
struct IZOScpiStatusRegister : IUnknown
{
    static constexpr IID kInterfaceId{
        0x018F7BE9, 0xB557, 0x4ABE, {0xA7, 0x8A, 0x1F, 0x40, 0x8E, 0xEE, 0xB1, 0x0C}};

    /// Reads the condition: what is the case now. Reading changes nothing.
    virtual HRESULT GetCondition(wchar_t* condition) = 0;
    /// Sets or clears one condition bit.
    ///
    /// @param bit  bit number, taken modulo 32
    /// @param on   non-zero sets
    virtual HRESULT SetCondition(long bit, short on) = 0;
    /// Gives the condition bits of a mask the values that they have in a word, in one step.
    virtual HRESULT ModifyCondition(wchar_t mask, wchar_t value) = 0;
    /// Sets and clears the condition bits of a mask, so that both transitions are seen and the bits are 0
    /// afterwards.
    virtual HRESULT PulseCondition(wchar_t mask) = 0;
    /// Reads which events take part in the summary.
    virtual HRESULT GetEnable(wchar_t* enable) = 0;
    /// Sets which events take part in the summary, which may change it at once.
    virtual HRESULT SetEnable(wchar_t value) = 0;
    /// As SetEnable, and enables the summary path up to the root, so that the status byte shows the events.
    virtual HRESULT SetEnableDeep(wchar_t value) = 0;
    /// Reads and clears the events, as a query of the register does.
    virtual HRESULT GetEvents(wchar_t* events) = 0;
    /// Reads and clears the events of a mask; the others stay latched.
    virtual HRESULT GetEventBits(wchar_t mask, wchar_t* events) = 0;
    /// Takes the events of a mask, and waits for one when there is none.
    ///
    /// @param timeoutMs    longest wait; -1: without limit
    /// @param mask         0 returns at once
    /// @param[out] events  the events that were taken, which are cleared; may be 0 after a wait
    /// @return S_OK; S_FALSE on time-out; E_ABORT when a device clear came first
    virtual HRESULT WaitEventBits(long timeoutMs, wchar_t mask, wchar_t* events) = 0;
    /// Waits until a condition bit of a mask is set; parameters and results as WaitEventBits, but nothing
    /// is cleared.
    virtual HRESULT WaitConditionBits(long timeoutMs, wchar_t mask, wchar_t* condition) = 0;
    /// Clears all events and withdraws the summary.
    virtual HRESULT ClearEvents() = 0;
    /// Clears the condition, as after a reset of what it tells of.
    virtual HRESULT ClearCondition() = 0;
    /// Loads enable and both filters from the preset defaults (see SetPresetDefaults).
    virtual HRESULT Preset() = 0;
    /// Sets the negative filter: bits whose fall latches an event.
    virtual HRESULT SetNegTrans(wchar_t value) = 0;
    /// As SetNegTrans, and lets the registers above see the fall of the summary.
    virtual HRESULT SetNegTransDeep(wchar_t value) = 0;
    /// Reads the negative filter.
    virtual HRESULT GetNegTrans(wchar_t* value) = 0;
    /// Sets the positive filter: bits whose rise latches an event.
    virtual HRESULT SetPosTrans(wchar_t value) = 0;
    /// As SetPosTrans, and lets the registers above see the rise of the summary.
    virtual HRESULT SetPosTransDeep(wchar_t value) = 0;
    /// Reads the positive filter.
    virtual HRESULT GetPosTrans(wchar_t* value) = 0;
    /// Says whether the parent is told of changes of the summary; it is until told otherwise. Turning it on
    /// again does not catch up.
    ///
    /// @param on  0: it is not
    virtual HRESULT SetParentUpdate(short on) = 0;
    /// Reads what SetParentUpdate has set.
    virtual HRESULT GetParentUpdate(short* on) = 0;
    /// Copies all five words at once; null pointers are skipped, events are kept.
    virtual HRESULT GetSnapshot(
        wchar_t* condition, wchar_t* negTrans, wchar_t* posTrans, wchar_t* events, wchar_t* enable) = 0;
    /// Tells whether an enabled event is latched: VARIANT_TRUE or VARIANT_FALSE.
    virtual HRESULT GetSummary(short* summary) = 0;
    /// Puts the register below another one.
    ///
    /// @param parent  counted; null: none
    /// @param mask    condition bits of the parent that carry the summary of this one
    virtual HRESULT SetupParentRegister(IZOScpiStatusRegister* parent, wchar_t mask) = 0;
    /// Gives what SetupParentRegister was given.
    ///
    /// @param[out] parent  a new reference, null without a parent; a null pointer fails an assertion
    /// @param[out] mask  the bits of the parent that show this register's summary
    virtual HRESULT GetParentRegister(IZOScpiStatusRegister** parent, wchar_t* mask) = 0;
    /// Copies everything at one moment, for service tools; events are kept.
    virtual HRESULT GetData(tagScpiStatusData* data) = 0;
    /// Reads the words that Preset loads.
    virtual HRESULT GetPresetDefaults(wchar_t* negTrans, wchar_t* posTrans, wchar_t* enable) = 0;
    /// Sets the words that Preset loads; the present ones stay.
    virtual HRESULT SetPresetDefaults(wchar_t negTrans, wchar_t posTrans, wchar_t enable) = 0;
    /// Gives the event whose setting ends waits with E_ABORT; without one there are no waits.
    virtual HRESULT SetDeviceClearHandle(unsigned long handle) = 0;
    /// Clears one condition bit without a negative-transition event.
    virtual HRESULT ClearSummaryCondition(long bit) = 0;

protected:
    ~IZOScpiStatusRegister() = default;
};

inline constexpr const IID& IID_IZOScpiStatusRegister = IZOScpiStatusRegister::kInterfaceId;

} // namespace ZoVelkor
