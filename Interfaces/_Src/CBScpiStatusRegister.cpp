#include "CBScpiStatusRegister.h"

#include "Assertion.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <array>
#include <utility>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Interfaces/_Src/CBScpiStatusRegister");

constexpr char kRuntimeError[] = "Status register runtime error";

/// Words travel as wchar_t, which is signed here; the arithmetic is done without a sign.
constexpr std::uint32_t ToWord(wchar_t value) noexcept
{
    return static_cast<std::uint32_t>(value);
}

constexpr wchar_t ToWide(std::uint32_t word) noexcept
{
    return static_cast<wchar_t>(word);
}

constexpr std::uint32_t BitMask(long bit) noexcept
{
    return std::uint32_t{1} << (static_cast<unsigned long>(bit) % 32);
}
static_assert(BitMask(33) == 2 && BitMask(-1) == 0x80000000);

/// A caller's remaining time may have run below zero: that is a time that is over. -1 alone means no limit.
constexpr DWORD ToTimeLimit(long timeoutMs) noexcept
{
    if (timeoutMs == -1 || timeoutMs >= static_cast<long>(INFINITE))
    {
        return INFINITE;
    }
    return timeoutMs < 0 ? 0 : static_cast<DWORD>(timeoutMs);
}

constexpr HRESULT ToWaitResult(DWORD ended) noexcept
{
    switch (ended)
    {
    case WAIT_OBJECT_0:
        return S_OK;
    case WAIT_OBJECT_0 + 1:
        return E_ABORT;
    case WAIT_TIMEOUT:
        return S_FALSE;
    default:
        return E_FAIL;
    }
}

void StoreUnlessNull(wchar_t* out, std::uint32_t word) noexcept
{
    if (out != nullptr)
    {
        *out = ToWide(word);
    }
}

} // namespace

CBScpiStatusRegister::CBScpiStatusRegister() : m_wakeEvent(CreateEvent(TRUE, FALSE))
{}

CBScpiStatusRegister::~CBScpiStatusRegister()
{
    m_wakeEvent.Reset();
}

HRESULT CBScpiStatusRegister::RefuseNull(const char* condition, int line)
{
    return RefuseNullPointer(kSourceUnit, this, condition, line);
}

HRESULT CBScpiStatusRegister::ReadWord(RegisterWord CBScpiStatusRegister::*word, wchar_t* out)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        *out = ToWide(this->*word);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetCondition(wchar_t* condition)
{
    return condition == nullptr ? RefuseNull("condition != NULL")
                                : ReadWord(&CBScpiStatusRegister::m_condition, condition);
}

HRESULT CBScpiStatusRegister::SetCondition(long bit, short on)
{
    const RegisterWord mask = BitMask(bit);
    return ChangeCondition(mask, on != 0 ? mask : 0);
}

HRESULT CBScpiStatusRegister::ModifyCondition(wchar_t mask, wchar_t value)
{
    return ChangeCondition(ToWord(mask), ToWord(value));
}

HRESULT CBScpiStatusRegister::ChangeCondition(RegisterWord mask, RegisterWord value)
{
    return GuardedEntry([&]() -> HRESULT {
        const CCritSectionLocker locker(m_lock);
        const RegisterWord before = m_condition;
        if (((value ^ before) & mask) == 0)
        {
            return S_OK;
        }
        const bool summary = SummaryLocked();
        const RegisterWord after = (value & mask) | (before & ~mask);
        m_condition = after;
        m_events |= (~before & m_posTrans & after) | (before & m_negTrans & ~after);
        // Waiters are woken before the parent hears of the change: its failure must not leave them waiting.
        if ((after & m_waitConditionMask) != 0)
        {
            WakeLocked(m_waitConditionMask);
        }
        if ((m_events & m_waitEventMask) != 0)
        {
            WakeLocked(m_waitEventMask);
        }
        return UpdateSummaryLocked(summary);
    });
}

HRESULT CBScpiStatusRegister::PulseCondition(wchar_t mask)
{
    return GuardedRaisingEntry([&]() -> HRESULT {
        // Held across both changes, so that no other one comes between the two transitions.
        const CCritSectionLocker locker(m_lock);
        if (const HRESULT result = ModifyCondition(mask, mask); result != S_OK)
        {
            ThrowError(ZO_ERROR(this, "ModifyCondition( iMask, iMask ) == S_OK", kRuntimeError, result));
        }
        if (const HRESULT result = ModifyCondition(mask, 0); result != S_OK)
        {
            ThrowError(ZO_ERROR(this, "ModifyCondition( iMask, 0 ) == S_OK", kRuntimeError, result));
        }
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetEnable(wchar_t* enable)
{
    return enable == nullptr ? RefuseNull("enable != NULL")
                             : ReadWord(&CBScpiStatusRegister::m_enable, enable);
}

HRESULT CBScpiStatusRegister::SetEnable(wchar_t value)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        const bool summary = SummaryLocked();
        m_enable = ToWord(value);
        return UpdateSummaryLocked(summary);
    });
}

