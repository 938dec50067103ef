#include "CApplicationRegistry.h"

#include "BuiltInTable.h"
#include "CComBSTR.h"
#include "CodePage.h"
#include "CommandTableCheck.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <algorithm>
#include <span>
#include <utility>

namespace ZoVelkor::RemoteKernel
{

ZO_SOURCE_UNIT("RemoteKernel/Src/CApplicationRegistry")

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

HRESULT CApplicationRegistry::CheckObject(const tagZO_SCPI_PARSER_OBJECT* object) const
{
    if (object == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object"));
    }
    if (object->bsName == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object->bsName"));
    }
    if (object->pExecutionSink == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object->pExecutionSink"));
    }
    if (object->tree.pTable == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "object->tree.pTable"));
    }
    if (object->tree.iSize == 0 || object->tree.iSize % sizeof(_CMD_SET_RECORD) != 0)
    {
        return RepairError(ZO_ERROR(nullptr,
                                    "iSize % sizeof(record) == 0",
                                    "Command table of \"" + ReadableName(object->bsName) +
                                        "\": " + std::to_string(object->tree.iSize) +
                                        " bytes are no whole number of records",
                                    E_INVALIDARG));
    }
    return S_OK;
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
    return GuardedEntry([&]() -> HRESULT {
        const HRESULT result = CheckObject(object);
        return FAILED(result) ? result : Add(*object);
    });
}

HRESULT CApplicationRegistry::Add(const tagZO_SCPI_PARSER_OBJECT& object)
{
    auto spApplication = std::make_shared<CApplication>(ReadableName(object.bsName),
                                                        object.tree.pTable,
                                                        object.tree.iSize / sizeof(_CMD_SET_RECORD),
                                                        object.guidObjectId,
                                                        object.pExecutionSink,
                                                        object.pDeviceHandler);
    const HRESULT result = CheckTable(*spApplication);
    if (FAILED(result))
    {
        return result;
    }
    const std::lock_guard changeLock(m_changeMutex);
    if (m_bClosed)
    {
        return RepairError(ZO_ERROR(nullptr, "!m_bClosed", "The remote kernel has stopped", E_UNEXPECTED));
    }
    auto applications = m_spCurrent->applications;
    if (std::any_of(applications.begin(), applications.end(), [&](const auto& other) {
            return !other->IsBuiltIn() && other->ObjectId() == object.guidObjectId;
        }))
    {
        return RepairError(ZO_ERROR(nullptr,
                                    "guidObjectId is new",
                                    "\"" + spApplication->Name() + "\" is registered already",
                                    E_INVALIDARG));
    }
    applications.push_back(std::move(spApplication));
    Publish(std::move(applications));
    return S_OK;
}

HRESULT CApplicationRegistry::UnregisterObject(GUID id)
{
    return GuardedEntry([&]() -> HRESULT {
        const std::shared_ptr<CApplication> spApplication = Remove(id);
        if (spApplication == nullptr)
        {
            return S_FALSE;
        }
        // Without lock: the application's objects go now, and may take others with them.
        // A session that still works with the former set finds the application closed.
        spApplication->Close();
        return S_OK;
    });
}

std::shared_ptr<CApplication> CApplicationRegistry::Remove(const GUID& id)
{
    const std::lock_guard changeLock(m_changeMutex);
    auto applications = m_spCurrent->applications;
    const auto found = std::find_if(applications.begin(), applications.end(), [&](const auto& other) {
        return !other->IsBuiltIn() && other->ObjectId() == id;
    });
    if (found == applications.end())
    {
        return nullptr;
    }
    std::shared_ptr<CApplication> spApplication = *found;
    applications.erase(found);
    Publish(std::move(applications));
    return spApplication;
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
        sources.push_back({spApplication->Table().data(), spApplication->Table().size(), spApplication});
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
    for (const auto& spApplication : applications)
    {
        CComBSTR level;
        const HRESULT result = spApplication->CallDeviceHandler(
            [&level](IZOScpiDeviceHandler& handler) { return handler.GetFirmwareLevel(&level); });
        if (result == S_OK && level.Length() != 0)
        {
            firmware = ReadableName(level);
            break;
        }
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
