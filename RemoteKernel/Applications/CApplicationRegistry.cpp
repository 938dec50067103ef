#include "CApplicationRegistry.h"

#include "BuiltIn/BuiltInTable.h"
#include "CComBSTR.h"
#include "CodePage.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"
#include "IZOScpiCommands.h"
#include "Parsing/CommandTableCheck.h"

#include <algorithm>
#include <span>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

ZO_SOURCE_UNIT("RemoteKernel/Applications/CApplicationRegistry")

namespace
{

/// Wide text as UTF-8, for people.
std::string ReadableName(const wchar_t* name)
{
    const int length = WideCharToMultiByte(CP_UTF8, 0, name, -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(std::max(length, 1)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, name, -1, text.data(), length, nullptr, nullptr);
    text.pop_back(); // the terminator
    return text;
}

void AppendIdentityField(std::string& response, const std::string& field)
{
    if (!response.empty())
    {
        response += ',';
    }
    if (field.empty())
    {
        response += '0';
    }
    std::transform(field.begin(), field.end(), std::back_inserter(response), [](char c) {
        return c >= ' ' && c <= '~' && c != ',' && c != ';' ? c : ' ';
    });
}

} // namespace

CApplicationRegistry::CApplicationRegistry(tagInstrumentIdentity identity) : m_identity(std::move(identity))
{
    const std::span<const _CMD_SET_RECORD> table = BuiltInTable();
    Publish({std::make_shared<CApplication>("kernel", table.data(), table.size())});
}

std::shared_ptr<const tagApplicationSet> CApplicationRegistry::Current(std::uint64_t& generation) const
{
    const std::lock_guard lock(m_mutex);
    generation = m_generation.load(std::memory_order_relaxed);
    return m_spCurrent;
}

HRESULT CApplicationRegistry::CheckTable(const CApplication& application) const
{
    const std::string fault = ValidateCommandTable(application.Table().data(), application.Table().size());
    if (fault.empty())
    {
        return S_OK;
    }
    return RepairError(ZO_ERROR(nullptr,
                                "ValidateCommandTable",
                                "Command table of \"" + application.Name() + "\": " + fault,
                                E_INVALIDARG));
}

HRESULT CApplicationRegistry::RegisterObject(tagZO_SCPI_PARSER_OBJECT const* object)
{
    if (object == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object"));
    }
    if (object->bsName == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object->bsName"));
    }
    if (object->pParser == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object->pParser"));
    }
    return GuardedEntry([&]() -> HRESULT {
        tagApplicationParts parts;
        parts.sName = ReadableName(object->bsName);
        parts.id = object->m_guidObjectId;
        return RegisterFrom(object->pParser, parts);
    });
}

HRESULT CApplicationRegistry::RegisterParser(IZOScpiParser* pParser)
{
    return GuardedEntry([&]() -> HRESULT {
        tagApplicationParts parts;
        parts.eKind = tagApplicationKind::Parser;
        CComBSTR bsName;
        pParser->get_ParserName(&bsName);
        parts.sName = bsName.IsNull() ? std::string() : ReadableName(bsName);
        const CComPtr<IZOScpiParser> spParser(pParser);
        spParser.QueryInterface(&parts.spRegistered);
        static_cast<void>(spParser.QueryInterface(&parts.spEngines));
        const HRESULT result = CoCreateGuid(&parts.id);
        return FAILED(result) ? result : RegisterFrom(pParser, parts);
    });
}

HRESULT CApplicationRegistry::RegisterFrom(IZOScpiParser* pParser, tagApplicationParts& parts)
{
    VARIANT_BOOL activated = VARIANT_FALSE;
    pParser->GetCommandTree(&parts.tree);
    pParser->GetExecutionSink(&parts.spSink);
    pParser->GetDeviceHandler(&parts.spDeviceHandler);
    pParser->get_ActivatedMeasurementParser(&activated);
    parts.bActivated = activated != VARIANT_FALSE;
    if (parts.tree.iSize == 0 || parts.spSink == nullptr)
    {
        return RepairError(ZO_ERROR(
            nullptr, "tree.iSize != 0", "\"" + parts.sName + "\" has no command tree", E_INVALIDARG));
    }
    return Add(parts);
}

HRESULT CApplicationRegistry::RegisterPlugIn(IUnknown* pPlugIn)
{
    return GuardedEntry([&]() -> HRESULT {
        tagApplicationParts parts;
        parts.eKind = tagApplicationKind::PlugIn;
        parts.sName = "plug-in";
        CComPtr<IZOScpiCommands> spCommands;
        const CComPtr<IUnknown> spPlugIn(pPlugIn);
        HRESULT result = spPlugIn.QueryInterface(&spCommands);
        if (SUCCEEDED(result))
        {
            result = spPlugIn.QueryInterface(&parts.spSink);
        }
        if (SUCCEEDED(result))
        {
            result = CoCreateGuid(&parts.id);
        }
        if (FAILED(result))
        {
            return result;
        }
        spPlugIn.QueryInterface(&parts.spRegistered);
        static_cast<void>(spPlugIn.QueryInterface(&parts.spDeviceHandler));
        return spCommands->GetParserTableReference(&parts.tree) == S_OK ? Add(parts) : E_INVALIDARG;
    });
}

HRESULT CApplicationRegistry::RegisterDeviceHandler(IZOScpiDeviceHandler* pHandler, long remotePath)
{
    return GuardedEntry([&]() -> HRESULT {
        tagApplicationParts parts;
        parts.eKind = tagApplicationKind::DeviceHandler;
        parts.spDeviceHandler = pHandler;
        parts.spDeviceHandler.QueryInterface(&parts.spRegistered);
        parts.iRemotePath = remotePath;
        const HRESULT result = CoCreateGuid(&parts.id);
        return FAILED(result) ? result : Add(parts);
    });
}

HRESULT CApplicationRegistry::Add(tagApplicationParts& parts)
{
    const bool bActivated = parts.bActivated;
    const bool bCommands = parts.tree.iSize != 0;
    const auto spApplication = std::make_shared<CApplication>(parts);
    const HRESULT result = bCommands ? CheckTable(*spApplication) : S_OK;
    if (FAILED(result))
    {
        return result;
    }
    const std::lock_guard changeLock(m_changeMutex);
    if (m_bClosed)
    {
        return RepairError(ZO_ERROR(nullptr, "!m_bClosed", "The remote kernel has stopped", E_UNEXPECTED));
    }
    if (IsRegistered(parts))
    {
        return bCommands ? RepairError(ZO_ERROR(nullptr,
                                                "!IsRegistered(parts)",
                                                "\"" + parts.sName + "\" is registered already",
                                                E_INVALIDARG))
                         : S_FALSE;
    }
    auto applications = m_spCurrent->applications;
    // Of several definitions of a header the last one holds.
    const auto place =
        std::find_if(applications.begin(), applications.end(), [bActivated](const auto& spOther) {
            return !bActivated && spOther->Parts().bActivated;
        });
    applications.insert(place, spApplication);
    Publish(std::move(applications));
    return S_OK;
}

bool CApplicationRegistry::IsSame(const tagApplicationParts& parts,
                                  tagApplicationKind kind,
                                  IUnknown* pIdentity,
                                  long remotePath) noexcept
{
    return pIdentity != nullptr && parts.spRegistered.Get() == pIdentity && parts.eKind == kind &&
           parts.iRemotePath == remotePath;
}

bool CApplicationRegistry::IsRegistered(const tagApplicationParts& parts) const
{
    const auto& applications = m_spCurrent->applications;
    return std::any_of(applications.begin(), applications.end(), [&parts](const auto& spOther) {
        const tagApplicationParts& other = spOther->Parts();
        const bool bSameObject = IsSame(other, parts.eKind, parts.spRegistered, parts.iRemotePath);
        return !spOther->IsBuiltIn() && (other.id == parts.id || bSameObject);
    });
}

std::shared_ptr<CApplication> CApplicationRegistry::FindApplication(const GUID& id) const
{
    std::uint64_t generation = 0;
    const std::shared_ptr<const tagApplicationSet> spSet = Current(generation);
    const auto& applications = spSet->applications;
    const auto found = std::find_if(applications.begin(), applications.end(), [&id](const auto& spOther) {
        return !spOther->IsBuiltIn() && spOther->Parts().id == id;
    });
    return found == applications.end() ? nullptr : *found;
}

HRESULT CApplicationRegistry::UnregisterObject(GUID id)
{
    return RemoveWhere([&id](const tagApplicationParts& parts) { return parts.id == id; });
}

HRESULT CApplicationRegistry::Unregister(tagApplicationKind kind, IUnknown* pObject, long remotePath)
{
    CComPtr<IUnknown> spObject;
    static_cast<void>(CComPtr<IUnknown>(pObject).QueryInterface(&spObject));
    return RemoveWhere(
        [&](const tagApplicationParts& parts) { return IsSame(parts, kind, spObject, remotePath); });
}

template <class TCondition>
HRESULT CApplicationRegistry::RemoveWhere(TCondition condition)
{
    return GuardedEntry([&]() -> HRESULT {
        std::shared_ptr<CApplication> spApplication;
        {
            const std::lock_guard changeLock(m_changeMutex);
            auto applications = m_spCurrent->applications;
            const auto found =
                std::find_if(applications.begin(), applications.end(), [&](const auto& spOther) {
                    return !spOther->IsBuiltIn() && condition(spOther->Parts());
                });
            if (found == applications.end())
            {
                return S_FALSE;
            }
            spApplication = *found;
            applications.erase(found);
            Publish(std::move(applications));
        }
        // Without lock: the application's objects go now, and may take others with them.
        // A session that still works with the former set finds the application closed.
        spApplication->Close();
        return S_OK;
    });
}

void CApplicationRegistry::ReleaseEngines(long remotePath) noexcept
{
    std::uint64_t generation = 0;
    const std::shared_ptr<const tagApplicationSet> spSet = Current(generation);
    for (const auto& spApplication : spSet->applications)
    {
        spApplication->ReleaseEngine(remotePath);
    }
}

void CApplicationRegistry::Close()
{
    std::vector<std::shared_ptr<CApplication>> applications;
    {
        const std::lock_guard changeLock(m_changeMutex);
        m_bClosed = true;
        applications = m_spCurrent->applications;
        Publish({applications.front()});
    }
    for (const auto& spApplication : applications)
    {
        spApplication->Close();
    }
}

void CApplicationRegistry::Publish(std::vector<std::shared_ptr<CApplication>> applications)
{
    std::vector<tagCommandSource> sources;
    sources.reserve(applications.size());
    for (const auto& spApplication : applications)
    {
        if (!spApplication->Table().empty())
        {
            sources.push_back({spApplication->Table().data(), spApplication->Table().size(), spApplication});
        }
    }
    auto spSet = std::make_shared<tagApplicationSet>();
    spSet->spIndex = std::make_unique<const CCommandIndex>(sources);
    spSet->sIdentity = IdentityResponse(applications);
    spSet->applications = std::move(applications);

    std::shared_ptr<const tagApplicationSet> spFormer = std::move(spSet);
    const std::lock_guard lock(m_mutex);
    std::swap(m_spCurrent, spFormer);
    m_generation.fetch_add(1, std::memory_order_release);
}

std::string
CApplicationRegistry::IdentityResponse(const std::vector<std::shared_ptr<CApplication>>& applications) const
{
    std::string firmware = m_identity.sFirmwareLevel;
    const auto found = std::find_if(applications.begin(), applications.end(), [](const auto& spApplication) {
        return spApplication->FirmwareLevel().Length() != 0;
    });
    if (found != applications.end())
    {
        firmware = ReadableName((*found)->FirmwareLevel());
    }
    std::string response;
    for (const std::string& field :
         {m_identity.sManufacturer, m_identity.sModel, m_identity.sSerialNumber, firmware})
    {
        AppendIdentityField(response, field);
    }
    return response;
}

} // namespace ZoVelkor::RemoteKernel