HRESULT CBScpiStatusRegister::SetEnableDeep(wchar_t value)
{
    return GuardedEntry([&]() -> HRESULT {
        const CCritSectionLocker locker(m_lock);
        const bool former = SummaryLocked();
        m_enable = ToWord(value);
        // Deliberate: a summary that this change has just sent must not be enabled by it in the parent too.
        if (const bool summary = SummaryLocked(); summary != former)
        {
            return DoUpdateParentRegister(summary);
        }
        WidenParentLocked(&IZOScpiStatusRegister::GetEnable, &IZOScpiStatusRegister::SetEnableDeep);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetEvents(wchar_t* events)
{
    return events == nullptr ? RefuseNull("events != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        const bool summary = SummaryLocked();
        *events = ToWide(TakeEventsLocked(~RegisterWord{0}));
        return UpdateSummaryLocked(summary);
    });
}

HRESULT CBScpiStatusRegister::GetEventBits(wchar_t mask, wchar_t* events)
{
    return events == nullptr ? RefuseNull("events != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        const bool summary = SummaryLocked();
        *events = ToWide(TakeEventsLocked(ToWord(mask)));
        return UpdateSummaryLocked(summary);
    });
}

HRESULT CBScpiStatusRegister::WaitEventBits(long timeoutMs, wchar_t mask, wchar_t* events)
{
    return events == nullptr ? RefuseNull("events != NULL") : GuardedEntry([&]() -> HRESULT {
        const RegisterWord bits = ToWord(mask);
        CCritSectionLocker locker(m_lock);
        bool summary = false;
        do
        {
            const bool former = SummaryLocked();
            *events = ToWide(TakeEventsLocked(bits));
            summary = SummaryLocked();
            if (summary != former)
            {
                return DoUpdateParentRegister(summary);
            }
            if (*events != 0 || bits == 0)
            {
                return S_OK;
            }
        } while (ReleaseWaiter(locker));
        ArmLocked(0, bits);
        if (!CanWaitLocked())
        {
            return E_ABORT;
        }
        const DWORD ended = Wait(locker, timeoutMs);
        if (ended == WAIT_OBJECT_0)
        {
            *events = ToWide(TakeEventsLocked(bits & m_captured));
            if (const bool woken = SummaryLocked(); woken != summary)
            {
                return DoUpdateParentRegister(woken);
            }
        }
        ArmLocked(0, 0);
        return ToWaitResult(ended);
    });
}

HRESULT CBScpiStatusRegister::WaitConditionBits(long timeoutMs, wchar_t mask, wchar_t* condition)
{
    return condition == nullptr ? RefuseNull("condition != NULL") : GuardedEntry([&]() -> HRESULT {
        const RegisterWord bits = ToWord(mask);
        CCritSectionLocker locker(m_lock);
        do
        {
            *condition = ToWide(bits & m_condition);
            if (*condition != 0 || bits == 0)
            {
                return S_OK;
            }
        } while (ReleaseWaiter(locker));
        ArmLocked(bits, 0);
        if (!CanWaitLocked())
        {
            return E_ABORT;
        }
        const DWORD ended = Wait(locker, timeoutMs);
        if (ended == WAIT_OBJECT_0)
        {
            *condition = ToWide(m_captured);
        }
        ArmLocked(0, 0);
        return ToWaitResult(ended);
    });
}

HRESULT CBScpiStatusRegister::ClearEvents()
{
    return GuardedEntry([&]() -> HRESULT {
        const CCritSectionLocker locker(m_lock);
        m_events = 0;
        if (m_parent == nullptr)
        {
            return S_OK;
        }
        wchar_t negTrans = 0;
        const HRESULT read = m_parent->GetNegTrans(&negTrans);
        const HRESULT result = DoUpdateParentRegister(false);
        // Deliberate: the parent keeps the filter that it had before it learnt of the summary.
        if (SUCCEEDED(read))
        {
            static_cast<void>(m_parent->SetNegTrans(negTrans));
        }
        return result;
    });
}

HRESULT CBScpiStatusRegister::ClearCondition()
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        // Deliberate: a reset is no transition, so nothing is latched and nobody is told.
        m_condition = 0;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::Preset()
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        // Deliberate: defaults are loaded as they are, unmasked, and the parent presets itself.
        m_enable = m_presetEnable;
        m_negTrans = m_presetNegTrans;
        m_posTrans = m_presetPosTrans;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetNegTrans(wchar_t value)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        m_negTrans = ToWord(value) & m_registerMask;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetNegTransDeep(wchar_t value)
{
    return SetFilterDeep(&CBScpiStatusRegister::m_negTrans,
                         value,
                         &IZOScpiStatusRegister::GetNegTrans,
                         &IZOScpiStatusRegister::SetNegTransDeep);
}

HRESULT CBScpiStatusRegister::GetNegTrans(wchar_t* value)
{
    return value == nullptr ? RefuseNull("value != NULL")
                            : ReadWord(&CBScpiStatusRegister::m_negTrans, value);
}

HRESULT CBScpiStatusRegister::SetPosTrans(wchar_t value)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        m_posTrans = ToWord(value) & m_registerMask;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetPosTransDeep(wchar_t value)
{
    return SetFilterDeep(&CBScpiStatusRegister::m_posTrans,
                         value,
                         &IZOScpiStatusRegister::GetPosTrans,
                         &IZOScpiStatusRegister::SetPosTransDeep);
}

HRESULT CBScpiStatusRegister::GetPosTrans(wchar_t* value)
{
    return value == nullptr ? RefuseNull("value != NULL")
                            : ReadWord(&CBScpiStatusRegister::m_posTrans, value);
}

HRESULT CBScpiStatusRegister::SetFilterDeep(RegisterWord CBScpiStatusRegister::*filter,
                                            wchar_t value,
                                            WordGetter getParent,
                                            WordSetter setParent)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        this->*filter = ToWord(value) & m_registerMask;
        WidenParentLocked(getParent, setParent);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetParentUpdate(short on)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        m_parentUpdate = on;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetParentUpdate(short* on)
{
    return on == nullptr ? RefuseNull("on != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        *on = m_parentUpdate;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetSnapshot(
    wchar_t* condition, wchar_t* negTrans, wchar_t* posTrans, wchar_t* events, wchar_t* enable)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        StoreUnlessNull(condition, m_condition);
        StoreUnlessNull(negTrans, m_negTrans);
        StoreUnlessNull(posTrans, m_posTrans);
        StoreUnlessNull(events, m_events);
        StoreUnlessNull(enable, m_enable);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetSummary(short* summary)
{
    return summary == nullptr ? RefuseNull("summary != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        *summary = ToVariantBool(SummaryLocked());
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetupParentRegister(IZOScpiStatusRegister* parent, wchar_t mask)
{
    return GuardedEntry([&] {
        // Let go of after the lock: the former parent may end here.
        CComPtr<IZOScpiStatusRegister> other(parent);
        const CCritSectionLocker locker(m_lock);
        std::swap(m_parent, other);
        m_parentMask = ToWord(mask);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::GetParentRegister(IZOScpiStatusRegister** parent, wchar_t* mask)
{
    ZO_ASSERT(parent != nullptr);
    return mask == nullptr ? RefuseNull("mask != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        *mask = ToWide(m_parentMask);
        return m_parent.CopyTo(parent);
    });
}

HRESULT CBScpiStatusRegister::GetData(tagScpiStatusData* data)
{
    return data == nullptr ? RefuseNull("data != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        return DoGetScpiStatusData(data);
    });
}

HRESULT CBScpiStatusRegister::GetPresetDefaults(wchar_t* negTrans, wchar_t* posTrans, wchar_t* enable)
{
    if (negTrans == nullptr)
    {
        return RefuseNull("negTrans != NULL");
    }
    if (posTrans == nullptr)
    {
        return RefuseNull("posTrans != NULL");
    }
    return enable == nullptr ? RefuseNull("enable != NULL") : GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        *negTrans = ToWide(m_presetNegTrans);
        *posTrans = ToWide(m_presetPosTrans);
        *enable = ToWide(m_presetEnable);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetPresetDefaults(wchar_t negTrans, wchar_t posTrans, wchar_t enable)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        m_presetNegTrans = ToWord(negTrans);
        m_presetPosTrans = ToWord(posTrans);
        m_presetEnable = ToWord(enable);
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::SetDeviceClearHandle(unsigned long handle)
{
    m_deviceClear.store(handle);
    return S_OK;
}

HRESULT CBScpiStatusRegister::ClearSummaryCondition(long bit)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        const RegisterWord negTrans = std::exchange(m_negTrans, 0);
        // Deliberate: the bit is gone here whatever the registers above say, so their result is nobody's.
        static_cast<void>(GuardedEntry([&] { return SetCondition(bit, VARIANT_FALSE); }));
        m_negTrans = negTrans;
        return S_OK;
    });
}

HRESULT CBScpiStatusRegister::DoSetRegisterMask(wchar_t mask)
{
    return GuardedEntry([&] {
        const CCritSectionLocker locker(m_lock);
        m_registerMask = ToWord(mask);
        return S_OK;
    });
}

// The lock is held, but derived classes, which may call this, cannot say so.
HRESULT CBScpiStatusRegister::DoUpdateParentRegister(bool summary) ZO_NO_THREAD_SAFETY_ANALYSIS
{
    return UpdatesParentLocked()
               ? m_parent->ModifyCondition(ToWide(m_parentMask), ToWide(summary ? m_parentMask : 0))
               : S_OK;
}

HRESULT CBScpiStatusRegister::DoGetScpiStatusData(tagScpiStatusData* /*data*/)
{
    return E_NOTIMPL;
}

bool CBScpiStatusRegister::UpdatesParentLocked() const
{
    return m_parent != nullptr && m_parentUpdate != VARIANT_FALSE;
}

HRESULT CBScpiStatusRegister::UpdateSummaryLocked(bool former)
{
    const bool summary = SummaryLocked();
    return summary == former ? S_OK : DoUpdateParentRegister(summary);
}

/// Lets the parent's word of the same kind pass the bits that carry this register's summary.
void CBScpiStatusRegister::WidenParentLocked(WordGetter get, WordSetter set)
{
    if (!UpdatesParentLocked())
    {
        return;
    }
    IZOScpiStatusRegister& parent = *m_parent;
    wchar_t word = 0;
    static_cast<void>((parent.*get)(&word));
    static_cast<void>((parent.*set)(ToWide(ToWord(word) | m_parentMask)));
}

CBScpiStatusRegister::RegisterWord CBScpiStatusRegister::TakeEventsLocked(RegisterWord mask)
{
    const RegisterWord taken = m_events & mask;
    m_events &= ~mask;
    return taken;
}

void CBScpiStatusRegister::WakeLocked(RegisterWord& waitMask)
{
    waitMask = 0;
    // Deliberate: bits may have gone again before the waiter runs, so it gets none and reads the register.
    m_captured = 0;
    SetEvent(m_wakeEvent.Get());
}

/// Ends another thread's wait, if there is one, and lets it leave.
///
/// Setting and resetting the event at once would not do: a thread that has not looked yet would miss it.
/// Leaves and takes again a lock that its caller owns, which annotations cannot tell.
/// @return true when the lock was left meanwhile, so that everything has to be looked at again
bool CBScpiStatusRegister::ReleaseWaiter(CCritSectionLocker& locker) ZO_NO_THREAD_SAFETY_ANALYSIS
{
    if (!m_isWaiting)
    {
        return false;
    }
    m_waitConditionMask = 0;
    WakeLocked(m_waitEventMask);
    const std::uint32_t ended = m_waitsEnded.load();
    locker.Unlock();
    m_waitsEnded.wait(ended);
    locker.Lock();
    return true;
}

/// Says what the waiter waits for; 0 and 0 when it has left.
void CBScpiStatusRegister::ArmLocked(RegisterWord conditionMask, RegisterWord eventMask)
{
    m_waitConditionMask = conditionMask;
    m_waitEventMask = eventMask;
    m_captured = 0;
    ResetEvent(m_wakeEvent.Get());
}

bool CBScpiStatusRegister::CanWaitLocked() const
{
    return m_wakeEvent && m_deviceClear.load() != INVALID_HANDLE_VALUE;
}

/// Blocks outside the lock, which must be held once only, and is back inside afterwards. The lock is the caller's,
/// which annotations cannot tell.
DWORD CBScpiStatusRegister::Wait(CCritSectionLocker& locker, long timeoutMs) ZO_NO_THREAD_SAFETY_ANALYSIS
{
    const std::array<HANDLE, 2> handles{m_wakeEvent.Get(), m_deviceClear.load()};
    m_isWaiting = true;
    locker.Unlock();
    const DWORD ended = WaitForMultipleObjects(handles.size(), handles.data(), FALSE, ToTimeLimit(timeoutMs));
    locker.Lock();
    m_isWaiting = false;
    ++m_waitsEnded;
    m_waitsEnded.notify_all();
    return ended;
}

} // namespace ZoVelkor
