#include "CStatusManagement.h"

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

struct tagRegisterDefinition
{
    const wchar_t* szName;
    std::size_t parent; ///< kInstrumentRegisterCount: the sessions' status bytes
    wchar_t parentMask;
    wchar_t presetEnable;
};

/// In the order of tagInstrumentRegister; parents stand before their children.
///
/// A register below another one reports all its bits unless told otherwise (SCPI-99 vol. 2, 20.7).
constexpr tagRegisterDefinition kDefinitions[] = {
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
    const auto* const shortEnd =
        std::find_if(syntax.begin(), syntax.end(), [](wchar_t c) { return c >= L'a' && c <= L'z'; });
    const auto shortLength = static_cast<std::size_t>(shortEnd - syntax.begin());
    return EqualsNoCase(text, syntax) || EqualsNoCase(text, syntax.substr(0, shortLength));
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
    : m_spStopEvent(MakeSharedEvent("No event for the status registers")),
      m_spDistributor(CSummaryDistributorObject::Create())
{
    for (std::size_t i = 0; i < kInstrumentRegisterCount; ++i)
    {
        const tagRegisterDefinition& definition = kDefinitions[i];
        m_registers[i] =
            CStatusRegisterObject::Create(definition.szName, kScpiRegisterMask, definition.presetEnable);
        IZOScpiStatusRegister* pParent = m_spDistributor;
        if (definition.parent != kInstrumentRegisterCount)
        {
            pParent = m_registers[definition.parent];
        }
        m_registers[i]->SetupParentRegister(pParent, definition.parentMask);
        m_registers[i]->EndWaitsWith(m_spStopEvent);
    }
}

std::shared_ptr<CSessionStatus> CStatusManagement::Find(long remotePath)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_paths.find(remotePath);
    return found == m_paths.end() ? nullptr : found->second;
}

HRESULT
CStatusManagement::GetRegister(long remotePath, wchar_t const* name, IZOScpiStatusRegister** statusRegister)
{
    if (name == nullptr || statusRegister == nullptr)
    {
        return E_POINTER;
    }
    *statusRegister = nullptr;
    const std::shared_ptr<CSessionStatus> spSession = Find(remotePath);
    if (spSession == nullptr && remotePath != kScpiInstrumentPath)
    {
        return E_INVALIDARG;
    }
    for (const auto& spRegister : m_registers)
    {
        if (IsRegisterName(name, spRegister->Name()))
        {
            return CComPtr<IZOScpiStatusRegister>(spRegister).CopyTo(statusRegister);
        }
    }
    if (spSession != nullptr && EqualsNoCase(name, spSession->StandardEvent().Name()))
    {
        return CComPtr<IZOScpiStatusRegister>(&spSession->StandardEvent()).CopyTo(statusRegister);
    }
    if (spSession != nullptr && EqualsNoCase(name, spSession->StatusByte().Name()))
    {
        spSession->StatusByte().Watch();
        return CComPtr<IZOScpiStatusRegister>(&spSession->StatusByte()).CopyTo(statusRegister);
    }
    return S_FALSE;
}

HRESULT CStatusManagement::SerialPoll(long remotePath, unsigned char* stb)
{
    if (stb == nullptr)
    {
        return E_POINTER;
    }
    const std::shared_ptr<CSessionStatus> spSession = Find(remotePath);
    if (spSession == nullptr)
    {
        return E_INVALIDARG;
    }
    *stb = static_cast<unsigned char>(spSession->StatusByte().SerialPoll());
    return S_OK;
}

void CStatusManagement::OperationComplete(long remotePath) noexcept
{
    if (const std::shared_ptr<CSessionStatus> spSession = Find(remotePath); spSession != nullptr)
    {
        spSession->SetEvent(kEventOperationComplete);
    }
}

void CStatusManagement::AddPath(long remotePath, std::shared_ptr<CSessionStatus> spStatus)
{
    CStatusByteObject& statusByte = spStatus->StatusByte();
    {
        const std::lock_guard lock(m_mutex);
        m_paths[remotePath] = std::move(spStatus);
    }
    m_spDistributor->Attach(&statusByte);
}

void CStatusManagement::RemovePath(long remotePath) noexcept
{
    if (const std::shared_ptr<CSessionStatus> spSession = Find(remotePath); spSession != nullptr)
    {
        m_spDistributor->Detach(&spSession->StatusByte());
        const std::lock_guard lock(m_mutex);
        m_paths.erase(remotePath);
    }
}

void CStatusManagement::PowerOn(const tagPowerOnStatus& status, IPowerOnStore* pStore)
{
    const std::lock_guard lock(m_powerOnMutex);
    m_powerOnMasks = status.bClear ? tagEnableMasks{} : status.masks;
    m_powerOn = status;
    m_pPowerOnStore = pStore;
}

bool CStatusManagement::SetPowerOnClear(bool clear, const tagEnableMasks& masks)
{
    const std::lock_guard lock(m_powerOnMutex);
    return KeepLocked({clear, clear ? tagEnableMasks{} : masks});
}

bool CStatusManagement::IsPowerOnClear()
{
    const std::lock_guard lock(m_powerOnMutex);
    return m_powerOn.bClear;
}

bool CStatusManagement::NoteMasks(const tagEnableMasks& masks)
{
    const std::lock_guard lock(m_powerOnMutex);
    return m_powerOn.bClear || KeepLocked({false, masks});
}

bool CStatusManagement::KeepLocked(const tagPowerOnStatus& status)
{
    if (status != m_powerOn || !m_bPowerOnKept)
    {
        m_powerOn = status;
        m_bPowerOnKept = m_pPowerOnStore == nullptr || m_pPowerOnStore->Keep(status);
    }
    return m_bPowerOnKept;
}

void CStatusManagement::ClearEvents() noexcept
{
    // Children first, so that none sets the summary of a parent that is clear already. Reading withdraws the
    // summary like ClearEvents, but leaves the parent's filter to those who set it meanwhile.
    for (auto spRegister = m_registers.rbegin(); spRegister != m_registers.rend(); ++spRegister)
    {
        wchar_t events = 0;
        (*spRegister)->GetEvents(&events);
    }
}

void CStatusManagement::Preset() noexcept
{
    for (const auto& spRegister : m_registers)
    {
        // Not by the register's Preset, which would leave the summaries as they were.
        wchar_t negTrans = 0;
        wchar_t posTrans = 0;
        wchar_t enable = 0;
        spRegister->GetPresetDefaults(&negTrans, &posTrans, &enable);
        spRegister->SetNegTrans(negTrans);
        spRegister->SetPosTrans(posTrans);
        spRegister->SetEnable(enable);
    }
}

} // namespace ZoVelkor::RemoteKernel
