#include "CApplicationRegistry.h"

#include "CComBSTR.h"
#include "CMutexLocker.h"
#include "CodePage.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"
#include "IZOScpiCommands.h"
#include "Parsing/CommandTableCheck.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

ZO_SOURCE_UNIT("RemoteKernel/Applications/CApplicationRegistry");

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

CApplicationRegistry::CApplicationRegistry(InstrumentIdentity identity,
                                           std::span<const _CMD_SET_RECORD> builtIns)
    : m_identity(std::move(identity))
{
    PublishLocked({std::make_shared<CApplication>("kernel", builtIns.data(), builtIns.size())});
}

std::shared_ptr<const ApplicationSet> CApplicationRegistry::Current(std::uint64_t& generation) const
{
    const CMutexLocker lock(m_mutex);
    generation = m_generation.load(std::memory_order_relaxed);
    return m_current;
}

std::shared_ptr<const ApplicationSet> CApplicationRegistry::Current() const
{
    const CMutexLocker lock(m_mutex);
    return m_current;
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

HRESULT CApplicationRegistry::RegisterObject(const tagZO_SCPI_PARSER_OBJECT* object)
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
        ApplicationParts parts;
        parts.name = ReadableName(object->bsName);
        parts.id = object->m_guidObjectId;
        return RegisterFrom(object->pParser, parts);
    });
}

HRESULT CApplicationRegistry::RegisterParser(IZOScpiParser* pParser)
{
    return GuardedEntry([&]() -> HRESULT {
        ApplicationParts parts;
        parts.kind = ApplicationKind::Parser;
        CComBSTR bsName;
        pParser->get_ParserName(&bsName);
        parts.name = bsName.IsNull() ? std::string() : ReadableName(bsName);
        const CComPtr<IZOScpiParser> parser(pParser);
        parser.QueryInterface(&parts.registered);
        static_cast<void>(parser.QueryInterface(&parts.engines));
        const HRESULT result = CoCreateGuid(&parts.id);
        return FAILED(result) ? result : RegisterFrom(pParser, parts);
    });
}

HRESULT CApplicationRegistry::RegisterFrom(IZOScpiParser* pParser, ApplicationParts& parts)
{
    VARIANT_BOOL activated = VARIANT_FALSE;
    pParser->GetCommandTree(&parts.tree);
    pParser->GetExecutionSink(&parts.sink);
    pParser->GetDeviceHandler(&parts.deviceHandler);
    pParser->get_ActivatedMeasurementParser(&activated);
    parts.activated = activated != VARIANT_FALSE;
    if (parts.tree.iSize == 0 || parts.sink == nullptr)
    {
        return RepairError(
            ZO_ERROR(nullptr, "tree.iSize != 0", "\"" + parts.name + "\" has no command tree", E_INVALIDARG));
    }
    return Add(parts);
}

HRESULT CApplicationRegistry::RegisterPlugIn(IUnknown* pPlugIn)
{
    return GuardedEntry([&]() -> HRESULT {
        ApplicationParts parts;
        parts.kind = ApplicationKind::PlugIn;
        parts.name = "plug-in";
        CComPtr<IZOScpiCommands> commands;
        const CComPtr<IUnknown> plugIn(pPlugIn);
        HRESULT result = plugIn.QueryInterface(&commands);
        if (SUCCEEDED(result))
        {
            result = plugIn.QueryInterface(&parts.sink);
        }
        if (SUCCEEDED(result))
        {
            result = CoCreateGuid(&parts.id);
        }
        if (FAILED(result))
        {
            return result;
        }
        plugIn.QueryInterface(&parts.registered);
        static_cast<void>(plugIn.QueryInterface(&parts.deviceHandler));
        return commands->GetParserTableReference(&parts.tree) == S_OK ? Add(parts) : E_INVALIDARG;
    });
}

HRESULT CApplicationRegistry::RegisterDeviceHandler(IZOScpiDeviceHandler* handler, long remotePath)
{
    return GuardedEntry([&]() -> HRESULT {
        ApplicationParts parts;
        parts.kind = ApplicationKind::DeviceHandler;
        parts.deviceHandler = handler;
        parts.deviceHandler.QueryInterface(&parts.registered);
        parts.remotePath = remotePath;
        const HRESULT result = CoCreateGuid(&parts.id);
        return FAILED(result) ? result : Add(parts);
    });
}

HRESULT CApplicationRegistry::Add(ApplicationParts& parts)
{
    const bool activated = parts.activated;
    const bool commands = parts.tree.iSize != 0;
    const auto application = std::make_shared<CApplication>(parts);
    const HRESULT result = commands ? CheckTable(*application) : S_OK;
    if (FAILED(result))
    {
        return result;
    }
    const CMutexLocker changeLock(m_changeMutex);
    if (m_closed)
    {
        return RepairError(ZO_ERROR(nullptr, "!m_closed", "The remote kernel has stopped", E_UNEXPECTED));
    }
    if (IsRegisteredLocked(parts))
    {
        return commands ? RepairError(ZO_ERROR(nullptr,
                                               "!IsRegistered(parts)",
                                               "\"" + parts.name + "\" is registered already",
                                               E_INVALIDARG))
                        : S_FALSE;
    }
    auto applications = Current()->applications;
    // Of several definitions of a header the last one holds.
    const auto place =
        std::find_if(applications.begin(), applications.end(), [activated](const auto& candidate) {
            return !activated && candidate->Parts().activated;
        });
    applications.insert(place, application);
    PublishLocked(std::move(applications));
    return S_OK;
}

