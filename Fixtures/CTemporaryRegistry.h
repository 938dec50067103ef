#pragma once

#include "Registry.h"

#include <cstdlib>
#include <filesystem>
#include <string>

/// Gives the process a registry of its own, in a folder that goes with it.
class CTemporaryRegistry
{
public:
    CTemporaryRegistry()
    {
        std::string folder = (std::filesystem::temp_directory_path() / "zo-registry-XXXXXX").string();
        m_folder = ::mkdtemp(folder.data());
        Use();
    }
    CTemporaryRegistry(const CTemporaryRegistry&) = delete;
    CTemporaryRegistry& operator=(const CTemporaryRegistry&) = delete;
    ~CTemporaryRegistry()
    {
        SetRegistryFile(nullptr);
        std::filesystem::remove_all(m_folder);
    }

    /// Begins with new connections, as another process would.
    void Use() const { SetRegistryFile(File().c_str()); }

    [[nodiscard]] std::string File() const { return (m_folder / "registry.db").string(); }

private:
    std::filesystem::path m_folder;
};
