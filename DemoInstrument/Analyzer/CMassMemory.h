#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::Demo
{

inline constexpr std::size_t kMaxFileCount = 256;                  ///< more: -255 "Directory full"
inline constexpr std::size_t kMaxFileBytes = std::size_t{1} << 30; ///< all files: more is -254 "Media full"
inline constexpr std::size_t kMaxFileNameLength = 127;             ///< a longer name: -257

/// Files of the instrument, kept in memory; they survive *RST and go with the process.
///
/// A name is printable ASCII without quotes, commas and slashes; case counts.
/// Operations return 0 or the SCPI error that refuses them, and then change nothing.
/// Threads: the thread that executes the command.
class CMassMemory
{
public:
    using Content = std::vector<unsigned char>;
    using Files = std::map<std::string, Content, std::less<>>;

    /// Bytes that a file could have; a file of the same name would give its room free.
    std::size_t RoomFor(std::string_view name) const;

    /// Checks whether a file could be stored.
    ///
    /// @return 0; -257 for a bad name; -255; -254
    short CheckRoom(std::string_view name, std::size_t bytes) const;

    /// Stores a file, or replaces the one of that name; results as CheckRoom.
    short Store(const std::string& name, Content content);

    /// @return the content, valid until the file is replaced or deleted; null when there is no such file
    const Content* Find(std::string_view name) const;

    /// @return 0; -256 when there is no such file
    short Delete(std::string_view name);

    const Files& AllFiles() const { return m_files; }
    std::size_t UsedBytes() const { return m_usedBytes; }
    std::size_t FreeBytes() const { return kMaxFileBytes - m_usedBytes; }

private:
    Files m_files;
    std::size_t m_usedBytes = 0;
};

} // namespace ZoVelkor::Demo