bool CApplicationRegistry::IsSame(const ApplicationParts& parts,
                                  ApplicationKind kind,
                                  IUnknown* identity,
                                  long remotePath) noexcept
{
    return identity != nullptr && parts.registered.Get() == identity && parts.kind == kind &&
           parts.remotePath == remotePath;
}

bool CApplicationRegistry::IsRegisteredLocked(const ApplicationParts& parts) const
{
    const std::shared_ptr<const ApplicationSet> current = Current();
    const auto& applications = current->applications;
    return std::any_of(applications.begin(), applications.end(), [&parts](const auto& candidate) {
        const ApplicationParts& other = candidate->Parts();
        const bool sameObject = IsSame(other, parts.kind, parts.registered, parts.remotePath);
        return !candidate->IsBuiltIn() && (other.id == parts.id || sameObject);
    });
}

std::shared_ptr<CApplication> CApplicationRegistry::FindApplication(const GUID& id) const
{
    std::uint64_t generation = 0;
    const std::shared_ptr<const ApplicationSet> set = Current(generation);
    const auto& applications = set->applications;
    const auto found = std::find_if(applications.begin(), applications.end(), [&id](const auto& candidate) {
        return !candidate->IsBuiltIn() && candidate->Parts().id == id;
    });
    return found == applications.end() ? nullptr : *found;
}

HRESULT CApplicationRegistry::UnregisterObject(GUID id)
{
    return RemoveWhere([&id](const ApplicationParts& parts) { return parts.id == id; });
}

HRESULT CApplicationRegistry::Unregister(ApplicationKind kind, IUnknown* pObject, long remotePath)
{
    CComPtr<IUnknown> object;
    static_cast<void>(CComPtr<IUnknown>(pObject).QueryInterface(&object));
    return RemoveWhere(
        [&](const ApplicationParts& parts) { return IsSame(parts, kind, object, remotePath); });
}

template <class TCondition>
HRESULT CApplicationRegistry::RemoveWhere(TCondition condition)
{
    return GuardedEntry([&]() -> HRESULT {
        std::shared_ptr<CApplication> application;
        {
            const CMutexLocker changeLock(m_changeMutex);
            auto applications = Current()->applications;
            const auto found =
                std::find_if(applications.begin(), applications.end(), [&](const auto& candidate) {
                    return !candidate->IsBuiltIn() && condition(candidate->Parts());
                });
            if (found == applications.end())
            {
                return S_FALSE;
            }
            application = *found;
            applications.erase(found);
            PublishLocked(std::move(applications));
        }
        // Without lock: the application's objects go now, and may take others with them.
        // A session that still works with the former set finds the application closed.
        application->Close();
        return S_OK;
    });
}

void CApplicationRegistry::ReleaseEngines(long remotePath) const noexcept
{
    std::uint64_t generation = 0;
    const std::shared_ptr<const ApplicationSet> set = Current(generation);
    for (const auto& application : set->applications)
    {
        application->ReleaseEngine(remotePath);
    }
}

void CApplicationRegistry::Close()
{
    std::vector<std::shared_ptr<CApplication>> applications;
    {
        const CMutexLocker changeLock(m_changeMutex);
        m_closed = true;
        applications = Current()->applications;
        PublishLocked({applications.front()});
    }
    for (const auto& application : applications)
    {
        application->Close();
    }
}

void CApplicationRegistry::PublishLocked(std::vector<std::shared_ptr<CApplication>> applications)
{
    std::vector<CommandSource> sources;
    sources.reserve(applications.size());
    for (const auto& application : applications)
    {
        if (!application->Table().empty())
        {
            sources.push_back({application->Table().data(), application->Table().size(), application});
        }
    }
    auto set = std::make_shared<ApplicationSet>();
    set->index = std::make_unique<const CCommandIndex>(sources);
    set->identity = IdentityResponse(applications);
    set->applications = std::move(applications);

    std::shared_ptr<const ApplicationSet> former = std::move(set);
    const CMutexLocker lock(m_mutex);
    std::swap(m_current, former);
    m_generation.fetch_add(1, std::memory_order_release);
}

std::string
CApplicationRegistry::IdentityResponse(const std::vector<std::shared_ptr<CApplication>>& applications) const
{
    std::string firmware = m_identity.firmwareLevel;
    const auto found = std::find_if(applications.begin(), applications.end(), [](const auto& candidate) {
        return candidate->FirmwareLevel().Length() != 0;
    });
    if (found != applications.end())
    {
        firmware = ReadableName((*found)->FirmwareLevel());
    }
    std::string response;
    for (const std::string& field :
         {m_identity.manufacturer, m_identity.model, m_identity.serialNumber, firmware})
    {
        AppendIdentityField(response, field);
    }
    return response;
}

} // namespace ZoVelkor::RemoteKernel
