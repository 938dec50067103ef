#include "TableFile.h"

#include "Common/CToolError.h"
#include "Common/ToolFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ZoVelkor::Tools
{

std::string TableFilePrefix()
{
    return fmt::format("{},#{}", CBScpiCommands::kTreeVersion, kTableLengthDigits);
}

std::size_t TableFileLimit()
{
    return TableFilePrefix().size() + kTableLengthDigits + CBScpiCommands::kLargestTree + 1;
}

std::string ParseTableFile(std::string_view bytes, std::vector<_CMD_SET_RECORD>& records)
{
    const std::string prefix = TableFilePrefix();
    if (!bytes.starts_with(prefix))
    {
        return fmt::format("no command table of version {}: begins with '{}' instead of '{}'",
                           CBScpiCommands::kTreeVersion,
                           Printable(bytes.substr(0, std::min(prefix.size(), bytes.find('\n')))),
                           prefix);
    }
    const std::string_view digits = bytes.substr(prefix.size(), kTableLengthDigits);
    if (digits.size() < kTableLengthDigits ||
        digits.find_first_not_of("0123456789") != std::string_view::npos)
    {
        return fmt::format("the block header has no {} length digits", kTableLengthDigits);
    }
    std::size_t size = 0;
    std::from_chars(digits.begin(), digits.end(), size);
    bytes.remove_prefix(prefix.size() + kTableLengthDigits);
    if (bytes.size() < size)
    {
        return fmt::format("truncated: {} of {} bytes are there", bytes.size(), size);
    }
    if (bytes.size() > size && bytes.substr(size) != "\n")
    {
        return fmt::format("something follows the {} bytes of the table", size);
    }
    if (size % sizeof(_CMD_SET_RECORD) != 0)
    {
        return fmt::format("{} bytes are no whole number of {}-byte records", size, sizeof(_CMD_SET_RECORD));
    }
    records.resize(size / sizeof(_CMD_SET_RECORD));
    for (_CMD_SET_RECORD& record : records)
    {
        std::memcpy(&record, bytes.data(), sizeof record);
        bytes.remove_prefix(sizeof record);
    }
    return {};
}

std::string FormatTableFile(std::span<const _CMD_SET_RECORD> records)
{
    if (records.size_bytes() > CBScpiCommands::kLargestTree)
    {
        throw CToolError(ExitCode::Failed,
                         fmt::format("the table of {} bytes is too large for a table file, limit {}",
                                     records.size_bytes(),
                                     CBScpiCommands::kLargestTree));
    }
    std::string bytes = fmt::format("{}{:0{}}", TableFilePrefix(), records.size_bytes(), kTableLengthDigits);
    return bytes.append(reinterpret_cast<const char*>(records.data()), records.size_bytes());
}

} // namespace ZoVelkor::Tools
