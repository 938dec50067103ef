#include "CStatusManagement.h"

#include "CMutexLocker.h"
#include "KeywordForms.h"
#include "StatusBits.h"

#include <algorithm>
#include <cwctype>
#include <string_view>
#include <system_error>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

struct RegisterDefinition
{
    const wchar_t* szName;
    std::size_t parent; ///< kInstrumentRegisterCount: the sessions' status bytes
    wchar_t parentMask;
    wchar_t presetEnable;
};

/// In the order of InstrumentRegister; parents stand before their children.
///
/// A register below another one reports all its bits unless told otherwise (SCPI-99 vol. 2, 20.7).
constexpr RegisterDefinition kDefinitions[] = {
    {L"STATus:OPERation", kInstrumentRegisterCount, kStatusOperation, 0},
    {L"STATus:QUEStionable", kInstrumentRegisterCount, kStatusQuestionable, 0},
    {L"STATus:QUEStionable:POWer", kQuestionableRegister, 1 << 3, kScpiRegisterMask},
    {L"STATus:QUEStionable:FREQuency", kQuestionableRegister, 1 << 5, kScpiRegisterMask},
};
static_assert(std::size(kDefinitions) == kInstrumentRegisterCount);

bool EqualsNoCase(std::wstring_view left, std::wstring_view right) noexcept
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](wchar_t a, wchar_t b) {
        return std::towupper(static_cast<std::wint_t>(a)) == std::towupper(static_cast<std::wint_t>(b));
    });
}

/// Compares a keyword with its syntax form, whose short form is in capitals.
bool IsKeyword(std::wstring_view text, std::wstring_view syntax) noexcept
{
    return EqualsNoCase(text, syntax) || EqualsNoCase(text, LeadingCapitals(syntax));
}

/// Compares a register's name keyword by keyword.
bool IsRegisterName(std::wstring_view text, std::wstring_view syntax) noexcept
{
    for (;;)
    {
        const std::size_t textEnd = text.find(L':');
        const std::size_t syntaxEnd = syntax.find(L':');
        if (!IsKeyword(text.substr(0, textEnd), syntax.substr(0, syntaxEnd)) ||
            (textEnd == std::wstring_view::npos) != (syntaxEnd == std::wstring_view::npos))
        {
            return false;
        }
        if (textEnd == std::wstring_view::npos)
        {
            return true;
        }
        text.remove_prefix(textEnd + 1);
        syntax.remove_prefix(syntaxEnd + 1);
    }
}

} // namespace

CStatusManagement::CStatusManagement()
    : m_stopEvent(MakeSharedEvent("No event for the status registers")),
      m_distributor(CSummaryDistributorObject::Create())
{
    for (std::size_t i = 0; i < kInstrumentRegisterCount; ++i)
    {
        const RegisterDefinition& definition = kDefinitions[i];
        m_registers[i] =
            CStatusRegisterObject::Create(definition.szName, kScpiRegisterMask, definition.presetEnable);
        IZOScpiStatusRegister* parent = m_distributor;
        if (definition.parent != kInstrumentRegisterCount)
        {
            parent = m_registers[definition.parent];
        }
        m_registers[i]->SetupParentRegister(parent, definition.parentMask);
        m_registers[i]->EndWaitsWith(m_stopEvent);
    }
}

std::shared_ptr<CSessionStatus> CStatusManagement::Find(long remotePath)
{
    const CMutexLocker lock(m_mutex);
    const auto found = m_paths.find(remotePath);
    return found == m_paths.end() ? nullptr : found->second;
}

