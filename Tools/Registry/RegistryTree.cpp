#include "RegistryTree.h"

#include "Common/CToolError.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace ZoVelkor::Tools
{

namespace
{

struct FaultText
{
    DWORD error;
    ExitCode code;
    const char* text;
};

constexpr FaultText kFaults[] = {
    {ERROR_FILE_NOT_FOUND, ExitCode::Failed, "no such key"},
    {ERROR_KEY_DELETED, ExitCode::Failed, "has been deleted meanwhile"},
    {ERROR_INVALID_PARAMETER, ExitCode::Failed, "too long, too large or too deep"},
    {ERROR_BUSY, ExitCode::NoAccess, "another program keeps the registry locked"},
    {ERROR_ACCESS_DENIED, ExitCode::NoAccess, "the registry may not be read, or not be written"},
    {ERROR_DISK_FULL, ExitCode::NoAccess, "the disk is full"},
    {ERROR_REGISTRY_IO_FAILED, ExitCode::NoAccess, "the disk fails"},
    {ERROR_CANTOPEN, ExitCode::NoAccess, "the registry cannot be opened"},
    {ERROR_BADDB, ExitCode::NoAccess, "the registry is damaged, or the file is none"},
    {ERROR_NOT_ENOUGH_MEMORY, ExitCode::NoAccess, "not enough memory"},
    {ERROR_TOO_MANY_OPEN_FILES, ExitCode::NoAccess, "too many open files"},
};

/// Reads trees; keeps its buffers from one value to the next.
class CTreeReader
{
public:
    LONG ReadKey(HKEY key, unsigned depth, RegistryKey& result)
    {
        const LONG error = ReadValues(key, result.values);
        if (error != ERROR_SUCCESS)
        {
            return error;
        }
        return depth == 0 ? CountKeys(key, result.unreadKeys) : ReadKeys(key, depth - 1, result.keys);
    }

private:
    LONG ReadValues(HKEY key, std::vector<RegistryValue>& values)
    {
        DWORD index = 0;
        for (;;)
        {
            DWORD type = REG_NONE;
            auto nameLength = static_cast<DWORD>(m_name.size());
            auto size = static_cast<DWORD>(m_data.size());
            const LONG error =
                RegEnumValue(key, index, m_name.data(), &nameLength, nullptr, &type, m_data.data(), &size);
            if (error == ERROR_MORE_DATA)
            {
                m_data.resize(size);
                continue;
            }
            if (error != ERROR_SUCCESS)
            {
                return error == ERROR_NO_MORE_ITEMS ? LONG{ERROR_SUCCESS} : error;
            }
            values.push_back({{m_name.data(), nameLength}, type, {m_data.data(), m_data.data() + size}});
            ++index;
        }
    }

    LONG ReadKeys(HKEY key, unsigned depth, std::vector<RegistryKey>& keys)
    {
        LONG error = ERROR_SUCCESS;
        for (DWORD index = 0; error == ERROR_SUCCESS; ++index)
        {
            wchar_t name[kRegistryMaximumKeyName + 1];
            error = RegEnumKey(key, index, name, static_cast<DWORD>(std::size(name)));
            if (error == ERROR_SUCCESS)
            {
                RegistryKey below;
                below.name = name;
                error = ReadBelow(key, depth, below);
                if (error == ERROR_SUCCESS)
                {
                    keys.push_back(std::move(below));
                }
                // Somebody has deleted it meanwhile.
                const bool isGone = error == ERROR_FILE_NOT_FOUND || error == ERROR_KEY_DELETED;
                error = isGone ? LONG{ERROR_SUCCESS} : error;
            }
        }
        return error == ERROR_NO_MORE_ITEMS ? LONG{ERROR_SUCCESS} : error;
    }

    LONG ReadBelow(HKEY key, unsigned depth, RegistryKey& below)
    {
        HKEY opened = 0;
        const LONG error = RegOpenKey(key, below.name.c_str(), &opened);
        const CUniqueKey owner(opened);
        return error == ERROR_SUCCESS ? ReadKey(opened, depth, below) : error;
    }

    static LONG CountKeys(HKEY key, DWORD& count)
    {
        return RegQueryInfoKey(key,
                               nullptr,
                               nullptr,
                               nullptr,
                               &count,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr);
    }

    static constexpr std::size_t kFirstDataSize = 256;

    std::vector<wchar_t> m_name = std::vector<wchar_t>(kRegistryMaximumValueName + 1);
    std::vector<BYTE> m_data = std::vector<BYTE>(kFirstDataSize);
};

RegistryTree ReadOpenTree(HKEY key, const RegistryPath& path, unsigned depth)
{
    RegistryTree tree{path, {}};
    CheckRegistry(CTreeReader().ReadKey(key, depth, tree.top), PathText(path));
    return tree;
}

} // namespace

void CheckRegistry(LONG error, const std::string& subject)
{
    if (error == ERROR_SUCCESS)
    {
        return;
    }
    const auto* row = std::ranges::find(kFaults, static_cast<DWORD>(error), &FaultText::error);
    if (row == std::end(kFaults))
    {
        throw CToolError(ExitCode::Failed, fmt::format("{}: error {}", subject, error));
    }
    throw CToolError(row->code, fmt::format("{}: {}", subject, row->text));
}

CUniqueKey OpenRegistryKey(const RegistryPath& path)
{
    HKEY key = 0;
    CheckRegistry(RegOpenKey(path.root, path.keys.c_str(), &key), PathText(path));
    return CUniqueKey(key);
}

std::optional<RegistryValue> ReadRegistryValue(HKEY key, const std::wstring& name, const RegistryPath& path)
{
    RegistryValue value{name, REG_NONE, std::vector<BYTE>(1)};
    LONG error = ERROR_MORE_DATA;
    while (error == ERROR_MORE_DATA)
    {
        auto size = static_cast<DWORD>(value.data.size());
        error = RegQueryValueEx(key, name.c_str(), nullptr, &value.type, value.data.data(), &size);
        if (error == ERROR_SUCCESS || error == ERROR_MORE_DATA)
        {
            value.data.resize(size);
        }
    }
    if (error == ERROR_FILE_NOT_FOUND)
    {
        return std::nullopt;
    }
    CheckRegistry(error, PathText(path));
    return value;
}

RegistryTree ReadRegistryTree(const RegistryPath& path, unsigned depth)
{
    return ReadOpenTree(OpenRegistryKey(path).Get(), path, depth);
}

CWatchedTrees::CWatchedTrees(std::vector<RegistryPath> paths)
    : m_paths(std::move(paths)),
      m_changed(CreateEvent(TRUE, FALSE))
{
    std::ranges::transform(m_paths, std::back_inserter(m_keys), OpenRegistryKey);
}

std::vector<RegistryTree> CWatchedTrees::Read()
{
    ResetEvent(m_changed.Get());
    Arm();
    std::vector<RegistryTree> trees;
    for (std::size_t i = 0; i < m_paths.size(); ++i)
    {
        trees.push_back(ReadOpenTree(m_keys[i].Get(), m_paths[i], kAnyDepth));
    }
    return trees;
}

std::optional<std::vector<RegistryTree>> CWatchedTrees::ReadAtOneMoment()
{
    constexpr int kAttempts = 10;
    for (int i = 0; i < kAttempts; ++i)
    {
        auto trees = Read();
        // A further request is told at once of what the first one has not been told of yet.
        Arm();
        if (WaitForSingleObject(m_changed.Get(), 0) == WAIT_TIMEOUT)
        {
            return trees;
        }
    }
    return std::nullopt;
}

void CWatchedTrees::Wait() const
{
    WaitForSingleObject(m_changed.Get(), INFINITE);
}

void CWatchedTrees::Arm() const
{
    for (std::size_t i = 0; i < m_paths.size(); ++i)
    {
        constexpr DWORD kFilter = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;
        CheckRegistry(RegNotifyChangeKeyValue(m_keys[i].Get(), TRUE, kFilter, m_changed.Get(), TRUE),
                      PathText(m_paths[i]));
    }
}

} // namespace ZoVelkor::Tools
