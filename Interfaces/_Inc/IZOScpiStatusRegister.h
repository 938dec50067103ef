#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

struct tagScpiStatusData;

/// One status register with condition, event, enable and transition filters (IEEE 488.2 section 11,
/// SCPI-99 vol. 1, 9). Register words are bit patterns of 32 bits, carried in wchar_t.
///
/// Threads: any operation from any thread. The operations' order is part of the interface.
struct IZOScpiStatusRegister : IUnknown
{
    static constexpr IID kInterfaceId{
        0x018F7BE9, 0xB557, 0x4ABE, {0xA7, 0x8A, 0x1F, 0x40, 0x8E, 0xEE, 0xB1, 0x0C}};

    virtual HRESULT GetCondition(wchar_t* condition) = 0;
    /// @param bit  bit number, taken modulo 32
    virtual HRESULT SetCondition(long bit, short on) = 0;
    virtual HRESULT ModifyCondition(wchar_t mask, wchar_t value) = 0;
    /// Sets and clears the condition, so that both transitions are seen.
    virtual HRESULT PulseCondition(wchar_t mask) = 0;
    virtual HRESULT GetEnable(wchar_t* enable) = 0;
    virtual HRESULT SetEnable(wchar_t value) = 0;
    /// As SetEnable, and enables the summary path up to the root.
    virtual HRESULT SetEnableDeep(wchar_t value) = 0;
    /// Reads and clears the events.
    virtual HRESULT GetEvents(wchar_t* events) = 0;
    /// Reads and clears the masked events.
    virtual HRESULT GetEventBits(wchar_t mask, wchar_t* events) = 0;
    virtual HRESULT WaitEventBits(long timeoutMs, wchar_t mask, wchar_t* events) = 0;
    virtual HRESULT WaitConditionBits(long timeoutMs, wchar_t mask, wchar_t* condition) = 0;
    virtual HRESULT ClearEvents() = 0;
    virtual HRESULT ClearCondition() = 0;
    virtual HRESULT Preset() = 0;
    virtual HRESULT SetNegTrans(wchar_t value) = 0;
    virtual HRESULT SetNegTransDeep(wchar_t value) = 0;
    virtual HRESULT GetNegTrans(wchar_t* value) = 0;
    virtual HRESULT SetPosTrans(wchar_t value) = 0;
    virtual HRESULT SetPosTransDeep(wchar_t value) = 0;
    virtual HRESULT GetPosTrans(wchar_t* value) = 0;
    virtual HRESULT SetParentUpdate(short on) = 0;
    virtual HRESULT GetParentUpdate(short* on) = 0;
    /// Copies all five words at once; null pointers are skipped, events are kept.
    virtual HRESULT GetSnapshot(
        wchar_t* condition, wchar_t* negTrans, wchar_t* posTrans, wchar_t* events, wchar_t* enable) = 0;
    virtual HRESULT GetSummary(short* summary) = 0;
    virtual HRESULT SetupParentRegister(IZOScpiStatusRegister* parent, wchar_t mask) = 0;
    /// @param[out] parent  a new reference, null without a parent; a null pointer fails an assertion
    /// @param[out] mask  the bits of the parent that show this register's summary
    virtual HRESULT GetParentRegister(IZOScpiStatusRegister** parent, wchar_t* mask) = 0;
    virtual HRESULT GetData(tagScpiStatusData* data) = 0;
    virtual HRESULT GetPresetDefaults(wchar_t* negTrans, wchar_t* posTrans, wchar_t* enable) = 0;
    virtual HRESULT SetPresetDefaults(wchar_t negTrans, wchar_t posTrans, wchar_t enable) = 0;
    virtual HRESULT SetDeviceClearHandle(unsigned long handle) = 0;
    /// Clears one condition bit without a negative-transition event.
    virtual HRESULT ClearSummaryCondition(long bit) = 0;

protected:
    ~IZOScpiStatusRegister() = default;
};

inline constexpr const IID& IID_IZOScpiStatusRegister = IZOScpiStatusRegister::kInterfaceId;

} // namespace ZoVelkor