HRESULT
CStatusManagement::GetRegister(long remotePath, const wchar_t* name, IZOScpiStatusRegister** statusRegister)
{
    if (name == nullptr || statusRegister == nullptr)
    {
        return E_POINTER;
    }
    *statusRegister = nullptr;
    const std::shared_ptr<CSessionStatus> session = Find(remotePath);
    if (session == nullptr && remotePath != kScpiInstrumentPath)
    {
        return E_INVALIDARG;
    }
    for (const auto& shared : m_registers)
    {
        if (IsRegisterName(name, shared->Name()))
        {
            return CComPtr<IZOScpiStatusRegister>(shared).CopyTo(statusRegister);
        }
    }
    if (session != nullptr && EqualsNoCase(name, session->StandardEvent().Name()))
    {
        return CComPtr<IZOScpiStatusRegister>(&session->StandardEvent()).CopyTo(statusRegister);
    }
    if (session != nullptr && EqualsNoCase(name, session->StatusByte().Name()))
    {
        session->StatusByte().Watch();
        return CComPtr<IZOScpiStatusRegister>(&session->StatusByte()).CopyTo(statusRegister);
    }
    return S_FALSE;
}

HRESULT CStatusManagement::SerialPoll(long remotePath, unsigned char* stb)
{
    if (stb == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CSessionStatus> session = Find(remotePath);
    if (session == nullptr)
    {
        return E_INVALIDARG;
    }
    *stb = static_cast<unsigned char>(session->StatusByte().SerialPoll());
    return S_OK;
}

void CStatusManagement::OperationComplete(long remotePath) noexcept
{
    if (const std::shared_ptr<CSessionStatus> session = Find(remotePath); session != nullptr)
    {
        session->SetEvent(kEventOperationComplete);
    }
}

void CStatusManagement::AddPath(long remotePath, std::shared_ptr<CSessionStatus> status)
{
    CStatusByteObject& statusByte = status->StatusByte();
    {
        const CMutexLocker lock(m_mutex);
        m_paths[remotePath] = std::move(status);
    }
    m_distributor->Attach(&statusByte);
}

void CStatusManagement::RemovePath(long remotePath) noexcept
{
    if (const std::shared_ptr<CSessionStatus> session = Find(remotePath); session != nullptr)
    {
        m_distributor->Detach(&session->StatusByte());
        const CMutexLocker lock(m_mutex);
        m_paths.erase(remotePath);
    }
}

void CStatusManagement::PowerOn(const PowerOnStatus& status, IPowerOnStore* store)
{
    const CMutexLocker lock(m_powerOnMutex);
    m_powerOnMasks = status.clear ? EnableMasks{} : status.masks;
    m_powerOn = status;
    m_powerOnStore = store;
}

bool CStatusManagement::SetPowerOnClear(bool clear, const EnableMasks& masks)
{
    const CMutexLocker lock(m_powerOnMutex);
    return KeepLocked({clear, clear ? EnableMasks{} : masks});
}

bool CStatusManagement::IsPowerOnClear()
{
    const CMutexLocker lock(m_powerOnMutex);
    return m_powerOn.clear;
}

bool CStatusManagement::NoteMasks(const EnableMasks& masks)
{
    const CMutexLocker lock(m_powerOnMutex);
    return m_powerOn.clear || KeepLocked({false, masks});
}

bool CStatusManagement::KeepLocked(const PowerOnStatus& status)
{
    if (status != m_powerOn || !m_powerOnKept)
    {
        m_powerOn = status;
        m_powerOnKept = m_powerOnStore == nullptr || m_powerOnStore->Keep(status);
    }
    return m_powerOnKept;
}

void CStatusManagement::ClearEvents() noexcept
{
    // Children first, so that none sets the summary of a parent that is clear already. Reading withdraws the
    // summary like ClearEvents, but leaves the parent's filter to those who set it meanwhile.
    for (auto statusRegister = m_registers.rbegin(); statusRegister != m_registers.rend(); ++statusRegister)
    {
        wchar_t events = 0;
        (*statusRegister)->GetEvents(&events);
    }
}

void CStatusManagement::Preset() noexcept
{
    for (const auto& statusRegister : m_registers)
    {
        // Not by the register's Preset, which would leave the summaries as they were.
        wchar_t negTrans = 0;
        wchar_t posTrans = 0;
        wchar_t enable = 0;
        statusRegister->GetPresetDefaults(&negTrans, &posTrans, &enable);
        statusRegister->SetNegTrans(negTrans);
        statusRegister->SetPosTrans(posTrans);
        statusRegister->SetEnable(enable);
    }
}

} // namespace ZoVelkor::RemoteKernel
