#include "CMassMemory.h"

#include "ScpiErrorCodes.h"

#include <algorithm>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

bool IsNameCharacter(char c)
{
    constexpr std::string_view kReserved = "\"',/\\";
    return c > ' ' && c <= '~' && kReserved.find(c) == std::string_view::npos;
}

bool IsFileName(std::string_view name)
{
    return !name.empty() && name.size() <= kMaxFileNameLength &&
           std::all_of(name.begin(), name.end(), &IsNameCharacter);
}

} // namespace

std::size_t CMassMemory::RoomFor(std::string_view name) const
{
    const Content* const former = Find(name);
    return FreeBytes() + (former != nullptr ? former->size() : 0);
}

short CMassMemory::CheckRoom(std::string_view name, std::size_t bytes) const
{
    if (!IsFileName(name))
    {
        return kScpiFileNameError;
    }
    if (Find(name) == nullptr && m_files.size() >= kMaxFileCount)
    {
        return kScpiDirectoryFull;
    }
    return bytes <= RoomFor(name) ? short{kScpiNoError} : short{kScpiMediaFull};
}

short CMassMemory::Store(const std::string& name, Content content)
{
    const short error = CheckRoom(name, content.size());
    if (error != kScpiNoError)
    {
        return error;
    }
    Content& file = m_files[name];
    m_usedBytes += content.size() - file.size();
    file = std::move(content);
    return kScpiNoError;
}

const CMassMemory::Content* CMassMemory::Find(std::string_view name) const
{
    const auto file = m_files.find(name);
    return file != m_files.end() ? &file->second : nullptr;
}

short CMassMemory::Delete(std::string_view name)
{
    const auto file = m_files.find(name);
    if (file == m_files.end())
    {
        return kScpiFileNameNotFound;
    }
    m_usedBytes -= file->second.size();
    m_files.erase(file);
    return kScpiNoError;
}

} // namespace ZoVelkor::Demo
