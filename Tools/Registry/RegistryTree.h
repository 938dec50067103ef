// Registry: `zo registry`, the platform's registry in the terminal.
//
// RegistryCommands reads the command line; RegistryTree reads and writes keys as trees, RegistryValue and
// RegistryText turn values and paths to text and back, RegistryFile has the text form of files, RegistryJson
// that of JSON, RegistryWatch tells two readings of a tree apart. Other programs may change the registry at
// any time: a tree is what was read. One thread. Locks: none.

#pragma once

#include "Event.h"
#include "Registry.h"
#include "RegistryText.h"
#include "RegistryValue.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace ZoVelkor::Tools
{

/// A key with all that it holds, in the registry's order.
struct RegistryKey
{
    std::wstring name; ///< empty for the key from which on was read
    std::vector<RegistryValue> values;
    std::vector<RegistryKey> keys;
    DWORD unreadKeys = 0; ///< keys below that were too deep to be read
};

/// A tree and where it stands.
struct RegistryTree
{
    RegistryPath path;
    RegistryKey top;
};

inline constexpr unsigned kAnyDepth = std::numeric_limits<unsigned>::max();

/// Does nothing for ERROR_SUCCESS.
///
/// @param subject  what the failed call was about
/// @throws CToolError
void CheckRegistry(LONG error, const std::string& subject);

/// @throws CToolError when there is no such key
CUniqueKey OpenRegistryKey(const RegistryPath& path);

/// @return none when there is no such value
/// @throws CToolError
std::optional<RegistryValue> ReadRegistryValue(HKEY key, const std::wstring& name, const RegistryPath& path);

/// Reads a key and so many levels of keys below it.
///
/// What others change meanwhile may be missing or be there.
/// @throws CToolError
RegistryTree ReadRegistryTree(const RegistryPath& path, unsigned depth = kAnyDepth);

/// Keys that are read again and again while others change them. One thread at a time.
class CWatchedTrees
{
public:
    /// @throws CToolError when there is no such key
    explicit CWatchedTrees(std::vector<RegistryPath> paths);

    /// Reads all as they are at one moment.
    ///
    /// @return none when they do not stop changing
    /// @throws CToolError
    std::optional<std::vector<RegistryTree>> ReadAtOneMoment();

    /// Reads all; later changes end the next Wait.
    ///
    /// @throws CToolError
    std::vector<RegistryTree> Read();

    /// Waits until something has changed since the beginning of the last Read.
    void Wait() const;

private:
    void Arm() const;

    std::vector<RegistryPath> m_paths;
    std::vector<CUniqueKey> m_keys; ///< in the order of the paths
    CUniqueEvent m_changed;
};

} // namespace ZoVelkor::Tools
